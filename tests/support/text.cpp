#include "support/text.hpp"

#include <cstdio>

namespace jx::test {

JXString jx(std::string_view bytes) {
  JXString text;
  for (const char byte : bytes) text.push_back(static_cast<unsigned char>(byte));
  return text;
}

JXString jx(std::u32string_view text) { return {text.begin(), text.end()}; }

std::string narrow(const JXChar *text, size_t chars) {
  std::string bytes;
  for (size_t i = 0; text && i < chars; ++i) {
    char escape[16];
    std::snprintf(escape, sizeof escape, "\\u{%X}", static_cast<unsigned>(text[i]));
    if (text[i] <= 0xFF) {
      bytes.push_back(static_cast<char>(text[i]));
    } else {
      bytes += escape;
    }
  }
  return bytes;
}

std::string narrow(const JXString &text) { return narrow(text.data(), text.size()); }

}  // namespace jx::test
