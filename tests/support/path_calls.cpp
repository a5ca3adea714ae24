// A checked build turns some of the calls into inline wrappers; here the real names are defined.
#undef _FORTIFY_SOURCE
#include "support/path_calls.hpp"

// Without fcntl.h: open64 and openat64 are taken as calls whose mode is always there, and hand it
// on as they found it.
#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

namespace jx::test {

namespace {

// The C library's names of the calls whose records have 64-bit times.
#if __SIZEOF_POINTER__ == 4
#define JX_TEST_TIME64(name) "__" #name "_time64"
#else
#define JX_TEST_TIME64(name) #name
#endif

struct State {
  std::string_view call = {};  // empty: not armed
  uint32_t calls_to_come = 0;
  int error = 0;
  std::function<void()> before = nullptr;
  bool hit = false;
};
State state;

// Tells whether the call is to fail, after what is to come before it; errno is set then.
bool fails(std::string_view call) {
  if (state.call != call || state.calls_to_come-- > 0) return false;
  const State armed = std::exchange(state, {.hit = true});
  if (armed.before) armed.before();
  if (armed.error == 0) return false;
  errno = armed.error;
  return true;
}

// The next definition of a name after this program's.
template <typename Function>
Function *next(const char *name) {
  void *address = dlsym(RTLD_NEXT, name);
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

// A call that is passed on unless it is to fail.
#define JX_TEST_CALL(result, name, symbol, call, failure, qualifier, parameters, arguments) \
  result name parameters qualifier {                                                        \
    static auto *const real = next<result parameters>(symbol);                              \
    return fails(call) ? failure : real arguments;                                          \
  }

extern "C" {

JX_TEST_CALL(int, stat64, JX_TEST_TIME64(stat64), "stat", -1, noexcept,
             (const char *path, struct stat64 *info), (path, info))
JX_TEST_CALL(int, fstatat64, JX_TEST_TIME64(fstatat64), "fstatat", -1, noexcept,
             (int fd, const char *path, struct stat64 *info, int flags), (fd, path, info, flags))
JX_TEST_CALL(int, fstat64, JX_TEST_TIME64(fstat64), "fstat", -1, noexcept,
             (int fd, struct stat64 *info), (fd, info))
JX_TEST_CALL(int, unlinkat, "unlinkat", "unlinkat", -1, noexcept,
             (int fd, const char *path, int flags), (fd, path, flags))
JX_TEST_CALL(int, rmdir, "rmdir", "rmdir", -1, noexcept, (const char *path), (path))
JX_TEST_CALL(int, rename, "rename", "rename", -1, noexcept, (const char *from, const char *to),
             (from, to))
JX_TEST_CALL(int, mkdir, "mkdir", "mkdir", -1, noexcept, (const char *path, mode_t mode),
             (path, mode))
JX_TEST_CALL(DIR *, opendir, "opendir", "opendir", nullptr, , (const char *path), (path))
JX_TEST_CALL(DIR *, fdopendir, "fdopendir", "fdopendir", nullptr, , (int fd), (fd))
JX_TEST_CALL(int, readdir64_r, "readdir64_r", "readdir", errno, ,
             (DIR * stream, struct dirent64 *entry, struct dirent64 **result),
             (stream, entry, result))
JX_TEST_CALL(int, open64, "open64", "open", -1, , (const char *path, int flags, mode_t mode),
             (path, flags, mode))
JX_TEST_CALL(int, openat64, "openat64", "openat", -1, ,
             (int fd, const char *path, int flags, mode_t mode), (fd, path, flags, mode))
// A close that fails has closed all the same.
JX_TEST_CALL(int, close, "close", "close", real(fd) - 1, , (int fd), (fd))

int statvfs64(const char *path, struct statvfs64 *info) noexcept {
  static auto *const real = next<int(const char *, struct statvfs64 *)>("statvfs64");
  const int result = fails("statvfs") ? -1 : real(path, info);
  if (result == 0 && jx::test::amend_space) jx::test::amend_space(info);
  return result;
}

}  // extern "C"
