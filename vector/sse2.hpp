// The operations on blocks of 16 bytes: SSE2 on x86, the same through SIMDe elsewhere.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__i386__) || defined(__x86_64__)
#include <emmintrin.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/sse2.h>
#endif

namespace jx::vector {

struct Sse2 {
  using Block = __m128i;
  using Mask = uint32_t;  // a bit for each byte of a block
  static constexpr size_t kBytes = sizeof(Block);
  static constexpr Mask kAll = 0xFFFF;

  static Block load(const void *from) {
    return _mm_loadu_si128(static_cast<const __m128i *>(from));
  }
  static void store(void *to, Block block) { _mm_storeu_si128(static_cast<__m128i *>(to), block); }

  // A block with `value` in each of its units.
  template <typename T>
  static Block repeat(T value) {
    if constexpr (sizeof(T) == 1) return _mm_set1_epi8(static_cast<char>(value));
    if constexpr (sizeof(T) == 2) return _mm_set1_epi16(static_cast<short>(value));
    if constexpr (sizeof(T) == 4) return _mm_set1_epi32(static_cast<int>(value));
  }
  // All bits set in each unit that is equal in both blocks, none in the others.
  template <typename T>
  static Block equal(Block a, Block b) {
    if constexpr (sizeof(T) == 1) return _mm_cmpeq_epi8(a, b);
    if constexpr (sizeof(T) == 2) return _mm_cmpeq_epi16(a, b);
    if constexpr (sizeof(T) == 4) return _mm_cmpeq_epi32(a, b);
  }
  static Block both(Block a, Block b) { return _mm_and_si128(a, b); }
  static Block either(Block a, Block b) { return _mm_or_si128(a, b); }

  // The top bit of each byte.
  static Mask mask(Block block) { return static_cast<Mask>(_mm_movemask_epi8(block)); }
};

}  // namespace jx::vector
