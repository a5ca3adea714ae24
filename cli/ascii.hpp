// Whether text is ASCII.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace cli {

inline bool is_ascii(std::string_view text) {
  constexpr size_t kStep = 64;
  constexpr uint64_t kHighBits = 0x8080808080808080;
  for (; text.size() >= kStep; text.remove_prefix(kStep)) {
    uint64_t words[kStep / sizeof(uint64_t)];
    std::memcpy(words, text.data(), kStep);
    uint64_t all = 0;
    for (const uint64_t word : words) all |= word;
    if ((all & kHighBits) != 0) return false;
  }
  unsigned all = 0;
  for (const char byte : text) all |= static_cast<unsigned char>(byte);
  return (all & 0x80) == 0;
}

}  // namespace cli
