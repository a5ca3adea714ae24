// Small blocks of a pool, cut from slabs: aligned areas with blocks of one size each. Cutting a
// block and taking it back costs half of malloc and free with an entry in the set of blocks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "host/pointer_set.hpp"

namespace jxhost {

// Not thread-safe: its owner locks. A slab is found by the high bits of an address and vouches for
// its blocks by a mark each, so an address can be checked without reading its memory.
class SmallBlocks {
 public:
  static constexpr size_t kLargestBytes = 512;

  SmallBlocks() = default;
  SmallBlocks(const SmallBlocks &) = delete;
  SmallBlocks &operator=(const SmallBlocks &) = delete;
  ~SmallBlocks() {
    slabs_.for_each([](void *slab) { std::free(slab); });
  }

  // Live blocks.
  size_t count() const {
    size_t count = 0;
    slabs_.for_each([&count](void *slab) { count += static_cast<Slab *>(slab)->live_count; });
    return count;
  }

  // A block of at most kLargestBytes, aligned for any type, from the slab at hand; null when that
  // has no room. Calls nothing, like give_back, so that its caller keeps no stack frame.
  void *take(size_t bytes) {
    Slab *slab = size_of(bytes).first;
    if (!slab) return nullptr;
    FreeBlock *block = slab->free;
    if (block) {
      slab->free = block->next;
    } else {
      if (slab->is_full()) return nullptr;
      block = reinterpret_cast<FreeBlock *>(bytes_of(slab) + slab->cut_bytes);
      slab->cut_bytes += slab->block_bytes;
    }
    mark_of(slab, block) = 1;
    ++slab->live_count;
    return block;
  }

  // The same from any slab, an old or a new one. Null when out of memory, or when the size was not
  // asked for often yet: a slab is more than a few blocks are worth.
  void *allocate(size_t bytes) {
    Size &size = size_of(bytes);
    while (size.first && size.first->is_full()) unlink(size.first);
    return size.first || make_slab(&size) ? take(bytes) : nullptr;
  }

  // Takes a block back. False when the address is none of a live block, or when the slab's place in
  // the list changes.
  bool give_back(void *address) {
    Slab *slab = slab_of(address);
    if (!slab || slab->changes_place()) return false;
    put(slab, address);
    return true;
  }

  // Takes a block back. False when the address is none of a live block.
  bool free(void *address) {
    Slab *slab = slab_of(address);
    if (!slab) return false;
    put(slab, address);
    if (!slab->is_listed) link(slab);
    if (slab->live_count == 0 && slab->has_neighbour()) drop(slab);
    return true;
  }

 private:
  // The sanitizer watches the ends of blocks from malloc.
#if defined(__SANITIZE_ADDRESS__)
  static constexpr bool kCuts = false;
#elif defined(__has_feature)
  static constexpr bool kCuts = !__has_feature(address_sanitizer);
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
    Slab *first = nullptr;  // slabs with room, and full ones not found yet
    uint32_t requests = 0;  // that met no slab
  };

  // The head of a slab; the blocks follow.
  struct alignas(kUnitBytes) Slab {
    Slab *previous;  // in the list of its size
    Slab *next;
    Size *size;
    FreeBlock *free;       // blocks taken back
    uint32_t block_bytes;  // size of a block
    uint32_t cut_bytes;    // where the next block is cut, from the start of the slab
    uint32_t live_count;
    uint32_t is_listed;                      // 0: it was found full
    uint8_t marks[kSlabBytes / kUnitBytes];  // 1: a live block begins at that unit

    bool has_neighbour() const { return previous || next; }
    // Before a block is given back: the slab was found full, or is empty then and not the only one.
    bool changes_place() const { return !is_listed || (live_count == 1 && has_neighbour()); }
    bool is_full() const { return !free && cut_bytes + block_bytes > kSlabBytes; }
  };

  static unsigned char *bytes_of(Slab *slab) { return reinterpret_cast<unsigned char *>(slab); }

  static uint8_t &mark_of(Slab *slab, const void *address) {
    return slab->marks[(reinterpret_cast<uintptr_t>(address) & (kSlabBytes - 1)) / kUnitBytes];
  }

  Size &size_of(size_t bytes) { return sizes_[bytes == 0 ? 0 : (bytes - 1) / kUnitBytes]; }

  // The slab of a live block; null when the address is none of one.
  Slab *slab_of(const void *address) const {
    const auto bits = reinterpret_cast<uintptr_t>(address);
    auto *slab = reinterpret_cast<Slab *>(bits & ~(kSlabBytes - 1));
    const bool is_ours = bits % kUnitBytes == 0 && slabs_.contains(slab);
    return is_ours && mark_of(slab, address) ? slab : nullptr;
  }

  static void put(Slab *slab, void *address) {
    mark_of(slab, address) = 0;
    auto *block = static_cast<FreeBlock *>(address);
    block->next = slab->free;
    slab->free = block;
    --slab->live_count;
  }

  Slab *make_slab(Size *size) {
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
    slab->is_listed = 1;
    if (first) first->previous = slab;
    first = slab;
  }
  void unlink(Slab *slab) {
    (slab->previous ? slab->previous->next : slab->size->first) = slab->next;
    if (slab->next) slab->next->previous = slab->previous;
    slab->is_listed = 0;
  }

  void drop(Slab *slab) {
    unlink(slab);
    slabs_.erase(slab);
    std::free(slab);
  }

  PointerSet slabs_;
  std::array<Size, kSizeCount> sizes_;
};

}  // namespace jxhost
