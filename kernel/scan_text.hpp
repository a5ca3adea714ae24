// Searches in short text, inline: for these, a call of the C library costs more than the search.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "vector/base.hpp"

namespace jx {

// The number of units up to the last one that equals value, that one included; 0 if there is none.
template <typename Ops = vector::Base>
inline size_t end_of_last(const uint32_t *text, size_t count, uint32_t value) {
  constexpr size_t kStep = Ops::kBytes / sizeof(uint32_t);
  const auto pattern = Ops::repeat(value);
  for (; count >= kStep; count -= kStep) {
    const auto block = Ops::load(text + count - kStep);
    const auto mask = Ops::mask(Ops::template equal<uint32_t>(block, pattern));
    if (mask == 0) continue;
    const auto last_byte = static_cast<size_t>(std::bit_width(mask)) - 1;
    return count - kStep + last_byte / sizeof(uint32_t) + 1;
  }
  while (count > 0 && text[count - 1] != value) --count;
  return count;
}

// The index of the first byte that is zero or equals value; count if there is none.
template <typename Ops = vector::Base>
inline size_t first_zero_or(const char *text, size_t count, char value) {
  size_t index = 0;
  if (count < Ops::kBytes) {
    while (index < count && text[index] != value && text[index] != '\0') ++index;
    return index;
  }
  const auto pattern = Ops::repeat(value), zeros = Ops::repeat('\0');
  for (;;) {
    const auto block = Ops::load(text + index);
    const auto mask = Ops::mask(Ops::either(Ops::template equal<char>(block, pattern),
                                            Ops::template equal<char>(block, zeros)));
    if (mask != 0) return index + static_cast<size_t>(std::countr_zero(mask));
    if (index + Ops::kBytes == count) return count;
    // The last block may overlap the one before: the bytes seen twice did not match.
    index = std::min(index + Ops::kBytes, count - Ops::kBytes);
  }
}

}  // namespace jx
