// Operations on text for files that are compiled for AVX2 only: the same as in lanes_avx512.hpp, on
// blocks of sixteen bytes and groups of eight characters. What AVX-512 does with one instruction,
// packing chosen bytes, goes by two tables, 6 KB in all.
#pragma once

#ifndef __AVX2__
#error "this header is for files named *_avx2.cpp"
#endif

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace jx::vector {

struct LanesAvx2 {
  using Bytes = __m128i;      // a block
  using ByteMask = uint32_t;  // a bit for each byte of a block; the others are ignored
  using Lanes = __m256i;      // a group
  using LaneMask = uint32_t;  // a bit for each lane
  static constexpr size_t kBytes = 16;
  static constexpr size_t kLanes = 8;

  static ByteMask first(size_t count) { return _bzhi_u32(0xffff, static_cast<uint32_t>(count)); }
  static size_t count(uint32_t mask) { return static_cast<size_t>(__builtin_popcount(mask)); }
  static size_t lowest(uint32_t mask) { return _tzcnt_u32(mask); }

  // --- Blocks ---

  static Bytes load_block(const uint8_t *in, size_t count) {
    if (count == kBytes) return _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
    alignas(16) uint8_t copy[kBytes] = {};
    copy_few(copy, in, count);
    return _mm_load_si128(reinterpret_cast<const __m128i *>(copy));
  }
  static Bytes load_start(const uint8_t *in, size_t count) {
    const Bytes block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
    const Bytes kept =
        _mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(count)),
                       _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    return _mm_and_si128(block, kept);
  }
  static ByteMask top_bits(Bytes block) { return static_cast<ByteMask>(_mm_movemask_epi8(block)); }
  static ByteMask at_least(Bytes block, uint8_t limit) {
    const Bytes limits = _mm_set1_epi8(static_cast<char>(limit));
    return top_bits(_mm_cmpeq_epi8(_mm_max_epu8(block, limits), block));
  }
  static ByteMask equal(Bytes block, uint8_t value) {
    return top_bits(_mm_cmpeq_epi8(block, _mm_set1_epi8(static_cast<char>(value))));
  }
  static bool any_in_both(Bytes a, Bytes b) { return _mm_testz_si128(a, b) == 0; }
  static Bytes both(Bytes a, Bytes b) { return _mm_and_si128(a, b); }
  static Bytes upper_digits(Bytes block) {
    return _mm_and_si128(_mm_srli_epi16(block, 4), _mm_set1_epi8(0xf));
  }
  static Bytes lower_digits(Bytes block) { return _mm_and_si128(block, _mm_set1_epi8(0xf)); }
  static Bytes look_up(const uint8_t *table, Bytes digits) {
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(table)), digits);
  }

  // By halves: the numbers of the second one go after those of the first.
  static Bytes numbers_of(ByteMask mask) {
    const uint32_t low = mask & 0xff;
    const Bytes second = _mm_add_epi8(load_eight(kNumbers.of[mask >> 8 & 0xff]), _mm_set1_epi8(8));
    const Bytes moved = _mm_shuffle_epi8(
        second,
        _mm_loadu_si128(reinterpret_cast<const __m128i *>(kNumbers.moves + 8 - count(low))));
    return _mm_or_si128(load_eight(kNumbers.of[low]), moved);
  }
  static Bytes drop_group(Bytes block) { return _mm_srli_si128(block, 8); }
  static Lanes widen_bytes(Bytes block) { return _mm256_cvtepu8_epi32(block); }
  static Lanes gather(Bytes block, Lanes numbers) {
    const __m128i lowest = _mm_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12);
    const Lanes spread = _mm256_shuffle_epi8(numbers, _mm256_broadcastsi128_si256(lowest));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(block),
                               _mm256_add_epi8(spread, repeat(0x03020100)));
  }
  static Lanes gather_one(Bytes block, Lanes numbers) {
    const Lanes chosen = _mm256_or_si256(numbers, repeat(0x80808000u));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(block), chosen);
  }

  // --- Groups ---

  static Lanes load_lanes(const uint8_t *in, size_t count) {
    if (count >= kLanes) return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(in));
    return _mm256_maskload_epi32(reinterpret_cast<const int *>(in), first_lanes(count));
  }
  static Lanes load_halves(const uint8_t *in, size_t count) {
    return _mm256_cvtepu16_epi32(load_block(in, (count < kLanes ? count : kLanes) * 2));
  }
  static Lanes load_bytes(const uint8_t *in, size_t count) {
    if (count >= kLanes) return load_bytes(in);
    return _mm256_cvtepu8_epi32(load_block(in, count));
  }
  static Lanes load_bytes(const uint8_t *in) { return _mm256_cvtepu8_epi32(load_eight(in)); }
  // Tells whether 32 bytes are all ASCII.
  static bool is_ascii(const uint8_t *in) {
    return _mm256_movemask_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(in))) == 0;
  }
  static void store_lanes(uint8_t *out, Lanes lanes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), lanes);
  }
  static void store_lanes(uint8_t *out, Lanes lanes, size_t count) {
    _mm256_maskstore_epi32(reinterpret_cast<int *>(out), first_lanes(count), lanes);
  }
  static void store_halves(uint8_t *out, Lanes lanes) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), halves_of(lanes));
  }
  static void store_halves(uint8_t *out, Lanes lanes, size_t count) {
    store_few(out, halves_of(lanes), 2 * count);
  }
  static void store_bytes(uint8_t *out, Lanes lanes) {
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out), bytes_of(lanes));
  }
  static void store_bytes(uint8_t *out, Lanes lanes, size_t count) {
    store_few(out, bytes_of(lanes), count);
  }
  static Lanes swap_lanes(Lanes lanes) {
    const __m128i order = _mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    return _mm256_shuffle_epi8(lanes, _mm256_broadcastsi128_si256(order));
  }
  static Lanes swap_halves(Lanes lanes) { return _mm256_srli_epi32(swap_lanes(lanes), 16); }

  static Lanes repeat(uint32_t value) { return _mm256_set1_epi32(static_cast<int>(value)); }
  static Lanes both(Lanes a, uint32_t b) { return _mm256_and_si256(a, repeat(b)); }
  static Lanes either(Lanes a, Lanes b) { return _mm256_or_si256(a, b); }
  static Lanes shift_right(Lanes lanes, Lanes counts) { return _mm256_srlv_epi32(lanes, counts); }
  static LaneMask above(Lanes lanes, uint32_t limit) {
    return signs(lanes_above(lanes, limit)) | signs(lanes);
  }
  static LaneMask equal_lanes(Lanes lanes, uint32_t value) {
    return signs(_mm256_cmpeq_epi32(lanes, repeat(value)));
  }
  static bool any_bits(Lanes lanes, uint32_t bits) {
    return _mm256_testz_si256(lanes, repeat(bits)) == 0;
  }
  static Lanes join_sixes(Lanes pieces) {
    const Lanes pairs = _mm256_maddubs_epi16(pieces, repeat(0x01400140));
    return _mm256_madd_epi16(pairs, repeat(0x00011000));
  }

  [[gnu::always_inline]] static size_t store_utf8(uint8_t *out, Lanes c, size_t room_bytes,
                                                  size_t absent) {
    const Lanes above_one = lanes_above(c, 0x7f);
    const Lanes above_two = lanes_above(c, 0x7ff);
    const Lanes above_three = lanes_above(c, 0xffff);
    // The bits that mark lead and continuation bytes; each byte that is used has one.
    const auto choose = [](Lanes chosen, Lanes mask, uint32_t value) {
      return _mm256_blendv_epi8(chosen, repeat(value), mask);
    };
    Lanes marks = choose(repeat(0), above_one, 0x80c00000u);
    marks = choose(marks, above_two, 0x8080e000u);
    marks = choose(marks, above_three, 0x808080f0u);
    // Byte by byte: the bits of the lane from 18, 12, 6 and 0 on.
    const Lanes low = _mm256_or_si256(_mm256_slli_epi32(both(c, 0x3f), 24),
                                      _mm256_slli_epi32(both(c, 0xfc0), 10));
    const Lanes high =
        _mm256_or_si256(_mm256_srli_epi32(both(c, 0x3f000), 4), _mm256_srli_epi32(c, 18));
    const Lanes many = _mm256_or_si256(_mm256_or_si256(low, high), marks);
    const Lanes bytes = _mm256_blendv_epi8(_mm256_slli_epi32(c, 24), many, above_one);
    const uint32_t twos = signs(above_one);
    const uint32_t threes = signs(above_two);
    const uint32_t fours = signs(above_three);
    const size_t all = kLanes + count(twos) + count(threes) + count(fours);
    const size_t written = all - absent;
    // A length less one has its lower bit in the one and its upper bit in the other.
    const uint32_t lower = twos ^ threes ^ fours;
    const auto pack = [&](__m128i four, uint32_t shift) {
      const uint32_t shape = (lower >> shift & 0xf) | (threes >> shift & 0xf) << 4;
      return _mm_shuffle_epi8(
          four, _mm_load_si128(reinterpret_cast<const __m128i *>(kShapes.order[shape])));
    };
    const size_t first_bytes = 4 + count((twos & 0xf) | (threes & 0xf) << 4 | (fours & 0xf) << 8);
    const auto put = [&](uint8_t *to) {
      _mm_storeu_si128(reinterpret_cast<__m128i *>(to), pack(_mm256_castsi256_si128(bytes), 0));
      _mm_storeu_si128(reinterpret_cast<__m128i *>(to + first_bytes),
                       pack(_mm256_extracti128_si256(bytes, 1), 4));
    };
    if (room_bytes >= 32) {
      put(out);
    } else if (written <= room_bytes) {
      uint8_t copy[32];
      put(copy);
      const size_t half = written < 16 ? written : 16;
      copy_few(out, copy, half);
      copy_few(out + half, copy + half, written - half);
    }
    return written;
  }

 private:
  // For each mask of eight the numbers of its bits, zeros after them. And the orders that move
  // eight bytes up, by so many as they are read from before the middle.
  struct Numbers {
    consteval Numbers() {
      for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned next = 0;
        for (unsigned bit = 0; bit < 8; ++bit) {
          if (mask >> bit & 1) of[mask][next++] = static_cast<uint8_t>(bit);
        }
      }
      for (unsigned i = 0; i < 24; ++i) {
        moves[i] = static_cast<uint8_t>(i >= 8 && i < 16 ? i - 8 : 0x80);
      }
    }
    uint8_t of[256][8] = {};
    uint8_t moves[24] = {};
  };
  // For four lanes with characters the order that packs their last bytes, by the shape: the lower
  // and the upper bits of the lengths less one.
  struct Shapes {
    consteval Shapes() {
      for (unsigned shape = 0; shape < 256; ++shape) {
        unsigned next = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
          const unsigned unused = 3 - ((shape >> lane & 1) | (shape >> lane >> 4 & 1) << 1);
          for (unsigned byte = unused; byte < 4; ++byte) {
            order[shape][next++] = static_cast<uint8_t>(lane * 4 + byte);
          }
        }
        while (next < 16) order[shape][next++] = 0x80;
      }
    }
    alignas(16) uint8_t order[256][16] = {};
  };
  static const Numbers kNumbers;
  static const Shapes kShapes;

  static __m128i load_eight(const uint8_t *in) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(in));
  }
  // Compares as signed numbers.
  static Lanes lanes_above(Lanes lanes, uint32_t limit) {
    return _mm256_cmpgt_epi32(lanes, repeat(limit));
  }
  static uint32_t signs(Lanes lanes) {
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(lanes)));
  }
  static Lanes first_lanes(size_t count) {
    return _mm256_cmpgt_epi32(repeat(static_cast<uint32_t>(count)),
                              _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
  }
  static __m128i halves_of(Lanes lanes) {
    const Lanes packed = _mm256_packus_epi32(lanes, lanes);
    return _mm256_castsi256_si128(_mm256_permute4x64_epi64(packed, 0x08));
  }
  static __m128i bytes_of(Lanes lanes) {
    const __m128i halves = halves_of(lanes);
    return _mm_packus_epi16(halves, halves);
  }
  static void store_few(uint8_t *out, __m128i bytes, size_t count) {
    alignas(16) uint8_t copy[16];
    _mm_store_si128(reinterpret_cast<__m128i *>(copy), bytes);
    copy_few(out, copy, count);
  }
  // Copies up to sixteen bytes: pieces of a power of two from both ends, which may overlap.
  static void copy_few(uint8_t *to, const uint8_t *from, size_t count) {
    if (count >= 8) return copy_ends<8>(to, from, count);
    if (count >= 4) return copy_ends<4>(to, from, count);
    if (count >= 2) return copy_ends<2>(to, from, count);
    if (count == 1) *to = *from;
  }
  template <size_t kPiece>
  static void copy_ends(uint8_t *to, const uint8_t *from, size_t count) {
    uint8_t first[kPiece], last[kPiece];
    __builtin_memcpy(first, from, kPiece);
    __builtin_memcpy(last, from + count - kPiece, kPiece);
    __builtin_memcpy(to, first, kPiece);
    __builtin_memcpy(to + count - kPiece, last, kPiece);
  }
};

inline constexpr LanesAvx2::Numbers LanesAvx2::kNumbers;
inline constexpr LanesAvx2::Shapes LanesAvx2::kShapes;

}  // namespace jx::vector
