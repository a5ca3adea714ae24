// A fortified build turns read into an inline wrapper; this file defines the real name.
#undef _FORTIFY_SOURCE
#include "support/syscalls.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace jx::test {

namespace {

struct State {
  std::mutex mutex;
  Syscalls armed = 0;
  SyscallFault fault;
  bool is_signal_due = false;  // before the next call
  std::optional<Syscall> hit;
  std::array<uint64_t, kSyscallCount> counts{};
};
constinit State state;

// The errno for a call that has to fail, or 0; shortens *count if armed to do so.
int judge(Syscall call, size_t *count) {
  const std::lock_guard guard(state.mutex);
  ++state.counts[static_cast<uint32_t>(call)];
  if (!(state.armed & syscalls(call))) return 0;
  if (state.fault.n > 0) {
    --state.fault.n;
    return 0;
  }
  if (!state.fault.to_the_end) state.armed = 0;
  if (!state.hit) state.hit = call;
  if (std::exchange(state.is_signal_due, false)) return EINTR;
  if (count && !state.fault.error && *count > state.fault.most_bytes) {
    *count = state.fault.most_bytes;
    state.is_signal_due = state.fault.interrupts;
  }
  return state.fault.error;
}

// Judges a call and forwards it to the next definition of its name. The arguments are references
// because one of them is *count.
template <Syscall kCall, typename Function, typename... Arguments>
auto hand_on(size_t *count, Function *, const Arguments &...arguments) {
  static auto *const real = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, syscall_name(kCall)));
  const int error = judge(kCall, count);
  if (!error) return real(arguments...);
  errno = error;
  return decltype(real(arguments...)){-1};
}

}  // namespace

const char *syscall_name(Syscall call) {
  constexpr std::array<const char *, kSyscallCount> kNames{
      "read", "write", "pread64", "pwrite64", "lseek64", "fsync", "ftruncate64"};
  return kNames[static_cast<uint32_t>(call)];
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

using jx::test::hand_on;
using jx::test::Syscall;

extern "C" {

ssize_t read(int fd, void *buffer, size_t count) {
  return hand_on<Syscall::read>(&count, read, fd, buffer, count);
}

ssize_t write(int fd, const void *buffer, size_t count) {
  return hand_on<Syscall::write>(&count, write, fd, buffer, count);
}

ssize_t pread64(int fd, void *buffer, size_t count, off64_t offset) {
  return hand_on<Syscall::pread>(&count, pread64, fd, buffer, count, offset);
}

ssize_t pwrite64(int fd, const void *buffer, size_t count, off64_t offset) {
  return hand_on<Syscall::pwrite>(&count, pwrite64, fd, buffer, count, offset);
}

// A fortified build calls this instead when it knows the size of the buffer.
ssize_t __read_chk(int fd, void *buffer, size_t count, size_t room) {
  if (count > room) std::abort();
  return read(fd, buffer, count);
}

ssize_t __pread64_chk(int fd, void *buffer, size_t count, off64_t offset, size_t room) {
  if (count > room) std::abort();
  return pread64(fd, buffer, count, offset);
}

off64_t lseek64(int fd, off64_t offset, int whence) noexcept {
  return hand_on<Syscall::seek>(nullptr, lseek64, fd, offset, whence);
}

int fsync(int fd) { return hand_on<Syscall::sync>(nullptr, fsync, fd); }

int ftruncate64(int fd, off64_t length) noexcept {
  return hand_on<Syscall::truncate>(nullptr, ftruncate64, fd, length);
}

}  // extern "C"
