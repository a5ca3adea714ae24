// A set of block addresses, with open addressing and linear probing. Nothing is stored in the
// blocks, so an address can be checked without reading its memory.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace jxhost {

// Not thread-safe: its owner locks. A slot is empty, an address, or a tombstone, which searches
// skip and insertions reuse.
class PointerSet {
 public:
  PointerSet() = default;
  PointerSet(const PointerSet &) = delete;
  PointerSet &operator=(const PointerSet &) = delete;
  ~PointerSet() { std::free(slots_); }

  size_t count() const { return count_; }

  // Adds an address that is not in the set. False when out of memory.
  bool insert(void *address) {
    if ((used_count_ + 1) * 2 > capacity_ && !make_room()) return false;
    place(reinterpret_cast<uintptr_t>(address));
    return true;
  }

  bool contains(const void *address) const { return find(address) != nullptr; }

  // Removes an address. False when it is not in the set.
  bool erase(const void *address) {
    uintptr_t *found = find(address);
    if (!found) return false;
    --count_;
    // The last slot of a run needs no tombstone: no probe went past it.
    const bool ends_run = slots_[after(static_cast<size_t>(found - slots_))] == kEmpty;
    *found = ends_run ? kEmpty : kTaken;
    used_count_ -= ends_run;
    return true;
  }

  // Calls use(address) for every address.
  template <typename Use>
  void for_each(Use use) const {
    for (size_t i = 0; i < capacity_; ++i) {
      if (slots_[i] > kTaken) use(std::bit_cast<void *>(slots_[i]));
    }
  }

 private:
  static constexpr uintptr_t kEmpty = 0;
  static constexpr uintptr_t kTaken = 1;  // the tombstone; no block has this address
  static constexpr size_t kFirstCapacity = 16;

  size_t after(size_t slot) const { return (slot + 1) & (capacity_ - 1); }

  // Fibonacci hashing: multiplying by the golden ratio spreads neighbours; the top bits are the
  // slot.
  size_t home_of(uintptr_t address) const {
    constexpr auto kRatio =
        static_cast<uintptr_t>(sizeof(uintptr_t) == 8 ? 0x9E3779B97F4A7C15u : 0x9E3779B1u);
    return (address * kRatio) >> shift_;
  }

  // The slot of an address, or null.
  uintptr_t *find(const void *address) const {
    const auto wanted = reinterpret_cast<uintptr_t>(address);
    if (count_ == 0 || wanted <= kTaken) return nullptr;
    size_t slot = home_of(wanted);
    for (; slots_[slot] != wanted; slot = after(slot)) {
      if (slots_[slot] == kEmpty) return nullptr;
    }
    return slots_ + slot;
  }

  void place(uintptr_t address) {
    size_t slot = home_of(address);
    while (slots_[slot] > kTaken) slot = after(slot);
    used_count_ += slots_[slot] == kEmpty;
    slots_[slot] = address;
    ++count_;
  }

  // Rehashes: doubles the slots or, when tombstones take up the room, just drops them.
  bool make_room() {
    const size_t new_capacity = capacity_ == 0           ? kFirstCapacity
                                : count_ * 4 > capacity_ ? capacity_ * 2
                                                         : capacity_;
    auto *fresh = static_cast<uintptr_t *>(std::calloc(new_capacity, sizeof(uintptr_t)));
    if (!fresh) return false;
    PointerSet old;
    old.slots_ = slots_;
    old.capacity_ = capacity_;
    slots_ = fresh;
    capacity_ = new_capacity;
    shift_ = static_cast<int>(sizeof(uintptr_t) * 8) - std::countr_zero(new_capacity);
    count_ = used_count_ = 0;
    old.for_each([this](void *address) { place(reinterpret_cast<uintptr_t>(address)); });
    return true;
  }

  uintptr_t *slots_ = nullptr;
  size_t capacity_ = 0;    // slots, a power of two; at most half are in use
  size_t count_ = 0;       // addresses
  size_t used_count_ = 0;  // addresses and tombstones
  int shift_ = 0;          // of a hash: leaves the bits of a slot number
};

}  // namespace jxhost
