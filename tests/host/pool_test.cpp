#include <algorithm>
#include <random>
#include <set>
#include <thread>

#include "host/test_host.hpp"

namespace jx::test {
namespace {

TEST(Pool, BlocksOfAnySizeAreAlignedAndDistinct) {
  TestHost host;
  JXPool *pool = host.pool();
  std::set<void *> blocks;
  for (uint32_t bytes : {0u, 0u, 1u, 15u, 17u, 8192u, 1u << 20}) {
    auto *block = static_cast<unsigned char *>(pool->pool_allocate(pool, bytes, JX_POOL_ZERO_FILL));
    ASSERT_NE(block, nullptr) << bytes;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u) << bytes;
    EXPECT_EQ(std::count(block, block + bytes, 0), bytes);
    std::fill_n(block, bytes, 0xFF);
    EXPECT_TRUE(blocks.insert(block).second);
  }
  EXPECT_EQ(jxhost_live_blocks(host.get()), blocks.size());
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
  EXPECT_EQ(jxhost_live_blocks(host.get()), 0u);
}

TEST(Pool, RefusesWhatIsNoLiveBlockOfIt) {
  TestHost host;
  JXPool *pool = host.pool(), *other = host.pool();
  int local = 0;
  auto *block = static_cast<char *>(pool->pool_allocate(pool, 64, 0));
  void *foreign = other->pool_allocate(other, 64, 0);
  for (void *wrong : {static_cast<void *>(nullptr), static_cast<void *>(&local), foreign,
                      static_cast<void *>(block + 16), reinterpret_cast<void *>(1)}) {
    EXPECT_EQ(pool->pool_free(pool, wrong), JXHOST_E_BADOBJECT) << wrong;
  }
  EXPECT_EQ(pool->pool_free(pool, block), JX_OK);
  EXPECT_EQ(pool->pool_free(pool, block), JXHOST_E_BADOBJECT);
  EXPECT_EQ(jxhost_pool_live_blocks(pool), 0u);
  for (uint32_t bytes : {0xFFFFFFFFu, 0xFFFFFFF0u, 0x80000000u}) {
    void *huge = pool->pool_allocate(pool, bytes, 0);
    EXPECT_TRUE(!huge || sizeof(void *) == 8) << bytes;
  }
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
  EXPECT_EQ(other->destroy_pool(other), JX_OK);
}

// With many blocks first, then with few: the set of live blocks grows and is swept meanwhile.
TEST(Pool, ThreadsShareAPoolAndTheHost) {
  TestHost host;
  JXPool *pool = host.pool();
  const auto hammer = [&](unsigned char mark) {
    std::mt19937 random(mark);
    std::vector<std::pair<unsigned char *, uint32_t>> blocks(3000);
    for (int round = 0; round < 20000; ++round) {
      auto &[block, bytes] = blocks[random() % (round < 10000 ? blocks.size() : 50)];
      if (block) {
        EXPECT_EQ(std::count(block, block + bytes, mark), bytes);
        EXPECT_EQ(pool->pool_free(pool, block), JX_OK);
      }
      bytes = static_cast<uint32_t>(random() % 300);
      block = static_cast<unsigned char *>(pool->pool_allocate(pool, bytes, 0));
      std::fill_n(block, bytes, mark);
      if (round % 100 == 0) {
        JXPool *own = host.pool();
        EXPECT_EQ(own->destroy_pool(own), JX_OK);
      }
    }
    for (const auto &[block, bytes] : blocks) {
      EXPECT_EQ(pool->pool_free(pool, block), block ? JX_OK : JXHOST_E_BADOBJECT);
    }
  };
  std::vector<std::thread> threads;
  for (unsigned char mark = 1; mark <= 4; ++mark) threads.emplace_back(hammer, mark);
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(jxhost_live_blocks(host.get()), 0u);
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
}

}  // namespace
}  // namespace jx::test
