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

// The highest character of a run; 0 when the pair has none.
template <typename Source, typename Target>
inline constexpr JXChar kRunLimit = std::min(Source::kRunLimit, Target::kRunLimit);

// Tells whether the next unit is a character of a run.
template <typename Source, typename Target>
inline bool starts_run(const Cursor &at) {
  if constexpr (kRunLimit<Source, Target> == 0) return false;
  return at.in_bytes() >= Source::kUnitBytes && Source::load(at.in) <= kRunLimit<Source, Target>;
}

// Copies one-unit characters up to the first of another kind, at most units. Returns how many. Kept
// out of line so that its vector constants do not crowd the loop over single characters.
template <typename Source, typename Target>
[[gnu::noinline]] size_t copy_units(const uint8_t *in, uint8_t *out, size_t units) {
  constexpr JXChar kLimit = kRunLimit<Source, Target>;
  if (units >= 16) return copy_blocks<Source, Target, kLimit, 16>(in, out, units);
  if (units >= 8) return copy_blocks<Source, Target, kLimit, 8>(in, out, units);
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

// ---- Groups of four --------------------------------------------------------------------------

// Reading four characters into lanes and writing them. kBytes is what must be there; both return
// the bytes that the four take, 0 when they are not alike or not of the basic plane. begins_group
// tells cheaply whether a try is worth while.
template <typename Codec>
struct Lanes {
  static constexpr size_t kBytes = 0;
};

template <>
struct Lanes<Latin1> {
  static constexpr size_t kBytes = 4;
  static constexpr bool kMixed = true;

  static bool begins_group(const Cursor &at) { return at.in_bytes() >= kBytes; }
  static size_t read(const uint8_t *in, __m128i &chars) {
    const __m128i zero = _mm_setzero_si128();
    const auto word = static_cast<int>(Units<uint32_t, std::endian::little>::load(in));
    chars = _mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(word), zero), zero);
    return 4;
  }
  static size_t write(uint8_t *out, __m128i chars) {
    if (!all_equal(and_32(chars, 0xffffff00u), _mm_setzero_si128())) return 0;
    const __m128i units = _mm_packs_epi32(chars, chars);
    const __m128i bytes = _mm_packus_epi16(units, units);
    Units<uint32_t, std::endian::little>::store(out,
                                                static_cast<uint32_t>(_mm_cvtsi128_si32(bytes)));
    return 4;
  }
};

template <std::endian kOrder>
struct Lanes<Utf32Codec<kOrder>> {
  static constexpr size_t kBytes = 16;
  static constexpr bool kMixed = true;

  static bool begins_group(const Cursor &at) {
    return at.in_bytes() >= kBytes && Utf32Codec<kOrder>::load(at.in) < 0x10000;
  }

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
  static constexpr bool kMixed = true;

  static bool begins_group(const Cursor &at) {
    return at.in_bytes() >= kBytes && !is_surrogate(Utf16Codec<kOrder>::load(at.in));
  }

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
  static constexpr bool kMixed = false;

  static bool begins_group(const Cursor &at) {
    if (at.in_bytes() < kBytes || at.in[0] < 0xc2 || at.in[0] >= 0xf0) return false;
    return at.in[0] < 0xe0 ? at.in[2] >= 0x80 : at.in[3] >= 0x80;
  }

  static size_t read(const uint8_t *in, __m128i &chars) {
    return in[0] < 0xe0 ? read_twos(in, chars) : read_threes(in, chars);
  }
  static size_t write(uint8_t *out, __m128i chars) {
    const __m128i zero = _mm_setzero_si128();
    if (!any_equal(and_32(chars, 0xf800), zero)) return write_threes(out, chars);
    if (!all_equal(and_32(chars, 0xffffff80u), zero)) return write_mixed(out, chars);
    const __m128i units = _mm_packs_epi32(chars, chars);
    store_word(out, _mm_packus_epi16(units, units));
    return 4;
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
  // Without a branch on the lengths, which are as good as random in most languages' texts.
  [[gnu::noinline]] static size_t write_mixed(uint8_t *out, __m128i chars) {
    const __m128i above_one = _mm_cmpgt_epi32(chars, all_32(0x7f));
    const __m128i above_two = _mm_cmpgt_epi32(chars, all_32(0x7ff));
    const __m128i twos =
        _mm_or_si128(_mm_or_si128(_mm_srli_epi32(chars, 6), _mm_slli_epi32(and_32(chars, 0x3f), 8)),
                     all_32(0x80c0));
    __m128i words =
        _mm_or_si128(_mm_andnot_si128(above_one, chars), _mm_and_si128(above_one, twos));
    words = _mm_or_si128(_mm_andnot_si128(above_two, words),
                         _mm_and_si128(above_two, words_of_three(chars)));
    // The end of each character: the sum of the lengths up to it.
    __m128i ends = _mm_sub_epi32(_mm_sub_epi32(all_32(1), above_one), above_two);
    ends = _mm_add_epi32(ends, _mm_slli_si128(ends, 4));
    ends = _mm_add_epi32(ends, _mm_slli_si128(ends, 8));
    size_t offset = 0;
    for (int i = 0; i < 4; ++i) {
      store_word(out + offset, words);
      offset = static_cast<uint32_t>(_mm_cvtsi128_si32(ends));
      words = _mm_srli_si128(words, 4);
      ends = _mm_srli_si128(ends, 4);
    }
    return offset;
  }
  static __m128i words_of_three(__m128i chars) {
    const __m128i tails = _mm_or_si128(and_32(_mm_slli_epi32(chars, 2), 0x3f00),
                                       and_32(_mm_slli_epi32(chars, 16), 0x3f0000));
    return _mm_or_si128(_mm_or_si128(_mm_srli_epi32(chars, 12), all_32(0x8080e0)), tails);
  }
  // Stores the first lane.
  static void store_word(uint8_t *out, __m128i words) {
    Units<uint32_t, std::endian::little>::store(out,
                                                static_cast<uint32_t>(_mm_cvtsi128_si32(words)));
  }
  static size_t write_threes(uint8_t *out, __m128i chars) {
    __m128i words = words_of_three(chars);
    // Each store of four bytes is overwritten from its fourth byte by the next.
    for (size_t offset = 0; offset < 12; offset += 3) {
      store_word(out + offset, words);
      words = _mm_srli_si128(words, 4);
    }
    return 12;
  }
};

// Tells whether groups are worth a try between two encodings.
template <typename Source, typename Target>
inline constexpr bool kHasGroups = Lanes<Source>::kBytes > 0 && Lanes<Target>::kBytes > 0;

// Converts groups of four as long as they come. Returns the bytes read, and written in the upper
// half: one value, because both ABIs return that in registers.
template <typename Source, typename Target>
[[gnu::noinline]] uint64_t convert_groups(const uint8_t *in, const uint8_t *in_end, uint8_t *out,
                                          const uint8_t *out_end) {
  using Reader = Lanes<Source>;
  using Writer = Lanes<Target>;
  const uint8_t *const in_begin = in;
  const uint8_t *const out_begin = out;
  // Plain groups in a row: two are probably the start of a run. Only variable lengths show them.
  int plain = 0;
  while (plain < 2 && static_cast<size_t>(in_end - in) >= Reader::kBytes &&
         static_cast<size_t>(out_end - out) >= Writer::kBytes) {
    __m128i chars;
    const size_t read = Reader::read(in, chars);
    if (read == 0) break;
    const size_t written = Writer::write(out, chars);
    if (written == 0) break;
    if constexpr (Target::kUnitBytes == 1) plain = written == 4 ? plain + 1 : 0;
    in += read;
    out += written;
  }
  return static_cast<uint32_t>(in - in_begin) | static_cast<uint64_t>(out - out_begin) << 32;
}

// Converts the groups at the start of the input.
template <typename Source, typename Target>
inline void convert_groups(Cursor &at) {
  if (!Lanes<Source>::begins_group(at)) return;
  const uint64_t progress = convert_groups<Source, Target>(at.in, at.in_end, at.out, at.out_end);
  at.in += static_cast<uint32_t>(progress);
  at.out += progress >> 32;
}

}  // namespace jxhost
