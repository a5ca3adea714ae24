// bkwemopendir: opens the stream of a directory handle.
#include <dirent.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "posix/directory_open.hpp"
#include "posix/directory_stream.hpp"
#include "posix/errno_map.hpp"
#include "posix/owners.hpp"
#include "posix/path.hpp"

namespace jx {

JXStatus open_stream(JXDirectory *directory, bool is_literal) {
  if (!directory || !directory->instance) return JXWEM_E_NOHANDLE;
  JXInstance *instance = directory->instance;
  const Text given = {directory->path, directory->path_chars};
  SystemPath path;
  const JXStatus status = is_literal ? path.convert(instance, given, instance->pool)
                                     : path.prepare(instance, given, instance->pool);
  if (status != JX_OK) return status;
  DirectoryStream stream(opendir(path.native()));
  if (!stream) {
    return status_of_errno(kOpenDirectoryErrors, errno, instance, instance->journal);
  }
  auto holder = PoolBlock<void *>::allocate(directory->pool, 1);
  if (!holder) return JX_E_NOMEM;
  holder[0] = stream.release();
  directory->stream_holder = holder.release();
  return JX_OK;
}

}  // namespace jx

extern "C" JXStatus bkwemopendir(JXDirectory *directory) {
  return jx::open_stream(directory, false);
}
