// Text in tests: JXChars from literals and back, rows of cells.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <sstream>
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

// The length in JXChars.
inline uint32_t chars(const JXString &text) { return static_cast<uint32_t>(text.size()); }

// The cells of a row of text, separated by bars.
template <size_t kCount>
std::array<std::string, kCount> cells(const std::string &row) {
  std::array<std::string, kCount> cells;
  std::istringstream text(row);
  for (std::string &cell : cells) std::getline(text, cell, '|');
  return cells;
}

}  // namespace jx::test
