// Converts names and texts between UTF-8 and JXChars.
#include <algorithm>
#include <cstring>
#include <utility>

#include "host/transcode.hpp"
#include "jx/jxhost.h"

namespace {

using namespace jxhost;

// A Convert from a name to its bytes. A zero is refused: it would end the name early.
JXStatus encode_name(const Step &, Cursor &cursor) {
  for (; cursor.in != cursor.in_end; cursor.in += sizeof(JXChar)) {
    JXChar c;
    std::memcpy(&c, cursor.in, sizeof(c));
    if (c == 0 || c > 0xFF) return JXHOST_E_UNMAPPABLE;
    if (cursor.out == cursor.out_end) return JXHOST_E_NOROOM;
    *cursor.out++ = static_cast<uint8_t>(c);
  }
  return JX_OK;
}

// Converts the whole of a text.
JXStatus convert_all(Convert convert, Cursor &cursor) {
  const JXStatus status = convert(Step(), cursor);
  return status == JX_OK && cursor.in != cursor.in_end ? JXHOST_E_MALFORMED : status;
}

JXStatus to_chars(Convert convert, const char *utf8, size_t bytes, JXChar *chars,
                  uint32_t *chars_count) {
  if (!chars_count) return JX_E_BADARG;
  const size_t room = std::exchange(*chars_count, 0);
  if ((!utf8 && bytes > 0) || (!chars && room > 0)) return JX_E_BADARG;
  const auto *in = reinterpret_cast<const uint8_t *>(utf8);
  auto *out = reinterpret_cast<uint8_t *>(chars);
  // A byte gives at most one character.
  Cursor cursor = {in, in + bytes, out, out + std::min(room, bytes) * sizeof(JXChar)};
  const JXStatus status = convert_all(convert, cursor);
  if (status != JX_OK) return status;
  *chars_count = static_cast<uint32_t>(static_cast<size_t>(cursor.out - out) / sizeof(JXChar));
  return JX_OK;
}

JXStatus to_bytes(Convert convert, const JXChar *chars, uint32_t chars_count, char *utf8,
                  uint32_t *bytes) {
  if (!bytes) return JX_E_BADARG;
  const uint32_t room = std::exchange(*bytes, 0);
  if ((!chars && chars_count > 0) || (!utf8 && room > 0)) return JX_E_BADARG;
  if (room == 0) return JXHOST_E_NOROOM;
  auto *out = reinterpret_cast<uint8_t *>(utf8);
  Cursor cursor = {reinterpret_cast<const uint8_t *>(chars),
                   reinterpret_cast<const uint8_t *>(chars + chars_count), out, out + room - 1};
  const JXStatus status = convert_all(convert, cursor);
  if (status != JX_OK) cursor.out = out;
  *cursor.out = 0;
  *bytes = static_cast<uint32_t>(cursor.out - out);
  return status;
}

}  // namespace

extern "C" {

JXStatus jxhost_utf8_to_name(const char *utf8, JXChar *name, uint32_t *name_chars) {
  const size_t bytes = utf8 ? std::strlen(utf8) : 1;  // null is refused
  const Convert convert = pair_from_bytes(Form::kByte, Form::kUtf32Le).convert;
  const JXStatus status = to_chars(convert, utf8, bytes, name, name_chars);
  return status == JXHOST_E_NOROOM ? JXWEM_E_NAMETOOLONG : status;
}

JXStatus jxhost_name_to_utf8(const JXChar *name, uint32_t name_chars, char *utf8,
                             uint32_t *utf8_bytes) {
  return to_bytes(encode_name, name, name_chars, utf8, utf8_bytes);
}

JXStatus jxhost_utf8_to_text(const char *utf8, uint32_t utf8_bytes, JXChar *text,
                             uint32_t *text_chars) {
  return to_chars(pair_from_utf8(Form::kUtf32Le).convert, utf8, utf8_bytes, text, text_chars);
}

JXStatus jxhost_text_to_utf8(const JXChar *text, uint32_t text_chars, char *utf8,
                             uint32_t *utf8_bytes) {
  return to_bytes(pair_from_utf32(Form::kUtf32Le, Form::kUtf8).convert, text, text_chars, utf8,
                  utf8_bytes);
}

}  // extern "C"
