// Text as the layers hand it on, and its sizes.
#pragma once

#include <cstdint>

#include "jx/base.h"

namespace jx {

inline constexpr uint32_t kJXCharBytes = sizeof(JXChar);

// Text lent by its owner: JXChars with a length, not terminated.
struct Text {
  const JXChar *data = nullptr;
  uint32_t chars = 0;
};

// Tells whether a size computed in 64 bits can be handed to the host, which counts bytes in 32.
// PoolBlock::allocate asks the same of the size of a block.
constexpr bool is_valid_size(uint64_t bytes) { return bytes <= UINT32_MAX; }

}  // namespace jx
