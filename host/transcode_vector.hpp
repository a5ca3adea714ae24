// SSE2 helpers of runs and groups. SSE2 is the baseline of both ABIs.
#pragma once

#include "host/transcode_codecs.hpp"

#ifndef JX_VECTOR_PLAIN
#include "vector/sse2.hpp"

namespace jxhost {

inline __m128i load_vector(const uint8_t *in) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
}
inline __m128i load_half(const uint8_t *in) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(in));
}
inline void store_vector(uint8_t *out, __m128i v) {
  _mm_storeu_si128(reinterpret_cast<__m128i *>(out), v);
}
inline void store_half(uint8_t *out, __m128i v) {
  _mm_storel_epi64(reinterpret_cast<__m128i *>(out), v);
}
inline __m128i swap_16(__m128i v) {
  return _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
}
inline __m128i swap_32(__m128i v) {
  constexpr int kSwapPairs = _MM_SHUFFLE(2, 3, 0, 1);
  return swap_16(_mm_shufflehi_epi16(_mm_shufflelo_epi16(v, kSwapPairs), kSwapPairs));
}
// Packs four 32-bit lanes, each below 0x10000, into 16-bit units in the lower half.
inline __m128i narrow_32(__m128i v) {
  // The only pack of 32-bit lanes saturates as signed, so the upper halves must be copies of the
  // sign.
  v = _mm_srai_epi32(_mm_slli_epi32(v, 16), 16);
  return _mm_packs_epi32(v, v);
}
inline bool all_equal(__m128i a, __m128i b) {
  return _mm_movemask_epi8(_mm_cmpeq_epi32(a, b)) == 0xffff;
}
inline bool any_equal(__m128i a, __m128i b) {
  return _mm_movemask_epi8(_mm_cmpeq_epi32(a, b)) != 0;
}
inline __m128i and_32(__m128i v, uint32_t mask) {
  return _mm_and_si128(v, _mm_set1_epi32(static_cast<int>(mask)));
}
inline __m128i all_32(uint32_t value) { return _mm_set1_epi32(static_cast<int>(value)); }

}  // namespace jxhost
#endif
