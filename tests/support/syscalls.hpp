// System calls that fail, are cut short or run other code first, on request. A test program that
// uses these routines gets its own definitions of the calls below, which replace the C library's
// for the module too and forward to them. Off until armed; thread-safe.
#pragma once

#include <sys/statvfs.h>

#include <cstdint>
#include <functional>
#include <optional>

namespace jx::test {

// Every call of the module that reaches the system and can fail; tests/faults checks that.
#define JX_TEST_SYSCALLS(X)                                                                  \
  X(read)                                                                                    \
  X(write) X(pread64) X(pwrite64) X(lseek64) X(fsync) X(ftruncate64) X(open64) X(openat64)   \
      X(close) X(stat64) X(fstatat64) X(fstat64) X(statvfs64) X(unlink) X(unlinkat) X(rmdir) \
          X(rename) X(mkdir) X(opendir) X(fdopendir) X(readdir64_r) X(closedir) X(getcwd)    \
              X(getpwnam_r) X(getpwuid_r) X(localtime_r)
#define JX_TEST_ENUMERATOR(name) name,
enum class Syscall : uint32_t { JX_TEST_SYSCALLS(JX_TEST_ENUMERATOR) count };
inline constexpr uint32_t kSyscallCount = static_cast<uint32_t>(Syscall::count);

// A set of system calls.
using Syscalls = uint32_t;
template <typename... Some>
constexpr Syscalls syscalls(Some... some) {
  return ((1u << static_cast<uint32_t>(some)) | ...);
}

const char *syscall_name(Syscall call);

// The fault of the n-th armed call, counted from 0.
struct SyscallFault {
  uint32_t n = 0;
  int error = 0;            // errno it fails with; 0: the transfer is shortened instead
  uint32_t most_bytes = 1;  // length of a shortened transfer
  bool to_the_end = false;  // every call from the n-th on, until disarmed
  bool interrupts = false;  // a signal ends the call after each shortened one
  std::function<void()> before = nullptr;  // runs first, once, with nothing armed
};

void arm_syscalls(Syscalls failing, const SyscallFault &fault);
// Disarms; returns the call that was hit first.
std::optional<Syscall> disarm_syscalls();
// Calls of one kind since the start.
uint64_t syscall_count(Syscall call);

// If set, changes the result of statvfs64.
inline std::function<void(struct statvfs64 *)> amend_space;

}  // namespace jx::test
