// How much of some bytes is UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace cli {

struct Utf8Survey {
  // A character that the end cuts off is a fault only when the bytes are the whole text.
  Utf8Survey(std::string_view bytes, bool is_whole);

  size_t characters = 0;   // beyond ASCII
  size_t faults = 0;       // places where bytes beyond ASCII are none
  size_t first_fault = 0;  // the byte offset of the first of them
};

}  // namespace cli
