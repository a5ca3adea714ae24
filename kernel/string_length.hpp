// Lengths of strings that end with a zero unit. The ends of short ones are looked for in aligned
// blocks, the first and the last of which are the string's only in part (kLoadsPartOwned in
// vector/base.hpp).
//
// Measured in times of strlen, 4, 16, 64 and 1024 bytes: i386 0.8, 0.8, 0.9, 1.1,
// x86-64 1.0, 1.1, 1.1, 1.1; of wcslen, 4, 16, 64 and 1024 units: i386 1.3, 0.8, 1.2, 1.0, x86-64
// 0.9, 1.1, 1.2, 1.1.
#pragma once

#include <cstdint>
#include <utility>

#include "kernel/long_runs.hpp"
#include "kernel/scan.hpp"

namespace jx {

namespace detail {

// `address`, or the last multiple of `size` before it.
inline const uint8_t *align_down(const uint8_t *address, size_t size) {
  return address - reinterpret_cast<uintptr_t>(address) % size;
}

template <class Ops, typename T>
inline typename Ops::Block zeros_in(const uint8_t *block) {
  return Ops::template equal<T>(Ops::load_aligned(block), Ops::template repeat<T>(0));
}

// Tells whether an aligned block after the string's first has a zero, and sets the length if so.
template <class Ops, typename T>
[[gnu::always_inline]] inline bool ends_in(const uint8_t *string, const uint8_t *block,
                                           uint32_t *length) {
  const auto zeros = Ops::mask(zeros_in<Ops, T>(block));
  if (zeros == 0) return false;
  *length =
      static_cast<uint32_t>(static_cast<size_t>(block - string) / sizeof(T) + first_unit<T>(zeros));
  return true;
}

// Tells the same of several blocks, written out so that no branch is taken before the end.
template <class Ops, typename T, size_t... kIndex>
[[gnu::always_inline]] inline bool ends_in_one_of(const uint8_t *string, const uint8_t *blocks,
                                                  uint32_t *length,
                                                  std::index_sequence<kIndex...>) {
  return (ends_in<Ops, T>(string, blocks + kIndex * Ops::kBytes, length) || ...);
}

// The C library's lengths. Declared with the result that callers want, its low half: so that a call
// that ends a routine is a jump.
extern "C" {
uint32_t jx_length_of_bytes(const void *string) __asm__("strlen");
uint32_t jx_length_of_chars(const void *string) __asm__("wcslen");
}
static_assert(sizeof(wchar_t) == sizeof(uint32_t));

template <typename T>
JX_APART inline uint32_t length_by_library(const T *string) {
  if constexpr (sizeof(T) == 1) {
    return jx_length_of_bytes(string);
  } else {
    return jx_length_of_chars(string);
  }
}

}  // namespace detail

// How many blocks after its first a string may end in without a jump to the C library. Few for
// 32-bit units where that one has wide vectors: their strings soon get long enough for these.
template <typename T>
inline constexpr size_t kShortStringBlocks = sizeof(T) == 1 || sizeof(void *) == 4 ? 4 : 1;

// Tells whether a string ends in these blocks, and sets its length if so.
template <typename T>
[[gnu::always_inline]] inline bool has_short_length(const uint8_t *string, uint32_t *length) {
  using Ops = vector::Base;
  const uint8_t *block = detail::align_down(string, Ops::kBytes);
  const auto zeros = Ops::mask(detail::zeros_in<Ops, T>(block)) >> (string - block);
  if (zeros != 0) {
    *length = static_cast<uint32_t>(detail::first_unit<T>(zeros));
    return true;
  }
  return detail::ends_in_one_of<Ops, T>(string, block + Ops::kBytes, length,
                                        std::make_index_sequence<kShortStringBlocks<T>>());
}

// The number of units before a zero. Strings that are not short are left to the C library: scans by
// several blocks at once would read blocks of which nothing is the string's, which memory checkers
// report.
template <typename T>
[[gnu::always_inline]] inline uint32_t string_length(const T *string) {
  if constexpr (vector::kLoadsPartOwned) {
    uint32_t length;
    if (has_short_length<T>(reinterpret_cast<const uint8_t *>(string), &length)) return length;
  }
  return detail::length_by_library(string);
}

}  // namespace jx
