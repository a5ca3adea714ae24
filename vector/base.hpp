// The operations that every processor of this build has: SSE2, or plain C++ when JX_VECTOR_PLAIN is
// defined.
#pragma once

#include <bit>

#include "vector/processor.hpp"

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

namespace jx::vector {
// Tells whether routines may load an aligned block that is the caller's only in part. It lies in
// one page, so the processor does not mind; sanitizers would.
#if !JX_VECTOR_X86 || defined(JX_VECTOR_PLAIN) || defined(__SANITIZE_ADDRESS__) || \
    defined(__SANITIZE_THREAD__)
inline constexpr bool kLoadsPartOwned = false;
#elif defined(__has_feature)
inline constexpr bool kLoadsPartOwned =
    !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
inline constexpr bool kLoadsPartOwned = true;
#endif
}  // namespace jx::vector
