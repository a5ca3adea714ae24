#include <algorithm>
#include <random>
#include <set>

#include "host/test_host.hpp"
#include "jx/runtime.h"

namespace jx::test {
namespace {

TEST(Pool, GivesDistinctAlignedBlocksAndTakesOnlyThose) {
  TestHost host;
  JXPool *pool = host.pool();
  std::set<void *> blocks;
  for (uint32_t bytes : {0u, 0u, 1u, 15u, 17u, 8192u, 1u << 20}) {
    auto *block = static_cast<unsigned char *>(pool->pool_allocate(pool, bytes, JX_POOL_ZERO_FILL));
    ASSERT_NE(block, nullptr) << bytes;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u) << bytes;
    EXPECT_EQ(std::count(block, block + bytes, 0), bytes);
    EXPECT_TRUE(blocks.insert(block).second);
  }
  for (uint32_t bytes : {0xFFFFFFFFu, 0xFFFFFFF0u, 0x80000000u}) {
    EXPECT_TRUE(!pool->pool_allocate(pool, bytes, 0) || sizeof(void *) == 8) << bytes;
  }
  JXPool *other = host.pool();
  auto *block = static_cast<char *>(other->pool_allocate(other, 64, 0));
  for (void *wrong : {static_cast<void *>(nullptr), *blocks.begin(), static_cast<void *>(&host),
                      static_cast<void *>(block + 16), reinterpret_cast<void *>(1)}) {
    EXPECT_EQ(other->pool_free(other, wrong), JXHOST_E_BADOBJECT) << wrong;
  }
  EXPECT_EQ(other->pool_free(other, block), JX_OK);
  EXPECT_EQ(other->pool_free(other, block), JXHOST_E_BADOBJECT) << "freed twice";
  EXPECT_EQ(other->destroy_pool(other), JX_OK);
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
  EXPECT_EQ(jxhost_live_blocks(host.get()), 0u);
}

// More blocks of each size than fit the area that they are cut from.
TEST(Pool, KeepsManySmallBlocksApart) {
  TestHost host;
  JXPool *pool = host.pool();
  const auto make = [&](uint32_t bytes, unsigned char mark, uint32_t flags) {
    auto *block = static_cast<unsigned char *>(pool->pool_allocate(pool, bytes, flags));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u) << bytes;
    EXPECT_TRUE(flags == 0 ||
                std::all_of(block, block + bytes, [](int byte) { return byte == 0; }));
    std::fill_n(block, bytes, mark);
    return block;
  };
  uint64_t live = 0;
  for (uint32_t bytes : {0u, 1u, 16u, 17u, 48u, 255u, 496u, 511u, 512u, 513u, 528u}) {
    std::vector<unsigned char *> blocks(2000);
    for (auto &block : blocks) block = make(bytes, 1, 0);
    EXPECT_EQ(std::set<void *>(blocks.begin(), blocks.end()).size(), blocks.size());
    for (size_t i = 0; i < blocks.size(); i += 2) {
      for (uint32_t inside : {1u, 8u, 16u, 32u}) {
        if (inside >= bytes) continue;
        EXPECT_EQ(pool->pool_free(pool, blocks[i] + inside), JXHOST_E_BADOBJECT) << bytes;
      }
      ASSERT_EQ(pool->pool_free(pool, blocks[i]), JX_OK);
      EXPECT_EQ(pool->pool_free(pool, blocks[i]), JXHOST_E_BADOBJECT) << bytes;
    }
    for (size_t i = 0; i < blocks.size(); i += 2) blocks[i] = make(bytes, 2, JX_POOL_ZERO_FILL);
    for (size_t i = 0; i < blocks.size(); ++i) {
      const auto mark = static_cast<unsigned char>(i % 2 ? 1 : 2);
      ASSERT_EQ(std::count(blocks[i], blocks[i] + bytes, mark), bytes) << bytes;
      ASSERT_TRUE(i % 8 == 0 || pool->pool_free(pool, blocks[i]) == JX_OK) << bytes;
    }
    live += blocks.size() / 8;
    EXPECT_EQ(jxhost_pool_live_blocks(pool), live);
  }
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
}

// First many blocks, then few, so that the set of live blocks grows and is rehashed.
TEST(Pool, ThreadsShareAPoolAndTheHost) {
  TestHost host;
  JXPool *pool = host.pool();
  on_threads([&](uint32_t number) {
    const auto mark = static_cast<unsigned char>(number);
    std::mt19937 random(number);
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
        EXPECT_EQ(jxlStatusToJnl(host.journal(), 4, number, nullptr), JX_OK);
      }
    }
    for (const auto &[block, bytes] : blocks) {
      EXPECT_EQ(pool->pool_free(pool, block), block ? JX_OK : JXHOST_E_BADOBJECT);
    }
  });
  EXPECT_EQ(host.take_lines().size(), 800u);
  EXPECT_EQ(jxhost_live_blocks(host.get()), 0u);
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
}

}  // namespace
}  // namespace jx::test
