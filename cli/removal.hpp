// What "rm" refuses, and what stopped it.
#pragma once

#include <string>

#include "cli/failure.hpp"

namespace cli {

// Throws a Failure for "." and "..", for a path that ends in either, and for the root directory by
// any name: nobody means to remove these.
void refuse_removal(const std::string &path);

// The failure of a removal that ended with a status: under the name of the member that ended it,
// where that can be found, with what is known about the cause.
Failure removal_failure(const std::string &path, wem::Status status);

}  // namespace cli
