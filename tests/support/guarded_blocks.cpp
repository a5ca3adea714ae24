#include "support/guarded_blocks.hpp"

#include <sanitizer/asan_interface.h>

#include <cstdlib>
#include <cstring>

namespace jx::test {

namespace {

constexpr unsigned char kFreshByte = 0xA5;  // content of a block that is not zero-filled
constexpr unsigned char kFreedByte = 0xDD;  // content of a freed block
constexpr unsigned char kGuardByte = 0xFD;
constexpr size_t kGuardBytes = 32;              // keeps the alignment of malloc
constexpr size_t kHeldBackLimit = 1u << 20;     // bytes; each check reads them all
constexpr size_t kHeldBackOverhead = 2u << 10;  // added to the size of each block

// Lets the address sanitizer catch accesses as they happen; does nothing in other builds.
void close_guards(unsigned char *memory, uint32_t bytes) {
  ASAN_POISON_MEMORY_REGION(memory, kGuardBytes);
  ASAN_POISON_MEMORY_REGION(memory + kGuardBytes + bytes, kGuardBytes);
}

void open_all(unsigned char *memory, uint32_t bytes) {
  ASAN_UNPOISON_MEMORY_REGION(memory, 2 * kGuardBytes + bytes);
}

}  // namespace

GuardedBlocks::~GuardedBlocks() {
  while (!blocks_.empty()) release(blocks_.begin()->first);
}

void *GuardedBlocks::allocate(const JXPool *pool, uint32_t bytes, bool zero_fill) {
  while (held_back_bytes_ > kHeldBackLimit) {
    held_back_bytes_ -= blocks_[held_back_.front()].bytes + kHeldBackOverhead;
    release(held_back_.front());
    held_back_.pop_front();
  }
  auto *memory = static_cast<unsigned char *>(std::malloc(2 * kGuardBytes + bytes));
  if (!memory) return nullptr;
  std::memset(memory, kGuardByte, 2 * kGuardBytes + bytes);
  std::memset(memory + kGuardBytes, zero_fill ? 0 : kFreshByte, bytes);
  close_guards(memory, bytes);
  blocks_[memory + kGuardBytes] = {memory, bytes, ++allocations_, pool};
  return memory + kGuardBytes;
}

std::string GuardedBlocks::free(const JXPool *pool, void *user) {
  const auto found = blocks_.find(user);
  if (found == blocks_.end()) return "free of an address that is no block\n";
  Block &block = found->second;
  if (!block.pool) return "second free of " + describe(block);
  if (block.pool != pool) return "free to another pool of " + describe(block);
  return retire(block);
}

std::string GuardedBlocks::free_all(const JXPool *pool) {
  std::string misuse;
  for (auto &[user, block] : blocks_) {
    if (block.pool == pool) misuse += retire(block);
  }
  return misuse;
}

std::string GuardedBlocks::check() const {
  std::string misuse;
  for (const auto &[user, block] : blocks_) misuse += check_block(block);
  return misuse;
}

std::string GuardedBlocks::list_live() const {
  std::string lines;
  for (const auto &[user, block] : blocks_) {
    if (block.pool) lines += "live " + describe(block);
  }
  return lines;
}

std::string GuardedBlocks::describe(const Block &block) {
  return "block #" + std::to_string(block.ordinal) + " of " + std::to_string(block.bytes) +
         " bytes\n";
}

// Repairs the damage, so that it is reported once.
std::string GuardedBlocks::check_block(const Block &block) {
  open_all(block.memory, block.bytes);
  unsigned char *user = block.memory + kGuardBytes;
  std::string misuse;
  const auto check = [&](unsigned char *bytes, size_t count, unsigned char value,
                         const char *what) {
    // Compared with itself one byte on, which is much faster than byte by byte.
    if (count == 0) return;
    if (bytes[0] == value && std::memcmp(bytes, bytes + 1, count - 1) == 0) return;
    std::memset(bytes, value, count);
    misuse += what + describe(block);
  };
  check(block.memory, kGuardBytes, kGuardByte, "write before ");
  check(user + block.bytes, kGuardBytes, kGuardByte, "write after ");
  if (!block.pool) check(user, block.bytes, kFreedByte, "write after free to ");
  close_guards(block.memory, block.bytes);
  if (!block.pool) ASAN_POISON_MEMORY_REGION(user, block.bytes);
  return misuse;
}

// Poisons a block after a check and holds it back.
std::string GuardedBlocks::retire(Block &block) {
  const std::string misuse = check_block(block);
  unsigned char *user = block.memory + kGuardBytes;
  std::memset(user, kFreedByte, block.bytes);
  ASAN_POISON_MEMORY_REGION(user, block.bytes);
  block.pool = nullptr;
  held_back_.push_back(user);
  held_back_bytes_ += block.bytes + kHeldBackOverhead;
  return misuse;
}

// Frees a block's memory.
void GuardedBlocks::release(const void *user) {
  const Block block = blocks_[user];
  blocks_.erase(user);
  open_all(block.memory, block.bytes);
  std::free(block.memory);
}

}  // namespace jx::test
