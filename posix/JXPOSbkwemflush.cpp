// bkwem_flush, the flush slot of direct files: makes data durable.
#include <unistd.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "kernel/handle.hpp"
#include "posix/errno_map.hpp"

namespace {

constexpr jx::ErrnoRow kFlushRows[] = {
    {EIO, JXWEM_E_SYSTEM},
    {EBADF, JXWEM_E_NOHANDLE},
    {ENOSPC, JXWEM_E_DISKFULL},
};
constexpr jx::ErrnoMap kFlushErrors = {kFlushRows, JXWEM_E_FAILED};

}  // namespace

extern "C" JXStatus bkwem_flush(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  const jx::FileHandle *handle = jx::handle_of(file);
  // Never repeated: after a failure the system may have dropped the data, and a second call would
  // report success.
  if (fsync(handle->host_file->descriptor) == 0) return JX_OK;
  return jx::status_of_errno(kFlushErrors, errno, handle->instance, handle->journal);
}
