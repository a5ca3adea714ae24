// skwem_open: prepares the record layer of a handle and opens its file.
#include "jx/exports/record.h"
#include "record/record.hpp"

namespace {

using jx::FileHandle;

constexpr uint32_t kLinesEndInLineFeed = 1;  // the group of control strings; 2: in CR and LF

bool is_text_lines(const FileHandle *handle) {
  return handle->record_format == JX_FORMAT_VARIABLE ||
         handle->record_format == JX_FORMAT_VARIABLE_3;
}

// Makes the control strings of the directions that the access mode uses.
JXStatus make_control_strings(FileHandle *handle) {
  if (!is_text_lines(handle)) return JX_OK;
  JXFile *file = &handle->head;
  JXStatus status = JX_OK;
  if (handle->access.can_read()) status = setupCCTable(file, jx::kInbound, handle->control_group);
  if (status == JX_OK && handle->access.can_write()) {
    status = setupCCTable(file, jx::kOutbound, handle->control_group);
  }
  return status;
}

// A direct handle's buffer holds one record with its line end and a byte-order mark; a buffered
// reader's a block after an unfinished record; a buffered writer's one block.
uint64_t buffer_bytes_of(const FileHandle *handle) {
  const uint64_t record_bytes = uint64_t{handle->record_length} + handle->control_extra_bytes;
  if (handle->buffered == 0) return record_bytes + handle->mark.size;
  const uint32_t block_bytes = handle->buffer.block_bytes;
  return handle->access.can_write() ? block_bytes : block_bytes + record_bytes;
}

JXStatus make_record_buffer(FileHandle *handle) {
  if (handle->flags.has(JX_OPEN_DIRECT_TRANSFER)) {
    return is_text_lines(handle) ? JXWEM_E_BADOPTIONS : JX_OK;
  }
  const uint64_t bytes = buffer_bytes_of(handle);
  handle->buffer.data = jx::PoolBlock<uint8_t>::allocate(handle->pool, bytes).release();
  if (!handle->buffer.data) return JX_E_NOMEM;
  handle->buffer.size_bytes = static_cast<uint32_t>(bytes);
  return JX_OK;
}

JXStatus prepare(FileHandle *handle) {
  JXStatus status = make_control_strings(handle);
  if (status != JX_OK) return status;
  status = make_record_buffer(handle);
  if (status != JX_OK) return status;
  if (handle->access.can_write()) handle->buffer.free_bytes = handle->buffer.size_bytes;
  return handle->methods.host_open(&handle->head);
}

}  // namespace

extern "C" JXStatus skwem_open(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  FileHandle *handle = jx::handle_of(file);
  handle->buffer.block_bytes = JX_RECORD_BLOCK_BYTES;
  handle->buffer.unread_bytes = 0;
  handle->buffer.unread_offset = 0;
  handle->line_feeds.forget();
  handle->end_seen = 0;
  handle->control_group = kLinesEndInLineFeed;
  const JXStatus status = prepare(handle);
  if (status != JX_OK) {
    jx::release_record_layer(handle);
    return status;
  }
  handle->tracked_position = 0;
  return JX_OK;
}
