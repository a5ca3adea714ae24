// bkwem_close: closes the system's file. The extension that opened it owns the descriptor.
#include "jx/exports/posix.h"
#include "kernel/handle.hpp"

extern "C" JXStatus bkwem_close(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  jx::FileHandle *handle = jx::handle_of(file);
  const jx::PoolBlock<jx::HostFile> host_file(handle->pool, handle->host_file);
  handle->host_file = nullptr;
  if (!host_file || !host_file->open_file) return JX_OK;
  constexpr uint32_t kZeros[8] = {};
  host_file->open_file->close_file(host_file->open_file, kZeros, handle->journal);
  return JX_OK;
}
