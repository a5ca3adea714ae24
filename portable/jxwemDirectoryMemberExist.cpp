// Whether a directory holds a member of a name.
#include "portable/portable.hpp"

extern "C" JXStatus jxwemdirectorymemberexist(JXDirectory *directory, const JXChar *name,
                                              uint32_t name_chars) {
  if (!directory || !directory->instance) return JXWEM_E_NOHANDLE;
  if (!name || name_chars == 0) return JXWEM_E_BADMEMBER;
  JXInstance *instance = directory->instance;
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  const JXStatus status = bkwembuildpath(instance, directory->path, directory->path_chars, name,
                                         name_chars, nullptr, 0, &path, &path_chars);
  const jx::PoolBlock<JXChar> built(instance->pool, path);
  return status == JX_OK ? bkwemexist(instance, path, path_chars) : status;
}
