// bkwem_note and bkwem_point, the note and point slots: the descriptor's offset.
#include <unistd.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "kernel/handle.hpp"
#include "posix/errno_map.hpp"

namespace {

constexpr jx::ErrnoMap kSeekErrors = {{}, JXWEM_E_FAILED};

// Moves the descriptor and stores its new offset, or -1.
JXStatus seek(const jx::FileHandle *handle, int64_t offset, int whence, int64_t *offset_out) {
  *offset_out = lseek64(handle->host_file->descriptor, offset, whence);
  if (*offset_out >= 0) return JX_OK;
  return jx::status_of_errno(kSeekErrors, errno, handle->instance, handle->journal);
}

int whence_of(uint32_t mode) {
  if ((mode & JX_POINT_START) != 0) return SEEK_SET;
  if ((mode & JX_POINT_END) != 0) return SEEK_END;
  return (mode & JX_POINT_RELATIVE) != 0 ? SEEK_CUR : SEEK_SET;
}

}  // namespace

extern "C" {

JXStatus bkwem_note(JXFile *file, int64_t *offset_out) {
  if (!file) return JXWEM_E_NOHANDLE;
  const jx::FileHandle *handle = jx::handle_of(file);
  if (handle->buffered != 0) return JXWEM_E_NOTSUPPORTED;
  return seek(handle, 0, SEEK_CUR, offset_out);
}

JXStatus bkwem_point(JXFile *file, int64_t *offset, uint32_t mode) {
  if (!file) return JXWEM_E_NOHANDLE;
  jx::FileHandle *handle = jx::handle_of(file);
  if (handle->buffered != 0) return JXWEM_E_NOTSUPPORTED;
  if ((mode & (JX_POINT_START | JX_POINT_END)) != 0) *offset = 0;
  const JXStatus status = seek(handle, *offset, whence_of(mode), offset);
  handle->moved_to(*offset);
  return status;
}

}  // extern "C"
