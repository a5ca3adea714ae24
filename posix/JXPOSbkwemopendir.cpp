// The stream of a directory handle, opened.
#include "posix/posix.hpp"

extern "C" JXStatus bkwemopendir(JXDirectory *directory) {
  if (!directory || !directory->instance) return JXWEM_E_NOHANDLE;
  JXInstance *instance = directory->instance;
  const jx::Text given = {directory->path, directory->path_chars};
  jx::SystemPath path;
  const bool is_literal = (directory->options & jx::kDirectoryLiteral) != 0;
  const JXStatus status = is_literal ? path.convert(instance, given, instance->pool)
                                     : path.prepare(instance, given, instance->pool);
  if (status != JX_OK) return status;
  jx::DirectoryStream stream(opendir(path.native()));
  if (!stream) {
    return jx::status_of_errno(jx::kOpenDirectoryErrors, errno, instance, instance->journal);
  }
  auto holder = jx::PoolBlock<void *>::allocate(directory->pool, 1);
  if (!holder) return JX_E_NOMEM;
  holder[0] = stream.release();
  directory->stream_holder = holder.release();
  return JX_OK;
}
