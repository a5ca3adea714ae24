// Groups of four characters of the basic plane, decoded into four lanes and encoded from them.
#pragma once

#include "host/transcode_vector.hpp"

namespace jxhost {

// Reads four characters into lanes and writes them. kBytes bytes must be available. Both return the
// bytes that the four take, or 0 when their lengths differ or one is outside the basic plane.
// begins_group is a cheap test whether to try.
template <typename Codec>
struct Lanes {
  static constexpr size_t kBytes = 0;
};

#ifndef JX_VECTOR_PLAIN

template <>
struct Lanes<Latin1> {
  static constexpr size_t kBytes = 4;
  static constexpr bool kMixed = true;
  using Group = __m128i;

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
  using Group = __m128i;

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
  using Group = __m128i;

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
  static constexpr size_t kBytes = 13;  // four times three, and one more that is loaded
  static constexpr bool kMixed = false;
  using Group = __m128i;

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
  // Branch-free: in most languages the lengths are as good as random.
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
    // Where each character ends: the running sum of the lengths.
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

#endif

// Whether a pair of encodings converts in groups.
template <typename Source, typename Target>
inline constexpr bool kHasGroups =  // NOLINTNEXTLINE(misc-redundant-expression): of two types
    Lanes<Source>::kBytes > 0 && Lanes<Target>::kBytes > 0;

// Converts groups of four while there are any. Returns the bytes read, with the bytes written in
// the upper half: one value, because both ABIs return it in registers.
template <typename Source, typename Target>
[[gnu::noinline]] uint64_t convert_groups(const uint8_t *in, const uint8_t *in_end, uint8_t *out,
                                          const uint8_t *out_end) {
  using Reader = Lanes<Source>;
  using Writer = Lanes<Target>;
  const uint8_t *const in_begin = in;
  const uint8_t *const out_begin = out;
  // Groups in a row that took one byte a character; two are probably the start of a run.
  int plain = 0;
  while (plain < 2 && static_cast<size_t>(in_end - in) >= Reader::kBytes &&
         static_cast<size_t>(out_end - out) >= Writer::kBytes) {
    typename Reader::Group chars;
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
