// skwem_flush, the flush slot of buffered files: the pending block to the file, the file to the
// device.
#include "jx/exports/record.h"
#include "record/record.hpp"

extern "C" JXStatus skwem_flush(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  jx::FileHandle *handle = jx::handle_of(file);
  JXStatus write_status = JX_OK;
  const bool writes = handle->access.can_write() && handle->buffered != 0;
  if (writes && handle->buffer.used_bytes != 0) {
    write_status = jx::write_pending(handle, handle->buffer.used_bytes);
  }
  const JXStatus flush_status = handle->methods.host_flush(file);
  return write_status != JX_OK ? write_status : flush_status;
}
