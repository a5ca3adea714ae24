// Many characters at a time with SSE2: runs of characters that both sides write as one unit of the
// same value, and groups of four characters of the basic plane.
#pragma once

#include <emmintrin.h>

#include <algorithm>

#include "host/transcode_codecs.hpp"

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
// Four 32-bit lanes as 16-bit units in the lower half; every lane is below 0x10000.
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

// ---- Runs ------------------------------------------------------------------------------------

// Eight units of two or four bytes as 16-bit lanes; units above 0x7fff stay above it when they are
// read without sign.
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

// Stores eight 16-bit lanes, which are in the target's byte order, as units of the target.
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

// Copies units, kCount at a time, up to the first above the limit; there are at least kCount.
// Returns how many were copied.
template <typename Source, typename Target, JXChar kLimit, size_t kCount>
size_t copy_blocks(const uint8_t *in, uint8_t *out, size_t units) {
  for (size_t done = 0; done < units; done += kCount) {
    // The last block laps over the one before it, so that no units are left for a loop of single
    // ones.
    done = std::min(done, units - kCount);
    __m128i bytes;
    const uint32_t above =
        load_block<Source, kLimit, kCount>(in + done * Source::kUnitBytes, bytes);
    store_block<Target, kCount>(out + done * Target::kUnitBytes, bytes);
    if (above != 0) return done + static_cast<size_t>(std::countr_zero(above));
  }
  return units;
}

// Copies the run of one-unit characters at the start of the input.
template <typename Source, typename Target>
inline void copy_run(Cursor &at) {
  constexpr JXChar kLimit = std::min(Source::kRunLimit, Target::kRunLimit);
  const size_t units =
      std::min(at.in_bytes() / Source::kUnitBytes, at.out_bytes() / Target::kUnitBytes);
  if (units == 0 || Source::load(at.in) > kLimit) return;
  size_t done = 0;
  if (units >= 16) {
    done = copy_blocks<Source, Target, kLimit, 16>(at.in, at.out, units);
  } else if (units >= 8) {
    done = copy_blocks<Source, Target, kLimit, 8>(at.in, at.out, units);
  } else {
    for (; done < units; ++done) {
      const auto unit = Source::load(at.in + done * Source::kUnitBytes);
      if (unit > kLimit) break;
      using Unit = decltype(Target::load(at.in));
      Target::store(at.out + done * Target::kUnitBytes, static_cast<Unit>(unit));
    }
  }
  at.in += done * Source::kUnitBytes;
  at.out += done * Target::kUnitBytes;
}

// ---- Groups of four --------------------------------------------------------------------------

// Reading four characters into lanes and writing them. kBytes is what must be there; both return
// the bytes that the four take, 0 when they are not alike or not of the basic plane.
template <typename Codec>
struct Lanes {
  static constexpr size_t kBytes = 0;
};

template <std::endian kOrder>
struct Lanes<Utf32Codec<kOrder>> {
  static constexpr size_t kBytes = 16;

  static size_t read(const uint8_t *in, __m128i &chars) {
    chars = Utf32Codec<kOrder>::kSwaps ? swap_32(load_vector(in)) : load_vector(in);
    const bool basic = all_equal(and_32(chars, 0xffff0000u), _mm_setzero_si128());
    return basic && !any_equal(and_32(chars, 0xf800), all_32(0xd800)) ? 16 : 0;
  }
  static size_t write(uint8_t *out, __m128i chars) {
    store_vector(out, Utf32Codec<kOrder>::kSwaps ? swap_32(chars) : chars);
    return 16;
  }
};

template <std::endian kOrder>
struct Lanes<Utf16Codec<kOrder>> {
  static constexpr size_t kBytes = 8;

  static size_t read(const uint8_t *in, __m128i &chars) {
    const __m128i units = Utf16Codec<kOrder>::kSwaps ? swap_16(load_half(in)) : load_half(in);
    chars = _mm_unpacklo_epi16(units, _mm_setzero_si128());
    return any_equal(and_32(chars, 0xf800), all_32(0xd800)) ? 0 : 8;
  }
  static size_t write(uint8_t *out, __m128i chars) {
    const __m128i units = narrow_32(chars);
    store_half(out, Utf16Codec<kOrder>::kSwaps ? swap_16(units) : units);
    return 8;
  }
};

template <>
struct Lanes<Utf8Codec> {
  static constexpr size_t kBytes = 13;  // four times three, and one that is read along

  static size_t read(const uint8_t *in, __m128i &chars) {
    return in[0] < 0xe0 ? read_twos(in, chars) : read_threes(in, chars);
  }
  static size_t write(uint8_t *out, __m128i chars) {
    const __m128i zero = _mm_setzero_si128();
    if (!any_equal(and_32(chars, 0xf800), zero)) return write_threes(out, chars);
    const bool twos =
        all_equal(and_32(chars, 0xf800), zero) && !any_equal(and_32(chars, 0x780), zero);
    return twos ? write_twos(out, chars) : 0;
  }

 private:
  static size_t read_twos(const uint8_t *in, __m128i &chars) {
    const __m128i words = _mm_unpacklo_epi16(load_half(in), _mm_setzero_si128());
    chars = _mm_or_si128(_mm_slli_epi32(and_32(words, 0x1f), 6),
                         _mm_srli_epi32(and_32(words, 0x3f00), 8));
    const bool shaped = all_equal(and_32(words, 0xc0e0), all_32(0x80c0));
    return shaped && !any_equal(and_32(words, 0x1e), _mm_setzero_si128()) ? 8 : 0;
  }
  static size_t read_threes(const uint8_t *in, __m128i &chars) {
    const auto word = [in](size_t offset) {
      return _mm_cvtsi32_si128(
          static_cast<int>(Units<uint32_t, std::endian::little>::load(in + offset)));
    };
    const __m128i words = _mm_unpacklo_epi64(_mm_unpacklo_epi32(word(0), word(3)),
                                             _mm_unpacklo_epi32(word(6), word(9)));
    chars = _mm_or_si128(_mm_slli_epi32(and_32(words, 0xf), 12),
                         _mm_or_si128(_mm_srli_epi32(and_32(words, 0x3f00), 2),
                                      _mm_srli_epi32(and_32(words, 0x3f0000), 16)));
    if (!all_equal(and_32(words, 0xc0c0f0), all_32(0x8080e0))) return 0;
    const __m128i range = and_32(chars, 0xf800);
    return any_equal(range, _mm_setzero_si128()) || any_equal(range, all_32(0xd800)) ? 0 : 12;
  }
  static size_t write_twos(uint8_t *out, __m128i chars) {
    const __m128i tails = _mm_slli_epi32(and_32(chars, 0x3f), 8);
    const __m128i heads = _mm_or_si128(_mm_srli_epi32(chars, 6), all_32(0x80c0));
    store_half(out, narrow_32(_mm_or_si128(heads, tails)));
    return 8;
  }
  static size_t write_threes(uint8_t *out, __m128i chars) {
    const __m128i tails = _mm_or_si128(and_32(_mm_slli_epi32(chars, 2), 0x3f00),
                                       and_32(_mm_slli_epi32(chars, 16), 0x3f0000));
    __m128i words = _mm_or_si128(_mm_srli_epi32(chars, 12), all_32(0x8080e0));
    words = _mm_or_si128(words, tails);
    // Each store of four bytes is overwritten from its fourth byte by the next.
    for (size_t offset = 0; offset < 12; offset += 3) {
      const auto word = static_cast<uint32_t>(_mm_cvtsi128_si32(words));
      Units<uint32_t, std::endian::little>::store(out + offset, word);
      words = _mm_srli_si128(words, 4);
    }
    return 12;
  }
};

// Converts groups of four as long as they come.
template <typename Source, typename Target>
inline void convert_groups(Cursor &at) {
  using Reader = Lanes<Source>;
  using Writer = Lanes<Target>;
  while (at.in_bytes() >= Reader::kBytes && at.out_bytes() >= Writer::kBytes) {
    __m128i chars;
    const size_t read = Reader::read(at.in, chars);
    if (read == 0) return;
    const size_t written = Writer::write(at.out, chars);
    if (written == 0) return;
    at.in += read;
    at.out += written;
  }
}

}  // namespace jxhost
