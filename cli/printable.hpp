// Bytes and text made safe to show.
#pragma once

#include <string>
#include <string_view>

namespace cli {

// UTF-8 text as it is; "\x1b" for every byte of what is not UTF-8 or not to be seen: control
// characters, and those that turn the direction of text, join it or have no width. A backslash is
// doubled, so that no name looks like another one.
std::string to_printable(std::string_view bytes);

// JSON text with what is not to be seen as "\u202e", which means the same to a reader of JSON.
std::string to_printable_json(std::string_view json);

}  // namespace cli
