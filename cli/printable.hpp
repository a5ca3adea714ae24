// Bytes and text made safe to show.
#pragma once

#include <string>
#include <string_view>

namespace cli {

// UTF-8 text as it is; "\x1b" for every byte of what is not UTF-8 or not to be seen: control
// characters, and those that turn the direction of text, join it or have no width. A backslash is
// doubled, so that no name looks like another one.
std::string to_printable(std::string_view bytes);

// Appends UTF-8 text as a string of JSON in quotes: what is not to be seen as "\u202e", which means
// the same to its reader. False for what is not UTF-8; a part of it may be appended then.
bool append_json_string(std::string &json, std::string_view text);

}  // namespace cli
