// Fills of runs of 32-bit units, over the operations of vector/.
#pragma once

#include <cstdint>

#include "kernel/scan.hpp"
#include "vector/base.hpp"

namespace jx {

// Stores `value` in at most kShortRunBytes of 32-bit units.
inline void fill_short(uint32_t *buffer, uint32_t value, size_t count) {
  using Ops = vector::Base;
  constexpr size_t kStep = Ops::kBytes / sizeof(uint32_t);
  if (count >= kStep) [[likely]] {
    const auto pattern = Ops::repeat(value);
    uint32_t *const last = buffer + count - kStep;
    Ops::store(buffer, pattern);
    Ops::store(last, pattern);
    if (count <= 2 * kStep) [[likely]]
      return;
    Ops::store(buffer + kStep, pattern);
    Ops::store(last - kStep, pattern);
    return;
  }
  for (size_t index = 0; index < count; ++index) buffer[index] = value;
}

// The same for two blocks or more, by groups as scan_blocks() in kernel/scan.hpp takes them.
template <class Ops>
inline void fill_blocks(uint32_t *buffer, uint32_t value, size_t count) {
  constexpr size_t kStep = Ops::kBytes / sizeof(uint32_t), kFourSteps = 4 * kStep;
  const auto pattern = Ops::repeat(value);
  const auto fill = [&](size_t low, size_t high) {
    Ops::store(buffer + low, pattern);
    Ops::store(buffer + low + kStep, pattern);
    Ops::store(buffer + high - 2 * kStep, pattern);
    Ops::store(buffer + high - kStep, pattern);
  };
  if (count <= kFourSteps) return fill(0, count);
  fill(0, kFourSteps);
  if (count > 2 * kFourSteps) {
    size_t index =
        kFourSteps - reinterpret_cast<uintptr_t>(buffer) % Ops::kBytes / sizeof(uint32_t);
    for (; count - index > kFourSteps; index += kFourSteps) fill(index, index + kFourSteps);
  }
  fill(count - kFourSteps, count);
}

// The same for any count.
inline void fill_units(uint32_t *buffer, uint32_t value, size_t count) {
  is_short_run<uint32_t>(count) ? fill_short(buffer, value, count)
                                : fill_blocks<vector::Base>(buffer, value, count);
}

}  // namespace jx
