// bkwemexist, the exist slot: does a path name anything?
#include <sys/stat.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "posix/errno_map.hpp"
#include "posix/path.hpp"
#include "posix/path_steps.hpp"

namespace jx {

JXStatus test_exists(JXInstance *instance, const char *path) {
  struct stat64 info;
  if (stat64(path, &info) == 0) return JX_OK;
  return status_of_errno(kStatErrors, errno, instance, instance->journal);
}

}  // namespace jx

extern "C" JXStatus bkwemexist(JXInstance *instance, const JXChar *path, uint32_t path_chars) {
  if (!instance) return JXWEM_E_NOHANDLE;
  jx::SystemPath system_path;
  const JXStatus status = system_path.prepare(instance, path, path_chars);
  return status == JX_OK ? jx::test_exists(instance, system_path.native()) : status;
}
