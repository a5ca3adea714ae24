// Operations on text: blocks of 64 bytes that are looked at byte by byte, and groups of sixteen
// characters in lanes of 32 bits. For files that are compiled for AVX-512 only. LanesAvx2 has the
// same operations on smaller blocks and groups.
#pragma once

#ifndef __AVX512VBMI2__
#error "this header is for files named *_avx512.cpp"
#endif

// The compiler's header has "uninitialized" values on purpose, for operands that do not matter.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop

#include <cstddef>
#include <cstdint>

namespace jx::vector {

struct LanesAvx512 {
  using Bytes = __m256i;      // a block
  using ByteMask = uint32_t;  // a bit for each byte of a block
  using Lanes = __m512i;      // a group
  using LaneMask = uint32_t;  // a bit for each lane
  static constexpr size_t kBytes = 32;
  static constexpr size_t kLanes = 16;

  // The lowest `count` bits; at least one, at most all.
  static ByteMask first(size_t count) { return ~ByteMask{0} >> (kBytes - count); }
  static size_t count(ByteMask mask) { return static_cast<size_t>(__builtin_popcount(mask)); }
  // The number of the lowest bit; 32 when there is none.
  static size_t lowest(uint32_t mask) { return _tzcnt_u32(mask); }

  // --- Blocks ---

  // `count` bytes, zeros after them; load_start where the whole block may be read.
  static Bytes load_block(const uint8_t *in, size_t count) {
    return _mm256_maskz_loadu_epi8(first(count), in);
  }
  static Bytes load_start(const uint8_t *in, size_t count) { return load_block(in, count); }
  static ByteMask top_bits(Bytes block) {
    return static_cast<ByteMask>(_mm256_movemask_epi8(block));
  }
  static ByteMask at_least(Bytes block, uint8_t limit) {
    return _mm256_cmpge_epu8_mask(block, _mm256_set1_epi8(static_cast<char>(limit)));
  }
  static ByteMask equal(Bytes block, uint8_t value) {
    return _mm256_cmpeq_epi8_mask(block, _mm256_set1_epi8(static_cast<char>(value)));
  }
  static bool any_in_both(Bytes a, Bytes b) { return _mm256_testz_si256(a, b) == 0; }
  static Bytes both(Bytes a, Bytes b) { return _mm256_and_si256(a, b); }
  // The upper and the lower four bits of each byte.
  static Bytes upper_digits(Bytes block) {
    return _mm256_and_si256(_mm256_srli_epi16(block, 4), _mm256_set1_epi8(0xf));
  }
  static Bytes lower_digits(Bytes block) { return _mm256_and_si256(block, _mm256_set1_epi8(0xf)); }
  // The entry of a table of sixteen for each digit.
  static Bytes look_up(const uint8_t *table, Bytes digits) {
    const __m128i entries = _mm_loadu_si128(reinterpret_cast<const __m128i *>(table));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(entries), digits);
  }

  // The numbers of the bytes in the mask, in order.
  static Bytes numbers_of(ByteMask mask) {
    return _mm256_maskz_compress_epi8(
        mask, _mm256_load_si256(reinterpret_cast<const __m256i *>(kNumbers.bytes)));
  }
  // Drops the first sixteen bytes.
  static Bytes drop_group(Bytes block) { return _mm256_permute2x128_si256(block, block, 0x81); }
  // The first sixteen bytes as lanes.
  static Lanes widen_bytes(Bytes block) {
    return _mm512_cvtepu8_epi32(_mm256_castsi256_si128(block));
  }
  // The four bytes of the block from the number in each lane on, the first one lowest.
  static Lanes gather(Bytes block, Lanes numbers) {
    const __m128i lowest = _mm_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12);
    const Lanes spread = _mm512_shuffle_epi8(numbers, _mm512_broadcast_i32x4(lowest));
    return _mm512_permutexvar_epi8(_mm512_add_epi8(spread, repeat(0x03020100)),
                                   _mm512_castsi256_si512(block));
  }
  // The byte of the block at the number in each lane.
  static Lanes gather_one(Bytes block, Lanes numbers) {
    return _mm512_maskz_permutexvar_epi8(0x1111111111111111u, numbers,
                                         _mm512_castsi256_si512(block));
  }

  // --- Groups ---

  // Up to sixteen units of four, two or one bytes each, zeros after them; more count as sixteen.
  static Lanes load_lanes(const uint8_t *in, size_t count) {
    if (count >= kLanes) return _mm512_loadu_si512(in);
    return _mm512_maskz_loadu_epi32(first_lanes(count), in);
  }
  static Lanes load_halves(const uint8_t *in, size_t count) {
    return _mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(first_lanes(count), in));
  }
  static Lanes load_bytes(const uint8_t *in, size_t count) {
    return _mm512_cvtepu8_epi32(_mm_maskz_loadu_epi8(first_lanes(count), in));
  }
  static Lanes load_bytes(const uint8_t *in) {
    return _mm512_cvtepu8_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(in)));
  }
  // Tells whether 64 bytes are all ASCII.
  static bool is_ascii(const uint8_t *in) {
    return _mm512_movepi8_mask(_mm512_loadu_si512(in)) == 0;
  }
  static void store_lanes(uint8_t *out, Lanes lanes) { _mm512_storeu_si512(out, lanes); }
  static void store_lanes(uint8_t *out, Lanes lanes, size_t count) {
    _mm512_mask_storeu_epi32(out, first_lanes(count), lanes);
  }
  static void store_halves(uint8_t *out, Lanes lanes) {
    _mm256_storeu_epi16(out, _mm512_cvtepi32_epi16(lanes));
  }
  static void store_halves(uint8_t *out, Lanes lanes, size_t count) {
    _mm256_mask_storeu_epi16(out, first_lanes(count), _mm512_cvtepi32_epi16(lanes));
  }
  static void store_bytes(uint8_t *out, Lanes lanes) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm512_cvtepi32_epi8(lanes));
  }
  static void store_bytes(uint8_t *out, Lanes lanes, size_t count) {
    _mm_mask_storeu_epi8(out, first_lanes(count), _mm512_cvtepi32_epi8(lanes));
  }
  static Lanes swap_lanes(Lanes lanes) {
    const __m128i order = _mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    return _mm512_shuffle_epi8(lanes, _mm512_broadcast_i32x4(order));
  }
  // Swaps the two lower bytes of lanes below 0x10000.
  static Lanes swap_halves(Lanes lanes) { return _mm512_srli_epi32(swap_lanes(lanes), 16); }

  static Lanes repeat(uint32_t value) { return _mm512_set1_epi32(static_cast<int>(value)); }
  static Lanes both(Lanes a, uint32_t b) { return _mm512_and_si512(a, repeat(b)); }
  static Lanes either(Lanes a, Lanes b) { return _mm512_or_si512(a, b); }
  static Lanes shift_right(Lanes lanes, Lanes counts) { return _mm512_srlv_epi32(lanes, counts); }
  static LaneMask above(Lanes lanes, uint32_t limit) {
    return _mm512_cmpgt_epu32_mask(lanes, repeat(limit));
  }
  static LaneMask equal_lanes(Lanes lanes, uint32_t value) {
    return _mm512_cmpeq_epi32_mask(lanes, repeat(value));
  }
  static bool any_bits(Lanes lanes, uint32_t bits) {
    return _mm512_test_epi32_mask(lanes, repeat(bits)) != 0;
  }

  // Four pieces of six bits, the first byte of a lane the highest, as one number.
  static Lanes join_sixes(Lanes pieces) {
    const Lanes pairs = _mm512_maddubs_epi16(pieces, repeat(0x01400140));
    return _mm512_madd_epi16(pairs, repeat(0x00011000));
  }

  // Writes the lanes, each a character, as UTF-8, but for the last `absent`, which are 0. Returns
  // the bytes that they take; nothing is written when that is more than the room.
  [[gnu::always_inline]] static size_t store_utf8(uint8_t *out, Lanes c, size_t room_bytes,
                                                  size_t absent) {
    const __mmask16 above_one = _mm512_cmpgt_epu32_mask(c, repeat(0x7f));
    const __mmask16 above_two = _mm512_cmpgt_epu32_mask(c, repeat(0x7ff));
    const __mmask16 above_three = _mm512_cmpgt_epu32_mask(c, repeat(0xffff));
    // The bits that mark lead and continuation bytes; the sign bit of each byte that is used.
    Lanes marks = repeat(0x80000000u);
    marks = _mm512_mask_mov_epi32(marks, above_one, repeat(0x80c00000u));
    marks = _mm512_mask_mov_epi32(marks, above_two, repeat(0x8080e000u));
    marks = _mm512_mask_mov_epi32(marks, above_three, repeat(0x808080f0u));
    const __mmask64 used = _mm512_movepi8_mask(marks);
    // Byte by byte: the bits of the lane from 18, 12, 6 and 0 on.
    const Lanes sixes = _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x20262c32'00060c12), c);
    // (sixes & 0x3f) | marks, except for lanes of one byte.
    Lanes bytes = _mm512_ternarylogic_epi32(sixes, repeat(0x3f3f3f3f), marks, 0xea);
    bytes = _mm512_mask_slli_epi32(bytes, static_cast<__mmask16>(~above_one), c, 24);
    const auto written = kLanes + count_lanes(used, above_one, above_two, above_three) - absent;
    const Lanes packed = _mm512_maskz_compress_epi8(used, bytes);
    if (room_bytes >= sizeof(packed)) {
      _mm512_storeu_si512(out, packed);
    } else if (written <= room_bytes) {
      _mm512_mask_storeu_epi8(out, ~__mmask64{0} >> (sizeof(packed) - written), packed);
    }
    return written;
  }

 private:
  // The bytes in use, more than one a lane.
  static size_t count_lanes(__mmask64 used, __mmask16 one, __mmask16 two, __mmask16 three) {
    if constexpr (sizeof(void *) == 8) {
      return static_cast<size_t>(__builtin_popcountll(used)) - kLanes;
    }
    return static_cast<size_t>(__builtin_popcount(_mm512_kunpackw(two, one)) +
                               __builtin_popcount(three));
  }
  struct Numbers {
    constexpr Numbers() {
      for (size_t i = 0; i < kBytes; ++i) bytes[i] = static_cast<uint8_t>(i);
    }
    alignas(64) uint8_t bytes[kBytes] = {};
  };
  static const Numbers kNumbers;

  static __mmask16 first_lanes(size_t count) {
    return static_cast<__mmask16>(_bzhi_u32(0xffff, static_cast<uint32_t>(count)));
  }
};

inline constexpr LanesAvx512::Numbers LanesAvx512::kNumbers;

}  // namespace jx::vector
