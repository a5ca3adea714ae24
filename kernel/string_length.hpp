// Lengths of strings that end with a zero unit.
//
// In 64-bit programs they are the C library's, whose vectors are the widest: a jump there costs
// less than a look at the first blocks. In 32-bit programs it has SSE2 at best: there a near end is
// looked for inline, a far one by the body that kernel/long_runs.hpp chose. Blocks are aligned and
// each has a byte of the string at least: scans by several blocks at once would read blocks of
// which nothing is the string's, which memory checkers report.
//
// Measured in times of strlen, 4, 16, 64 and 1024 bytes: i386 0.8, 0.8, 0.9, 0.6,
// x86-64 1.1, 1.1, 1.1, 1.0; of wcslen, 4, 16, 64 and 1024 units: i386 1.2 to 1.6, 0.8, 0.9, 0.8,
// x86-64 1.1, 1.1, 1.0, 1.0.
#pragma once

#include <cstdint>
#include <utility>

#include "kernel/long_runs.hpp"
#include "kernel/scan.hpp"

namespace jx {

// Tells whether strings are scanned here.
inline constexpr bool kScansStrings = sizeof(void *) == 4 && vector::kLoadsPartOwned;

namespace detail {

template <class Ops, typename T>
inline typename Ops::Mask zeros_in(const uint8_t *block) {
  return Ops::mask(Ops::template equal<T>(Ops::load_aligned(block), Ops::template repeat<T>(0)));
}

// A string's first block, which begins `skipped` bytes before it.
template <class Ops>
struct FirstBlock {
  size_t skipped;
  const uint8_t *begin;

  explicit FirstBlock(const void *string)
      : skipped(reinterpret_cast<uintptr_t>(string) % Ops::kBytes),
        begin(static_cast<const uint8_t *>(string) - skipped) {}
  // The zeros in it, by their offsets in the string.
  template <typename T>
  typename Ops::Mask zeros() const {
    return zeros_in<Ops, T>(begin) >> skipped;
  }
};

// Tells whether the block at `offset` has a zero, and sets the length of the string if so.
template <class Ops, typename T>
[[gnu::always_inline]] inline bool ends_in(const FirstBlock<Ops> &first, size_t offset,
                                           uint32_t *length) {
  const auto zeros = zeros_in<Ops, T>(first.begin + offset);
  if (zeros == 0) return false;
  const size_t bytes = offset + static_cast<size_t>(std::countr_zero(zeros)) - first.skipped;
  *length = static_cast<uint32_t>(bytes / sizeof(T));
  return true;
}

// How many blocks after its first a short string may end in. They are looked at without a taken
// branch.
inline constexpr size_t kBlocksInRow = 4;

// Tells the same of the blocks from `offset` on, written out.
template <class Ops, typename T, size_t... kIndex>
[[gnu::always_inline]] inline bool ends_in_one_of(const FirstBlock<Ops> &first, size_t offset,
                                                  uint32_t *length,
                                                  std::index_sequence<kIndex...>) {
  return (ends_in<Ops, T>(first, offset + kIndex * Ops::kBytes, length) || ...);
}

// Tells whether a string is short, and sets its length if so.
template <typename T>
[[gnu::always_inline]] inline bool has_short_length(const void *string, uint32_t *length) {
  using Ops = vector::Base;
  const FirstBlock<Ops> first(string);
  if (const auto zeros = first.template zeros<T>(); zeros != 0) {
    *length = static_cast<uint32_t>(first_unit<T>(zeros));
    return true;
  }
  return ends_in_one_of<Ops, T>(first, Ops::kBytes, length,
                                std::make_index_sequence<kBlocksInRow>());
}

// The length of a string, by single blocks.
template <class Ops, typename T>
[[gnu::always_inline]] inline uint32_t length_by_blocks(const void *string) {
  const FirstBlock<Ops> first(string);
  if (const auto zeros = first.template zeros<T>(); zeros != 0) {
    return static_cast<uint32_t>(first_unit<T>(zeros));
  }
  uint32_t length;
  size_t offset = Ops::kBytes;
  while (
      !ends_in_one_of<Ops, T>(first, offset, &length, std::make_index_sequence<kBlocksInRow>())) {
    offset += kBlocksInRow * Ops::kBytes;
  }
  return length;
}

// The C library's lengths. Declared with the result that callers want, its low half: so that a call
// that ends a routine is a jump.
extern "C" {
uint32_t jx_length_of_bytes(const void *string) __asm__("strlen");
uint32_t jx_length_of_chars(const void *string) __asm__("wcslen");
}
static_assert(sizeof(wchar_t) == sizeof(uint32_t));

template <typename T>
[[gnu::always_inline]] inline uint32_t length_by_library(const void *string) {
  if constexpr (sizeof(T) == 1) {
    return jx_length_of_bytes(string);
  } else {
    return jx_length_of_chars(string);
  }
}

template <typename T>
JX_APART inline uint32_t length_of_long_string(const T *string) {
  if constexpr (sizeof(T) == 1) {
    return kLongRuns.length_of_bytes(string);
  } else {
    return kLongRuns.length_of_chars(string);
  }
}

}  // namespace detail

// The number of units before a zero. kLooksNear is for callers that would have to save registers
// around a call: they look for a near end first.
template <typename T, bool kLooksNear = kScansStrings>
[[gnu::always_inline]] inline uint32_t string_length(const T *string) {
  if constexpr (kLooksNear && vector::kLoadsPartOwned) {
    uint32_t length;
    if (detail::has_short_length<T>(string, &length)) return length;
  }
  if constexpr (kScansStrings) {
    return detail::length_of_long_string(string);
  } else {
    return detail::length_by_library<T>(string);
  }
}

}  // namespace jx
