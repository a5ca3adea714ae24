// Finding the next of a few units in text.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>
#include <type_traits>

#include "vector/base.hpp"

namespace cli {

// Where the first unit is that is one of some; the length of the text when there is none. In one
// pass: most lines are short, and a call for each of the units costs more. Unit: char or char32_t.
template <typename Unit, size_t kCount>
inline size_t find_any(std::basic_string_view<Unit> text, const std::array<Unit, kCount> &units) {
  using Ops = jx::vector::Base;
  using Word = std::make_unsigned_t<std::conditional_t<sizeof(Unit) == 1, char, int32_t>>;
  constexpr size_t kStep = Ops::kBytes / sizeof(Unit);
  Ops::Block patterns[kCount];
  for (size_t i = 0; i < kCount; ++i) {
    patterns[i] = Ops::repeat<Word>(static_cast<Word>(units[i]));
  }
  size_t at = 0;
  for (; text.size() - at >= kStep; at += kStep) {
    const auto block = Ops::load(text.data() + at);
    auto found = Ops::equal<Word>(block, patterns[0]);
    for (size_t i = 1; i < kCount; ++i) {
      found = Ops::either(found, Ops::equal<Word>(block, patterns[i]));
    }
    if (const auto mask = Ops::mask(found)) {
      return at + static_cast<size_t>(std::countr_zero(mask)) / sizeof(Unit);
    }
  }
  return std::min(text.find_first_of(units.data(), at, kCount), text.size());
}

}  // namespace cli
