// bkwem_write: writes to the descriptor.
#include <unistd.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "kernel/handle.hpp"
#include "posix/errno_map.hpp"

namespace {

constexpr jx::ErrnoRow kWriteRows[] = {
    {EFBIG, JXWEM_E_DISKFULL},
    {ENOSPC, JXWEM_E_DISKFULL},
    {EDQUOT, JXWEM_E_DISKFULL},
};
constexpr jx::ErrnoMap kWriteErrors = {kWriteRows, JXWEM_E_SYSTEM, false};

}  // namespace

extern "C" JXStatus bkwem_write(JXFile *file, const void *source, uint32_t bytes,
                                uint32_t *bytes_out, const int64_t *offset) {
  if (!file) return JXWEM_E_NOHANDLE;
  const jx::FileHandle *handle = jx::handle_of(file);
  const int fd = handle->host_file->descriptor;
  const ssize_t result = offset ? pwrite64(fd, source, bytes, *offset) : write(fd, source, bytes);
  if (result < 0) {
    return jx::status_of_errno(kWriteErrors, errno, handle->instance, handle->journal);
  }
  *bytes_out = static_cast<uint32_t>(result);
  return JX_OK;
}
