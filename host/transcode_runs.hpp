// Runs of characters that both encodings write as one unit of the same value, sixteen at a time.
#pragma once

#include <algorithm>

#include "host/transcode_vector.hpp"

namespace jxhost {

#ifndef JX_VECTOR_PLAIN

// Loads eight units of two or four bytes as 16-bit lanes. Units above 0x7fff stay above it as
// unsigned values.
template <typename Source>
__m128i load_eight(const uint8_t *in) {
  if constexpr (Source::kUnitBytes == 2) {
    const __m128i v = load_vector(in);
    return Source::kSwaps ? swap_16(v) : v;
  } else {
    const __m128i low = load_vector(in);
    const __m128i high = load_vector(in + 16);
    return Source::kSwaps ? _mm_packs_epi32(swap_32(low), swap_32(high))
                          : _mm_packs_epi32(low, high);
  }
}

// Loads kCount (8 or 16) units as bytes. Returns a mask of the units that are above kLimit.
template <typename Source, JXChar kLimit, size_t kCount>
uint32_t load_block(const uint8_t *in, __m128i &bytes_out) {
  if constexpr (Source::kUnitBytes == 1) {
    bytes_out = kCount == 16 ? load_vector(in) : load_half(in);
    return kLimit == 0xff ? 0 : static_cast<uint32_t>(_mm_movemask_epi8(bytes_out));
  } else {
    const __m128i zero = _mm_setzero_si128();
    const __m128i limit = _mm_set1_epi16(static_cast<short>(kLimit));
    const __m128i low = load_eight<Source>(in);
    const __m128i high = kCount == 16 ? load_eight<Source>(in + 8 * Source::kUnitBytes) : zero;
    bytes_out = _mm_packus_epi16(low, high);
    const __m128i within = _mm_packs_epi16(_mm_cmpeq_epi16(_mm_subs_epu16(low, limit), zero),
                                           _mm_cmpeq_epi16(_mm_subs_epu16(high, limit), zero));
    return static_cast<uint32_t>(_mm_movemask_epi8(within)) ^ 0xffffu;
  }
}

// Stores eight 16-bit lanes, already in the target's byte order, as units of the target.
template <typename Target>
void store_eight(uint8_t *out, __m128i v) {
  const __m128i zero = _mm_setzero_si128();
  if constexpr (Target::kUnitBytes == 2) {
    store_vector(out, v);
  } else {
    store_vector(out, Target::kSwaps ? _mm_unpacklo_epi16(zero, v) : _mm_unpacklo_epi16(v, zero));
    store_vector(out + 16,
                 Target::kSwaps ? _mm_unpackhi_epi16(zero, v) : _mm_unpackhi_epi16(v, zero));
  }
}

// Stores kCount (8 or 16) bytes as units.
template <typename Target, size_t kCount>
void store_block(uint8_t *out, __m128i v) {
  const __m128i zero = _mm_setzero_si128();
  if constexpr (Target::kUnitBytes == 1) {
    kCount == 16 ? store_vector(out, v) : store_half(out, v);
  } else {
    store_eight<Target>(out,
                        Target::kSwaps ? _mm_unpacklo_epi8(zero, v) : _mm_unpacklo_epi8(v, zero));
    if constexpr (kCount == 16) {
      store_eight<Target>(out + 8 * Target::kUnitBytes,
                          Target::kSwaps ? _mm_unpackhi_epi8(zero, v) : _mm_unpackhi_epi8(v, zero));
    }
  }
}

// Copies at least kCount units, kCount at a time, up to the first above the limit. Returns how many
// were copied.
template <typename Source, typename Target, JXChar kLimit, size_t kCount>
size_t copy_blocks(const uint8_t *in, uint8_t *out, size_t units) {
  for (size_t done = 0; done < units; done += kCount) {
    // The last block overlaps the one before it, so that no units are left for a scalar loop.
    done = std::min(done, units - kCount);
    __m128i bytes;
    const uint32_t above =
        load_block<Source, kLimit, kCount>(in + done * Source::kUnitBytes, bytes);
    store_block<Target, kCount>(out + done * Target::kUnitBytes, bytes);
    if (above != 0) return done + static_cast<size_t>(std::countr_zero(above));
  }
  return units;
}

#endif

// The highest character of a run; 0 when the pair has none.
template <typename Source, typename Target>
inline constexpr JXChar kRunLimit = std::min(Source::kRunLimit, Target::kRunLimit);

template <typename Source, typename Target>
inline constexpr bool kHasRuns = kRunLimit<Source, Target> != 0;

// Tells whether the next unit is a character of a run.
template <typename Source, typename Target>
inline bool starts_run(const Cursor &at) {
  return kHasRuns<Source, Target> && at.in_bytes() >= Source::kUnitBytes &&
         Source::load(at.in) <= kRunLimit<Source, Target>;
}

// Copies up to `units` characters of one unit, stopping at the first other one. Returns how many.
// Out of line, so that its vector constants do not crowd the loop over single characters.
template <typename Source, typename Target>
[[gnu::noinline]] size_t copy_units(const uint8_t *in, uint8_t *out, size_t units) {
  constexpr JXChar kLimit = kRunLimit<Source, Target>;
#ifndef JX_VECTOR_PLAIN
  if (units >= 16) return copy_blocks<Source, Target, kLimit, 16>(in, out, units);
  if (units >= 8) return copy_blocks<Source, Target, kLimit, 8>(in, out, units);
#endif
  size_t done = 0;
  for (; done < units; ++done) {
    const auto unit = Source::load(in + done * Source::kUnitBytes);
    if (unit > kLimit) break;
    using Unit = decltype(Target::load(in));
    Target::store(out + done * Target::kUnitBytes, static_cast<Unit>(unit));
  }
  return done;
}

// Copies the run at the start of the input.
template <typename Source, typename Target>
inline void copy_run(Cursor &at) {
  const size_t units = copy_units<Source, Target>(
      at.in, at.out,
      std::min(at.in_bytes() / Source::kUnitBytes, at.out_bytes() / Target::kUnitBytes));
  at.in += units * Source::kUnitBytes;
  at.out += units * Target::kUnitBytes;
}

}  // namespace jxhost
