// Conversion of text records in encodings that do not tell where a character is cut off.
#include "record/found_record.hpp"

#include <cstring>

namespace jx {

namespace {

constexpr uint8_t kLineFeedCharacter = 0x0A;
constexpr uint8_t kReturnCharacter = 0x0D;

// Appends a line feed to the last record of a file if there is room. Its size, or 0.
uint32_t add_line_feed(const FileHandle *handle, uint8_t *end) {
  const ControlCopy &line_feed = handle->controls.line_feed();
  const uint8_t *buffer_end = handle->buffer.data + handle->buffer.size_bytes;
  if (static_cast<size_t>(buffer_end - end) < line_feed.bytes) return 0;
  std::memcpy(end, line_feed.text, line_feed.bytes);
  return line_feed.bytes;
}

// The size of a control character at the end of converted text, by the encoding of records; 0 when
// it is not there.
uint32_t control_bytes_at(uint32_t encoding, const uint8_t *end, uint32_t bytes,
                          uint8_t character) {
  const TextForm form = form_of(encoding);
  const bool is_utf16 = form == TextForm::utf16be || form == TextForm::utf16le;
  const uint32_t unit_bytes = form == TextForm::utf32 ? kJXCharBytes : is_utf16 ? 2 : 1;
  if (bytes < unit_bytes) return 0;
  const bool is_big_endian = encoding == JX_ENCODING_UTF16BE || encoding == JX_ENCODING_UTF32BE;
  const uint8_t *unit = end - unit_bytes;
  const uint8_t value = is_big_endian ? end[-1] : unit[0];
  uint32_t sum = 0;
  for (; unit != end; ++unit) sum += *unit;
  // In an unknown encoding bytes below 0x40 are controls, and none ends a longer character.
  const bool is_there = form == TextForm::other ? value < 0x40 : value == character;
  return is_there && sum == value ? unit_bytes : 0;
}

// The same for the transcode buffer; fast for JXChars.
inline uint32_t find_control(const FileHandle *handle, uint32_t bytes, uint8_t character) {
  const uint8_t *end = handle->transcode_buffer.data + bytes;
  if (handle->encodings.record != JX_ENCODING_UTF32LE || bytes < kJXCharBytes) {
    return control_bytes_at(handle->encodings.record, end, bytes, character);
  }
  JXChar last = 0;
  std::memcpy(&last, end - kJXCharBytes, kJXCharBytes);
  return last == character ? kJXCharBytes : 0;
}

JXStatus convert_bytes(FileHandle *handle, const uint8_t *bytes, uint32_t count, uint32_t *length) {
  return transcode_in(handle, bytes, count, handle->transcode_buffer.data,
                      handle->transcode_buffer.size_bytes, length);
}

// Drops what the transcoder makes of a control from the end of converted text. 0, JXWEM_E_FAILED
// when the text does not end so, or the transcoder's status.
JXStatus drop_control(FileHandle *handle, const uint8_t *control, uint32_t control_bytes,
                      uint32_t *length) {
  uint8_t made[64];
  uint32_t made_bytes = 0;
  const JXStatus status =
      transcode_in(handle, control, control_bytes, made, sizeof made, &made_bytes);
  handle->read_held.count = 0;
  if (status != JX_OK) return status;
  const bool is_at_end =
      made_bytes != 0 && made_bytes <= *length &&
      std::memcmp(handle->transcode_buffer.data + *length - made_bytes, made, made_bytes) == 0;
  if (!is_at_end) return JXWEM_E_FAILED;
  *length -= made_bytes;
  return JX_OK;
}

}  // namespace

// Converts the record with the control character after it, which is part of no other character, and
// drops that again: one call converts and shows whether the record ends inside a character.
JXStatus convert_with_control(FileHandle *handle, uint8_t *bytes, Line line, uint32_t *length) {
  const ControlCopy &line_feed = handle->controls.line_feed();
  const uint32_t line_end_bytes = line.consumed_bytes - line.record_bytes;
  const bool is_returned = line_end_bytes > line_feed.bytes;
  uint32_t asked_bytes = is_returned ? handle->controls.carriage_return().bytes : line_end_bytes;
  if (line_end_bytes == 0) asked_bytes = add_line_feed(handle, bytes + line.record_bytes);
  JXStatus status = convert_bytes(handle, bytes, line.record_bytes + asked_bytes, length);
  if (status != JX_OK) return status;
  if (asked_bytes != 0) {
    const uint32_t control_bytes =
        find_control(handle, *length, is_returned ? kReturnCharacter : kLineFeedCharacter);
    *length -= control_bytes;
    if (control_bytes != 0) {
      handle->read_held.count = 0;
      return JX_OK;
    }
  }
  status = end_line(handle);
  if (status != JX_OK || asked_bytes == 0) return status;
  // Either the host makes something else of the control, which is dropped, or the record ends
  // inside what the control did not complete.
  return drop_control(handle, bytes + line.record_bytes, asked_bytes, length);
}

}  // namespace jx
