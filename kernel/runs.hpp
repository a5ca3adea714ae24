// Scans, comparisons and fills of runs of any length, with the results of the exported routines:
// short runs inline, the others by the bodies that kernel/long_runs.hpp chose.
#pragma once

#include "kernel/fill.hpp"
#include "kernel/long_runs.hpp"
#include "kernel/scan.hpp"

namespace [[gnu::visibility("hidden")]] jx {

namespace detail {

template <typename T, bool kEqual>
JX_APART inline int32_t find_in_long_run(const void *buffer, uint32_t count, T value) {
  if constexpr (sizeof(T) == 1) {
    if (kEqual) return kLongRuns.find_byte(buffer, count, value);
    return kLongRuns.find_other_byte(buffer, count, value);
  } else {
    if (kEqual) return kLongRuns.find_char(buffer, count, value);
    return kLongRuns.find_other_char(buffer, count, value);
  }
}

template <typename T>
JX_APART inline int32_t compare_long_runs(const void *first, const void *second, uint32_t count) {
  if constexpr (sizeof(T) == 1) {
    return kLongRuns.compare_bytes(first, second, count);
  } else {
    return kLongRuns.compare_chars(first, second, count);
  }
}

JX_APART inline void fill_long_run(uint32_t *buffer, uint32_t value, uint32_t count) {
  kLongRuns.fill_chars(buffer, value, count);
}

}  // namespace detail

// The index of the first unit that equals a value, or differs from it with kEqual false; -1 if
// there is none.
template <typename T, bool kEqual>
[[gnu::always_inline]] inline int32_t find_unit(const void *buffer, uint32_t count, T value) {
  if (!is_short_run<T>(count)) [[unlikely]] {
    return detail::find_in_long_run<T, kEqual>(buffer, count, value);
  }
  const size_t index = scan_short<T, kEqual>(buffer, count, value);
  return index == count ? -1 : static_cast<int32_t>(index);
}

// 0 for equal runs; else 1 or -1, by the first units that differ as order_of() has it.
template <typename T>
[[gnu::always_inline]] inline int32_t compare_units(const void *first, const void *second,
                                                    uint32_t count) {
  if (!is_short_run<T>(count)) [[unlikely]]
    return detail::compare_long_runs<T>(first, second, count);
  const size_t index = mismatch_short<T>(first, second, count);
  return index == count ? 0 : order_at<T>(first, second, index);
}

// Stores a value in 32-bit units.
inline void fill_chars(uint32_t *buffer, uint32_t value, uint32_t count) {
  if (!is_short_run<uint32_t>(count)) [[unlikely]]
    return detail::fill_long_run(buffer, value, count);
  fill_short(buffer, value, count);
}

}  // namespace jx
