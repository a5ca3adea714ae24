// A fortified build turns some of the calls into inline wrappers; this file defines the real names.
#undef _FORTIFY_SOURCE
#include "support/path_calls.hpp"

// Without fcntl.h: it declares open64 and openat64 variadic; here they always take a mode and pass
// it on.
#include <dirent.h>
#include <dlfcn.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

namespace jx::test {

namespace {

struct State {
  std::string_view call = {};  // empty: not armed
  uint32_t calls_to_come = 0;
  int error = 0;
  std::function<void()> before = nullptr;
  bool hit = false;
};
State state;

// Runs `before` if this is the armed call. Tells whether the call has to fail, and sets errno then.
bool fails(std::string_view call) {
  if (state.call != call || state.calls_to_come-- > 0) return false;
  const State armed = std::exchange(state, {.hit = true});
  if (armed.before) armed.before();
  if (armed.error == 0) return false;
  errno = armed.error;
  return true;
}

// The next definition of a name after this program's; the variant with 64-bit times if the C
// library has both. Allocates nothing: the calls are noexcept, and a test may fail allocations.
template <typename Function>
Function *next(const char *name, const char *name_time64) {
  void *address = dlsym(RTLD_NEXT, name_time64);
  if (!address) address = dlsym(RTLD_NEXT, name);
  if (!address) std::abort();
  return reinterpret_cast<Function *>(address);
}

}  // namespace

void arm_path_call(std::string_view call, uint32_t n, int error, std::function<void()> before) {
  state = {.call = call, .calls_to_come = n, .error = error, .before = std::move(before)};
}

bool disarm_path_calls() { return std::exchange(state, {}).hit; }

}  // namespace jx::test

using jx::test::fails;
using jx::test::next;

// Defines a call that is passed on unless it has to fail.
#define JX_CALL(result, name, failure, qualifier, parameters, arguments)            \
  result name parameters qualifier {                                                \
    static auto *const real = next<result parameters>(#name, "__" #name "_time64"); \
    return fails(#name) ? failure : real arguments;                                 \
  }

extern "C" {

using Info = struct stat64;
using Entry = struct dirent64;

JX_CALL(int, stat64, -1, noexcept, (const char *path, Info *info), (path, info))
JX_CALL(int, fstatat64, -1, noexcept, (int fd, const char *path, Info *info, int flags),
        (fd, path, info, flags))
JX_CALL(int, fstat64, -1, noexcept, (int fd, Info *info), (fd, info))
JX_CALL(int, unlink, -1, noexcept, (const char *path), (path))
JX_CALL(int, unlinkat, -1, noexcept, (int fd, const char *path, int flags), (fd, path, flags))
JX_CALL(int, rmdir, -1, noexcept, (const char *path), (path))
JX_CALL(int, rename, -1, noexcept, (const char *from, const char *to), (from, to))
JX_CALL(int, mkdir, -1, noexcept, (const char *path, mode_t mode), (path, mode))
JX_CALL(DIR *, opendir, nullptr, , (const char *path), (path))
JX_CALL(DIR *, fdopendir, nullptr, , (int fd), (fd))
JX_CALL(int, readdir64_r, errno, , (DIR * stream, Entry *entry, Entry **result),
        (stream, entry, result))
JX_CALL(int, open64, -1, , (const char *path, int flags, mode_t mode), (path, flags, mode))
JX_CALL(int, openat64, -1, , (int fd, const char *path, int flags, mode_t mode),
        (fd, path, flags, mode))
// ENOENT: no such user.
JX_CALL(int, getpwnam_r, (*entry = nullptr, errno == ENOENT ? 0 : errno), ,
        (const char *name, passwd *record, char *texts, size_t size, passwd **entry),
        (name, record, texts, size, entry))
JX_CALL(int, getpwuid_r, (*entry = nullptr, errno == ENOENT ? 0 : errno), ,
        (uid_t user, passwd *record, char *texts, size_t size, passwd **entry),
        (user, record, texts, size, entry))
// A failed close has closed anyway.
JX_CALL(int, close, real(fd) - 1, , (int fd), (fd))

int statvfs64(const char *path, struct statvfs64 *info) noexcept {
  static auto *const real =
      next<int(const char *, struct statvfs64 *)>("statvfs64", "__statvfs64_time64");
  const int result = fails("statvfs64") ? -1 : real(path, info);
  if (result == 0 && jx::test::amend_space) jx::test::amend_space(info);
  return result;
}

}  // extern "C"
