// Format strings for the module, made from literals.
#pragma once

#include <array>
#include <cstddef>

#include "jx/base.h"

namespace jx::bench {

// An ASCII literal as JXChars, without its terminator.
template <size_t kSize>
constexpr auto wide(const char (&text)[kSize]) {
  std::array<JXChar, kSize - 1> result{};
  for (size_t i = 0; i + 1 < kSize; ++i) result[i] = static_cast<unsigned char>(text[i]);
  return result;
}

}  // namespace jx::bench
