// skwem_read_stream, skwem_write_stream, skwem_read_rstream, skwem_write_rstream: the read and
// write slots of stream files. Text without line ends, with byte-order marks and transcoding.
#include <algorithm>
#include <cstring>

#include "jx/exports/record.h"
#include "record/record.hpp"

namespace {

using jx::FileHandle;

// The buffers of a direct read: one for the file's bytes, one for the caller's chunk.
struct Route {
  uint8_t *area;                  // the host read's destination
  uint32_t area_bytes;            // how much to read
  void *destination;              // of the transcoder; area without one
  uint32_t destination_capacity;  // in bytes
};

// Chooses the route. 0, JXWEM_E_TOOLONG, or JXWEM_E_FAILED when there is nowhere to convert to.
JXStatus choose_route(const FileHandle *handle, void *caller_data, uint32_t wanted, Route *route) {
  const bool is_direct_transfer = handle->flags.has(JX_OPEN_DIRECT_TRANSFER);
  if (!is_direct_transfer) {
    if (wanted > handle->record_length) return JXWEM_E_TOOLONG;
    *route = {handle->buffer.data, wanted, handle->buffer.data, wanted};
    if (handle->read_transcoder) {
      route->destination = handle->transcode_buffer.data;
      route->destination_capacity = handle->transcode_buffer.size_bytes;
    }
    return JX_OK;
  }
  *route = {static_cast<uint8_t *>(caller_data), wanted, caller_data, wanted};
  if (handle->read_transcoder) {
    if (!caller_data) return JXWEM_E_FAILED;
    route->area = handle->transcode_buffer.data;
    route->area_bytes = handle->record_length;
  }
  return JX_OK;
}

// Drops a byte-order mark from the front of the bytes read and reads that many more. The status of
// that read becomes the status of the chunk.
JXStatus replace_mark(FileHandle *handle, const Route &route, const int64_t *offset,
                      uint32_t *read_bytes) {
  const uint32_t kept = *read_bytes - handle->mark.size;
  std::memmove(route.area, route.area + handle->mark.size, kept);
  const int64_t next_offset = offset ? *offset + *read_bytes : 0;
  uint32_t more = 0;
  const JXStatus status = handle->methods.host_read(
      &handle->head, route.area + kept, handle->mark.size, &more, offset ? &next_offset : nullptr);
  *read_bytes = kept + (jx::has_read(status) ? more : 0);
  return status;
}

// Writes the byte-order mark where a direct write needs it: at offset 0 always, without an offset
// when it is due. An offset given moves past it.
JXStatus write_due_mark(FileHandle *handle, int64_t *offset) {
  const bool is_due = offset ? *offset == 0 && handle->may_write_mark() : handle->owes_mark();
  if (!is_due) return JX_OK;
  uint32_t written = 0;
  const JXStatus status = jx::write_mark(handle, offset, &written);
  if (status == JX_OK && offset) *offset = written;
  return status;
}

// Reads a chunk by its route. The statuses of skwem_read_rstream.
JXStatus read_chunk(FileHandle *handle, const Route &route, const int64_t *offset, void **data,
                    uint32_t *length) {
  uint32_t read_bytes = 0;
  JXStatus status =
      handle->methods.host_read(&handle->head, route.area, route.area_bytes, &read_bytes, offset);
  if (!jx::has_read(status)) return status;
  if (handle->mark.begins(route.area, read_bytes)) {
    status = replace_mark(handle, route, offset, &read_bytes);
  }
  if (!handle->read_transcoder) {
    *data = route.area;
    *length = read_bytes;
    return status;
  }
  status = jx::transcode_in(handle, route.area, read_bytes, route.destination,
                            route.destination_capacity, length);
  if (status == JX_OK) *data = route.destination;
  return status;
}

// Writes a chunk directly. The statuses of skwem_write_rstream.
JXStatus write_chunk(FileHandle *handle, jx::Outgoing chunk, int64_t *offset) {
  JXStatus status = jx::transcode_out(handle, handle->transcode_buffer.size_bytes, &chunk);
  if (status != JX_OK) return status;
  status = write_due_mark(handle, offset);
  if (status != JX_OK) return status;
  uint32_t written = 0;
  return jx::write_all(handle, chunk.data, chunk.bytes, offset, &written);
}

}  // namespace

extern "C" {

JXStatus skwem_read_stream(JXFile *file, void **data, uint32_t *length, uint32_t, int64_t *) {
  JXStatus status = jx::check_reader(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  const uint32_t wanted = *length;
  if (wanted > handle->record_length) return JXWEM_E_TOOLONG;
  *data = nullptr;
  *length = 0;
  status = jx::refill(handle, wanted);
  if (status != JX_OK) return status;
  jx::skip_mark(handle);
  uint8_t *chunk = handle->buffer.unread();
  const uint32_t chunk_bytes = std::min(wanted, handle->buffer.unread_bytes);
  handle->buffer.consume(chunk_bytes);
  if (!handle->read_transcoder) {
    *data = chunk;
    *length = chunk_bytes;
    return JX_OK;
  }
  status = jx::transcode_in(handle, chunk, chunk_bytes, handle->transcode_buffer.data,
                            handle->transcode_buffer.size_bytes, length);
  if (status == JX_OK) *data = handle->transcode_buffer.data;
  return status;
}

JXStatus skwem_write_stream(JXFile *file, const void *data, uint32_t length, uint32_t, int64_t *) {
  JXStatus status = jx::check_writer(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  jx::Outgoing chunk = {data, length};
  status = jx::transcode_out(handle, handle->transcode_buffer.size_bytes, &chunk);
  if (status == JX_OK) status = jx::append_mark(handle);
  if (status == JX_OK) status = jx::append(handle, chunk.data, chunk.bytes);
  if (status != JX_OK) handle->write_held.leave();
  return status;
}

JXStatus skwem_read_rstream(JXFile *file, void **data, uint32_t *length, uint32_t,
                            int64_t *offset) {
  JXStatus status = jx::check_direct_reader(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  Route route;
  status = choose_route(handle, *data, *length, &route);
  if (status == JXWEM_E_TOOLONG) return status;
  *length = 0;
  if (status != JX_OK) return status;
  // A chunk at an explicit offset neither continues a character nor leaves one to be continued.
  if (offset) handle->read_held.leave();
  status = read_chunk(handle, route, offset, data, length);
  if (offset) handle->read_held.leave();
  return status;
}

JXStatus skwem_write_rstream(JXFile *file, const void *data, uint32_t length, uint32_t,
                             int64_t *offset) {
  const JXStatus status = jx::check_direct_writer(file);
  if (status != JX_OK) return status;
  FileHandle *handle = jx::handle_of(file);
  if (offset) handle->write_held.leave();
  const JXStatus write_status = write_chunk(handle, {data, length}, offset);
  if (offset || write_status != JX_OK) handle->write_held.leave();
  return write_status;
}

}  // extern "C"
