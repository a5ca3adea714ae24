// JXChar text in tests: from literals and back.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "jx/base.h"

namespace jx::test {

using JXString = std::basic_string<JXChar>;

// Byte n becomes character n, as in the native encoding.
inline JXString jx(std::string_view bytes) {
  JXString text;
  for (const char byte : bytes) text.push_back(static_cast<unsigned char>(byte));
  return text;
}
inline JXString jx(std::u32string_view text) { return {text.begin(), text.end()}; }

// Character n up to 255 becomes byte n, every other one \u{HEX}. Null is empty.
inline std::string narrow(const JXChar *text, size_t chars) {
  std::string bytes;
  for (size_t i = 0; text && i < chars; ++i) {
    char escape[16];
    std::snprintf(escape, sizeof escape, "\\u{%X}", static_cast<unsigned>(text[i]));
    bytes += text[i] <= 0xFF ? std::string(1, static_cast<char>(text[i])) : escape;
  }
  return bytes;
}
inline std::string narrow(const JXString &text) { return narrow(text.data(), text.size()); }

// The length as the module takes it.
inline uint32_t chars(const JXString &text) { return static_cast<uint32_t>(text.size()); }

}  // namespace jx::test
