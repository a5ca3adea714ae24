// The bodies of kernel/long_runs.hpp, for the files that instantiate them.
#pragma once

#include "kernel/copy.hpp"
#include "kernel/fill.hpp"
#include "kernel/long_runs.hpp"
#include "kernel/scan.hpp"
#include "kernel/string_length.hpp"

namespace jx {

namespace detail {

template <class Ops, typename T, bool kEqual>
[[gnu::always_inline]] inline int32_t find_in_long(const void *buffer, uint32_t count, T value) {
  const ValueMatch<Ops, T, kEqual> match(value);
  const size_t index = scan_blocks<Ops, T>(match, static_cast<const uint8_t *>(buffer), count);
  return index == count ? -1 : static_cast<int32_t>(index);
}

template <class Ops, typename T>
[[gnu::always_inline]] inline int32_t compare_long(const void *first, const void *second,
                                                   uint32_t count) {
  const Mismatch<Ops, T> match = {static_cast<const uint8_t *>(second)};
  const size_t index = scan_blocks<Ops, T>(match, static_cast<const uint8_t *>(first), count);
  return index == count ? 0 : order_at<T>(first, second, index);
}

// By blocks where these are wider than the C library's.
template <class Ops, typename T>
[[gnu::always_inline]] inline uint32_t length_of(const void *string) {
  if constexpr (vector::kLoadsPartOwned && Ops::kBytes > vector::Base::kBytes) {
    return length_by_blocks<Ops, T>(string);
  } else {
    return length_by_library<T>(string);
  }
}

// The number of bits of a mask. Without an instruction for it, std::popcount() would be a call.
[[gnu::always_inline]] inline uint32_t count_bits(uint32_t mask) {
#if defined(__POPCNT__)
  return static_cast<uint32_t>(std::popcount(mask));
#else
  mask -= mask >> 1 & 0x55555555u;
  mask = (mask & 0x33333333u) + (mask >> 2 & 0x33333333u);
  return ((mask + (mask >> 4)) & 0x0F0F0F0Fu) * 0x01010101u >> 24;
#endif
}

// Notes the places of a block from its mask: two at a time, whether there or not. In text most
// blocks have no more, and branches on their number would be guesses.
[[gnu::always_inline]] inline uint32_t *note_mask(uint32_t mask, uint32_t offset, uint32_t *place) {
  uint32_t *const end = place + count_bits(mask);
  do {
    for (int i = 0; i < 2; ++i) {
      // With a bit at the end, so that there is always one to find.
      *place++ = offset + static_cast<uint32_t>(std::countr_zero(mask | 0x80000000u));
      mask &= mask - 1;
    }
  } while (place < end);
  return end;
}

}  // namespace detail

template <class Ops>
int32_t LongRunsOf<Ops>::find_byte(const void *buffer, uint32_t count, uint8_t value) {
  return detail::find_in_long<Ops, uint8_t, true>(buffer, count, value);
}

template <class Ops>
int32_t LongRunsOf<Ops>::find_other_byte(const void *buffer, uint32_t count, uint8_t value) {
  return detail::find_in_long<Ops, uint8_t, false>(buffer, count, value);
}

template <class Ops>
int32_t LongRunsOf<Ops>::find_char(const void *buffer, uint32_t count, uint32_t value) {
  return detail::find_in_long<Ops, uint32_t, true>(buffer, count, value);
}

template <class Ops>
int32_t LongRunsOf<Ops>::find_other_char(const void *buffer, uint32_t count, uint32_t value) {
  return detail::find_in_long<Ops, uint32_t, false>(buffer, count, value);
}

template <class Ops>
int32_t LongRunsOf<Ops>::compare_bytes(const void *first, const void *second, uint32_t count) {
  return detail::compare_long<Ops, uint8_t>(first, second, count);
}

template <class Ops>
int32_t LongRunsOf<Ops>::compare_chars(const void *first, const void *second, uint32_t count) {
  return detail::compare_long<Ops, uint32_t>(first, second, count);
}

template <class Ops>
void LongRunsOf<Ops>::fill_chars(uint32_t *buffer, uint32_t value, uint32_t count) {
  fill_blocks<Ops>(buffer, value, count);
}

template <class Ops>
void LongRunsOf<Ops>::copy_bytes(const void *source, void *destination, uint32_t count) {
  copy_blocks<Ops>(destination, source, count);
}

template <class Ops>
uint32_t LongRunsOf<Ops>::length_of_bytes(const void *string) {
  return detail::length_of<Ops, uint8_t>(string);
}

template <class Ops>
uint32_t LongRunsOf<Ops>::length_of_chars(const void *string) {
  return detail::length_of<Ops, uint32_t>(string);
}

template <class Ops>
uint32_t LongRunsOf<Ops>::note_bytes(const uint8_t *data, uint32_t *offset, uint32_t end,
                                     uint8_t value, uint32_t *places) {
  constexpr uint32_t kStep = Ops::kBytes;
  static_assert(kPlacesRoom >= kManyPlaces + 2 * kStep + 2);
  const auto pattern = Ops::repeat(value);
  uint32_t *place = places;
  uint32_t at = *offset;
  for (; end - at >= 2 * kStep && place < places + kManyPlaces; at += 2 * kStep) {
    const auto first = Ops::template equal<uint8_t>(Ops::load(data + at), pattern);
    const auto second = Ops::template equal<uint8_t>(Ops::load(data + at + kStep), pattern);
    if (Ops::mask(Ops::either(first, second)) == 0) continue;
    if constexpr (kStep == 16) {  // one mask for both
      place = detail::note_mask(Ops::mask(first) | Ops::mask(second) << kStep, at, place);
    } else {
      place = detail::note_mask(Ops::mask(first), at, place);
      place = detail::note_mask(Ops::mask(second), at + kStep, place);
    }
  }
  for (; at < end && place < places + kManyPlaces; ++at) {
    *place = at;
    place += data[at] == value;
  }
  *offset = at;
  return static_cast<uint32_t>(place - places);
}

}  // namespace jx
