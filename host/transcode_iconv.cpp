// The steps that the C library's iconv does. It keeps a shift state and, in some encodings, a
// character that the next one may still change; both are its own and are cleared by a reset.
#include <iconv.h>

#include <cerrno>

#include "host/transcode.hpp"
#include "jx/jxhost.h"

namespace jxhost {
namespace {

// The C library's name of JXChar: its own inner form, which costs no further step.
constexpr const char *kJXCharName = "WCHAR_T";
static_assert(sizeof(wchar_t) == sizeof(JXChar));

// Converts all of the input. Returns 0 or the errno of the C library.
int run(const Step &step, Cursor &cursor) {
  auto *in = reinterpret_cast<char *>(const_cast<uint8_t *>(cursor.in));
  auto *out = reinterpret_cast<char *>(cursor.out);
  size_t in_bytes = cursor.in_bytes();
  size_t out_bytes = cursor.out_bytes();
  const size_t result = iconv(step.iconv.get(), &in, &in_bytes, &out, &out_bytes);
  const int error = result == static_cast<size_t>(-1) ? errno : 0;
  cursor.in = reinterpret_cast<const uint8_t *>(in);
  cursor.out = reinterpret_cast<uint8_t *>(out);
  return error;
}

JXStatus decode(const Step &step, Cursor &cursor) {
  if (cursor.in == cursor.in_end) return JX_OK;
  const int error = run(step, cursor);
  if (error == 0 || error == EINVAL) return JX_OK;
  return error == E2BIG ? JXHOST_E_NOROOM : JXHOST_E_MALFORMED;
}

// Finds the end of the characters that can be handed to iconv. It drops the tag characters without
// a word when the target has none.
const uint8_t *end_of_plain(const Step &step, const Cursor &cursor) {
  if (step.maps_tags) return cursor.in_end;
  for (const uint8_t *in = cursor.in; in != cursor.in_end; in += sizeof(JXChar)) {
    JXChar c;
    __builtin_memcpy(&c, in, sizeof(c));
    if (c >> 7 == 0xe0000 >> 7) return in;
  }
  return cursor.in_end;
}

JXStatus encode(const Step &step, Cursor &cursor) {
  const uint8_t *const plain_end = end_of_plain(step, cursor);
  Cursor plain = {cursor.in, plain_end, cursor.out, cursor.out_end};
  const int error = plain.in == plain_end ? 0 : run(step, plain);
  cursor.in = plain.in;
  cursor.out = plain.out;
  if (error == E2BIG) return JXHOST_E_NOROOM;
  return error == 0 && cursor.in == cursor.in_end ? JX_OK : JXHOST_E_UNMAPPABLE;
}

bool find_maps_tags(const Step &step) {
  const JXChar tag = 0xe0041;
  uint8_t out[16];
  Cursor cursor = {reinterpret_cast<const uint8_t *>(&tag),
                   reinterpret_cast<const uint8_t *>(&tag + 1), out, out + sizeof(out)};
  const bool maps = run(step, cursor) == 0 && cursor.out != out;
  reset_iconv(step);
  return maps;
}

iconv_t no_descriptor() { return reinterpret_cast<iconv_t>(-1); }

}  // namespace

IconvHandle::~IconvHandle() {
  if (descriptor_) iconv_close(descriptor_);
}

bool IconvHandle::open(const char *from, const char *to) {
  const iconv_t opened = iconv_open(to, from);
  if (opened == no_descriptor()) return false;
  descriptor_ = opened;
  return true;
}

bool set_up_iconv_decode(Step &step, const Encoding &from) {
  step.convert = decode;
  // A flush would forget the shift state too, which the next piece of a text still needs.
  step.flushes = from.form == Form::kJoining;
  return step.iconv.open(from.iconv_name, kJXCharName);
}

bool set_up_iconv_encode(Step &step, const Encoding &to) {
  step.convert = encode;
  step.flushes = to.form != Form::kIconv;
  if (!step.iconv.open(kJXCharName, to.iconv_name)) return false;
  step.maps_tags = find_maps_tags(step);
  return true;
}

JXStatus flush_iconv(const Step &step, Cursor &cursor) {
  auto *out = reinterpret_cast<char *>(cursor.out);
  size_t out_bytes = cursor.out_bytes();
  const size_t result = iconv(step.iconv.get(), nullptr, nullptr, &out, &out_bytes);
  cursor.out = reinterpret_cast<uint8_t *>(out);
  return result == static_cast<size_t>(-1) ? JXHOST_E_NOROOM : JX_OK;
}

void reset_iconv(const Step &step) {
  if (step.iconv.get()) iconv(step.iconv.get(), nullptr, nullptr, nullptr, nullptr);
}

}  // namespace jxhost
