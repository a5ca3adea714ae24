// What a mistyped word may have been meant to be.
#pragma once

#include <string_view>
#include <vector>

namespace cli {

// The candidate that a word is the beginning of, if it is that of one only; else the one that is
// nearest by letters changed, added, left out or swapped, if it is near enough. Empty for none.
std::string_view nearest(std::string_view word, const std::vector<std::string_view> &candidates);

}  // namespace cli
