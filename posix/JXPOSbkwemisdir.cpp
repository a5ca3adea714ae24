// bkwemisdir: does a path name a directory?
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "posix/errno_map.hpp"
#include "posix/path.hpp"
#include "posix/path_steps.hpp"

namespace {

constexpr jx::ErrnoRow kDirectoryTestRows[] = {{ENOENT, JXWEM_E_NOPATH}, {EACCES, JXWEM_E_ACCESS}};
constexpr jx::ErrnoMap kDirectoryTestErrors = {kDirectoryTestRows};

}  // namespace

namespace jx {

JXStatus test_directory(JXInstance *instance, int directory_fd, const char *name) {
  struct stat64 info;
  const int result =
      directory_fd == AT_FDCWD ? stat64(name, &info) : fstatat64(directory_fd, name, &info, 0);
  if (result != 0) return status_of_errno(kDirectoryTestErrors, errno, instance, instance->journal);
  return S_ISDIR(info.st_mode) ? JX_OK : kNotDirectory;
}

}  // namespace jx

extern "C" JXStatus bkwemisdir(JXInstance *instance, const JXChar *path, uint32_t path_chars) {
  if (!instance) return JXWEM_E_NOHANDLE;
  jx::SystemPath system_path;
  const JXStatus status = system_path.prepare(instance, path, path_chars);
  if (status != JX_OK) return status;
  return jx::test_directory(instance, AT_FDCWD, system_path.native());
}
