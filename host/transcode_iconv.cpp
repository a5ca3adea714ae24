// Conversion steps through the C library's iconv. It keeps a shift state and, in some encodings, a
// character that the next one may still change; a reset clears both.
#include <iconv.h>

#include <algorithm>
#include <cerrno>

#include "host/substitutes.hpp"
#include "host/transcode.hpp"
#include "jx/jxhost.h"

namespace jxhost {
namespace {

// The C library's name for JXChar: its internal form, which needs no further step.
constexpr const char *kJXCharName = "WCHAR_T";
static_assert(sizeof(wchar_t) == sizeof(JXChar));

// Calls iconv with the cursor's room. A null output would mean a reset to iconv, or make it abort:
// it gets an address without room instead. Returns 0 or the errno of iconv.
int call(const Step &step, char **in, size_t *in_bytes, Cursor &cursor) {
  char nowhere = 0;
  char *out = cursor.out ? reinterpret_cast<char *>(cursor.out) : &nowhere;
  const size_t room_bytes = cursor.out_bytes();
  size_t left_bytes = room_bytes;
  const size_t result = iconv(step.iconv.get(), in, in_bytes, &out, &left_bytes);
  const int error = result == static_cast<size_t>(-1) ? errno : 0;
  cursor.out += room_bytes - left_bytes;
  return error;
}

constexpr bool is_control(JXChar c) { return c >> 5 == 0x80 >> 5; }
constexpr bool is_tag(JXChar c) { return c >> 7 == 0xe0000 >> 7; }

JXStatus status_of_decoding(int error) {
  if (error == 0 || error == EINVAL) return JX_OK;
  return error == E2BIG ? JXHOST_E_NOROOM : JXHOST_E_MALFORMED;
}

// Decodes the input up to `end`.
JXStatus decode_to(const Step &step, Cursor &cursor, const uint8_t *end) {
  if (cursor.in == end) return JX_OK;
  Cursor part = {cursor.in, end, cursor.out, cursor.out_end};
  const int error = run_iconv(step, part);
  cursor.in = part.in;
  cursor.out = part.out;
  return status_of_decoding(error);
}

JXStatus decode(const Step &step, Cursor &cursor) {
  if (step.refused.none()) return decode_to(step, cursor, cursor.in_end);
  for (const uint8_t *searched = cursor.in;; ++searched) {
    const auto is_refused = [&step](uint8_t byte) { return step.refused[byte]; };
    searched = std::find_if(searched, cursor.in_end, is_refused);
    JXStatus status = decode_to(step, cursor, searched);
    if (status != JX_OK || searched == cursor.in_end) return status;
    const bool begins = cursor.in == searched;
    status = decode_to(step, cursor, searched + 1);
    if (status != JX_OK) return status;
    // Inside a longer character the byte is valid.
    if (!begins || cursor.in == searched) continue;
    cursor.in = searched;
    cursor.out -= sizeof(JXChar);
    return JXHOST_E_MALFORMED;
  }
}

// Finds the first character of the input for which the test is true, or the end of the input.
template <typename Test>
const uint8_t *find_char(const Cursor &cursor, Test test) {
  for (const uint8_t *in = cursor.in; in != cursor.in_end; in += sizeof(JXChar)) {
    JXChar c;
    __builtin_memcpy(&c, in, sizeof(c));
    if (test(c)) return in;
  }
  return cursor.in_end;
}

// Finds the end of the characters that can be passed to iconv, which silently drops tag characters
// when the target has none.
const uint8_t *end_of_plain(const Step &step, const Cursor &cursor) {
  if (step.substitutes) {
    return find_char(cursor, [&substitutes = *step.substitutes](JXChar c) {
      return is_tag(c) || substitutes.contains(c);
    });
  }
  if (step.refuses_controls) {
    return find_char(cursor, [](JXChar c) { return is_tag(c) || is_control(c); });
  }
  return step.maps_tags ? cursor.in_end : find_char(cursor, is_tag);
}

JXStatus encode(const Step &step, Cursor &cursor) {
  const uint8_t *const plain_end = end_of_plain(step, cursor);
  Cursor plain = {cursor.in, plain_end, cursor.out, cursor.out_end};
  const int error = plain.in == plain_end ? 0 : run_iconv(step, plain);
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
  const bool maps = run_iconv(step, cursor) == 0 && cursor.out != out;
  reset_iconv(step);
  return maps;
}

// The byte of the substitute in an encoding, or 0.
uint8_t byte_of_substitute(const Encoding &encoding) {
  const JXChar substitute = kSubstitute;
  const auto *in = reinterpret_cast<const uint8_t *>(&substitute);
  uint8_t byte = 0;
  Cursor cursor = {in, in + sizeof(substitute), &byte, &byte + 1};
  Step encoder;
  if (encoder.iconv.open(kJXCharName, encoding.iconv_name)) run_iconv(encoder, cursor);
  return byte;
}

// Finds the bytes that the C library decodes as a control character or the substitute although they
// are unassigned.
void find_refused(Step &step, const Encoding &from) {
  const uint8_t own_substitute = byte_of_substitute(from);
  for (unsigned i = 0; i < step.refused.size(); ++i) {
    const auto byte = static_cast<uint8_t>(i);
    JXChar c = 0;
    auto *out = reinterpret_cast<uint8_t *>(&c);
    Cursor cursor = {&byte, &byte + 1, out, out + sizeof(c)};
    if (run_iconv(step, cursor) == 0) {
      step.refused[i] = from.laxity == Laxity::kControls
                            ? is_control(c)
                            : c == kSubstitute && byte != own_substitute;
    }
    reset_iconv(step);
  }
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
  // Shifting encodings are not flushed: that would lose the shift state, which the next piece of a
  // text needs.
  step.flushes = from.form == Form::kJoining;
  if (!step.iconv.open(from.iconv_name, kJXCharName)) return false;
  if (from.laxity != Laxity::kNone) find_refused(step, from);
  return true;
}

bool set_up_iconv_encode(Step &step, const Encoding &to) {
  step.convert = encode;
  step.flushes = to.form != Form::kIconv;
  if (!step.iconv.open(kJXCharName, to.iconv_name)) return false;
  step.maps_tags = find_maps_tags(step);
  step.refuses_controls = to.laxity == Laxity::kControls;
  if (to.laxity != Laxity::kSubstitutes) return true;
  step.substitutes = Substitutes::create(to);
  return step.substitutes != nullptr;
}

int run_iconv(const Step &step, Cursor &cursor) {
  auto *in = reinterpret_cast<char *>(const_cast<uint8_t *>(cursor.in));
  size_t in_bytes = cursor.in_bytes();
  const int error = call(step, &in, &in_bytes, cursor);
  cursor.in = reinterpret_cast<const uint8_t *>(in);
  return error;
}

JXStatus flush_iconv(const Step &step, Cursor &cursor) {
  return call(step, nullptr, nullptr, cursor) == 0 ? JX_OK : JXHOST_E_NOROOM;
}

void reset_iconv(const Step &step) {
  if (step.iconv.get()) iconv(step.iconv.get(), nullptr, nullptr, nullptr, nullptr);
}

}  // namespace jxhost
