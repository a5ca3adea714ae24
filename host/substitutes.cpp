// Finds the characters that the C library replaces.
#include "host/substitutes.hpp"

#include <new>

#include "jx/jxhost.h"

namespace jxhost {
namespace {

constexpr bool is_substitute(JXChar c) { return c == kSubstitute || c == 0xfffd; }

}  // namespace

std::unique_ptr<Substitutes> Substitutes::create(const Encoding &encoding) {
  std::unique_ptr<Substitutes> made(new (std::nothrow) Substitutes());
  if (!made || !made->encode_.iconv.open("WCHAR_T", encoding.iconv_name) ||
      !made->decode_.iconv.open(encoding.iconv_name, "WCHAR_T")) {
    return nullptr;
  }
  return made;
}

bool Substitutes::contains(JXChar c) {
  const size_t row = c / kRowChars;
  if (row >= kRows) return is_lost(c);
  if (!is_known_[row]) {
    for (size_t i = 0; i < kRowChars; ++i) {
      lost_[row][i] = is_lost(static_cast<JXChar>(row * kRowChars + i));
    }
    is_known_[row] = true;
  }
  return lost_[row][c % kRowChars];
}

bool Substitutes::is_lost(JXChar c) {
  uint8_t bytes[kHeldBytesMax];
  JXChar back = c;
  const auto *in = reinterpret_cast<const uint8_t *>(&c);
  auto *out = reinterpret_cast<uint8_t *>(&back);
  Cursor there = {in, in + sizeof(c), bytes, bytes + sizeof(bytes)};
  reset_iconv(encode_);
  if (run_iconv(encode_, there) != 0) return false;
  Cursor again = {bytes, there.out, out, out + sizeof(back)};
  reset_iconv(decode_);
  run_iconv(decode_, again);
  return is_substitute(back) && back != c;
}

}  // namespace jxhost
