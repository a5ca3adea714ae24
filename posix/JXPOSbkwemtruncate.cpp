// bkwemtruncate, the truncate slot: sets a file's length.
#include <unistd.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "kernel/handle.hpp"
#include "posix/errno_map.hpp"

extern "C" JXStatus bkwemtruncate(JXFile *file, const int64_t *length_bytes) {
  if (!file) return JXWEM_E_NOHANDLE;
  const jx::FileHandle *handle = jx::handle_of(file);
  if (!handle->access.can_write()) return JXWEM_E_READONLY;
  if (ftruncate64(handle->host_file->descriptor, *length_bytes) == 0) return JX_OK;
  constexpr jx::ErrnoMap kTruncateErrors = {};
  return jx::status_of_errno(kTruncateErrors, errno, handle->instance, handle->journal);
}
