// The character-set service: the slots of JXNls.
#include "host/nls.hpp"

#include <algorithm>
#include <cstdio>
#include <new>

#include "host/code_page.hpp"
#include "host/transcode.hpp"
#include "jx/jxhost.h"

namespace jxhost {
namespace {

struct Nls : JXNls {
  JXHost *host;  // owner of the service
};

std::unique_ptr<Transcoder> make_transcoder(uint32_t from, uint32_t to) {
  const Encoding *source = find_encoding(from);
  const Encoding *target = find_encoding(to);
  if (!source || !target) return nullptr;
  std::unique_ptr<Transcoder> transcoder(new (std::nothrow) Transcoder());
  if (!transcoder || !set_up(*transcoder, *source, *target)) return nullptr;
  return transcoder;
}

// Makes a transcoder in the host's list, named for its two encodings.
JXTranscoder *lend(JXNls *nls, uint32_t from, uint32_t to) {
  std::unique_ptr<Transcoder> transcoder = nls ? make_transcoder(from, to) : nullptr;
  if (!transcoder) return nullptr;
  char name[sizeof transcoder->name];
  std::snprintf(name, sizeof name, "%u to %u", from, to);
  enlist(static_cast<Nls *>(nls)->host, transcoder.get(), "transcoder", name);
  return transcoder.release();
}

JXTranscoder *create_transcoder(JXNls *nls, uint32_t from, uint32_t to, uint32_t /*zero*/,
                                JXOwner /*owner*/) {
  return lend(nls, from, to);
}

JXTranscoder *create_decoder(JXNls *nls, uint32_t encoding, uint32_t /*zero1*/,
                             uint32_t /*zero2*/) {
  return lend(nls, encoding, JX_ENCODING_UTF32LE);
}

JXTranscoder *create_encoder(JXNls *nls, uint32_t encoding, uint32_t /*zero1*/,
                             uint32_t /*zero2*/) {
  return lend(nls, JX_ENCODING_UTF32LE, encoding);
}

JXStatus destroy_transcoder(JXNls * /*nls*/, JXTranscoder *transcoder) {
  return end_live(static_cast<Transcoder *>(transcoder));
}

// Converts the text piece by piece into a scratch buffer. The conversion keeps its state between
// pieces, so the sum is what one call would produce.
JXStatus measure(const Transcoder &transcoder, const uint8_t *text, uint32_t bytes,
                 uint64_t &total_bytes) {
  constexpr size_t kPieceBytes = 256;
  uint8_t buffer[kPieceBytes * kHeldBytesMax];
  const uint8_t *const end = text + bytes;
  Cursor cursor = {text, text, buffer, buffer + sizeof(buffer)};
  total_bytes = 0;
  do {
    const auto piece_bytes = std::min(kPieceBytes, static_cast<size_t>(end - cursor.in));
    cursor = {cursor.in, cursor.in + piece_bytes, buffer, buffer + sizeof(buffer)};
    JXStatus status = transcoder.step.convert(transcoder.step, cursor);
    if (status == JX_OK && cursor.in == end) status = finish(transcoder.step, cursor);
    if (status != JX_OK) return status;
    total_bytes += static_cast<uint64_t>(cursor.out - buffer);
  } while (cursor.in_end != end);
  return JX_OK;
}

JXStatus measure_conversion(JXNls * /*nls*/, uint32_t from, const void *text, uint32_t bytes,
                            uint32_t to, uint32_t *bytes_out) {
  if (!bytes_out) return JX_E_BADARG;
  *bytes_out = 0;
  if (!find_encoding(from) || !find_encoding(to)) return JXHOST_E_BADENCODING;
  const std::unique_ptr<Transcoder> transcoder = make_transcoder(from, to);
  if (!transcoder) return JX_E_NOMEM;
  uint64_t total_bytes = 0;
  const JXStatus status =
      measure(*transcoder, static_cast<const uint8_t *>(text), bytes, total_bytes);
  if (status != JX_OK) return status;
  if (total_bytes > UINT32_MAX) return JXHOST_E_NOROOM;
  *bytes_out = static_cast<uint32_t>(total_bytes);
  return JX_OK;
}

int32_t needs_conversion(JXNls * /*nls*/, uint32_t a, uint32_t b) {
  return a == JX_ENCODING_DEFAULT || a != b;
}

JXStatus encoding_info(JXNls * /*nls*/, uint32_t number, JXEncodingInfo *info_out) {
  if (!info_out) return JX_E_BADARG;
  *info_out = {};
  const Encoding *encoding = find_encoding(number);
  if (!encoding) return JXHOST_E_BADENCODING;
  info_out->max_bytes_per_char = static_cast<int8_t>(encoding->max_bytes);
  return JX_OK;
}

}  // namespace

JXNls *create_nls(JXHost *host) {
  auto *nls = new (std::nothrow) Nls();
  if (!nls) return nullptr;
  nls->measure_conversion = measure_conversion;
  nls->needs_conversion = needs_conversion;
  nls->encoding_info = encoding_info;
  nls->create_transcoder = create_transcoder;
  nls->create_decoder = create_decoder;
  nls->create_encoder = create_encoder;
  nls->destroy_transcoder = destroy_transcoder;
  nls->host = host;
  return nls;
}

void destroy_nls(JXNls *nls) { delete static_cast<Nls *>(nls); }

}  // namespace jxhost
