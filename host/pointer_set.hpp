// A set of block addresses: open addressing with linear probing, nothing stored in the blocks
// themselves, so that an address which is no live block is told apart without reading its memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace jxhost {

// Not thread-safe: its owner locks. Never more than two thirds full.
class PointerSet {
 public:
  PointerSet() = default;
  PointerSet(const PointerSet &) = delete;
  PointerSet &operator=(const PointerSet &) = delete;
  ~PointerSet() { std::free(slots_); }

  size_t count() const { return count_; }

  // Adds an address that is not in the set and not null. False when memory is out.
  bool insert(void *address) {
    if ((count_ + 1) * 3 > capacity() * 2 && !grow()) return false;
    place(address);
    ++count_;
    return true;
  }

  // Takes an address out. False when it is not in the set.
  bool erase(const void *address) {
    if (count_ == 0 || !address) return false;
    size_t hole = home_of(address);
    while (slots_[hole] != address) {
      if (!slots_[hole]) return false;
      hole = (hole + 1) & mask_;
    }
    close_hole(hole);
    --count_;
    return true;
  }

  // Calls use(address) for every address.
  template <typename Use>
  void for_each(Use use) const {
    for (size_t i = 0; i < capacity(); ++i) {
      if (slots_[i]) use(slots_[i]);
    }
  }

 private:
  static constexpr size_t kFirstCapacity = 16;

  size_t capacity() const { return slots_ ? mask_ + 1 : 0; }

  // Blocks are 16 bytes apart at least; the multiplication spreads neighbours over the slots.
  size_t home_of(const void *address) const {
    const uint64_t number = reinterpret_cast<uintptr_t>(address) >> 4;
    return static_cast<size_t>((number * 0x9E3779B97F4A7C15u) >> 32) & mask_;
  }

  void place(void *address) {
    size_t slot = home_of(address);
    while (slots_[slot]) slot = (slot + 1) & mask_;
    slots_[slot] = address;
  }

  // Moves later addresses of the run forward, so that no search meets the hole too early.
  void close_hole(size_t hole) {
    for (size_t slot = (hole + 1) & mask_; slots_[slot]; slot = (slot + 1) & mask_) {
      const size_t distance = (slot - home_of(slots_[slot])) & mask_;
      if (distance < ((slot - hole) & mask_)) continue;
      slots_[hole] = slots_[slot];
      hole = slot;
    }
    slots_[hole] = nullptr;
  }

  bool grow() {
    const size_t old_capacity = capacity();
    const size_t new_capacity = old_capacity ? old_capacity * 2 : kFirstCapacity;
    auto **fresh = static_cast<void **>(std::calloc(new_capacity, sizeof(void *)));
    if (!fresh) return false;
    void **old = slots_;
    slots_ = fresh;
    mask_ = new_capacity - 1;
    for (size_t i = 0; i < old_capacity; ++i) {
      if (old[i]) place(old[i]);
    }
    std::free(old);
    return true;
  }

  void **slots_ = nullptr;  // empty slots are null
  size_t mask_ = 0;         // capacity - 1; the capacity is a power of two
  size_t count_ = 0;        // addresses in the set
};

}  // namespace jxhost
