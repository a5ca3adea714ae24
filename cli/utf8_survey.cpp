// How much of some bytes is UTF-8.
#include "cli/utf8_survey.hpp"

#include <algorithm>
#include <cstdint>

namespace cli {
namespace {

// The bytes of a character by its first byte; 0 when none begins with it.
size_t length_of(uint8_t first) {
  if (first >= 0xC2 && first <= 0xDF) return 2;
  if (first >= 0xE0 && first <= 0xEF) return 3;
  return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

// How many of the bytes at the start belong together, at most the length of the character.
size_t good_bytes(std::string_view bytes, size_t length) {
  const auto first = static_cast<uint8_t>(bytes[0]);
  for (size_t i = 1; i < std::min(bytes.size(), length); ++i) {
    const auto byte = static_cast<uint8_t>(bytes[i]);
    const bool is_second = i == 1;
    // Neither overlong forms nor surrogates, and nothing above 10FFFF.
    const uint8_t least = is_second && first == 0xE0   ? 0xA0
                          : is_second && first == 0xF0 ? 0x90
                                                       : 0x80;
    const uint8_t most = is_second && first == 0xED   ? 0x9F
                         : is_second && first == 0xF4 ? 0x8F
                                                      : 0xBF;
    if (byte < least || byte > most) return i;
  }
  return std::min(bytes.size(), length);
}

}  // namespace

Utf8Survey::Utf8Survey(std::string_view bytes, bool is_whole) {
  for (size_t at = 0; at < bytes.size();) {
    if ((bytes[at] & 0x80) == 0) {
      ++at;
      continue;
    }
    const size_t length = length_of(static_cast<uint8_t>(bytes[at]));
    const size_t good = std::max<size_t>(length == 0 ? 1 : good_bytes(bytes.substr(at), length), 1);
    const bool is_cut = length > good && at + good == bytes.size();
    if (length != 0 && good == length) {
      ++characters;
    } else if (!is_cut || is_whole) {
      if (faults++ == 0) first_fault = at;
    }
    at += good;
  }
}

}  // namespace cli
