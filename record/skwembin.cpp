// skwem_read_bin, skwem_write_bin, skwem_read_rbin, skwem_write_rbin: the read and write slots of
// binary files. Bytes pass unchanged, through the buffer or directly.
#include <algorithm>

#include "jx/exports/record.h"
#include "record/record.hpp"

namespace {

using jx::FileHandle;

// Hands back bytes that are in hand.
JXStatus take_bytes(FileHandle *handle, uint32_t bytes, void **data, uint32_t *length) {
  uint8_t *record = handle->buffer.unread();
  handle->buffer.consume(bytes);
  *data = record;
  *length = bytes;
  return JX_OK;
}

// Slow path of the buffered reader: not all bytes are in hand. Out of line, so that the fast path
// needs no stack frame.
[[gnu::noinline]] JXStatus read_bytes(FileHandle *handle, uint32_t wanted, void **data,
                                      uint32_t *length) {
  const JXStatus status = jx::refill(handle, wanted);
  if (status == JX_OK) {
    return take_bytes(handle, std::min(wanted, handle->buffer.unread_bytes), data, length);
  }
  *data = nullptr;
  *length = 0;
  return status;
}

}  // namespace

extern "C" {

JXStatus skwem_read_bin(JXFile *file, void **data, uint32_t *length, uint32_t, int64_t *) {
  const JXStatus status = jx::check_reader(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  const uint32_t wanted = *length;
  if (wanted > handle->record_length) return JXWEM_E_TOOLONG;
  return wanted != 0 && wanted <= handle->buffer.unread_bytes
             ? take_bytes(handle, wanted, data, length)
             : read_bytes(handle, wanted, data, length);
}

JXStatus skwem_write_bin(JXFile *file, const void *data, uint32_t length, uint32_t, int64_t *) {
  JXStatus status = jx::check_writer(file);
  if (status != JX_OK) return status;
  return jx::append(jx::handle_of(file), data, length);
}

JXStatus skwem_read_rbin(JXFile *file, void **data, uint32_t *length, uint32_t, int64_t *offset) {
  JXStatus status = jx::check_direct_reader(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  void *destination = handle->buffer.data;
  if (handle->flags.has(JX_OPEN_DIRECT_TRANSFER)) {
    destination = *data;
    if (!destination) return JXWEM_E_FAILED;
  } else if (*length > handle->record_length) {
    return JXWEM_E_TOOLONG;
  }
  uint32_t read_bytes = 0;
  status = handle->methods.host_read(file, destination, *length, &read_bytes, offset);
  *length = jx::has_read(status) ? read_bytes : 0;
  if (jx::has_read(status)) *data = destination;
  return status;
}

JXStatus skwem_write_rbin(JXFile *file, const void *data, uint32_t length, uint32_t,
                          int64_t *offset) {
  JXStatus status = jx::check_direct_writer(file);
  if (status != JX_OK) return status;
  uint32_t written = 0;
  return jx::write_all(jx::handle_of(file), data, length, offset, &written);
}

}  // extern "C"
