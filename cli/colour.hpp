// Colours on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace cli {

inline constexpr std::string_view kFaultColour = "\033[1;31m";
inline constexpr std::string_view kFolderColour = "\033[1;34m";

// Sets when colours are used: "auto", which holds at first, "always" or "never"; a UsageError for
// anything else. auto: on a terminal, unless the user's environment has a NO_COLOR that is not
// empty.
void choose_colour(const std::string &when);
// Whether what goes to a descriptor has colours.
bool wants_colour(int fd);
// Text in a colour.
std::string coloured(std::string_view colour, std::string_view text);

}  // namespace cli
