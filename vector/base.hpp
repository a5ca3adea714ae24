// The operations that every processor of this build has: SSE2, or plain C++ when JX_VECTOR_PLAIN is
// defined.
#pragma once

#include <bit>

#if defined(JX_VECTOR_PLAIN)
#include "vector/plain.hpp"
namespace jx::vector {
using Base = Plain;
}
#else
#include "vector/sse2.hpp"
namespace jx::vector {
static_assert(std::endian::native == std::endian::little);
using Base = Sse2;
}  // namespace jx::vector
#endif
