// System calls that fail on request. A test program that uses these routines gets its own read,
// write, pread64, pwrite64, lseek64, fsync and ftruncate64, which replace the C library's for the
// module too and forward to them. Off until armed; thread-safe.
#pragma once

#include <cstdint>
#include <optional>

namespace jx::test {

enum class Syscall : uint32_t { read, write, pread, pwrite, seek, sync, truncate };
inline constexpr uint32_t kSyscallCount = 7;

// A set of system calls.
using Syscalls = uint32_t;
template <typename... Some>
constexpr Syscalls syscalls(Some... some) {
  return ((1u << static_cast<uint32_t>(some)) | ...);
}
inline constexpr Syscalls kAllSyscalls = (1u << kSyscallCount) - 1;

const char *syscall_name(Syscall call);

// The fault of the n-th armed call, counted from 0.
struct SyscallFault {
  uint32_t n = 0;
  int error = 0;            // errno it fails with; 0: the transfer is shortened instead
  uint32_t most_bytes = 1;  // length of a shortened transfer
  bool to_the_end = false;  // every call from the n-th on, until disarmed
  bool interrupts = false;  // a signal ends the call after each shortened one
};

void arm_syscalls(Syscalls failing, const SyscallFault &fault);
// Disarms; returns the call that was hit first.
std::optional<Syscall> disarm_syscalls();
// Calls of one kind since the start.
uint64_t syscall_count(Syscall call);

}  // namespace jx::test
