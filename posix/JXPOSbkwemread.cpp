// bkwem_read: reads from the descriptor.
#include <unistd.h>

#include "jx/exports/posix.h"
#include "kernel/handle.hpp"

extern "C" JXStatus bkwem_read(JXFile *file, void *destination, uint32_t bytes, uint32_t *bytes_out,
                               const int64_t *offset) {
  if (!file) return JXWEM_E_NOHANDLE;
  const int fd = jx::handle_of(file)->host_file->descriptor;
  const ssize_t result =
      offset ? pread64(fd, destination, bytes, *offset) : read(fd, destination, bytes);
  if (result < 0) return JXWEM_E_SYSTEM;
  *bytes_out = static_cast<uint32_t>(result);
  return result == 0 && bytes != 0 ? JXWEM_E_EOF : JX_OK;
}
