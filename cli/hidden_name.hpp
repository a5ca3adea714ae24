// Names for what is not finished.
#pragma once

#include <string>

namespace cli {

// A name with a leading dot that nobody can foresee. A Failure under shown's name when the system
// has no random numbers.
std::string hidden_name(const std::string &shown);

}  // namespace cli
