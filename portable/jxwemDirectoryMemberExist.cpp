// jxwemdirectorymemberexist, the member_exist slot: does a directory hold a member of that name?
#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "portable/portable.hpp"
#include "posix/path.hpp"

extern "C" JXStatus jxwemdirectorymemberexist(JXDirectory *directory, const JXChar *name,
                                              uint32_t name_chars) {
  if (!directory || !directory->instance) return JXWEM_E_NOHANDLE;
  if (!name || name_chars == 0) return JXWEM_E_BADMEMBER;
  JXInstance *instance = directory->instance;
  jx::OwnedPath path;
  const JXStatus status =
      jx::build_path(instance, {directory->path, directory->path_chars}, {name, name_chars}, &path);
  return status == JX_OK ? bkwemexist(instance, path.block.get(), path.chars) : status;
}
