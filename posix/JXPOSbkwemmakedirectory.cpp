// bkwemmakedirectory, the make_directory slot.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "posix/errno_map.hpp"
#include "posix/path.hpp"
#include "posix/path_steps.hpp"

namespace {

constexpr mode_t kPermissions = 0777;  // before the process's creation mask

constexpr jx::ErrnoRow kMkdirRows[] = {{EPERM, JXWEM_E_ACCESS},    {ENOENT, JXWEM_E_NOPATH},
                                       {EACCES, JXWEM_E_ACCESS},   {EEXIST, JXWEM_E_EXISTS},
                                       {ENOTDIR, JXWEM_E_NOPATH},  {ETXTBSY, JXWEM_E_INUSE},
                                       {ENOSPC, JXWEM_E_DISKFULL}, {EROFS, JXWEM_E_ACCESS}};
constexpr jx::ErrnoMap kMkdirErrors = {kMkdirRows};

}  // namespace

namespace jx {

JXStatus make_directory(JXInstance *instance, const char *path) {
  if (mkdir(path, kPermissions) == 0) return JX_OK;
  const JXStatus status = status_of_errno(kMkdirErrors, errno, instance, instance->journal);
  if (status != JXWEM_E_EXISTS) return status;
  return test_directory(instance, AT_FDCWD, path) == JX_OK ? JX_OK : JXWEM_E_EXISTS;
}

}  // namespace jx

extern "C" JXStatus bkwemmakedirectory(JXInstance *instance, const JXChar *path,
                                       uint32_t path_chars) {
  if (!instance) return JXWEM_E_NOHANDLE;
  if (!path || path_chars == 0) return JXWEM_E_BADNAME;
  jx::SystemPath system_path;
  const JXStatus status = system_path.prepare(instance, path, path_chars);
  return status == JX_OK ? jx::make_directory(instance, system_path.native()) : status;
}
