// Builds the table of a single-byte encoding from the C library's conversion.
#include "host/code_page.hpp"

#include <iconv.h>

#include <new>

#include "host/transcode.hpp"

namespace jxhost {
namespace {

// The meaning of one byte, or CodePage::kNone.
JXChar meaning_of(iconv_t descriptor, uint8_t byte) {
  char source[1] = {static_cast<char>(byte)};
  JXChar characters[2] = {};
  char *in = source;
  char *out = reinterpret_cast<char *>(characters);
  size_t in_bytes = sizeof(source);
  size_t out_bytes = sizeof(characters);
  const bool converted = iconv(descriptor, &in, &in_bytes, &out, &out_bytes) == 0;
  iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
  return converted && out_bytes == sizeof(JXChar) ? characters[0] : CodePage::kNone;
}

}  // namespace

std::unique_ptr<const CodePage> CodePage::create(const Encoding &encoding) {
  IconvHandle iconv;
  if (!iconv.open(encoding.iconv_name, "WCHAR_T")) return nullptr;
  std::unique_ptr<CodePage> page(new (std::nothrow) CodePage());
  if (!page) return nullptr;
  for (unsigned byte = 0; byte < 256; ++byte) {
    const JXChar c = meaning_of(iconv.get(), static_cast<uint8_t>(byte));
    if (!page->enter(static_cast<uint8_t>(byte), c)) return nullptr;
  }
  return page;
}

bool CodePage::enter(uint8_t byte, JXChar c) {
  characters_[byte] = c;
  if (byte < 0x80 && c != byte) has_ascii_ = false;
  if (c == kNone) return true;
  if (c >= 0x10000) return false;
  uint8_t &row = row_of_[c >> 8];
  if (row == 0) {
    if (used_rows_ == kRows) return false;
    row = static_cast<uint8_t>(used_rows_++);
  }
  rows_[row][c & 0xff] = byte;
  return true;
}

}  // namespace jxhost
