// What "rm" removes and refuses.
#pragma once

#include <string>

#include "cli/session.hpp"

namespace cli {

// Throws a Failure for "." and "..", for a path that ends in either, and for the root directory by
// any name: nobody means to remove these.
void refuse_removal(const std::string &path);

// Removes a file, a link or an empty directory; is_recursive: a directory with everything in it. No
// link is followed. A Failure under the name of the member that ended it, where that can be found,
// with what is known about the cause.
void remove(Session &session, const std::string &path, bool is_recursive);

}  // namespace cli
