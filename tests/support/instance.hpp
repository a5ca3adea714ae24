// The module brought up in the test's own process, through the test host.
#pragma once

#include <gtest/gtest.h>

#include "jx/wem.h"
#include "support/fault_host.hpp"
#include "support/files.hpp"
#include "support/text.hpp"

namespace jx::test {

// An instance made with an owner context that can be told apart; empty when the entry failed.
class Instance {
 public:
  explicit Instance(FaultHost &host) {
    jxextent(host.host());
    instance_ = jxwem(host.host(), reinterpret_cast<JXOwner>(uintptr_t{7}));
  }
  Instance(const Instance &) = delete;
  Instance &operator=(const Instance &) = delete;
  ~Instance() {
    if (instance_) instance_->destroy(instance_);
  }

  JXInstance *get() const { return instance_; }
  JXInstance *operator->() const { return instance_; }
  operator JXInstance *() const { return instance_; }

 private:
  JXInstance *instance_;
};

// A test with a host, an instance and a folder; it ends with nothing alive and with the descriptors
// it began with.
class InstanceTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(instance); }
  void TearDown() override { EXPECT_EQ(open_descriptors(), descriptors_); }

  uint32_t descriptors_ = open_descriptors();
  FaultHost host;
  Instance instance{host};
  TempDir dir;
};

}  // namespace jx::test
