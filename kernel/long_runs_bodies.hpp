// The bodies of kernel/long_runs.hpp, for the files that instantiate them.
#pragma once

#include "kernel/long_runs.hpp"
#include "kernel/scan.hpp"

namespace jx {

namespace detail {

template <class Ops, typename T, bool kEqual>
inline int32_t find_in_long(const void *buffer, uint32_t count, T value) {
  const ValueMatch<Ops, T, kEqual> match(value);
  const size_t index = scan_blocks<Ops, T>(match, static_cast<const uint8_t *>(buffer), count);
  return index == count ? -1 : static_cast<int32_t>(index);
}

template <class Ops, typename T>
inline int32_t compare_long(const void *first, const void *second, uint32_t count) {
  const Mismatch<Ops, T> match = {static_cast<const uint8_t *>(second)};
  const size_t index = scan_blocks<Ops, T>(match, static_cast<const uint8_t *>(first), count);
  return index == count ? 0 : order_at<T>(first, second, index);
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

}  // namespace jx
