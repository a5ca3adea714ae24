// Transcoders between JXChar and the Unicode encodings, where the host has them: whole text, text
// in pieces, text that is none.
#include <string.h>

#include "check/conversion.hpp"

namespace jxcheck {

namespace {

constexpr uint32_t kRoomBytes = 64;

// What the module converts to drop the start of a character that a transcoder holds.
constexpr std::string_view kNoText = "\xDC\xDC\xDC\xDC\xDC\xDC\xDC\xDC\n\n";

struct Mark {
  uint32_t encoding, bytes;
  const char *text;
};

#define JXCHECK_MARK(encoding, bytes, text) {encoding, bytes, text},
constexpr Mark kMarks[] = {JX_BYTE_ORDER_MARKS(JXCHECK_MARK)};
#undef JXCHECK_MARK

// Calls the function with a decoder of each sample that the host has. Encoding 27 is JXChar itself.
void for_each_decoder(Probe &probe, void (*function)(Probe &, const Sample &, JXTranscoder *)) {
  uint32_t count = 0;
  for (const Sample &sample : kSamples) {
    JXNls *nls = probe.nls;
    if (sample.encoding == JX_ENCODING_UTF32LE) continue;
    const Transcoder decoder(
        nls, nls->create_transcoder(nls, sample.encoding, JX_ENCODING_UTF32LE, 0, nullptr));
    if (!decoder) continue;
    ++count;
    function(probe, sample, decoder.get());
  }
  if (count == 0) probe.skip("the host has none of them");
}

void decode(Probe &probe, const Sample &sample, JXTranscoder *decoder) {
  expect_text(probe, "the text", convert(probe, decoder, sample.text, kRoomBytes), kSampleText);
  expect_text(probe, "no bytes", convert(probe, decoder, "", kRoomBytes), "");
}

void encode(Probe &probe, const Sample &sample, JXTranscoder *) {
  const Transcoder encoder = make_transcoder(probe, JX_ENCODING_UTF32LE, sample.encoding);
  if (!encoder) return;
  const Converted whole = convert(probe, encoder.get(), kSampleText, kRoomBytes);
  expect_text(probe, "the text", whole, sample.text);
}

// Each way to be malformed that a lenient converter lets through.
void decode_lenient(Probe &probe, const Sample &sample, JXTranscoder *decoder) {
  for (const auto &[encoding, malformed] :
       {std::pair<uint32_t, std::string_view>{JX_ENCODING_UTF8, "\xC0\xAF"},
        {JX_ENCODING_UTF8, "\xE0\x80\xAF"},
        {JX_ENCODING_UTF8, "\xF0\x80\x80\xAF"},
        {JX_ENCODING_UTF8, "\xED\xA0\x80"},
        {JX_ENCODING_UTF8, "\xF4\x90\x80\x80"},
        {JX_ENCODING_UTF16BE, bytes_of("\xD8\x3D\0a")},
        {JX_ENCODING_UTF16LE, bytes_of("\x3D\xD8"
                                       "a\0")},
        {JX_ENCODING_UTF32BE, bytes_of("\0\0\xD8\0")}}) {
    if (encoding != sample.encoding) continue;
    const Converted came = convert(probe, decoder, malformed, kRoomBytes);
    if (came.status != JX_OK) continue;
    probe.found("status 0 for bytes %02x %02x... of encoding %u", malformed[0] & 0xFF,
                malformed[1] & 0xFF, encoding);
  }
}

// The marks are the module's: to a transcoder U+FEFF is a character.
void decode_mark(Probe &probe, const Sample &sample, JXTranscoder *decoder) {
  for (const auto &[encoding, bytes, mark] : kMarks) {
    if (encoding != sample.encoding) continue;
    expect_text(probe, "the mark", convert(probe, decoder, {mark, bytes}, kRoomBytes),
                bytes_of("\xFF\xFE\0\0"));
  }
}

void decode_cut(Probe &probe, const Sample &sample, JXTranscoder *decoder) {
  const size_t bytes = sample.text.size();
  for (size_t cut = 0; cut <= bytes; ++cut) {
    char joined[kRoomBytes];
    size_t joined_bytes = 0;
    for (const std::string_view part :
         {part_of(sample.text, 0, cut), part_of(sample.text, cut, bytes - cut)}) {
      const Converted came = convert(probe, decoder, part, kSampleText.size());
      if (!probe.expect_status("a part", came.status, JX_OK)) return;
      if (joined_bytes + came.produced_bytes > sizeof joined) return probe.found("too many bytes");
      ::memcpy(joined + joined_bytes, came.room.data, came.produced_bytes);
      joined_bytes += came.produced_bytes;
    }
    if (std::string_view(joined, joined_bytes) != kSampleText) {
      return probe.found("other text of encoding %u, cut after byte %u", sample.encoding,
                         static_cast<unsigned>(cut));
    }
  }
}

void decode_malformed(Probe &probe, const Sample &sample, JXTranscoder *decoder) {
  const Converted came = convert(probe, decoder, sample.malformed, kRoomBytes);
  if (came.status == JX_OK) {
    return probe.found("status 0 and %u bytes from encoding %u", came.produced_bytes,
                       sample.encoding);
  }
  const Converted next = convert(probe, decoder, sample.text, kRoomBytes);
  expect_text(probe, "good text after it", next, kSampleText);
}

void drop_held(Probe &probe, const Sample &sample, JXTranscoder *decoder) {
  const Converted held = convert(probe, decoder, sample.cut, kRoomBytes);
  expect_text(probe, "the start", held, "");
  if (!probe.expect_failure("bytes that are no text",
                            convert(probe, decoder, kNoText, kRoomBytes).status)) {
    return;
  }
  const Converted next = convert(probe, decoder, sample.text, kRoomBytes);
  expect_text(probe, "good text after them", next, kSampleText);
}

void decode_little_room(Probe &probe, const Sample &sample, JXTranscoder *decoder) {
  for (uint32_t room_bytes = 0; room_bytes < kSampleText.size(); room_bytes += 3) {
    const Converted came = convert(probe, decoder, sample.text, room_bytes);
    if (!probe.expect_failure("20 bytes of JXChars", came.status)) return;
  }
}

void encode_little_room(Probe &probe, const Sample &sample, JXTranscoder *) {
  const Transcoder encoder = make_transcoder(probe, JX_ENCODING_UTF32LE, sample.encoding);
  for (uint32_t room_bytes = 0; encoder && room_bytes < sample.text.size(); ++room_bytes) {
    const Converted came = convert(probe, encoder.get(), kSampleText, room_bytes);
    if (!probe.expect_failure("a byte less than the text, or more", came.status)) return;
  }
}

void encode_no_character(Probe &probe, const Sample &sample, JXTranscoder *) {
  const Transcoder encoder = make_transcoder(probe, JX_ENCODING_UTF32LE, sample.encoding);
  if (!encoder) return;
  const Converted came = convert(probe, encoder.get(), bytes_of("\0\0\0\x01"), kRoomBytes);
  if (came.status == JX_OK) {
    probe.found("status 0 and %u bytes of encoding %u", came.produced_bytes, sample.encoding);
  }
}

template <void (*function)(Probe &, const Sample &, JXTranscoder *)>
void check_each(Probe &probe) {
  for_each_decoder(probe, function);
}

constexpr char kRoomPromise[] = "a status other than 0, and nothing beyond the room";
constexpr char kFailure[] = "a status other than 0, and the next text is good";

constexpr Check kChecks[] = {
    {Slot::transcode, "encodings 20 and 24 to 26 to JXChar", "the same characters", guide::kKernel,
     kTranscoderSlots, check_each<decode>},
    {Slot::transcode, "JXChar to encodings 20 and 24 to 26", "the same characters", guide::kKernel,
     kTranscoderSlots, check_each<encode>},
    {Slot::transcode, "text in two parts, cut at every byte",
     "the start of a character is kept for the next call", guide::kKernel, kTranscoderSlots,
     check_each<decode_cut>},
    {Slot::transcode, "malformed text", kFailure, guide::kKernel, kTranscoderSlots,
     check_each<decode_malformed>},
    {Slot::transcode, "overlong forms, lone surrogates and numbers beyond U+10FFFF",
     "a status other than 0", guide::kKernel, kTranscoderSlots, check_each<decode_lenient>},
    {Slot::transcode, "a byte-order mark", "U+FEFF", guide::kMarks, kTranscoderSlots,
     check_each<decode_mark>},
    {Slot::transcode, "bytes that are no text after the start of a character", kFailure,
     guide::kKernel, kTranscoderSlots, check_each<drop_held>},
    {Slot::transcode, "JXChars that do not fit their room", kRoomPromise, guide::kKernel,
     kTranscoderSlots, check_each<decode_little_room>},
    {Slot::transcode, "bytes that do not fit their room", kRoomPromise, guide::kKernel,
     kTranscoderSlots, check_each<encode_little_room>},
    {Slot::transcode, "a JXChar that is no character", "a status other than 0", guide::kKernel,
     kTranscoderSlots, check_each<encode_no_character>},
};

}  // namespace

std::span<const Check> transcoder_checks() { return kChecks; }

}  // namespace jxcheck
