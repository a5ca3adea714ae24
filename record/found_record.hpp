// The records of text lines on their way from the file to the caller.
#pragma once

#include "record/line.hpp"

namespace [[gnu::visibility("hidden")]] jx {

// What a reader found: the bytes of a record, with its line end if that was seen.
struct FoundRecord {
  uint8_t *data;
  Line line;
  bool is_ended;  // by its line end or the end of the file: a cut character cannot go on
};

// Ends the text of a line: the status of a character that is cut off there, else 0.
inline JXStatus end_line(FileHandle *handle) {
  const ControlCopy &line_feed = handle->inbound[kLineFeed];
  return end_text(inward(handle), line_feed.text, line_feed.bytes);
}

// Converts a record into the transcode buffer. 0 or the transcoder's status, with a null pointer
// and length 0 then.
JXStatus convert_record(FileHandle *handle, const FoundRecord &found, void **data,
                        uint32_t *length);

// Sets the record that a read hands back, in the record encoding. The statuses of convert_record.
inline JXStatus hand_back(FileHandle *handle, const FoundRecord &found, void **data,
                          uint32_t *length) {
  if (handle->read_transcoder) return convert_record(handle, found, data, length);
  *data = found.data;
  *length = found.line.record_bytes;
  return JX_OK;
}

}  // namespace jx
