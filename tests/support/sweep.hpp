// The fault sweep: repeats an operation, each time with the next call failing, until a run meets no
// fault. After each run nothing may be left and nothing may have been released twice.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/fault_host.hpp"
#include "support/files.hpp"

namespace jx::test {

// One run of a sweep that met a fault.
struct SweepRun {
  uint32_t n;          // which call failed, from 0
  Calls call;          // the one that failed
  std::string failed;  // its name
  JXStatus status;     // what the body returned
};

// What is alive before an operation; afterwards as much must be, and nothing used wrongly.
class Books {
 public:
  explicit Books(FaultHost &host) : host_(host) {}
  void expect_balance() const {
    EXPECT_EQ(host_.take_misuse(), "");
    EXPECT_TRUE(host_.live() == live_) << host_.list_live();
    EXPECT_EQ(open_descriptors(), descriptors_);
  }

 private:
  FaultHost &host_;
  const LiveCounts live_ = host_.live();
  const uint32_t descriptors_ = open_descriptors();
};

inline constexpr uint32_t kSweepLimit = 100'000;  // more runs mean that the sweep never ends

// Makes the n-th call of the host fail, n from 0, or every one from the n-th on. prepare() runs
// before each; body() runs the operation, releases its results and returns its status. Returns the
// runs that met a fault; the one after them must succeed.
template <typename Prepare, typename Body>
std::vector<SweepRun> sweep(FaultHost &host, Calls failing, Prepare prepare, Body body,
                            bool to_the_end = false) {
  std::vector<SweepRun> runs;
  for (uint32_t n = 0; n < kSweepLimit; ++n) {
    prepare();
    const Books books(host);
    host.arm(failing, n, kFaultStatus, to_the_end);
    const JXStatus status = body();
    const auto call = host.disarm();
    const std::string failed = call ? call_name(*call) : "";
    SCOPED_TRACE(failed + " as call " + std::to_string(n) + ": " + std::to_string(status));
    books.expect_balance();
    if (!call) {
      EXPECT_EQ(status, JX_OK) << "without a fault";
      return runs;
    }
    runs.push_back({n, calls(*call), failed, status});
  }
  ADD_FAILURE() << "the sweep found no end";
  return runs;
}

}  // namespace jx::test
