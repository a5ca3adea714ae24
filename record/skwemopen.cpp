// Preparing the record layer of a handle and opening its file.
#include "jx/exports/record.h"
#include "record/record.hpp"

namespace {

using jx::FileHandle;

bool is_text_lines(const FileHandle *handle) {
  return handle->record_format == JX_FORMAT_VARIABLE ||
         handle->record_format == JX_FORMAT_VARIABLE_3;
}

// The control strings for the directions that the access mode uses.
JXStatus make_control_strings(FileHandle *handle) {
  if (!is_text_lines(handle)) return JX_OK;
  const bool reads =
      handle->access_mode == JX_ACCESS_INPUT || handle->access_mode == JX_ACCESS_UPDATE;
  if (reads) {
    const JXStatus status = setupCCTable(&handle->head, 0, handle->control_group);
    if (status != JX_OK) return status;
  }
  const bool writes = handle->access_mode != JX_ACCESS_INPUT;
  return writes ? setupCCTable(&handle->head, 1, handle->control_group) : JX_OK;
}

// A direct handle's buffer holds one record with its line end and a byte-order mark; a buffered
// reader's a block behind an unfinished record; a buffered writer's one block.
uint64_t buffer_bytes_of(const FileHandle *handle) {
  const uint64_t record_bytes = uint64_t{handle->record_length} + handle->control_extra_bytes;
  if (handle->buffered == 0) return record_bytes + handle->bom_bytes;
  return handle->access_mode == JX_ACCESS_INPUT ? handle->block_bytes + record_bytes
                                                : handle->block_bytes;
}

JXStatus make_record_buffer(FileHandle *handle) {
  if ((handle->open_flags & JX_OPEN_DIRECT_TRANSFER) != 0) {
    return is_text_lines(handle) ? JXWEM_E_BADOPTIONS : JX_OK;
  }
  const uint64_t bytes = buffer_bytes_of(handle);
  handle->record_buffer = jx::PoolBlock<uint8_t>::allocate(handle->pool, bytes).release();
  if (!handle->record_buffer) return JX_E_NOMEM;
  handle->record_buffer_bytes = static_cast<uint32_t>(bytes);
  return JX_OK;
}

JXStatus prepare(FileHandle *handle) {
  JXStatus status = make_control_strings(handle);
  if (status != JX_OK) return status;
  status = make_record_buffer(handle);
  if (status != JX_OK) return status;
  if (handle->access_mode != JX_ACCESS_INPUT) handle->buffer_count = handle->record_buffer_bytes;
  return handle->methods.host_open(&handle->head);
}

}  // namespace

extern "C" JXStatus skwem_open(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  FileHandle *handle = jx::handle_of(file);
  handle->block_bytes = JX_RECORD_BLOCK_BYTES;
  handle->buffer_count = 0;
  handle->buffer_offset = 0;
  handle->end_seen = 0;
  handle->control_group = 1;
  const JXStatus status = prepare(handle);
  if (status != JX_OK) {
    jx::release_record_layer(handle);
    return status;
  }
  handle->tracked_position = 0;
  return JX_OK;
}
