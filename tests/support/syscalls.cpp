// A fortified build turns some of the calls into inline wrappers; this file defines the real names.
#undef _FORTIFY_SOURCE
#include "support/syscalls.hpp"

// Without fcntl.h: it declares open64 and openat64 variadic; here they always take a mode and pass
// it on.
#include <dirent.h>
#include <dlfcn.h>
#include <pwd.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <utility>

#include "support/name_list.hpp"

namespace jx::test {

namespace {

constexpr int kCloseOnExec = 02000000;  // O_CLOEXEC

struct State {
  std::mutex mutex;
  Syscalls armed = 0;
  SyscallFault fault;
  bool is_signal_due = false;  // before the next call
  std::optional<Syscall> hit;
  std::array<uint64_t, kSyscallCount> counts{};
};
State state;

// The errno for a call that has to fail, or 0; shortens *count if armed to do so.
int judge(Syscall call, size_t *count) {
  std::unique_lock guard(state.mutex);
  ++state.counts[static_cast<uint32_t>(call)];
  if (!(state.armed & syscalls(call))) return 0;
  if (state.fault.n > 0) {
    --state.fault.n;
    return 0;
  }
  const Syscalls armed = std::exchange(state.armed, 0);
  if (!state.hit) state.hit = call;
  if (const auto before = std::exchange(state.fault.before, nullptr)) {
    guard.unlock();
    before();
    guard.lock();
  }
  if (state.fault.to_the_end) state.armed = armed;
  if (std::exchange(state.is_signal_due, false)) return EINTR;
  if (count && !state.fault.error && *count > state.fault.most_bytes) {
    *count = state.fault.most_bytes;
    state.is_signal_due = state.fault.interrupts;
  }
  return state.fault.error;
}

// Ends the program when a promise is broken that no status tells of.
void require(bool holds, const char *what) {
  if (holds) return;
  std::fprintf(stderr, "syscalls: %s\n", what);
  std::abort();
}

// Whether code of the module called.
bool is_in_module(const void *caller) {
  Dl_info info;
  return dladdr(caller, &info) != 0 && std::string_view(info.dli_fname).ends_with("jxwem.so");
}

// The flags of an open. The program that the process runs next must not get the module's
// descriptors.
int checked(int flags, const void *caller) {
  require((flags & kCloseOnExec) != 0 || !is_in_module(caller), "an open without O_CLOEXEC");
  return flags;
}

// The next definition of a name after this program's; the variant with 64-bit times if the C
// library has one. Allocates nothing: the calls are noexcept, and a test may fail allocations.
template <typename Function>
Function *next(const char *name, const char *name_time64) {
  void *address = dlsym(RTLD_NEXT, name_time64);
  if (!address) address = dlsym(RTLD_NEXT, name);
  if (!address) std::abort();
  return reinterpret_cast<Function *>(address);
}

}  // namespace

std::string syscall_name(Syscall call) {
  return name_in(JX_TEST_TEXT_OF((JX_TEST_SYSCALLS)), static_cast<uint32_t>(call));
}

void arm_syscalls(Syscalls failing, const SyscallFault &fault) {
  const std::lock_guard guard(state.mutex);
  state.armed = failing;
  state.fault = fault;
  state.is_signal_due = false;
  state.hit.reset();
}

std::optional<Syscall> disarm_syscalls() {
  const std::lock_guard guard(state.mutex);
  state.armed = 0;
  return std::exchange(state.hit, std::nullopt);
}

uint64_t syscall_count(Syscall call) {
  const std::lock_guard guard(state.mutex);
  return state.counts[static_cast<uint32_t>(call)];
}

}  // namespace jx::test

using jx::test::checked;
using jx::test::judge;
using jx::test::next;
using jx::test::require;
using jx::test::Syscall;

// Defines a call that is passed on unless it has to fail. `shortened` points to the length of a
// transfer.
#define JX_CALL(result, name, time64, failure, shortened, qualifier, parameters, arguments) \
  result name parameters qualifier {                                                        \
    static auto *const real = next<result parameters>(#name, time64);                       \
    const int error = judge(Syscall::name, shortened);                                      \
    if (error == 0) return real arguments;                                                  \
    errno = error;                                                                          \
    return failure;                                                                         \
  }
#define JX_PLAIN(result, name, failure, qualifier, parameters, arguments) \
  JX_CALL(result, name, "__" #name "_time64", failure, nullptr, qualifier, parameters, arguments)
#define JX_TRANSFER(name, parameters, arguments) \
  JX_CALL(ssize_t, name, "", -1, &count, , parameters, arguments)

extern "C" {

using Info = struct stat64;
using Space = struct statvfs64;
using Entry = struct dirent64;

JX_TRANSFER(read, (int fd, void *buffer, size_t count), (fd, buffer, count))
JX_TRANSFER(write, (int fd, const void *buffer, size_t count), (fd, buffer, count))
JX_TRANSFER(pread64, (int fd, void *buffer, size_t count, off64_t offset),
            (fd, buffer, count, offset))
JX_TRANSFER(pwrite64, (int fd, const void *buffer, size_t count, off64_t offset),
            (fd, buffer, count, offset))
JX_PLAIN(off64_t, lseek64, -1, noexcept, (int fd, off64_t offset, int whence), (fd, offset, whence))
JX_PLAIN(int, fsync, -1, , (int fd), (fd))
JX_PLAIN(int, ftruncate64, -1, noexcept, (int fd, off64_t length), (fd, length))
JX_PLAIN(int, open64, -1, , (const char *path, int flags, mode_t mode),
         (path, checked(flags, __builtin_return_address(0)), mode))
JX_PLAIN(int, openat64, -1, , (int fd, const char *path, int flags, mode_t mode),
         (fd, path, checked(flags, __builtin_return_address(0)), mode))
JX_PLAIN(int, stat64, -1, noexcept, (const char *path, Info *info), (path, info))
JX_PLAIN(int, fstatat64, -1, noexcept, (int fd, const char *path, Info *info, int flags),
         (fd, path, info, flags))
JX_PLAIN(int, fstat64, -1, noexcept, (int fd, Info *info), (fd, info))
JX_PLAIN(int, unlink, -1, noexcept, (const char *path), (path))
JX_PLAIN(int, unlinkat, -1, noexcept, (int fd, const char *path, int flags), (fd, path, flags))
JX_PLAIN(int, rmdir, -1, noexcept, (const char *path), (path))
JX_PLAIN(int, rename, -1, noexcept, (const char *from, const char *to), (from, to))
JX_PLAIN(int, mkdir, -1, noexcept, (const char *path, mode_t mode), (path, mode))
JX_PLAIN(DIR *, opendir, nullptr, , (const char *path), (path))
JX_PLAIN(DIR *, fdopendir, nullptr, , (int fd), (fd))
JX_PLAIN(int, readdir64_r, error, , (DIR * stream, Entry *entry, Entry **result),
         (stream, entry, result))
JX_PLAIN(int, closedir, (real(stream), errno = error, -1), , (DIR * stream), (stream))
JX_PLAIN(char *, getcwd, nullptr, noexcept, (char *buffer, size_t bytes), (buffer, bytes))
// ENOENT: no such user.
JX_PLAIN(int, getpwnam_r, (*result = nullptr, error == ENOENT ? 0 : error), ,
         (const char *name, passwd *record, char *texts, size_t bytes, passwd **result),
         (name, record, texts, bytes, result))
JX_PLAIN(int, getpwuid_r, (*result = nullptr, error == ENOENT ? 0 : error), ,
         (uid_t id, passwd *record, char *texts, size_t bytes, passwd **result),
         (id, record, texts, bytes, result))
JX_CALL(tm *, localtime_r, "__localtime64_r", nullptr, nullptr, noexcept,
        (const time_t *time, tm *result), (time, result))

// A failed close has closed anyway. What is closed twice may be a descriptor of another thread by
// now.
int close(int fd) {
  static auto *const real = next<int(int)>("close", "");
  const int error = judge(Syscall::close, nullptr);
  const int result = real(fd);
  require(result == 0 || errno != EBADF || fd < 0, "a descriptor is closed that is not open");
  return error ? (errno = error, -1) : result;
}

int statvfs64(const char *path, Space *info) noexcept {
  static auto *const real = next<int(const char *, Space *)>("statvfs64", "__statvfs64_time64");
  const int error = judge(Syscall::statvfs64, nullptr);
  if (error != 0) return errno = error, -1;
  const int result = real(path, info);
  if (result == 0 && jx::test::amend_space) jx::test::amend_space(info);
  return result;
}

// A fortified build calls these instead when it knows the size of the buffer.
ssize_t __read_chk(int fd, void *buffer, size_t count, size_t room) {
  if (count > room) std::abort();
  return read(fd, buffer, count);
}

ssize_t __pread64_chk(int fd, void *buffer, size_t count, off64_t offset, size_t room) {
  if (count > room) std::abort();
  return pread64(fd, buffer, count, offset);
}

}  // extern "C"
