// Small blocks of a pool, cut from slabs: aligned areas with blocks of one size each. Cutting and
// taking back a block costs a quarter of malloc and free with an entry in the set of blocks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "host/pointer_set.hpp"

namespace jxhost {

// Not thread-safe: its owner locks. A slab is found by the high bits of an address and vouches for
// its blocks by a bit each, so an address can be checked without reading its memory.
class SmallBlocks {
 public:
  static constexpr size_t kLargestBytes = 512;

  SmallBlocks() = default;
  SmallBlocks(const SmallBlocks &) = delete;
  SmallBlocks &operator=(const SmallBlocks &) = delete;
  ~SmallBlocks() {
    slabs_.for_each([](void *slab) { std::free(slab); });
  }

  size_t count() const { return count_; }

  // A block of at most kLargestBytes, aligned for any type. Null when out of memory, or when its
  // size was not asked for often yet: a slab is more than a few blocks are worth.
  void *allocate(size_t bytes) {
    Size &size = sizes_[bytes == 0 ? 0 : (bytes - 1) / kUnitBytes];
    Slab *slab = size.first ? size.first : make_slab(&size);
    if (!slab) return nullptr;
    FreeBlock *block = slab->free;
    if (block) {
      slab->free = block->next;
    } else {
      block = reinterpret_cast<FreeBlock *>(bytes_of(slab) + slab->cut_bytes);
      slab->cut_bytes += slab->block_bytes;
    }
    if (slab->is_full()) unlink(slab);
    flip(slab, block);
    ++slab->live_count;
    ++count_;
    return block;
  }

  // Takes a block back. False when the address is none of a live block.
  bool free(void *address) {
    const auto bits = reinterpret_cast<uintptr_t>(address);
    auto *slab = reinterpret_cast<Slab *>(bits & ~(kSlabBytes - 1));
    if (bits % kUnitBytes != 0 || !slabs_.contains(slab) || !is_live(slab, address)) return false;
    flip(slab, address);
    const bool was_full = slab->is_full();
    auto *block = static_cast<FreeBlock *>(address);
    block->next = slab->free;
    slab->free = block;
    --count_;
    if (was_full) link(slab);
    if (--slab->live_count == 0) drop_spare(slab);
    return true;
  }

 private:
  // The sanitizer watches the ends of blocks from malloc.
#if defined(__SANITIZE_ADDRESS__)
  static constexpr bool kCuts = false;
#else
  static constexpr bool kCuts = true;
#endif
  static constexpr uintptr_t kSlabBytes = 16384;  // and the alignment of a slab
  static constexpr size_t kUnitBytes = 16;        // the size of a block is a multiple of it
  static constexpr size_t kSizeCount = kLargestBytes / kUnitBytes;
  static constexpr uint32_t kFewRequests = 16;  // of a size: not worth a slab

  struct FreeBlock {
    FreeBlock *next;
  };
  struct Slab;

  // One size of block.
  struct Size {
    Slab *first = nullptr;  // slabs that are not full
    uint32_t requests = 0;  // without a slab with room
  };

  // The head of a slab; the blocks follow.
  struct alignas(kUnitBytes) Slab {
    Slab *previous;  // slabs of this size that are not full
    Slab *next;
    Size *size;
    FreeBlock *free;       // blocks taken back
    uint32_t block_bytes;  // size of a block
    uint32_t cut_bytes;    // where the next block is cut, from the start of the slab
    uint32_t live_count;
    uint32_t live[kSlabBytes / kUnitBytes / 32];  // bits: a live block begins at that unit

    bool is_full() const { return !free && cut_bytes + block_bytes > kSlabBytes; }
  };

  static unsigned char *bytes_of(Slab *slab) { return reinterpret_cast<unsigned char *>(slab); }

  // The unit of an address in its slab.
  static size_t unit_of(const void *address) {
    return (reinterpret_cast<uintptr_t>(address) & (kSlabBytes - 1)) / kUnitBytes;
  }
  static bool is_live(const Slab *slab, const void *address) {
    const size_t unit = unit_of(address);
    return (slab->live[unit / 32] >> (unit % 32) & 1) != 0;
  }
  static void flip(Slab *slab, const void *address) {
    const size_t unit = unit_of(address);
    slab->live[unit / 32] ^= 1u << (unit % 32);
  }

  [[gnu::noinline]] Slab *make_slab(Size *size) {
    if (!kCuts || ++size->requests < kFewRequests) return nullptr;
    void *memory = std::aligned_alloc(kSlabBytes, kSlabBytes);
    if (!memory) return nullptr;
    if (!slabs_.insert(memory)) {
      std::free(memory);
      return nullptr;
    }
    auto *slab = new (memory) Slab{};
    slab->size = size;
    slab->block_bytes = static_cast<uint32_t>((size - sizes_.data() + 1)) * kUnitBytes;
    slab->cut_bytes = sizeof(Slab);
    link(slab);
    return slab;
  }

  void link(Slab *slab) {
    Slab *&first = slab->size->first;
    slab->previous = nullptr;
    slab->next = first;
    if (first) first->previous = slab;
    first = slab;
  }
  void unlink(Slab *slab) {
    (slab->previous ? slab->previous->next : slab->size->first) = slab->next;
    if (slab->next) slab->next->previous = slab->previous;
  }

  // Frees an empty slab, unless it is the last one of its size with room.
  void drop_spare(Slab *slab) {
    if (!slab->previous && !slab->next) return;
    unlink(slab);
    slabs_.erase(slab);
    std::free(slab);
  }

  PointerSet slabs_;
  std::array<Size, kSizeCount> sizes_;
  size_t count_ = 0;  // live blocks
};

}  // namespace jxhost
