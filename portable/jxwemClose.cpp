// jxwemclose, the close slot of a file handle.
#include "jx/exports/portable.h"
#include "kernel/handle.hpp"

extern "C" JXStatus jxwemclose(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  jx::FileHandle *handle = jx::handle_of(file);
  JXStatus flush_status = JX_OK;
  if (handle->access.can_write()) flush_status = handle->methods.record_flush(file);
  const JXStatus close_status = handle->methods.record_close(file);

  // Owners release everything from here on, the pool last.
  const jx::HostObject<JXPool> pool(handle->pool);
  const jx::PoolBlock<jx::FileHandle> block(handle->pool, handle);
  const jx::HostObject<JXPool> working_pool(
      handle->working_pool != handle->pool ? handle->working_pool : nullptr);
  const jx::HostObject<JXLock> open_lock(handle->open_lock);
  const jx::PoolBlock<JXChar> name(handle->working_pool, handle->name);
  const jx::PoolBlock<uint8_t> transcode_buffer(handle->pool, handle->transcode_buffer.data);
  const jx::Transcoder write_transcoder(handle->nls, handle->write_transcoder);
  const jx::Transcoder read_transcoder(handle->nls, handle->read_transcoder);
  return flush_status != JX_OK ? flush_status : close_status;
}
