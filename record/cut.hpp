// Characters that are cut off at the end of a text. A transcoder holds the start of one for its
// next call; the routines here track what it holds, tell when that is a fault, and make it drop
// that.
#pragma once

#include "kernel/handle.hpp"

namespace [[gnu::visibility("hidden")]] jx {

// The form of text in an encoding, without a host call: an encoding of the host's own is "other".
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

// The routines below take a handle and one of its two HeldStarts, which names the direction.

// Slow path of before_text().
void drop_held(FileHandle *handle, HeldStart *held);

// Call before a transcoder is given text: drops what is stale.
inline void before_text(FileHandle *handle, HeldStart *held) {
  if (held->is_stale != 0) drop_held(handle, held);
}

// Slow path of after_text().
void note_end(HeldStart *held, const uint8_t *text, uint32_t bytes);

// True when the last bytes of a text show at a glance that it ends with a whole character.
inline bool ends_plainly(const HeldStart *held, const uint8_t *text, uint32_t bytes) {
  const TextForm form = held->form;
  if (form == TextForm::utf8) {  // a character of one byte, or of three
    return bytes >= 3 && (text[bytes - 1] < 0x80 || (text[bytes - 3] & 0xF0) == 0xE0);
  }
  if (form == TextForm::utf32) return ((bytes | held->count) & 3) == 0;
  if (form == TextForm::utf16le || form == TextForm::utf16be) {
    return bytes >= 2 && ((bytes | held->count) & 1) == 0 &&
           (text[bytes - (form == TextForm::utf16be ? 2 : 1)] & 0xFC) != 0xD8;
  }
  return form == TextForm::single_byte;
}

// Call after a transcoder took text: notes what it holds.
inline void after_text(HeldStart *held, const void *text, uint32_t bytes) {
  const auto *data = static_cast<const uint8_t *>(text);
  if (held->form >= TextForm::other) {
    held->count |= bytes != 0;
  } else if (ends_plainly(held, data, bytes)) {
    held->count = 0;
  } else {
    note_end(held, data, bytes);
  }
}

// Tells whether text would end inside a character, as far as its form tells.
bool would_cut(const HeldStart &held, const uint8_t *text, uint32_t bytes);

// Tells whether every character of the encoding is one byte. Asks the host, once a handle, where
// the form does not tell.
bool is_single_byte(FileHandle *handle, HeldStart *held);

// Slow path of end_text().
JXStatus end_cut_text(FileHandle *handle, HeldStart *held, const void *line_end,
                      uint32_t line_end_bytes);

// Ends the text that a transcoder was given: a character that is cut off there is a fault. 0, or
// the transcoder's status for it; either way nothing is held. Where the form does not tell, the
// transcoder converts a line end in the encoding of the text, and the result is dropped.
inline JXStatus end_text(FileHandle *handle, HeldStart *held, const void *line_end,
                         uint32_t line_end_bytes) {
  return held->count == 0 ? JX_OK : end_cut_text(handle, held, line_end, line_end_bytes);
}

}  // namespace jx
