// Characters that a text cuts off at its end. A transcoder holds the start of one for its next
// call; here is known what it holds, when that is a fault, and how it is dropped.
#pragma once

#include "kernel/handle.hpp"

namespace [[gnu::visibility("hidden")]] jx {

// The form of text in an encoding. Costs no call: an encoding of the host's own is "other".
constexpr TextForm form_of(uint32_t encoding) {
  switch (encoding) {
    case JX_ENCODING_UTF8:
      return TextForm::utf8;
    case JX_ENCODING_UTF16BE:
      return TextForm::utf16be;
    case JX_ENCODING_UTF16LE:
      return TextForm::utf16le;
    case JX_ENCODING_UTF32BE:
    case JX_ENCODING_UTF32LE:
      return TextForm::utf32;
    case JX_ENCODING_NATIVE:
      return TextForm::single_byte;
    default:
      return TextForm::other;
  }
}

// One direction of a handle.
struct Direction {
  JXNls *nls;
  JXTranscoder *transcoder;
  uint32_t encoding;  // of the text that the transcoder is given
  HeldStart *held;
};
inline Direction inward(FileHandle *handle) {
  return {handle->nls, handle->read_transcoder, handle->file_encoding, &handle->read_held};
}
inline Direction outward(FileHandle *handle) {
  return {handle->nls, handle->write_transcoder, handle->record_encoding, &handle->write_held};
}

// Bytes given to a transcoder, and where what comes of them goes.
struct Conversion {
  const void *source;
  uint32_t source_bytes;
  void *destination;
  uint32_t capacity_bytes;
};

// Transcodes after dropping what is stale, and keeps track of what is held then. 0 or the
// transcoder's status; *produced_bytes_out is the transcoder's.
JXStatus transcode(const Direction &direction, const Conversion &conversion,
                   uint32_t *produced_bytes_out);

// Tells whether text would end inside a character, as far as its form tells.
bool would_cut(const HeldStart &held, const uint8_t *text, uint32_t bytes);

// Tells whether an encoding has no longer characters than of one byte. Asks the host, once, where
// the form does not tell.
bool is_single_byte(const Direction &direction);

// Slow path of end_text.
JXStatus end_cut_text(const Direction &direction, const void *line_end, uint32_t line_end_bytes);

// Ends the text that a transcoder was given: a character that is cut off there cannot go on. 0, or
// the transcoder's status for it; either way nothing is held. Where the form does not tell, a line
// end in the encoding of the text is given to the transcoder, and what comes of it is dropped.
inline JXStatus end_text(const Direction &direction, const void *line_end,
                         uint32_t line_end_bytes) {
  return direction.held->count == 0 ? JX_OK : end_cut_text(direction, line_end, line_end_bytes);
}

}  // namespace jx
