// The memory of the test host's pools: every block has guards at both ends, fresh and freed bytes
// are poisoned, and freed blocks are quarantined to catch late writes and double frees.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>

#include "jx/host.h"

namespace jx::test {

// Blocks of any number of pools. Not thread-safe: the owner locks. Routines that can find misuse
// return its description, or an empty string.
class GuardedBlocks {
 public:
  GuardedBlocks() = default;
  GuardedBlocks(const GuardedBlocks &) = delete;
  GuardedBlocks &operator=(const GuardedBlocks &) = delete;
  ~GuardedBlocks();

  // A block of the pool, or null when the C library has no memory.
  void *allocate(const JXPool *pool, uint32_t bytes, bool zero_fill);
  std::string free(const JXPool *pool, void *block);
  // Frees every block that the pool still holds.
  std::string free_all(const JXPool *pool);
  // Checks the guards of live blocks and the poison of freed ones.
  std::string check() const;
  // Live blocks, and a line for each of them.
  uint64_t live() const { return blocks_.size() - held_back_.size(); }
  std::string list_live() const;

 private:
  struct Block {
    unsigned char *memory;  // start of the front guard
    uint32_t bytes;         // requested size
    uint64_t ordinal;       // 1 for the first allocation of the host
    const JXPool *pool;     // null: freed
  };

  static std::string describe(const Block &block);
  static std::string check_block(const Block &block);
  std::string retire(Block &block);
  void release(const void *user);

  std::unordered_map<const void *, Block> blocks_;
  std::deque<const void *> held_back_;  // freed blocks, oldest first
  size_t held_back_bytes_ = 0;
  uint64_t allocations_ = 0;
};

}  // namespace jx::test
