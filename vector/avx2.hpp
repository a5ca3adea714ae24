// The operations on blocks of 32 bytes. For files that are compiled for AVX2 only.
#pragma once

#ifndef __AVX2__
#error "this header is for files named *_avx2.cpp"
#endif

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace jx::vector {

struct Avx2 {
  using Block = __m256i;
  using Mask = uint32_t;  // a bit for each byte of a block
  static constexpr size_t kBytes = sizeof(Block);
  static constexpr Mask kAll = 0xFFFFFFFF;

  static Block load(const void *from) {
    return _mm256_loadu_si256(static_cast<const __m256i *>(from));
  }
  static void store(void *to, Block block) {
    _mm256_storeu_si256(static_cast<__m256i *>(to), block);
  }

  // As Sse2 has it.
  static Block load_aligned(const void *from) {
    return _mm256_load_si256(static_cast<const __m256i *>(from));
  }

  template <typename T>
  static Block repeat(T value) {
    if constexpr (sizeof(T) == 1) return _mm256_set1_epi8(static_cast<char>(value));
    if constexpr (sizeof(T) == 2) return _mm256_set1_epi16(static_cast<short>(value));
    if constexpr (sizeof(T) == 4) return _mm256_set1_epi32(static_cast<int>(value));
  }
  template <typename T>
  static Block equal(Block a, Block b) {
    if constexpr (sizeof(T) == 1) return _mm256_cmpeq_epi8(a, b);
    if constexpr (sizeof(T) == 2) return _mm256_cmpeq_epi16(a, b);
    if constexpr (sizeof(T) == 4) return _mm256_cmpeq_epi32(a, b);
  }
  static Block both(Block a, Block b) { return _mm256_and_si256(a, b); }
  static Block either(Block a, Block b) { return _mm256_or_si256(a, b); }

  static Mask mask(Block block) { return static_cast<Mask>(_mm256_movemask_epi8(block)); }
};

}  // namespace jx::vector
