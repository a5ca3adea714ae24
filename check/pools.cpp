// Pools: alignment, zero fill, blocks that are apart, and who may free what.
#include <stdio.h>
#include <string.h>

#include <algorithm>

#include "check/isolation.hpp"
#include "check/objects.hpp"

namespace jxcheck {

namespace {

constexpr uint32_t kAlignment = 16;

void check_alignment(Probe &probe) {
  const Pool pool = make_pool(probe);
  if (!pool) return;
  for (uint32_t bytes :
       {1u, 2u, 3u, 8u, 15u, 16u, 17u, 24u, 40u, 64u, 100u, 1000u, 5000u, 40000u}) {
    for (const uint32_t flags : {0u, JX_POOL_ZERO_FILL}) {
      const void *block = pool->pool_allocate(pool.get(), bytes, flags);
      if (!block) return probe.found("null for %u bytes", bytes);
      const auto rest = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(block) % kAlignment);
      if (rest != 0) return probe.found("%u bytes at an address %u past a multiple", bytes, rest);
    }
  }
}

void check_zero_fill(Probe &probe) {
  const Pool pool = make_pool(probe);
  if (!pool) return;
  for (const uint32_t bytes : {1u, 16u, 33u, 300u, 5000u}) {
    // Blocks that were used and freed are what a pool is likely to hand out again.
    void *used = pool->pool_allocate(pool.get(), bytes, 0);
    if (!used) return probe.found("null for %u bytes", bytes);
    ::memset(used, 0xEE, bytes);
    pool->pool_free(pool.get(), used);
    const auto *block =
        static_cast<uint8_t *>(pool->pool_allocate(pool.get(), bytes, JX_POOL_ZERO_FILL));
    if (!block) return probe.found("null for %u bytes", bytes);
    const auto *end = block + bytes;
    const auto *byte = std::find_if(block, end, [](uint8_t value) { return value != 0; });
    if (byte != end) return probe.found("byte %d of %u is 0x%x", int(byte - block), bytes, *byte);
  }
}

void check_empty(Probe &probe) {
  const Pool pool = make_pool(probe);
  if (!pool) return;
  void *const first = pool->pool_allocate(pool.get(), 0, 0);
  void *const second = pool->pool_allocate(pool.get(), 0, JX_POOL_ZERO_FILL);
  if (!first || !second) return probe.found("null");
  if (first == second) return probe.found("the same block twice");
  for (void *block : {first, second}) {
    probe.expect_status("to free it", pool->pool_free(pool.get(), block), JX_OK);
  }
}

void check_many(Probe &probe) {
  constexpr uint32_t kCount = 1000;
  static uint8_t *blocks[kCount];
  const Pool pool = make_pool(probe);
  if (!pool) return;
  const auto bytes_of = [](uint32_t i) { return 1 + i % 61; };
  for (uint32_t i = 0; i < kCount; ++i) {
    blocks[i] = static_cast<uint8_t *>(pool->pool_allocate(pool.get(), bytes_of(i), 0));
    if (!blocks[i]) return probe.found("null for block %u", i);
    ::memset(blocks[i], static_cast<uint8_t>(i % 251), bytes_of(i));
  }
  for (uint32_t i = 0; i < kCount; ++i) {
    for (uint32_t j = 0; j < bytes_of(i); ++j) {
      if (blocks[i][j] != i % 251) return probe.found("block %u holds what another was given", i);
    }
    if (pool->pool_free(pool.get(), blocks[i]) != JX_OK)
      return probe.found("block %u: not freed", i);
  }
}

void check_too_much(Probe &probe) {
  constexpr uint32_t kBytes = 0xFFFFFFF1;
  const Pool pool = make_pool(probe);
  if (!pool) return;
  auto *block = static_cast<volatile uint8_t *>(pool->pool_allocate(pool.get(), kBytes, 0));
  if (!block) return;
  if (sizeof(void *) == 4) return probe.found("a block, for which there is no memory");
  block[0] = 1;
  block[kBytes - 1] = 1;
}

void check_free_null(Probe &probe) {
  const Pool pool = make_pool(probe);
  if (pool) probe.expect_failure("null", pool->pool_free(pool.get(), nullptr));
}

void check_free_foreign(Probe &probe) {
  const Pool pool = make_pool(probe);
  const Pool other = make_pool(probe);
  if (!pool || !other) return;
  void *block = other->pool_allocate(other.get(), 24, 0);
  if (!block) return probe.found("null for 24 bytes");
  if (!probe.expect_failure("freed", pool->pool_free(pool.get(), block))) return;
  probe.expect_status("to free it afterwards in its own pool", other->pool_free(other.get(), block),
                      JX_OK);
}

// The pages of the process that are in memory, or 0.
uint32_t resident_pages() {
  FILE *file = ::fopen("/proc/self/statm", "re");
  if (!file) return 0;
  unsigned pages = 0;
  if (::fscanf(file, "%*u %u", &pages) != 1) pages = 0;
  ::fclose(file);
  return pages;
}

void check_destroy(Probe &probe) {
  constexpr uint32_t kPools = 600, kBlocks = 4, kBlockBytes = 16000;  // 37 MiB together
  constexpr uint32_t kMostPages = 5000;                               // half of that
  if (is_sanitized()) return probe.skip("a sanitizer keeps freed memory");
  const uint32_t before = resident_pages();
  for (uint32_t i = 0; i < kPools; ++i) {
    Pool pool = make_pool(probe);
    if (!pool) return;
    for (uint32_t j = 0; j < kBlocks; ++j) {
      void *block = pool->pool_allocate(pool.get(), kBlockBytes, 0);
      if (!block) return probe.found("null for block %u of pool %u", j, i);
      ::memset(block, 1, kBlockBytes);
    }
    JXPool *ended = pool.release();
    if (!probe.expect_status("to destroy it", ended->destroy_pool(ended), JX_OK)) return;
  }
  const uint32_t after = resident_pages();
  if (after > before + kMostPages) {
    probe.found("%u pages more than before, after %u pools", after - before, kPools);
  }
}

constexpr Check kChecks[] = {
    {Slot::pool_allocate, "blocks of 1 to 40000 bytes", "addresses that are a multiple of 16",
     guide::kKernel, kPoolSlots, check_alignment},
    {Slot::pool_allocate, "blocks with JX_POOL_ZERO_FILL", "every byte 0", guide::kKernel,
     kPoolSlots, check_zero_fill},
    {Slot::pool_allocate, "two blocks of 0 bytes", "two blocks, which can be freed", guide::kKernel,
     kPoolSlots, check_empty},
    {Slot::pool_allocate, "1000 blocks, all filled", "each keeps its content", guide::kKernel,
     kPoolSlots, check_many},
    {Slot::pool_allocate, "4294967281 bytes", "null, or as many bytes", guide::kKernel, kPoolSlots,
     check_too_much},
    {Slot::pool_free, "null", "a status other than 0", guide::kKernel, kPoolSlots, check_free_null},
    {Slot::pool_free, "a block of another pool", "a status other than 0, and the block stays",
     guide::kKernel, kPoolSlots, check_free_foreign},
    {Slot::destroy_pool, "600 pools with 4 blocks each", "status 0, and every block is freed",
     guide::kKernel, kPoolSlots, check_destroy},
};

}  // namespace

std::span<const Check> pool_checks() { return kChecks; }

}  // namespace jxcheck
