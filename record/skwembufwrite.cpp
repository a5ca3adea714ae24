// sk_buf_write: gathers bytes and writes each block that becomes full.
#include <algorithm>
#include <cstring>

#include "jx/exports/record.h"
#include "record/record.hpp"

namespace jx {

JXStatus append_in_blocks(FileHandle *handle, const void *source, uint32_t bytes) {
  const auto *data = static_cast<const uint8_t *>(source);
  RecordBuffer &buffer = handle->buffer;
  while (bytes != 0) {
    const uint32_t piece = std::min(bytes, buffer.free_bytes);
    std::memmove(buffer.end(), data, piece);
    buffer.append(piece);
    data += piece;
    bytes -= piece;
    if (buffer.free_bytes == 0) {
      const JXStatus status = write_pending(handle, buffer.block_bytes);
      if (status != JX_OK) return status;
    }
  }
  return JX_OK;
}

}  // namespace jx

extern "C" JXStatus sk_buf_write(JXFile *file, const void *source, uint32_t bytes) {
  const JXStatus status = jx::check_writer(file);
  if (status != JX_OK) return status;
  jx::FileHandle *handle = jx::handle_of(file);
  if (handle->buffered == 0 || !handle->buffer.data) return JXWEM_E_NOTSUPPORTED;
  return jx::append_in_blocks(handle, source, bytes);
}
