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
  std::function<void()> before;
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

void arm(PathCall call, uint32_t n, int error, std::function<void()> before) {
  state.call = call;
  state.calls_to_come = n;
  state.error = error;
  state.before = std::move(before);
  state.hit = false;
  state.armed = true;
}

}  // namespace

const char *path_call_name(PathCall call) {
#define JX_TEST_NAME(name) #name,
  constexpr std::array kNames{JX_TEST_PATH_CALLS(JX_TEST_NAME)};
#undef JX_TEST_NAME
  return kNames[static_cast<uint32_t>(call)];
}

void fail_path_call(PathCall call, uint32_t n, int error) { arm(call, n, error, nullptr); }

void precede_path_call(PathCall call, uint32_t n, std::function<void()> before) {
  arm(call, n, 0, std::move(before));
}

bool disarm_path_calls() {
  state.armed = false;
  state.before = nullptr;
  state.reports_space = false;
  return std::exchange(state.hit, false);
}

void report_space(uint32_t fragment_bytes, uint32_t block_bytes, uint64_t available_blocks) {
  state.space = {fragment_bytes, block_bytes, available_blocks};
  state.reports_space = true;
}

}  // namespace jx::test

using jx::test::fails;
using jx::test::next;
using jx::test::PathCall;

extern "C" {

int stat64(const char *path, struct stat64 *info) noexcept {
  static auto *const real = next<int(const char *, struct stat64 *)>(JX_TEST_TIME64(stat64));
  return fails(PathCall::stat) ? -1 : real(path, info);
}

int fstatat64(int fd, const char *path, struct stat64 *info, int flags) noexcept {
  static auto *const real =
      next<int(int, const char *, struct stat64 *, int)>(JX_TEST_TIME64(fstatat64));
  return fails(PathCall::fstatat) ? -1 : real(fd, path, info, flags);
}

int fstat64(int fd, struct stat64 *info) noexcept {
  static auto *const real = next<int(int, struct stat64 *)>(JX_TEST_TIME64(fstat64));
  return fails(PathCall::fstat) ? -1 : real(fd, info);
}

int statvfs64(const char *path, struct statvfs64 *info) noexcept {
  static auto *const real = next<int(const char *, struct statvfs64 *)>("statvfs64");
  if (fails(PathCall::statvfs)) return -1;
  const int result = real(path, info);
  const auto &state = jx::test::state;
  if (result == 0 && state.reports_space) {
    info->f_frsize = static_cast<unsigned long>(state.space[0]);
    info->f_bsize = static_cast<unsigned long>(state.space[1]);
    info->f_bavail = state.space[2];
  }
  return result;
}

int unlinkat(int fd, const char *path, int flags) noexcept {
  static auto *const real = next<int(int, const char *, int)>("unlinkat");
  return fails(PathCall::unlinkat) ? -1 : real(fd, path, flags);
}

int rmdir(const char *path) noexcept {
  static auto *const real = next<int(const char *)>("rmdir");
  return fails(PathCall::rmdir) ? -1 : real(path);
}

int rename(const char *from, const char *to) noexcept {
  static auto *const real = next<int(const char *, const char *)>("rename");
  return fails(PathCall::rename) ? -1 : real(from, to);
}

int mkdir(const char *path, mode_t mode) noexcept {
  static auto *const real = next<int(const char *, mode_t)>("mkdir");
  return fails(PathCall::mkdir) ? -1 : real(path, mode);
}

DIR *opendir(const char *path) {
  static auto *const real = next<DIR *(const char *)>("opendir");
  return fails(PathCall::opendir) ? nullptr : real(path);
}

DIR *fdopendir(int fd) {
  static auto *const real = next<DIR *(int)>("fdopendir");
  return fails(PathCall::fdopendir) ? nullptr : real(fd);
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
  return fails(PathCall::openat) ? -1 : real(fd, path, flags);
}

int readdir64_r(DIR *stream, struct dirent64 *entry, struct dirent64 **result) {
  static auto *const real = next<int(DIR *, dirent64 *, dirent64 **)>("readdir64_r");
  return fails(PathCall::readdir) ? errno : real(stream, entry, result);
}

int close(int fd) {
  static auto *const real = next<int(int)>("close");
  const bool is_failing = fails(PathCall::close);
  const int error = errno;
  const int result = real(fd);
  if (!is_failing) return result;
  errno = error;
  return -1;
}

}  // extern "C"
