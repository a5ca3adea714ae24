// Text-line records on their way from the file to the caller.
#pragma once

#include "record/line.hpp"

namespace [[gnu::visibility("hidden")]] jx {

// Ends the text of a line: the status of a character that is cut off there, else 0.
inline JXStatus end_line(FileHandle *handle) {
  const ControlCopy &line_feed = handle->controls.line_feed();
  return end_text(handle, &handle->read_held, line_feed.text, line_feed.bytes);
}

// Slow path of convert_record(): a record that ended, in an encoding whose form does not tell
// whether it ends inside a character. 0 or the transcoder's status.
JXStatus convert_with_control(FileHandle *handle, uint8_t *bytes, Line line, uint32_t *length);

// Converts the record of a line that begins at `bytes` into the transcode buffer. is_ended: a line
// end or the end of the file follows, so a cut character is a fault. 0 or the transcoder's status;
// the record is a null pointer and length 0 then.
[[gnu::always_inline]] inline JXStatus convert_record(FileHandle *handle, uint8_t *bytes, Line line,
                                                      bool is_ended, void **data,
                                                      uint32_t *length) {
  JXStatus status = JX_OK;
  if (is_ended && handle->read_held.form >= TextForm::other) [[unlikely]] {
    status = convert_with_control(handle, bytes, line, length);
  } else {
    status = transcode_in(handle, bytes, line.record_bytes, handle->transcode_buffer.data,
                          handle->transcode_buffer.size_bytes, length);
    if (handle->read_held.count != 0 && status == JX_OK && is_ended) status = end_line(handle);
  }
  if (status == JX_OK) {
    *data = handle->transcode_buffer.data;
    return JX_OK;
  }
  *data = nullptr;
  *length = 0;
  return status;
}

// Sets the result of a read: the record in the record encoding. Else as convert_record().
[[gnu::always_inline]] inline JXStatus hand_back(FileHandle *handle, uint8_t *bytes, Line line,
                                                 bool is_ended, void **data, uint32_t *length) {
  if (handle->read_transcoder) {
    return convert_record(handle, bytes, line, is_ended, data, length);
  }
  *data = bytes;
  *length = line.record_bytes;
  return JX_OK;
}

}  // namespace jx
