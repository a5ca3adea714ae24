// Converting the records of text lines, the last character of which may be cut off.
#include "record/found_record.hpp"

#include <algorithm>
#include <cstring>

namespace jx {

namespace {

// A control character behind a record: the bytes of the file, and the character.
struct Control {
  ControlCopy copy;
  uint8_t character;
};

// Where the file ends without a line end, a line feed is put there if there is room; without room
// the copy is empty.
Control control_behind(const FileHandle *handle, const FoundRecord &found) {
  const ControlCopy &line_feed = handle->inbound[kLineFeed];
  const uint32_t behind_bytes = found.line.consumed_bytes - found.line.record_bytes;
  if (behind_bytes > line_feed.bytes) return {handle->inbound[kCarriageReturn], 0x0D};
  if (behind_bytes != 0) return {line_feed, 0x0A};
  uint8_t *end = found.data + found.line.record_bytes;
  const uint8_t *buffer_end = handle->record_buffer + handle->record_buffer_bytes;
  if (static_cast<size_t>(buffer_end - end) < line_feed.bytes) return {};
  std::memcpy(end, line_feed.text, line_feed.bytes);
  return {line_feed, 0x0A};
}

// Takes the control character off the end of a converted record. False when it is not there.
bool drop_control(const FileHandle *handle, uint8_t character, uint32_t *length) {
  const uint32_t encoding = handle->record_encoding;
  const TextForm form = form_of(encoding);
  const bool is_utf16 = form == TextForm::utf16be || form == TextForm::utf16le;
  const uint32_t unit_bytes = form == TextForm::utf32 ? kJXCharBytes : is_utf16 ? 2 : 1;
  const bool is_big_endian = encoding == JX_ENCODING_UTF16BE || encoding == JX_ENCODING_UTF32BE;
  if (*length < unit_bytes) return false;
  const uint8_t *unit = handle->transcode_buffer + *length - unit_bytes;
  const uint8_t *end = unit + unit_bytes;
  const uint8_t value = is_big_endian ? end[-1] : unit[0];
  const bool is_one_byte = std::count(unit, end, 0) + 1 == end - unit;
  // In an encoding that is not known the bytes below 0x40 are controls, and end no longer
  // character.
  if (!is_one_byte || (form == TextForm::other ? value >= 0x40 : value != character)) return false;
  *length -= unit_bytes;
  return true;
}

JXStatus convert_bytes(FileHandle *handle, const uint8_t *data, uint32_t bytes, uint32_t *length) {
  return transcode_in(handle, data, bytes, handle->transcode_buffer, handle->transcode_buffer_bytes,
                      length);
}

// Converts a record of an encoding that does not itself tell whether its text ends inside a
// character. The control character behind the record goes with it, which no character takes in, and
// what comes of that is dropped: one call for the record and the question.
JXStatus convert_with_control(FileHandle *handle, const FoundRecord &found, uint32_t *length) {
  const uint32_t record_bytes = found.line.record_bytes;
  const Control control = control_behind(handle, found);
  JXStatus status = convert_bytes(handle, found.data, record_bytes + control.copy.bytes, length);
  if (status != JX_OK) return status;
  const bool is_asked = control.copy.bytes != 0;
  if (is_asked && drop_control(handle, control.character, length)) {
    handle->read_held.count = 0;
    return JX_OK;
  }
  status = end_line(handle);
  if (status != JX_OK || !is_asked) return status;
  // The host made something else of it. Nothing is held, so the record can be converted again.
  status = convert_bytes(handle, found.data, record_bytes, length);
  handle->read_held.count = 0;
  return status;
}

}  // namespace

JXStatus convert_record(FileHandle *handle, const FoundRecord &found, void **data,
                        uint32_t *length) {
  JXStatus status = JX_OK;
  if (found.is_ended && handle->read_held.form >= TextForm::other) {
    status = convert_with_control(handle, found, length);
  } else {
    status = convert_bytes(handle, found.data, found.line.record_bytes, length);
    if (status == JX_OK && found.is_ended) status = end_line(handle);
  }
  *data = status == JX_OK ? handle->transcode_buffer : nullptr;
  if (status != JX_OK) *length = 0;
  return status;
}

}  // namespace jx
