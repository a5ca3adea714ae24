// Borrowed text and the sizes of text.
#pragma once

#include <cstdint>

#include "jx/base.h"

namespace jx {

inline constexpr uint32_t kJXCharBytes = sizeof(JXChar);

// Borrowed text, not terminated.
struct Text {
  const JXChar *data = nullptr;
  uint32_t chars = 0;
};

// Whether a size computed in 64 bits fits the 32 bits of host calls. PoolBlock::allocate checks the
// size of its block itself.
constexpr bool is_valid_size(uint64_t bytes) { return bytes <= UINT32_MAX; }

}  // namespace jx
