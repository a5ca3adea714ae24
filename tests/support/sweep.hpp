// The fault sweep: repeats an operation, each time with the next call failing, until a run meets no
// fault. After each run nothing may be left and nothing may have been released twice.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/fault_host.hpp"
#include "support/files.hpp"
#include "support/syscalls.hpp"

namespace jx::test {

// One run of a sweep that met a fault.
struct SweepRun {
  uint32_t n;          // which call failed, from 0
  std::string failed;  // its name
  JXStatus status;     // what the body returned
};

inline constexpr uint32_t kSweepLimit = 100'000;  // more runs mean that the sweep never ends

// arm(n) makes the n-th call fail; disarm() returns the name of the call that failed, empty when
// none did. body() runs the operation, releases its results and returns its status. Returns the
// runs that met a fault; the one after them must succeed.
template <typename Arm, typename Disarm, typename Body>
std::vector<SweepRun> sweep_with(FaultHost &host, Arm arm, Disarm disarm, Body body) {
  std::vector<SweepRun> runs;
  for (uint32_t n = 0; n < kSweepLimit; ++n) {
    const LiveCounts before = host.live();
    const uint32_t descriptors = open_descriptors();
    arm(n);
    const JXStatus status = body();
    const std::string failed = disarm();
    SCOPED_TRACE(failed + " as call " + std::to_string(n) + ": " + std::to_string(status));
    EXPECT_EQ(host.take_misuse(), "");
    EXPECT_TRUE(host.live() == before) << host.list_live();
    EXPECT_EQ(open_descriptors(), descriptors);
    if (failed.empty()) {
      EXPECT_EQ(status, JX_OK) << "without a fault";
      return runs;
    }
    runs.push_back({n, failed, status});
  }
  ADD_FAILURE() << "the sweep found no end";
  return runs;
}

// A sweep over calls of the host.
template <typename Body>
std::vector<SweepRun> sweep(FaultHost &host, Calls failing, Body body) {
  return sweep_with(
      host, [&](uint32_t n) { host.arm(failing, n); },
      [&] {
        const auto failed = host.disarm();
        return std::string(failed ? call_name(*failed) : "");
      },
      body);
}

// A sweep over system calls, which fail with the errno.
template <typename Body>
std::vector<SweepRun> sweep_syscalls(FaultHost &host, Syscalls failing, int error, Body body) {
  return sweep_with(
      host, [&](uint32_t n) { arm_syscalls(failing, {.n = n, .error = error}); },
      [&] {
        const auto failed = disarm_syscalls();
        return std::string(failed ? syscall_name(*failed) : "");
      },
      body);
}

}  // namespace jx::test
