// The test host itself: the misuse it exists to find is found.
#include <gtest/gtest.h>

#include "support/fault_host.hpp"

namespace jx::test {
namespace {

TEST(FaultHost, FindsMisuse) {
  FaultHost host;
  JXPool *pool = host.host()->create_pool(host.host(), 0, 0, 0, nullptr, "pool");
  auto *block = static_cast<char *>(pool->pool_allocate(pool, 20, 0));
  EXPECT_EQ(host.list_live(), "live pool pool\nlive block #1 of 20 bytes\n");
#ifndef __SANITIZE_ADDRESS__  // which stops at each misuse
  block[20] = block[-1] = 1;
  EXPECT_EQ(host.take_misuse(),
            "write before block #1 of 20 bytes\nwrite after block #1 of 20 bytes\n");
#endif
  EXPECT_EQ(pool->pool_free(pool, block), JX_OK);
  EXPECT_NE(pool->pool_free(pool, block), JX_OK);
  EXPECT_EQ(host.take_misuse(), "second free of block #1 of 20 bytes\n");
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
  EXPECT_EQ(pool->pool_allocate(pool, 1, 0), nullptr);
  EXPECT_EQ(host.take_misuse(), "use after the end of pool pool\n");
}

}  // namespace
}  // namespace jx::test
