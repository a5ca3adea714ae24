// The module in the test's own process, on the test host.
#pragma once

#include <gtest/gtest.h>

#include "jx/wem.h"
#include "support/fault_host.hpp"
#include "support/files.hpp"
#include "support/text.hpp"

namespace jx::test {

// An instance with a recognisable owner context; empty when the entry failed.
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

// A test with a host, an instance and a folder. At its end no object and no new descriptor may be
// left.
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
