// The test host itself: the misuse it exists to find is found.
#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

#include "support/fault_host.hpp"

namespace jx::test {
namespace {

JXPool *make_pool(FaultHost &host) {
  return host.host()->create_pool(host.host(), 0, 0, 0, nullptr, "pool");
}

TEST(FaultHost, FindsMisuse) {
  struct Row {
    const char *found;
    bool is_write;  // stopped by the address sanitizer where it is on
    std::function<void(JXPool *, JXPool *, char *)> misuse;
  };
  const Row rows[] = {
      {"second free", false,
       [](JXPool *pool, JXPool *, char *block) {
         EXPECT_EQ(pool->pool_free(pool, block), JX_OK);
         EXPECT_NE(pool->pool_free(pool, block), JX_OK);
       }},
      {"free to another pool", false,
       [](JXPool *, JXPool *other, char *block) { other->pool_free(other, block); }},
      {"no block", false,
       [](JXPool *pool, JXPool *, char *block) { pool->pool_free(pool, block + 1); }},
      {"use after the end of pool", false,
       [](JXPool *pool, JXPool *, char *) {
         pool->destroy_pool(pool);
         EXPECT_EQ(pool->pool_allocate(pool, 1, 0), nullptr);
       }},
      {"write behind", true, [](JXPool *, JXPool *, char *block) { block[20] = 1; }},
      {"write before", true, [](JXPool *, JXPool *, char *block) { block[-1] = 1; }},
      {"write after free", true,
       [](JXPool *pool, JXPool *, char *block) {
         pool->pool_free(pool, block);
         block[3] = 1;
       }},
  };
  for (const Row &row : rows) {
#ifdef __SANITIZE_ADDRESS__
    if (row.is_write) continue;
#endif
    FaultHost host;
    JXPool *pool = make_pool(host), *other = make_pool(host);
    row.misuse(pool, other, static_cast<char *>(pool->pool_allocate(pool, 20, 0)));
    const std::string misuse = host.take_misuse();
    EXPECT_NE(misuse.find(row.found), std::string::npos) << row.found << ": " << misuse;
    if (host.live().objects[0] == 2) pool->destroy_pool(pool);
    other->destroy_pool(other);
    (void)host.take_misuse();
  }
}

TEST(FaultHost, CountsWhatIsAlive) {
  FaultHost host;
  JXPool *pool = make_pool(host);
  auto *block = static_cast<unsigned char *>(pool->pool_allocate(pool, 3, 0));
  EXPECT_EQ(block[2], kFreshByte);
  auto *zeros = static_cast<unsigned char *>(pool->pool_allocate(pool, 3, JX_POOL_ZERO_FILL));
  EXPECT_EQ(zeros[2], 0);
  EXPECT_EQ(host.live().blocks, 2u);
  EXPECT_NE(host.list_live().find("block #2 of 3 bytes"), std::string::npos);
  EXPECT_NE(host.list_live().find("live pool pool"), std::string::npos);
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
  EXPECT_EQ(host.live(), LiveCounts{});
}

TEST(FaultHost, FailsTheCallThatIsArmed) {
  FaultHost host;
  JXPool *pool = make_pool(host);
  host.arm(kMemory, 2);
  EXPECT_TRUE(pool->pool_allocate(pool, 1, 0));
  EXPECT_TRUE(pool->pool_allocate(pool, 1, 0));
  EXPECT_FALSE(make_pool(host));
  EXPECT_TRUE(pool->pool_allocate(pool, 1, 0));
  EXPECT_EQ(host.disarm(), Call::create_pool);
  host.arm(calls(Call::create_lock), 0);
  EXPECT_TRUE(pool->pool_allocate(pool, 1, 0));
  EXPECT_EQ(host.disarm(), std::nullopt);
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
}

TEST(FaultHost, ServesThreads) {
  constexpr uint32_t kThreads = 4, kRounds = 200;
  FaultHost host;
  std::vector<std::thread> threads;
  host.arm(calls(Call::create_lock), 5);
  for (uint32_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&host] {
      JXNls *nls = host.host()->nls;
      for (uint32_t round = 0; round < kRounds; ++round) {
        JXPool *pool = make_pool(host);
        pool->pool_free(pool, pool->pool_allocate(pool, round, 0));
        nls->destroy_transcoder(nls, nls->create_decoder(nls, JX_ENCODING_NATIVE, 0, 0));
        JXLock *lock = host.host()->create_lock(host.host(), 0, 0, 0, "lock");
        if (lock) lock->destroy_lock(lock);
        pool->destroy_pool(pool);
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  for (const Call call : {Call::create_pool, Call::pool_allocate, Call::create_lock}) {
    EXPECT_EQ(host.count(call), kThreads * kRounds) << call_name(call);
  }
  EXPECT_EQ(host.count(Call::destroy_lock), kThreads * kRounds - 1);
  EXPECT_EQ(host.disarm(), Call::create_lock);
  EXPECT_EQ(host.live(), LiveCounts{});
}

}  // namespace
}  // namespace jx::test
