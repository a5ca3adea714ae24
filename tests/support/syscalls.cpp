// A checked build turns read into an inline wrapper; here the real name is defined.
#undef _FORTIFY_SOURCE
#include "support/syscalls.hpp"

#include <dlfcn.h>
#include <sys/types.h>

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
  std::optional<Syscall> hit;
  std::array<uint64_t, kSyscallCount> counts{};
};
constinit State state;

// What to do with a call: fail with the errno, or transfer at most so many bytes.
struct Verdict {
  int error = 0;
  size_t most_bytes = SIZE_MAX;
};

Verdict judge(Syscall call) {
  const std::lock_guard guard(state.mutex);
  ++state.counts[static_cast<uint32_t>(call)];
  if (!(state.armed & syscalls(call)) || state.fault.n > 0) {
    if (state.armed & syscalls(call)) --state.fault.n;
    return {};
  }
  if (!state.fault.to_the_end) state.armed = 0;
  if (!state.hit) state.hit = call;
  if (state.fault.error) return {.error = state.fault.error};
  return {.most_bytes = state.fault.most_bytes};
}

// The next definition of a name after this program's.
template <typename Function>
Function *next(const char *name) {
  void *address = dlsym(RTLD_NEXT, name);
  if (!address) std::abort();
  return reinterpret_cast<Function *>(address);
}

// Judges a transfer of count bytes and makes it with what is left of them.
template <typename Function>
ssize_t transfer(Syscall call, size_t count, Function forward) {
  const Verdict verdict = judge(call);
  if (!verdict.error) return forward(std::min(count, verdict.most_bytes));
  errno = verdict.error;
  return -1;
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

using jx::test::next;
using jx::test::Syscall;
using jx::test::transfer;

extern "C" {

ssize_t read(int fd, void *buffer, size_t count) {
  static auto *const real = next<ssize_t(int, void *, size_t)>("read");
  return transfer(Syscall::read, count, [=](size_t bytes) { return real(fd, buffer, bytes); });
}

ssize_t write(int fd, const void *buffer, size_t count) {
  static auto *const real = next<ssize_t(int, const void *, size_t)>("write");
  return transfer(Syscall::write, count, [=](size_t bytes) { return real(fd, buffer, bytes); });
}

ssize_t pread64(int fd, void *buffer, size_t count, off64_t offset) {
  static auto *const real = next<ssize_t(int, void *, size_t, off64_t)>("pread64");
  return transfer(Syscall::pread, count,
                  [=](size_t bytes) { return real(fd, buffer, bytes, offset); });
}

ssize_t pwrite64(int fd, const void *buffer, size_t count, off64_t offset) {
  static auto *const real = next<ssize_t(int, const void *, size_t, off64_t)>("pwrite64");
  return transfer(Syscall::pwrite, count,
                  [=](size_t bytes) { return real(fd, buffer, bytes, offset); });
}

// What a checked build calls instead where it knows the room.
ssize_t __read_chk(int fd, void *buffer, size_t count, size_t room) {
  if (count > room) std::abort();
  return read(fd, buffer, count);
}

ssize_t __pread64_chk(int fd, void *buffer, size_t count, off64_t offset, size_t room) {
  if (count > room) std::abort();
  return pread64(fd, buffer, count, offset);
}

off64_t lseek64(int fd, off64_t offset, int whence) noexcept {
  static auto *const real = next<off64_t(int, off64_t, int)>("lseek64");
  const auto verdict = jx::test::judge(Syscall::seek);
  if (!verdict.error) return real(fd, offset, whence);
  errno = verdict.error;
  return -1;
}

int fsync(int fd) {
  static auto *const real = next<int(int)>("fsync");
  const auto verdict = jx::test::judge(Syscall::sync);
  if (!verdict.error) return real(fd);
  errno = verdict.error;
  return -1;
}

int ftruncate64(int fd, off64_t length) noexcept {
  static auto *const real = next<int(int, off64_t)>("ftruncate64");
  const auto verdict = jx::test::judge(Syscall::truncate);
  if (!verdict.error) return real(fd, length);
  errno = verdict.error;
  return -1;
}

}  // extern "C"
