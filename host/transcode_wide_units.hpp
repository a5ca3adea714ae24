// Groups of characters in lanes of 32 bits, from and to units of one, two and four bytes.
#pragma once

#include "host/transcode.hpp"

namespace jxhost {

// Units of kBytes bytes each.
template <typename Ops, size_t kBytes, bool kSwaps>
struct WideUnits {
  static constexpr size_t kUnitBytes = kBytes;

  // Loads up to a group of units, zeros after them.
  [[gnu::always_inline]] static typename Ops::Lanes load_some(const uint8_t *in, size_t count) {
    if constexpr (kBytes == 1) return Ops::load_bytes(in, count);
    if constexpr (kBytes == 2) {
      const auto c = Ops::load_halves(in, count);
      return kSwaps ? Ops::swap_halves(c) : c;
    }
    if constexpr (kBytes == 4) {
      const auto c = Ops::load_lanes(in, count);
      return kSwaps ? Ops::swap_lanes(c) : c;
    }
  }
  // How many of the first `count` lanes hold characters of one unit, up to the first that does not.
  [[gnu::always_inline]] static size_t valid(typename Ops::Lanes c, size_t count) {
    typename Ops::LaneMask wrong = 0;
    if constexpr (kBytes == 2) wrong = Ops::equal_lanes(Ops::both(c, 0xf800), 0xd800);
    if constexpr (kBytes == 4) {
      wrong = Ops::equal_lanes(Ops::both(c, 0xfffff800u), 0xd800) | Ops::above(c, 0x10ffff);
    }
    if (wrong == 0) return count;
    const size_t valid = Ops::lowest(wrong);
    return valid < count ? valid : count;
  }

  // Stores characters, each below 0x10000 for units of two bytes.
  [[gnu::always_inline]] static void store(uint8_t *out, typename Ops::Lanes c) {
    if constexpr (kBytes == 2) {
      Ops::store_halves(out, kSwaps ? Ops::swap_halves(c) : c);
    } else {
      Ops::store_lanes(out, kSwaps ? Ops::swap_lanes(c) : c);
    }
  }
  [[gnu::always_inline]] static void store(uint8_t *out, typename Ops::Lanes c, size_t count) {
    if constexpr (kBytes == 2) {
      Ops::store_halves(out, kSwaps ? Ops::swap_halves(c) : c, count);
    } else {
      Ops::store_lanes(out, kSwaps ? Ops::swap_lanes(c) : c, count);
    }
  }
  // Stores `count` characters, which have room, with whole groups while there is room.
  [[gnu::always_inline]] static void put(uint8_t *&out, const uint8_t *out_end,
                                         typename Ops::Lanes c, size_t count) {
    if (static_cast<size_t>(out_end - out) >= Ops::kLanes * kBytes) {
      store(out, c);
    } else {
      store(out, c, count);
    }
    out += count * kBytes;
  }
};

}  // namespace jxhost
