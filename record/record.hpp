// The record layer's shared steps: refilling the buffer, byte-order marks, appending and writing
// bytes, transcoding. Each reader and writer is a short list of them.
#pragma once

#include <cstdint>

#include "kernel/copy.hpp"
#include "kernel/handle.hpp"
#include "record/cut.hpp"

// Hidden, so that a call within the module does not go through the table of addresses.
namespace [[gnu::visibility("hidden")]] jx {

// Directions of setupCCTable.
inline constexpr uint32_t kInbound = 0;   // recognised by readers
inline constexpr uint32_t kOutbound = 1;  // written

// Gives the record buffer and every control string back to the handle's pool.
void release_record_layer(FileHandle *handle);

// First check of every reader: 0, JXWEM_E_NOHANDLE, or JXWEM_E_NOTSUPPORTED for a handle that only
// writes, whose buffer holds no unread bytes.
inline JXStatus check_reader(const JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  return handle_of(file)->access.can_read() ? JX_OK : JXWEM_E_NOTSUPPORTED;
}

// First check of every writer: 0, JXWEM_E_NOHANDLE, or JXWEM_E_READONLY for an input handle.
inline JXStatus check_writer(const JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  return handle_of(file)->access.can_write() ? JX_OK : JXWEM_E_READONLY;
}

// Direct transfers of unconverted bytes need only the descriptor, which a lock mode may have opened
// both ways: the host call decides. Converted text needs the transcoder of its direction and is
// checked as above.
inline bool converts(const JXFile *file) { return handle_of(file)->encodings.differ(); }
inline JXStatus check_direct_reader(const JXFile *file) {
  return file && !converts(file) ? JX_OK : check_reader(file);
}
inline JXStatus check_direct_writer(const JXFile *file) {
  return file && !converts(file) ? JX_OK : check_writer(file);
}

// True when a host read delivered bytes.
inline bool has_read(JXStatus status) { return status == JX_OK || status == JXWEM_E_PARTIAL; }

// Host reads one block after the unread bytes. At end of file sets end_seen. The unread bytes may
// move. 0, or the failure of the host read.
JXStatus read_block(FileHandle *handle);

// Slow path of refill(): too few bytes are unread.
JXStatus read_blocks(FileHandle *handle, uint32_t target_bytes);

// Host reads blocks until `target_bytes` are unread or the file ends. 0, JXWEM_E_EOF when nothing
// is left, or the failure of the host read.
inline JXStatus refill(FileHandle *handle, uint32_t target_bytes) {
  const uint32_t count = handle->buffer.unread_bytes;
  return count >= target_bytes && count != 0 ? JX_OK : read_blocks(handle, target_bytes);
}

// Skips a byte-order mark at the start of the unread bytes.
void skip_mark(FileHandle *handle);

// The answer to a transcoder that says it has produced more than it had room for: its status, or
// JXWEM_E_FAILED, which the journal is told of, when that is 0.
[[gnu::cold]] JXStatus refuse_claim(const FileHandle *handle, JXStatus status);

// Transcodes from the file's to the record encoding and stores what was produced. 0, the
// transcoder's status, or JXWEM_E_FAILED for one that claims too much.
[[gnu::always_inline]] inline JXStatus transcode_in(FileHandle *handle, const void *source,
                                                    uint32_t source_bytes, void *destination,
                                                    uint32_t capacity_bytes,
                                                    uint32_t *produced_bytes_out) {
  JXTranscoder *transcoder = handle->read_transcoder;
  before_text(handle, &handle->read_held);
  *produced_bytes_out = 0;
  const JXStatus status = transcoder->transcode(transcoder, source, source_bytes, destination,
                                                capacity_bytes, produced_bytes_out, 0);
  if (status == JX_OK && *produced_bytes_out <= capacity_bytes) [[likely]] {
    after_text(&handle->read_held, source, source_bytes);
    return JX_OK;
  }
  handle->read_held.leave();
  *produced_bytes_out = 0;
  return status != JX_OK ? status : refuse_claim(handle, status);
}

// Bytes on their way to the file: the caller's own, or transcoded ones in the transcode buffer.
struct Outgoing {
  const void *data;
  uint32_t bytes;
};

// True for a record in the transcode buffer, such as one that was just read: its conversion would
// overwrite its source.
inline bool is_in_transcode_buffer(const FileHandle *handle, const Outgoing &record) {
  const auto *data = static_cast<const uint8_t *>(record.data);
  const uint8_t *buffer = handle->transcode_buffer.data;
  return record.bytes != 0 && data + record.bytes > buffer &&
         data < buffer + handle->transcode_buffer.size_bytes;
}

// Transcodes `text`, the record or a copy of it, into the transcode buffer, where the record is
// afterwards. 0, the transcoder's status, or JXWEM_E_FAILED for one that claims too much.
[[gnu::always_inline]] inline JXStatus encode_text(FileHandle *handle, uint32_t capacity_bytes,
                                                   const void *text, Outgoing *record) {
  JXTranscoder *transcoder = handle->write_transcoder;
  uint32_t produced_bytes = 0;
  const JXStatus status =
      transcoder->transcode(transcoder, text, record->bytes, handle->transcode_buffer.data,
                            capacity_bytes, &produced_bytes, 0);
  if (status != JX_OK || produced_bytes > capacity_bytes) [[unlikely]] {
    handle->write_held.leave();
    return refuse_claim(handle, status);
  }
  after_text(&handle->write_held, text, record->bytes);
  *record = {handle->transcode_buffer.data, produced_bytes};
  return JX_OK;
}

// Encodes a copy of the record, which lies in the transcode buffer. Statuses as encode_text(), and
// JX_E_NOMEM.
[[gnu::cold]] JXStatus encode_copy(FileHandle *handle, uint32_t capacity_bytes, Outgoing *record);

// Encodes a record; the handle has a write transcoder. Statuses as encode_copy().
[[gnu::always_inline]] inline JXStatus encode_inline(FileHandle *handle, uint32_t capacity_bytes,
                                                     Outgoing *record) {
  before_text(handle, &handle->write_held);
  if (is_in_transcode_buffer(handle, *record)) [[unlikely]] {
    return encode_copy(handle, capacity_bytes, record);
  }
  return encode_text(handle, capacity_bytes, record->data, record);
}

// The same out of line.
JXStatus encode(FileHandle *handle, uint32_t capacity_bytes, Outgoing *record);

// Transcodes a record for the file when the handle has a write transcoder; at most capacity_bytes
// of the transcode buffer are used. 0, JX_E_NOMEM or the transcoder's status.
inline JXStatus transcode_out(FileHandle *handle, uint32_t capacity_bytes, Outgoing *record) {
  return handle->write_transcoder ? encode(handle, capacity_bytes, record) : JX_OK;
}

// Ends the text of a record: a character that is cut off there is a fault. Statuses as end_text().
inline JXStatus end_record_out(FileHandle *handle) {
  // A line end in an unknown encoding: 0x0D is a carriage return in all of them.
  static constexpr uint8_t kReturns[] = {0x0D, 0x0D};
  return end_text(handle, &handle->write_held, kReturns, sizeof kReturns);
}

// transcode_out() for a record, whose end ends the text.
inline JXStatus transcode_record_out(FileHandle *handle, uint32_t capacity_bytes,
                                     Outgoing *record) {
  const JXStatus status = transcode_out(handle, capacity_bytes, record);
  return status == JX_OK ? end_record_out(handle) : status;
}

// Slow path of write_all(): goes on after a partial write and adds to *written_bytes_out.
JXStatus write_rest(FileHandle *handle, const void *source, uint32_t bytes, const int64_t *offset,
                    uint32_t *written_bytes_out);

// Host writes until every byte is written; a partial write is continued. *written_bytes_out
// receives the number of bytes written, on failure too. A null offset is the descriptor's. 0 or the
// failure.
inline JXStatus write_all(FileHandle *handle, const void *source, uint32_t bytes,
                          const int64_t *offset, uint32_t *written_bytes_out) {
  *written_bytes_out = 0;
  const JXStatus status =
      handle->methods.host_write(&handle->head, source, bytes, written_bytes_out, offset);
  return status != JX_OK || *written_bytes_out == bytes
             ? status
             : write_rest(handle, source, bytes, offset, written_bytes_out);
}

// Host writes the first bytes of the record buffer and empties it, even when the write fails.
JXStatus write_pending(FileHandle *handle, uint32_t bytes);

// Slow path of append(): the bytes fill a block.
JXStatus append_in_blocks(FileHandle *handle, const void *source, uint32_t bytes);

// Appends bytes to the record buffer and writes each block that becomes full. 0 or a write failure.
inline JXStatus append(FileHandle *handle, const void *source, uint32_t bytes) {
  RecordBuffer &buffer = handle->buffer;
  if (bytes >= buffer.free_bytes) return append_in_blocks(handle, source, bytes);
  copy_bytes(buffer.end(), source, bytes);
  buffer.append(bytes);
  return JX_OK;
}

// Appends the byte-order mark when it is due. 0 or a write failure.
JXStatus append_mark(FileHandle *handle);

// Host writes the byte-order mark, which is no longer due then. *written_bytes_out as write_all's;
// an encoding without a mark writes nothing. 0 or a write failure.
JXStatus write_mark(FileHandle *handle, const int64_t *offset, uint32_t *written_bytes_out);

}  // namespace jx
