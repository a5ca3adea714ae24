// Scans and fills of 8-, 16- and 32-bit units, with SSE2: both builds may assume it.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "vector/sse2.hpp"

namespace jx {

namespace detail {

template <typename T>
inline __m128i broadcast(T value) {
  if constexpr (sizeof(T) == 1) return _mm_set1_epi8(static_cast<char>(value));
  if constexpr (sizeof(T) == 2) return _mm_set1_epi16(static_cast<short>(value));
  if constexpr (sizeof(T) == 4) return _mm_set1_epi32(static_cast<int>(value));
}

// A bit for each of the 16 bytes at `data`: set where the unit equals the pattern, or differs from
// it with kEqual false.
template <typename T, bool kEqual>
inline uint32_t match_mask(const uint8_t *data, __m128i pattern) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data));
  __m128i equal;
  if constexpr (sizeof(T) == 1) equal = _mm_cmpeq_epi8(block, pattern);
  if constexpr (sizeof(T) == 2) equal = _mm_cmpeq_epi16(block, pattern);
  if constexpr (sizeof(T) == 4) equal = _mm_cmpeq_epi32(block, pattern);
  const auto mask = static_cast<uint32_t>(_mm_movemask_epi8(equal));
  return kEqual ? mask : mask ^ 0xFFFFu;
}

}  // namespace detail

// The index of the first of `count` units that equals `value`, or differs from it with kEqual
// false; `count` if there is none. The units need no alignment.
template <typename T, bool kEqual = true>
inline size_t scan_units(const void *buffer, size_t count, T value) {
  constexpr size_t kStep = 16 / sizeof(T);
  const auto *data = static_cast<const uint8_t *>(buffer);
  size_t index = 0;
  if (count >= kStep) {
    const __m128i pattern = detail::broadcast(value);
    // Four blocks a branch, as long as there are four.
    for (; count - index >= 4 * kStep; index += 4 * kStep) {
      const uint8_t *blocks = data + index * sizeof(T);
      const uint32_t low = detail::match_mask<T, kEqual>(blocks, pattern) |
                           detail::match_mask<T, kEqual>(blocks + 16, pattern) << 16;
      const uint32_t high = detail::match_mask<T, kEqual>(blocks + 32, pattern) |
                            detail::match_mask<T, kEqual>(blocks + 48, pattern) << 16;
      if ((low | high) == 0) continue;
      const int bit = low != 0 ? std::countr_zero(low) : 32 + std::countr_zero(high);
      return index + static_cast<size_t>(bit) / sizeof(T);
    }
    if (index == count) return count;
    if (count - index < kStep) index = count - kStep;
    for (;;) {
      const uint32_t mask = detail::match_mask<T, kEqual>(data + index * sizeof(T), pattern);
      if (mask != 0) return index + static_cast<size_t>(std::countr_zero(mask)) / sizeof(T);
      index += kStep;
      if (index == count) return count;
      // The last block may overlap the one before: the units seen twice did not match.
      if (count - index < kStep) index = count - kStep;
    }
  }
  for (; index < count; ++index) {
    T unit;
    std::memcpy(&unit, data + index * sizeof(T), sizeof(T));
    if ((unit == value) == kEqual) return index;
  }
  return count;
}

// Stores `value` in `count` 32-bit units.
inline void fill_units(uint32_t *buffer, uint32_t value, size_t count) {
  constexpr size_t kStep = 4;
  size_t index = 0;
  const __m128i pattern = detail::broadcast(value);
  for (; count - index >= kStep; index += kStep) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(buffer + index), pattern);
  }
  for (; index < count; ++index) buffer[index] = value;
}

}  // namespace jx
