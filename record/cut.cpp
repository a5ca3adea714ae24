// Tracks what a transcoder holds of the text it was given, by the last bytes of that text.
#include "record/cut.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace jx {

namespace {

// The longest start of a character that a text form tells, in bytes.
constexpr uint32_t kHeldMax = std::size(HeldStart{}.bytes);

// These bytes complete no character, however it starts: the first four are malformed in UTF-8,
// UTF-16 and UTF-32, and a line feed is the second byte of a character in no encoding.
constexpr uint8_t kNoText[] = {0xDC, 0xDC, 0xDC, 0xDC, 0xDC, 0xDC, 0xDC, 0xDC, 0x0A, 0x0A};
constexpr uint32_t kMalformedBytes = 4;

// Converts bytes and drops the result.
JXStatus feed(JXTranscoder *transcoder, const void *bytes, uint32_t count) {
  uint8_t ignored[128];
  uint32_t ignored_bytes = 0;
  return transcoder->transcode(transcoder, bytes, count, ignored, sizeof ignored, &ignored_bytes,
                               0);
}

JXTranscoder *transcoder_of(const FileHandle *handle, const HeldStart *held) {
  return held == &handle->read_held ? handle->read_transcoder : handle->write_transcoder;
}

// The length of the cut character at the end of `count` bytes, of which the last kHeldMax decide.
uint32_t cut_of_utf8(const uint8_t *bytes, uint32_t count) {
  for (uint32_t length = 1; length <= std::min(count, kHeldMax); ++length) {
    const uint8_t byte = bytes[count - length];
    if (byte < 0x80) return 0;
    if (byte < 0xC0) continue;
    const uint32_t whole_length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
    return whole_length > length ? length : 0;
  }
  return 0;
}

// The same for UTF-16; total_bytes is the length of the text, which began with a whole unit.
uint32_t cut_of_utf16(const uint8_t *bytes, uint32_t count, uint32_t total_bytes,
                      bool is_big_endian) {
  const uint32_t odd = total_bytes % 2;
  if (count < odd + 2) return odd;
  const uint8_t high = bytes[count - odd - (is_big_endian ? 2 : 1)];
  const bool is_lead = (high & 0xFC) == 0xD8;
  return is_lead ? odd + 2 : odd;
}

uint32_t cut_of(TextForm form, const uint8_t *bytes, uint32_t count, uint32_t total_bytes) {
  switch (form) {
    case TextForm::single_byte:
      return 0;
    case TextForm::utf8:
      return cut_of_utf8(bytes, count);
    case TextForm::utf16be:
    case TextForm::utf16le:
      return cut_of_utf16(bytes, count, total_bytes, form == TextForm::utf16be);
    case TextForm::utf32:
      return total_bytes % kJXCharBytes;
    default:
      return total_bytes != 0 ? 1 : 0;
  }
}

}  // namespace

void note_end(HeldStart *held, const uint8_t *text, uint32_t bytes) {
  // Only the total modulo the size of a unit matters, so it may wrap.
  const uint32_t total_bytes = held->count + bytes;
  // A short text may end a character that began before it.
  uint8_t joined[2 * kHeldMax];
  if (bytes < kHeldMax && held->count != 0) {
    std::memcpy(joined, held->bytes, held->count);
    if (bytes != 0) std::memcpy(joined + held->count, text, bytes);
    text = joined;
    bytes = total_bytes;
  }
  const uint32_t cut = cut_of(held->form, text, bytes, total_bytes);
  if (cut != 0) std::memmove(held->bytes, text + bytes - cut, cut);
  held->count = static_cast<uint8_t>(cut);
}

bool would_cut(const HeldStart &held, const uint8_t *text, uint32_t bytes) {
  HeldStart after = held;
  if (held.is_stale != 0) after.count = 0;
  note_end(&after, text, bytes);
  return after.count != 0;
}

void drop_held(FileHandle *handle, HeldStart *held) {
  held->is_stale = 0;
  held->count = 0;
  // A transcoder that failed holds nothing.
  if (!is_single_byte(handle, held)) {
    (void)feed(transcoder_of(handle, held), kNoText, sizeof kNoText);
  }
}

bool is_single_byte(FileHandle *handle, HeldStart *held) {
  if (held->form == TextForm::other) {
    const bool reads = held == &handle->read_held;
    JXEncodingInfo info{};
    const JXStatus status = handle->nls->encoding_info(
        handle->nls, reads ? handle->encodings.file : handle->encodings.record, &info);
    const bool is_single = status == JX_OK && info.max_bytes_per_char == 1;
    held->form = is_single ? TextForm::single_byte : TextForm::several_bytes;
  }
  return held->form == TextForm::single_byte;
}

JXStatus end_cut_text(FileHandle *handle, HeldStart *held, const void *line_end,
                      uint32_t line_end_bytes) {
  if (held->is_stale != 0) {
    drop_held(handle, held);
    return JX_OK;
  }
  held->count = 0;
  if (is_single_byte(handle, held)) return JX_OK;
  JXTranscoder *transcoder = transcoder_of(handle, held);
  if (held->form == TextForm::several_bytes) return feed(transcoder, line_end, line_end_bytes);
  const JXStatus status = feed(transcoder, kNoText, sizeof kNoText);
  // The failure may be about a character that the bytes completed. Bytes that are malformed on
  // their own give the status of a cut character.
  return status == JX_OK ? JX_OK : feed(transcoder, kNoText, kMalformedBytes);
}

}  // namespace jx
