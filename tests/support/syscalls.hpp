// System calls that fail, are cut short or run other code first, on request. A test program that
// uses these routines gets its own definitions of the calls below, which replace the C library's
// for the module too and forward to them. Off until armed; thread-safe.
#pragma once

#include <sys/statvfs.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace jx::test {

// Every call of the module that reaches the system and can fail; tests/faults checks that.
#define JX_TEST_SYSCALLS                                                                         \
  read, write, pread64, pwrite64, lseek64, fsync, ftruncate64, open64, openat64, close, stat64,  \
      fstatat64, fstat64, statvfs64, unlink, unlinkat, rmdir, rename, mkdir, opendir, fdopendir, \
      readdir64_r, closedir, getcwd, getpwnam_r, getpwuid_r, localtime_r
enum class Syscall : uint32_t { JX_TEST_SYSCALLS };
inline constexpr uint32_t kSyscallCount = static_cast<uint32_t>(Syscall::localtime_r) + 1;

// A set of system calls.
using Syscalls = uint32_t;
template <typename... Some>
constexpr Syscalls syscalls(Some... some) {
  return ((1u << static_cast<uint32_t>(some)) | ...);
}

std::string syscall_name(Syscall call);

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
