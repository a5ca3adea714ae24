// skwem_read_var, skwem_write_var, skwem_read_rvar, skwem_write_rvar: the read and write slots of
// text lines, through the buffer or directly.
//
// Measured, lines of 20 and 80 bytes written without conversion, in times of filebuf.sputn or
// fwrite_unlocked: i386 0.63 and 0.72, x86-64 0.82 and 0.91; to /dev/null 0.47 and 0.59, 0.73 and
// 0.80. ASCII of 20 JXChars to UTF-8, in times of the best converter: 1.08 and 0.85. Reading:
// line.hpp.
#include <algorithm>
#include <cstring>

#include "jx/exports/record.h"
#include "record/found_record.hpp"
#include "record/line.hpp"

namespace {

using jx::ControlCopy;
using jx::FileHandle;
using jx::Line;

// Skips a byte-order mark before a record; reads on only when the bytes in hand may become one.
JXStatus skip_mark_before_line(FileHandle *handle) {
  if (handle->mark.size == 0 || *handle->buffer.unread() != handle->mark.bytes[0]) return JX_OK;
  while (handle->buffer.unread_bytes < handle->mark.size && handle->end_seen == 0) {
    const uint8_t *data = handle->buffer.unread();
    if (std::memcmp(data, handle->mark.bytes, handle->buffer.unread_bytes) != 0) return JX_OK;
    const JXStatus status = jx::read_block(handle);
    if (status != JX_OK) return status;
  }
  jx::skip_mark(handle);
  return JX_OK;
}

// Moves the descriptor back to the first byte after the record.
JXStatus step_back(FileHandle *handle, const jx::DirectRead &read) {
  const uint32_t consumed = read.mark_bytes + read.line.consumed_bytes;
  handle->tracked_position += consumed;
  if (consumed == read.read_bytes) return JX_OK;
  int64_t distance = int64_t{consumed} - read.read_bytes;
  // A part of a line may end in a character that the next part continues.
  const jx::HeldStart held = handle->read_held;
  const JXStatus status = handle->methods.host_point(&handle->head, &distance, JX_POINT_RELATIVE);
  handle->read_held = held;
  return status;
}

// Finds the record in the bytes of a direct read. Bytes that end in a cut character though the
// buffer has room mean a pause or the end of the file: another read tells. 0 or JXWEM_E_PARTIAL.
JXStatus find_whole_line(FileHandle *handle, jx::DirectRead *read, bool *is_ended_out) {
  for (;;) {
    const JXStatus status = jx::find_direct_line(handle, read);
    *is_ended_out = status == JX_OK;
    const uint32_t room = handle->record_length + handle->control_extra_bytes - read->read_bytes;
    const uint8_t *record = handle->buffer.data + read->mark_bytes;
    if (*is_ended_out || room == 0 || !handle->read_transcoder ||
        !jx::would_cut(handle->read_held, record, read->line.record_bytes)) {
      return status;
    }
    uint32_t more = 0;
    const JXStatus read_status = handle->methods.host_read(
        &handle->head, handle->buffer.data + read->read_bytes, room, &more, nullptr);
    *is_ended_out = read_status == JXWEM_E_EOF;
    if (!jx::has_read(read_status)) return status;
    read->read_bytes += more;
  }
}

// Hands back the record of a line that was taken off the unread bytes; an empty one is a null
// pointer.
JXStatus hand_back_line(FileHandle *handle, uint8_t *record, Line line, void **data,
                        uint32_t *length) {
  const bool is_ended = line.consumed_bytes != line.record_bytes ||
                        (handle->end_seen != 0 && handle->buffer.unread_bytes == 0);
  if (line.record_bytes != 0) return jx::hand_back(handle, record, line, is_ended, data, length);
  *data = nullptr;
  *length = 0;
  return is_ended ? jx::end_line(handle) : JX_OK;
}

// Slow path of the buffered reader: the line is empty, line feeds have to be noted first, or it
// needs a host read, a longer search, or a byte-order mark skipped. Out of line, so that the fast
// path needs no stack frame.
[[gnu::noinline]] JXStatus read_line(JXFile *file, void **data, uint32_t *length) {
  JXStatus status = jx::check_reader(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  Line line = jx::noted_line(handle);
  if (line.consumed_bytes == 0 && jx::note_line_feeds(handle)) line = jx::noted_line(handle);
  if (line.consumed_bytes != 0) {
    uint8_t *record = handle->buffer.unread();
    jx::consume_noted(handle, line);
    return hand_back_line(handle, record, line, data, length);
  }
  *data = nullptr;
  *length = 0;
  status = jx::refill(handle, 1);
  if (status != JX_OK) return status;
  status = skip_mark_before_line(handle);
  if (status != JX_OK) return status;
  status = jx::find_line(handle, &line);
  if (status != JX_OK && status != JXWEM_E_PARTIAL) return status;
  uint8_t *record = handle->buffer.unread();
  jx::consume_line(handle, line);
  const JXStatus take_status = hand_back_line(handle, record, line, data, length);
  return take_status != JX_OK ? take_status : status;
}

// The buffered reader with a read transcoder.
[[gnu::noinline]] JXStatus read_converted(JXFile *file, void **data, uint32_t *length) {
  FileHandle *handle = jx::handle_of(file);
  const Line line = jx::noted_line(handle);
  if (line.record_bytes == 0) return read_line(file, data, length);
  uint8_t *record = handle->buffer.unread();
  jx::consume_noted(handle, line);
  return jx::convert_record(handle, record, line, true, data, length);
}

// Tells whether a record has more characters than the record length, where its encoding lets them
// be counted: units that continue a character do not count. In other encodings the room of the
// transcode buffer is the only bound.
bool has_too_many_chars(FileHandle *handle, const jx::Outgoing &record) {
  using jx::TextForm;
  const auto *bytes = static_cast<const uint8_t *>(record.data);
  const TextForm form = handle->write_held.form;
  uint32_t unit_bytes = 1;
  uint32_t lead_byte = 0;       // the byte of a unit that has the bits
  uint8_t mask = 0;             // the bits that tell
  uint8_t continuation = 0xFF;  // their value in a unit that continues a character
  if (form == TextForm::utf32) {
    unit_bytes = jx::kJXCharBytes;
  } else if (form == TextForm::utf16le || form == TextForm::utf16be) {
    unit_bytes = 2;
    lead_byte = form == TextForm::utf16le ? 1 : 0;
    mask = 0xFC;
    continuation = 0xDC;
  } else if (form == TextForm::utf8) {
    mask = 0xC0;
    continuation = 0x80;
  }
  const uint32_t units = record.bytes / unit_bytes;
  if (units <= handle->record_length) return false;
  if (form >= TextForm::other) return jx::is_single_byte(handle, &handle->write_held);
  uint32_t chars = 0;
  for (uint32_t i = 0; i < units; ++i) {
    chars += (bytes[size_t{i} * unit_bytes + lead_byte] & mask) != continuation;
  }
  return chars > handle->record_length;
}

// Puts a record where its line end can follow it: transcoded into the transcode buffer, or copied
// into the record buffer. 0, JXWEM_E_TOOLONG, or a failure of the transcoding.
JXStatus lay_out_record(FileHandle *handle, jx::Outgoing *record, uint8_t **buffer_out) {
  if (handle->write_transcoder) {
    const uint32_t line_end_bytes = handle->controls.line_end().bytes;
    const uint32_t room_bytes = handle->transcode_buffer.size_bytes;
    if (has_too_many_chars(handle, *record) || room_bytes < line_end_bytes) return JXWEM_E_TOOLONG;
    *buffer_out = handle->transcode_buffer.data;
    return jx::transcode_record_out(handle, room_bytes - line_end_bytes, record);
  }
  if (record->bytes > handle->record_length) return JXWEM_E_TOOLONG;
  *buffer_out = handle->buffer.data;
  if (record->bytes != 0) std::memmove(*buffer_out, record->data, record->bytes);
  return JX_OK;
}

// True when a record of so many bytes and its line end do not fill the block.
inline bool has_room_for_line(const FileHandle *handle, uint32_t bytes) {
  const uint32_t free_bytes = handle->buffer.free_bytes;
  return bytes < free_bytes && handle->controls.line_end().bytes < free_bytes - bytes;
}

// Appends the line end to a record that lies at the end of the block; there is room for both.
inline void append_line_end(FileHandle *handle, uint32_t record_bytes) {
  const ControlCopy line_end = handle->controls.line_end();
  uint8_t *end = handle->buffer.end() + record_bytes;
  handle->buffer.append(record_bytes + line_end.bytes);
  for (uint32_t i = 0; i < line_end.bytes; ++i) end[i] = line_end.text[i];
}

// Appends a record and its line end, and writes each block that becomes full.
[[gnu::noinline]] JXStatus write_line(FileHandle *handle, const void *data, uint32_t bytes) {
  JXStatus status = jx::append_mark(handle);
  if (status != JX_OK) return status;
  if (has_room_for_line(handle, bytes)) {
    jx::copy_bytes(handle->buffer.end(), data, bytes);
    append_line_end(handle, bytes);
    return JX_OK;
  }
  status = jx::append(handle, data, bytes);
  if (status != JX_OK) return status;
  const ControlCopy &line_end = handle->controls.line_end();
  return jx::append(handle, line_end.text, line_end.bytes);
}

// The same inline where both fit in the block; no mark is due.
[[gnu::always_inline]] inline JXStatus place_line(FileHandle *handle, const void *data,
                                                  uint32_t bytes) {
  if (bytes > jx::kInlineCopyBytes || !has_room_for_line(handle, bytes)) {
    return write_line(handle, data, bytes);
  }
  jx::copy_inline(handle->buffer.end(), data, bytes);
  append_line_end(handle, bytes);
  return JX_OK;
}

// Appends a record in the file's encoding and its line end. A mark that is due comes first: if it
// cannot be written, the record is not converted.
[[gnu::noinline]] JXStatus write_converted(FileHandle *handle, const void *data, uint32_t bytes) {
  if (handle->owes_mark()) {
    const JXStatus status = jx::append_mark(handle);
    if (status != JX_OK) return status;
  }
  jx::Outgoing record = {data, bytes};
  JXStatus status = jx::encode_inline(handle, handle->transcode_buffer.size_bytes, &record);
  if (status == JX_OK) status = jx::end_record_out(handle);
  return status == JX_OK ? place_line(handle, record.data, record.bytes) : status;
}

}  // namespace

extern "C" {

JXStatus skwem_read_var(JXFile *file, void **data, uint32_t *length, uint32_t, int64_t *) {
  if (!file) return JXWEM_E_NOHANDLE;
  FileHandle *handle = jx::handle_of(file);
  if (handle->read_transcoder) return read_converted(file, data, length);
  // Only readers note lines.
  const Line line = jx::noted_line(handle);
  if (line.record_bytes == 0) return read_line(file, data, length);
  *data = handle->buffer.unread();
  *length = line.record_bytes;
  jx::consume_noted(handle, line);
  return JX_OK;
}

JXStatus skwem_write_var(JXFile *file, const void *data, uint32_t length, uint32_t, int64_t *) {
  const JXStatus status = jx::check_writer(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  if (handle->write_transcoder) return write_converted(handle, data, length);
  if (handle->owes_mark()) return write_line(handle, data, length);
  return place_line(handle, data, length);
}

JXStatus skwem_read_rvar(JXFile *file, void **data, uint32_t *length, uint32_t, int64_t *) {
  JXStatus status = jx::check_reader(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  *data = nullptr;
  *length = 0;
  const uint32_t wanted = handle->record_length + handle->control_extra_bytes;
  jx::DirectRead read = {};
  status = handle->methods.host_read(file, handle->buffer.data, wanted, &read.read_bytes, nullptr);
  if (status == JXWEM_E_EOF) {
    // A part of full length may have cut a character, whose rest never comes.
    const JXStatus end_status = jx::end_line(handle);
    return end_status != JX_OK ? end_status : status;
  }
  if (!jx::has_read(status)) return status;
  bool is_ended = false;
  status = find_whole_line(handle, &read, &is_ended);
  const JXStatus transcode_status = jx::hand_back(handle, handle->buffer.data + read.mark_bytes,
                                                  read.line, is_ended, data, length);
  // The descriptor moves to the next record even if this one could not be converted.
  const JXStatus point_status = step_back(handle, read);
  if (transcode_status != JX_OK) return transcode_status;
  return point_status != JX_OK ? point_status : status;
}

JXStatus skwem_write_rvar(JXFile *file, const void *data, uint32_t length, uint32_t, int64_t *) {
  JXStatus status = jx::check_writer(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  const ControlCopy &line_end = handle->controls.line_end();
  jx::Outgoing record = {data, length};
  uint8_t *buffer = nullptr;
  status = lay_out_record(handle, &record, &buffer);
  if (status != JX_OK) return status;
  std::memcpy(buffer + record.bytes, line_end.text, line_end.bytes);
  uint32_t written = 0;
  if (handle->owes_mark()) {
    status = jx::write_mark(handle, nullptr, &written);
    handle->tracked_position += written;
    if (status != JX_OK) return status;
  }
  status = jx::write_all(handle, buffer, record.bytes + line_end.bytes, nullptr, &written);
  handle->tracked_position += written;
  return status;
}

}  // extern "C"
