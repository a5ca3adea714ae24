// The operations on blocks of 16 bytes: SSE2 on x86, the same through SIMDe elsewhere.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

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

  // Loads from a multiple of kBytes: a whole block of which not all has to be the caller's.
  static Block load_aligned(const void *from) {
    return _mm_load_si128(static_cast<const __m128i *>(from));
  }
  // Two words side by side in the low bytes, zeros after them.
  template <typename Word>
  static Block load_pair(const void *first, const void *second) {
    if constexpr (sizeof(Word) == 4) {
      return _mm_unpacklo_epi32(load_word(first), load_word(second));
    }
    if constexpr (sizeof(Word) == 8) {
      return _mm_unpacklo_epi64(_mm_loadl_epi64(static_cast<const __m128i *>(first)),
                                _mm_loadl_epi64(static_cast<const __m128i *>(second)));
    }
  }

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

 private:
  static Block load_word(const void *from) {
    int32_t word;
    std::memcpy(&word, from, sizeof word);
    return _mm_cvtsi32_si128(word);
  }
};

}  // namespace jx::vector
