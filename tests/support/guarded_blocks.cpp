#include "support/guarded_blocks.hpp"

#include <sanitizer/asan_interface.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace jx::test {

namespace {

constexpr size_t kGuardBytes = 32;  // keeps the alignment of malloc
constexpr unsigned char kGuardByte = 0xFD;
constexpr size_t kHeldBackLimit = 4u << 20;  // bytes; checked again and again
constexpr size_t kMostHeldBack = 2000;

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
  for (auto &[user, block] : blocks_) {
    open_all(block.memory, block.bytes);
    std::free(block.memory);
  }
}

void *GuardedBlocks::allocate(const JXPool *pool, uint32_t bytes, bool zero_fill) {
  if (bytes > SIZE_MAX / 2 - 2 * kGuardBytes) return nullptr;
  auto *memory = static_cast<unsigned char *>(std::malloc(2 * kGuardBytes + bytes));
  if (!memory) return nullptr;
  std::memset(memory, kGuardByte, kGuardBytes);
  std::memset(memory + kGuardBytes, zero_fill ? 0 : kFreshByte, bytes);
  std::memset(memory + kGuardBytes + bytes, kGuardByte, kGuardBytes);
  close_guards(memory, bytes);
  blocks_[memory + kGuardBytes] = Block{memory, bytes, ++allocations_, pool, false};
  live_of_[pool].insert(memory + kGuardBytes);
  ++live_;
  return memory + kGuardBytes;
}

std::string GuardedBlocks::free(const JXPool *pool, void *user) {
  const auto found = blocks_.find(user);
  if (found == blocks_.end()) return "free of an address that is no block\n";
  Block &block = found->second;
  if (block.freed) return "second free of " + describe(block);
  if (block.pool != pool) return "free to another pool of " + describe(block);
  std::string misuse = check_block(block);
  live_of_[pool].erase(user);
  retire(block);
  trim();
  return misuse;
}

std::string GuardedBlocks::free_all(const JXPool *pool) {
  std::string misuse;
  for (const void *user : live_of_[pool]) {
    Block &block = blocks_[user];
    misuse += check_block(block);
    retire(block);
  }
  live_of_.erase(pool);
  trim();
  return misuse;
}

std::string GuardedBlocks::check() {
  std::string misuse;
  for (const auto &[user, block] : blocks_) misuse += check_block(block);
  return misuse;
}

std::string GuardedBlocks::list_live() const {
  std::string lines;
  for (const auto &[user, block] : blocks_) {
    if (!block.freed) lines += "live " + describe(block);
  }
  return lines;
}

std::string GuardedBlocks::describe(const Block &block) {
  return "block #" + std::to_string(block.ordinal) + " of " + std::to_string(block.bytes) +
         " bytes\n";
}

// What is damaged is mended, so that it is reported once.
std::string GuardedBlocks::check_block(const Block &block) {
  open_all(block.memory, block.bytes);
  unsigned char *user = block.memory + kGuardBytes;
  const auto damaged = [](unsigned char *bytes, size_t count, unsigned char value) {
    if (std::all_of(bytes, bytes + count, [=](unsigned char byte) { return byte == value; })) {
      return false;
    }
    std::memset(bytes, value, count);
    return true;
  };
  std::string misuse;
  if (damaged(block.memory, kGuardBytes, kGuardByte)) misuse += "write before " + describe(block);
  if (damaged(user + block.bytes, kGuardBytes, kGuardByte)) {
    misuse += "write behind " + describe(block);
  }
  if (block.freed && damaged(user, block.bytes, kFreedByte)) {
    misuse += "write after free to " + describe(block);
  }
  close_guards(block.memory, block.bytes);
  if (block.freed) ASAN_POISON_MEMORY_REGION(user, block.bytes);
  return misuse;
}

void GuardedBlocks::retire(Block &block) {
  unsigned char *user = block.memory + kGuardBytes;
  std::memset(user, kFreedByte, block.bytes);
  ASAN_POISON_MEMORY_REGION(user, block.bytes);
  block.freed = true;
  held_back_.push_back(user);
  held_back_bytes_ += block.bytes;
  --live_;
}

void GuardedBlocks::release_oldest() {
  const auto found = blocks_.find(held_back_.front());
  held_back_.pop_front();
  held_back_bytes_ -= found->second.bytes;
  open_all(found->second.memory, found->second.bytes);
  std::free(found->second.memory);
  blocks_.erase(found);
}

void GuardedBlocks::trim() {
  while (held_back_bytes_ > kHeldBackLimit || held_back_.size() > kMostHeldBack) release_oldest();
}

}  // namespace jx::test
