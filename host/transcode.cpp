// Combines conversions: characters cut off by a call, and pairs that are converted through JXChar.
#include "host/transcode.hpp"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "host/code_page.hpp"
#include "host/substitutes.hpp"
#include "jx/jxhost.h"

namespace jxhost {
namespace {

using jx::vector::Level;

// The buffer between the two steps of a chain.
struct Between {
  static constexpr size_t kChars = 512;
  JXChar chars[kChars];

  uint8_t *begin() { return reinterpret_cast<uint8_t *>(chars); }
  uint8_t *end() { return begin() + sizeof(chars); }
};

JXStatus encode_between(const Chain &chain, Between &between, const Cursor &decoded, Cursor &out) {
  Cursor encoding = {between.begin(), decoded.out, out.out, out.out_end};
  const JXStatus status = chain.encode.convert(chain.encode, encoding);
  out.out = encoding.out;
  return status;
}

// The Convert of a chain.
JXStatus convert_chain(const Step &step, Cursor &cursor) {
  const Chain &chain = *step.chain;
  Between between;
  for (;;) {
    Cursor decoding = {cursor.in, cursor.in_end, between.begin(), between.end()};
    const JXStatus decoded = chain.decode.convert(chain.decode, decoding);
    // An encoding failure wins: it is about a character before the one where decoding failed.
    const JXStatus encoded = encode_between(chain, between, decoding, cursor);
    if (encoded != JX_OK) return encoded;
    cursor.in = decoding.in;
    if (decoded != JXHOST_E_NOROOM) return decoded;
  }
}

// The transcode slot of a chain.
JXStatus transcode_chain(JXTranscoder *object, const void *source, uint32_t source_bytes,
                         void *destination, uint32_t capacity_bytes, uint32_t *produced_bytes_out,
                         uint32_t /*zero*/) {
  auto &transcoder = *static_cast<Transcoder *>(object);
  Cursor cursor = cursor_of(source, source_bytes, destination, capacity_bytes);
  JXStatus status = JX_OK;
  if (transcoder.held_bytes != 0) status = resume(transcoder, cursor);
  if (status == JX_OK) status = convert_chain(transcoder.step, cursor);
  if (status == JX_OK && cursor.in != cursor.in_end) status = hold(transcoder, cursor);
  if (status == JX_OK && transcoder.held_bytes == 0) status = finish(transcoder.step, cursor);
  if (status != JX_OK) {
    reset_iconv(transcoder.step.chain->decode);
    reset_iconv(transcoder.step.chain->encode);
  }
  if (produced_bytes_out) {
    *produced_bytes_out = static_cast<uint32_t>(cursor.out - static_cast<uint8_t *>(destination));
  }
  return status;
}

Pair direct_pair(Form from, Form to) {
  switch (from) {
    case Form::kByte:
    case Form::kAscii:
      return pair_from_bytes(from, to);
    case Form::kUtf8:
      return pair_from_utf8(to);
    case Form::kUtf16Be:
    case Form::kUtf16Le:
      return pair_from_utf16(from, to);
    case Form::kUtf32Be:
    case Form::kUtf32Le:
      return pair_from_utf32(from, to);
    case Form::kPage:
      return pair_from_page(to);
    default:
      return {};
  }
}

// Sets up one step of a chain, between an encoding and JXChar.
bool set_up_step(Step &step, const Encoding &encoding, bool decodes, Level level) {
  if (encoding.form == Form::kPage) {
    step.page = CodePage::create(encoding);
    if (!step.page) return false;
  }
  const Form from = decodes ? encoding.form : Form::kUtf32Le;
  const Form to = decodes ? Form::kUtf32Le : encoding.form;
  step.convert = direct_pair(from, to).convert;
  step.wide = wide_conversion(from, to, level);
  if (step.convert) return true;
  return decodes ? set_up_iconv_decode(step, encoding) : set_up_iconv_encode(step, encoding);
}

bool set_up_chain(Transcoder &transcoder, const Encoding &from, const Encoding &to, Level level) {
  std::unique_ptr<Chain> chain(new (std::nothrow) Chain());
  if (!chain) return false;
  if (!set_up_step(chain->decode, from, true, level) ||
      !set_up_step(chain->encode, to, false, level)) {
    return false;
  }
  transcoder.transcode = transcode_chain;
  transcoder.step.convert = convert_chain;
  transcoder.step.chain = std::move(chain);
  return true;
}

}  // namespace

Step::Step() = default;
Step::~Step() = default;

JXStatus resume(Transcoder &transcoder, Cursor &cursor) {
  uint8_t bytes[kHeldBytesMax];
  size_t count = std::exchange(transcoder.held_bytes, uint8_t{0});
  std::memcpy(bytes, transcoder.held, count);
  while (cursor.in != cursor.in_end) {
    if (count == kHeldBytesMax) return JXHOST_E_MALFORMED;
    bytes[count++] = *cursor.in++;
    Cursor character = {bytes, bytes + count, cursor.out, cursor.out_end};
    const JXStatus status = transcoder.step.convert(transcoder.step, character);
    cursor.out = character.out;
    if (status != JX_OK) return status;
    count = character.in_bytes();
    if (count == 0) return JX_OK;
    // Not memmove: valgrind takes the checked one for memcpy, and reports the overlap.
    std::copy(character.in, character.in + count, bytes);
  }
  std::memcpy(transcoder.held, bytes, count);
  transcoder.held_bytes = static_cast<uint8_t>(count);
  return JX_OK;
}

JXStatus hold(Transcoder &transcoder, Cursor &cursor) {
  const size_t bytes = cursor.in_bytes();
  if (bytes > kHeldBytesMax) return JXHOST_E_MALFORMED;
  std::memcpy(transcoder.held, cursor.in, bytes);
  transcoder.held_bytes = static_cast<uint8_t>(bytes);
  cursor.in = cursor.in_end;
  return JX_OK;
}

JXStatus finish(const Step &step, Cursor &cursor) {
  if (!step.chain) return JX_OK;
  const Chain &chain = *step.chain;
  JXStatus status = JX_OK;
  if (chain.decode.flushes) {
    Between between;
    Cursor owed = {nullptr, nullptr, between.begin(), between.end()};
    status = flush_iconv(chain.decode, owed);
    if (status == JX_OK) status = encode_between(chain, between, owed, cursor);
  }
  if (status == JX_OK && chain.encode.flushes) status = flush_iconv(chain.encode, cursor);
  return status;
}

WideConvert wide_conversion([[maybe_unused]] Form from, [[maybe_unused]] Form to, Level level) {
  switch (level) {
#if JX_VECTOR_X86 && !defined(JX_VECTOR_PLAIN)
    case Level::avx512:
      return wide_avx512(from, to);
    case Level::avx2:
      return wide_avx2(from, to);
#endif
    default:
      return nullptr;
  }
}

Level best_level() {
  static const Level level = jx::vector::processor_level();
  return level;
}

bool set_up(Transcoder &transcoder, const Encoding &from, const Encoding &to, Level level) {
  // Between equal encodings of the C library text is copied: in some of them the way through JXChar
  // and back does not give the same bytes.
  const bool is_copy = from.number == to.number && from.form >= Form::kPage;
  const Pair pair =
      is_copy ? direct_pair(Form::kByte, Form::kByte) : direct_pair(from.form, to.form);
  if (!pair.slot) return set_up_chain(transcoder, from, to, level);
  transcoder.transcode = pair.slot;
  transcoder.step.convert = pair.convert;
  transcoder.step.wide = is_copy ? nullptr : wide_conversion(from.form, to.form, level);
  if (is_copy || (from.form != Form::kPage && to.form != Form::kPage)) return true;
  transcoder.step.page = CodePage::create(from.form == Form::kPage ? from : to);
  return transcoder.step.page != nullptr;
}

}  // namespace jxhost
