// A checked build turns some of the calls into inline wrappers; here the real names are defined.
#undef _FORTIFY_SOURCE
#include "support/path_calls.hpp"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
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
  bool armed = false;
  PathCall call{};
  uint32_t calls_to_come = 0;
  int error = 0;
  std::function<void()> before = nullptr;
  bool hit = false;
  bool reports_space = false;
  std::array<uint64_t, 3> space{};
};
State state;

// Tells whether the call is to fail, after what is to come before it; errno is set then.
bool fails(PathCall call) {
  if (!state.armed || state.call != call || state.calls_to_come-- > 0) return false;
  state.armed = false;
  state.hit = true;
  if (state.before) std::exchange(state.before, nullptr)();
  if (state.error == 0) return false;
  errno = state.error;
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

const char *path_call_name(PathCall call) {
#define JX_TEST_NAME(name) #name,
  constexpr std::array kNames{JX_TEST_PATH_CALLS(JX_TEST_NAME)};
#undef JX_TEST_NAME
  return kNames[static_cast<uint32_t>(call)];
}

void fail_path_call(PathCall call, uint32_t n, int error) {
  state = {.armed = true, .call = call, .calls_to_come = n, .error = error};
}

void precede_path_call(PathCall call, uint32_t n, std::function<void()> before) {
  state = {.armed = true, .call = call, .calls_to_come = n, .before = std::move(before)};
}

bool disarm_path_calls() { return std::exchange(state, {}).hit; }

void report_space(uint32_t fragment_bytes, uint32_t block_bytes, uint64_t available_blocks) {
  state = {.reports_space = true, .space = {fragment_bytes, block_bytes, available_blocks}};
}

}  // namespace jx::test

using jx::test::fails;
using jx::test::next;
using jx::test::PathCall;

// A call that is passed on unless it is to fail.
#define JX_TEST_CALL(result, name, symbol, call, failure, qualifier, parameters, arguments) \
  result name parameters qualifier {                                                        \
    static auto *const real = next<result parameters>(symbol);                              \
    return fails(PathCall::call) ? failure : real arguments;                                \
  }

extern "C" {

JX_TEST_CALL(int, stat64, JX_TEST_TIME64(stat64), stat, -1, noexcept,
             (const char *path, struct stat64 *info), (path, info))
JX_TEST_CALL(int, fstatat64, JX_TEST_TIME64(fstatat64), fstatat, -1, noexcept,
             (int fd, const char *path, struct stat64 *info, int flags), (fd, path, info, flags))
JX_TEST_CALL(int, fstat64, JX_TEST_TIME64(fstat64), fstat, -1, noexcept,
             (int fd, struct stat64 *info), (fd, info))
JX_TEST_CALL(int, unlinkat, "unlinkat", unlinkat, -1, noexcept,
             (int fd, const char *path, int flags), (fd, path, flags))
JX_TEST_CALL(int, rmdir, "rmdir", rmdir, -1, noexcept, (const char *path), (path))
JX_TEST_CALL(int, rename, "rename", rename, -1, noexcept, (const char *from, const char *to),
             (from, to))
JX_TEST_CALL(int, mkdir, "mkdir", mkdir, -1, noexcept, (const char *path, mode_t mode),
             (path, mode))
JX_TEST_CALL(DIR *, opendir, "opendir", opendir, nullptr, , (const char *path), (path))
JX_TEST_CALL(DIR *, fdopendir, "fdopendir", fdopendir, nullptr, , (int fd), (fd))
JX_TEST_CALL(int, readdir64_r, "readdir64_r", readdir, errno, ,
             (DIR * stream, struct dirent64 *entry, struct dirent64 **result),
             (stream, entry, result))

int statvfs64(const char *path, struct statvfs64 *info) noexcept {
  static auto *const real = next<int(const char *, struct statvfs64 *)>("statvfs64");
  if (fails(PathCall::statvfs) || real(path, info) != 0) return -1;
  const auto &state = jx::test::state;
  if (state.reports_space) {
    info->f_frsize = static_cast<unsigned long>(state.space[0]);
    info->f_bsize = static_cast<unsigned long>(state.space[1]);
    info->f_bavail = state.space[2];
  }
  return 0;
}

int open64(const char *path, int flags, ...) {
  static auto *const real = next<int(const char *, int, ...)>("open64");
  va_list args;
  va_start(args, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
  va_end(args);
  return fails(PathCall::open) ? -1 : real(path, flags, mode);
}

int openat64(int fd, const char *path, int flags, ...) {
  static auto *const real = next<int(int, const char *, int, ...)>("openat64");
  va_list args;
  va_start(args, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
  va_end(args);
  return fails(PathCall::openat) ? -1 : real(fd, path, flags, mode);
}

int close(int fd) {
  static auto *const real = next<int(int)>("close");
  const bool is_failing = fails(PathCall::close);
  const int error = errno;
  const int result = real(fd);
  if (is_failing) errno = error;
  return is_failing ? -1 : result;
}

}  // extern "C"
