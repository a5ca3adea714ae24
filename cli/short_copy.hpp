// Copying lines, most of which are short.
#pragma once

#include <algorithm>
#include <cstring>
#include <string_view>

namespace cli {

// Copies Bytes to twice as many from both ends.
template <size_t Bytes>
void copy_ends(char *to, std::string_view text) {
  std::memcpy(to, text.data(), Bytes);
  const size_t rest = text.size() - Bytes;
  std::memcpy(to + rest, text.data() + rest, Bytes);
}

// For short lines memcpy's call and dispatch cost more than the copy.
inline void copy_line(char *to, std::string_view text) {
  if (text.size() > 64) {
    std::memcpy(to, text.data(), text.size());
  } else if (text.size() >= 32) {
    copy_ends<32>(to, text);
  } else if (text.size() >= 16) {
    copy_ends<16>(to, text);
  } else if (text.size() >= 8) {
    copy_ends<8>(to, text);
  } else {
    std::copy(text.begin(), text.end(), to);
  }
}

}  // namespace cli
