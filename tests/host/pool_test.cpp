#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <thread>

#include "host/pointer_set.hpp"
#include "host/test_host.hpp"

namespace jx::test {
namespace {

TEST(Pool, BlocksOfAnySizeAreAlignedAndDistinct) {
  TestHost host;
  JXPool *pool = host.pool();
  std::map<void *, uint32_t> blocks;
  for (uint32_t bytes : {0u, 0u, 1u, 15u, 16u, 17u, 4095u, 8192u, 1u << 20}) {
    auto *block = static_cast<unsigned char *>(pool->pool_allocate(pool, bytes, JX_POOL_ZERO_FILL));
    ASSERT_NE(block, nullptr) << bytes;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u) << bytes;
    EXPECT_TRUE(std::all_of(block, block + bytes, [](int byte) { return byte == 0; })) << bytes;
    std::fill_n(block, bytes, 0xFF);
    EXPECT_TRUE(blocks.emplace(block, bytes).second);
  }
  EXPECT_EQ(jxhost_pool_live_blocks(pool), blocks.size());
  EXPECT_EQ(jxhost_live_blocks(host.get()), blocks.size());
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
  EXPECT_EQ(jxhost_live_blocks(host.get()), 0u);
}

TEST(Pool, RefusesWhatIsNoLiveBlockOfIt) {
  TestHost host;
  JXPool *pool = host.pool();
  JXPool *other = host.pool();
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
  EXPECT_EQ(jxhost_pool_live_blocks(other), 1u);
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
  EXPECT_EQ(other->destroy_pool(other), JX_OK);
}

TEST(Pool, HugeRequestsNeverWrap) {
  TestHost host;
  JXPool *pool = host.pool();
  for (uint32_t bytes : {0xFFFFFFFFu, 0xFFFFFFF0u, 0xC0000000u, 0x80000000u}) {
    void *block = pool->pool_allocate(pool, bytes, 0);
    if (sizeof(void *) == 4) {
      EXPECT_EQ(block, nullptr) << bytes;
    }
    if (block) {
      EXPECT_EQ(pool->pool_free(pool, block), JX_OK);
    }
  }
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
}

// Random insertions and removals against a set of the library, over several growths and sweeps.
TEST(Pool, PointerSetAgreesWithAReference) {
  const uint32_t seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  jxhost::PointerSet set;
  std::map<uintptr_t, bool> reference;
  for (int step = 0; step < 200000; ++step) {
    const uintptr_t range = step < 100000 ? 4000 : 40;
    const uintptr_t address = (1 + random() % range) * 16;
    auto *pointer = reinterpret_cast<void *>(address);
    bool &is_in = reference[address];
    if (is_in || random() % 4 == 0) {
      ASSERT_EQ(set.erase(pointer), is_in) << step;
      is_in = false;
    } else {
      ASSERT_TRUE(set.insert(pointer));
      is_in = true;
    }
  }
  size_t count = 0;
  set.for_each([&](void *pointer) {
    EXPECT_TRUE(reference[reinterpret_cast<uintptr_t>(pointer)]);
    ++count;
  });
  EXPECT_EQ(count, set.count());
}

TEST(Pool, ThreadsShareAPoolAndTheHost) {
  TestHost host;
  JXPool *pool = host.pool();
  const auto hammer = [&](unsigned char mark) {
    std::mt19937 random(mark);
    std::vector<std::pair<unsigned char *, uint32_t>> blocks(50);
    for (int round = 0; round < 10000; ++round) {
      auto &[block, bytes] = blocks[random() % blocks.size()];
      if (block) {
        EXPECT_EQ(std::count(block, block + bytes, mark), bytes);
        EXPECT_EQ(pool->pool_free(pool, block), JX_OK);
      }
      bytes = static_cast<uint32_t>(random() % 300);
      block = static_cast<unsigned char *>(pool->pool_allocate(pool, bytes, 0));
      std::fill_n(block, bytes, mark);
      if (round % 100 == 0) {
        JXPool *own = host.pool();
        EXPECT_NE(own->pool_allocate(own, 8, 0), nullptr);
        EXPECT_GE(jxhost_live_blocks(host.get()), 1u);
        EXPECT_EQ(own->destroy_pool(own), JX_OK);
      }
    }
  };
  std::vector<std::thread> threads;
  for (unsigned char mark = 1; mark <= 4; ++mark) threads.emplace_back(hammer, mark);
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(jxhost_live_objects(host.get()), 1u);
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
}

}  // namespace
}  // namespace jx::test
