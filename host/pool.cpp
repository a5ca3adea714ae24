// Pools: each remembers the addresses of its blocks, which come from malloc or, small ones of a
// size in demand, from slabs.
#include <cstdlib>
#include <cstring>

#include "host/host.hpp"
#include "host/pointer_set.hpp"
#include "host/small_blocks.hpp"

namespace jxhost {

namespace {

struct Pool final : JXPool, Live {
  Pool();
  ~Pool() override {
    blocks.for_each([](void *block) { std::free(block); });
  }
  uint64_t live_blocks() const override {
    const Guard guard(mutex);
    return blocks.count() + small.count();
  }

  mutable std::mutex mutex;  // guards the blocks
  PointerSet blocks;         // live blocks from malloc
  SmallBlocks small;         // and from slabs
};

JXStatus destroy_pool(JXPool *pool) { return end_live(static_cast<Pool *>(pool)); }

// Aligns buffers to a cache line: the kernel copies into them fastest there.
void *allocate_memory(size_t bytes) {
  constexpr size_t kCacheLineBytes = 64;
  constexpr size_t kBufferBytes = 1024;  // larger blocks count as buffers
  if (bytes < kBufferBytes) return std::malloc(bytes);
  const size_t lines = (bytes + kCacheLineBytes - 1) / kCacheLineBytes;
  return std::aligned_alloc(kCacheLineBytes, lines * kCacheLineBytes);
}

// A block from malloc.
void *allocate_alone(Pool &pool, size_t bytes, bool is_zero) {
  void *block = is_zero ? std::calloc(1, bytes) : allocate_memory(bytes);
  if (!block) return nullptr;
  bool is_known;
  {
    const Guard guard(pool.mutex);
    is_known = pool.blocks.insert(block);
  }
  if (is_known) return block;
  std::free(block);
  return nullptr;
}

void *allocate_small(Pool &pool, size_t bytes) {
  if (bytes > SmallBlocks::kLargestBytes) return nullptr;
  const Guard guard(pool.mutex);
  return pool.small.allocate(bytes);
}

[[gnu::noinline]] void *allocate_any(Pool &pool, size_t bytes, bool is_zero) {
  if (!is_possible_size(bytes)) return nullptr;
  void *block = allocate_small(pool, bytes);
  if (!block) return allocate_alone(pool, bytes ? bytes : 1, is_zero);
  return is_zero ? std::memset(block, 0, bytes) : block;
}

// The common case, a small block and nobody to exclude, is short and in line.
void *pool_allocate(JXPool *pool, uint32_t bytes, uint32_t flags) {
  if (!pool) return nullptr;
  auto &self = *static_cast<Pool *>(pool);
  const bool is_zero = (flags & JX_POOL_ZERO_FILL) != 0;
  if (bytes <= SmallBlocks::kLargestBytes && is_one_thread()) {
    void *block = self.small.take(bytes);
    if (block) return is_zero ? std::memset(block, 0, bytes) : block;
  }
  return allocate_any(self, bytes, is_zero);
}

[[gnu::noinline]] JXStatus free_any(Pool &pool, void *block) {
  {
    const Guard guard(pool.mutex);
    if (pool.small.free(block)) return JX_OK;
    if (!pool.blocks.erase(block)) return JXHOST_E_BADOBJECT;
  }
  std::free(block);
  return JX_OK;
}

JXStatus pool_free(JXPool *pool, void *block) {
  if (!pool) return JXHOST_E_BADOBJECT;
  auto &self = *static_cast<Pool *>(pool);
  if (is_one_thread() && self.small.give_back(block)) return JX_OK;
  return free_any(self, block);
}

Pool::Pool()
    : JXPool{.destroy_pool = jxhost::destroy_pool,
             .pool_allocate = jxhost::pool_allocate,
             .pool_free = jxhost::pool_free} {}

}  // namespace

JXPool *create_pool(JXHost *host, uint32_t, uint32_t, uint32_t, JXOwner, const char *name8) {
  return make_live<Pool>(host, "pool", name8);
}

}  // namespace jxhost

extern "C" uint64_t jxhost_pool_live_blocks(const JXPool *pool) {
  return pool ? static_cast<const jxhost::Pool *>(pool)->live_blocks() : 0;
}
