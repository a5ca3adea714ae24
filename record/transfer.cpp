// Steps that readers and writers share.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "jx/runtime.h"
#include "record/record.hpp"

namespace jx {

namespace {

constexpr uintptr_t kErrorLevel = 4;  // journal level of an error

// ASCII as JXChars, with its zero.
template <size_t N>
consteval std::array<JXChar, N> wide(const char (&ascii)[N]) {
  std::array<JXChar, N> text = {};
  std::copy_n(ascii, N, text.begin());
  return text;
}
constexpr auto kClaim = wide("a transcoder claims more bytes than it had room for");

// Before a block is read, up to this many unread bytes move to the front, so that short records
// stay in the same few pages of a large buffer. More stay put while there is room after them: a
// long record does not move once a block.
constexpr uint32_t kCheapMoveBytes = 1024;

// Makes room after the unread bytes and returns how much of a block can be read there. What was
// noted of bytes that move is forgotten.
uint32_t make_room(RecordBuffer *buffer, LineFeeds *line_feeds) {
  const uint32_t count = buffer->unread_bytes;
  uint32_t room = buffer->size_bytes - buffer->unread_offset - count;
  if (count <= kCheapMoveBytes || room < buffer->block_bytes) {
    if (buffer->unread_offset != 0 && count != 0) {
      std::memmove(buffer->data, buffer->unread(), count);
    }
    buffer->unread_offset = 0;
    line_feeds->forget();
    room = buffer->size_bytes - count;
  }
  return std::min(buffer->block_bytes, room);
}

}  // namespace

JXStatus refuse_claim(const FileHandle *handle, JXStatus status) {
  if (status != JX_OK) return status;
  if (handle->journal) jxlStatusToJnl(handle->journal, kErrorLevel, JXWEM_E_FAILED, kClaim.data());
  return JXWEM_E_FAILED;
}

JXStatus read_block(FileHandle *handle) {
  RecordBuffer &buffer = handle->buffer;
  const uint32_t room = make_room(&buffer, &handle->line_feeds);
  uint32_t read_bytes = 0;
  const JXStatus status = handle->methods.host_read(
      &handle->head, buffer.unread() + buffer.unread_bytes, room, &read_bytes, nullptr);
  if (status == JXWEM_E_EOF) {
    handle->end_seen = 1;
  } else if (!has_read(status)) {
    return status;
  }
  buffer.unread_bytes += read_bytes;
  return JX_OK;
}

JXStatus read_blocks(FileHandle *handle, uint32_t target_bytes) {
  while (handle->buffer.unread_bytes < target_bytes && handle->end_seen == 0) {
    const JXStatus status = read_block(handle);
    if (status != JX_OK) return status;
  }
  return handle->buffer.unread_bytes == 0 && handle->end_seen != 0 ? JXWEM_E_EOF : JX_OK;
}

void skip_mark(FileHandle *handle) {
  if (handle->mark.begins(handle->buffer.unread(), handle->buffer.unread_bytes)) {
    handle->buffer.consume(handle->mark.size);
  }
}

JXStatus encode_copy(FileHandle *handle, uint32_t capacity_bytes, Outgoing *record) {
  const auto copy = PoolBlock<uint8_t>::allocate(handle->pool, record->bytes);
  if (!copy) return JX_E_NOMEM;
  std::memcpy(copy.get(), record->data, record->bytes);
  return encode_text(handle, capacity_bytes, copy.get(), record);
}

JXStatus encode(FileHandle *handle, uint32_t capacity_bytes, Outgoing *record) {
  return encode_inline(handle, capacity_bytes, record);
}

JXStatus write_rest(FileHandle *handle, const void *source, uint32_t bytes, const int64_t *offset,
                    uint32_t *written_bytes_out) {
  const auto *data = static_cast<const uint8_t *>(source);
  uint32_t &done = *written_bytes_out;
  for (uint32_t written = done; done < bytes; done += written) {
    if (written == 0) return JXWEM_E_SYSTEM;  // no progress, no reason given
    written = 0;
    const int64_t next_offset = offset ? *offset + done : 0;
    JXStatus status = JX_OK;
    // Repeated after a signal: the caller could not tell how much of the record was written.
    do {
      status = handle->methods.host_write(&handle->head, data + done, bytes - done, &written,
                                          offset ? &next_offset : nullptr);
    } while (status == JXWEM_E_SYSTEM && errno == EINTR);
    if (status != JX_OK) return status;
  }
  return JX_OK;
}

JXStatus write_pending(FileHandle *handle, uint32_t bytes) {
  uint32_t written = 0;
  const JXStatus status = write_all(handle, handle->buffer.data, bytes, nullptr, &written);
  handle->buffer.clear_block();
  return status;
}

JXStatus append_mark(FileHandle *handle) {
  if (!handle->owes_mark()) return JX_OK;
  const JXStatus status = append(handle, handle->mark.bytes, handle->mark.size);
  if (status != JX_OK) return status;
  handle->mark.is_pending = 0;
  return JX_OK;
}

JXStatus write_mark(FileHandle *handle, const int64_t *offset, uint32_t *written_bytes_out) {
  *written_bytes_out = 0;
  if (handle->mark.size != 0) {
    const JXStatus status =
        write_all(handle, handle->mark.bytes, handle->mark.size, offset, written_bytes_out);
    if (status != JX_OK) return status;
  }
  handle->mark.is_pending = 0;
  return JX_OK;
}

}  // namespace jx
