// Digits of unsigned integers as JXChars: counted first, then stored from last to first, two digits
// a store.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "jx/runtime.h"
#include "vector/sse2.hpp"

namespace jx {

inline constexpr JXChar UpTable[17] = {'0', '1', '2', '3', '4', '5', '6', '7', '8',
                                       '9', 'A', 'B', 'C', 'D', 'E', 'F', 0};
inline constexpr JXChar LowTable[17] = {'0', '1', '2', '3', '4', '5', '6', '7', '8',
                                        '9', 'a', 'b', 'c', 'd', 'e', 'f', 0};

struct DigitPair {
  JXChar tens;
  JXChar ones;
};

// "00" to "99".
inline constexpr std::array<DigitPair, 100> kDigitPairs = [] {
  std::array<DigitPair, 100> pairs{};
  for (uint32_t i = 0; i < 100; ++i) pairs[i] = {'0' + i / 10, '0' + i % 10};
  return pairs;
}();

// 10^0 to 10^19, the powers of ten that fit 64 bits.
inline constexpr std::array<uint64_t, 20> kSmallPowers = [] {
  std::array<uint64_t, 20> powers{1};
  for (uint32_t i = 1; i < 20; ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

inline constexpr uint32_t kGroupDigits = 9;  // decimal digits that always fit 32 bits
inline constexpr uint32_t kGroup = 1000000000;
inline constexpr uint32_t kLongGroupDigits = 19;  // decimal digits that always fit 64 bits

// The number of decimal digits of value; 1 for 0.
template <typename Word>
constexpr uint32_t decimal_count(Word value) {
  // 1233 / 4096 approximates log10(2) well enough for 64 bits; the comparison decides the rest.
  const uint32_t bits = static_cast<uint32_t>(std::bit_width(value | 1u));
  const uint32_t estimate = (bits * 1233) >> 12;
  return estimate + (value >= static_cast<Word>(kSmallPowers[estimate]) || estimate == 0 ? 1 : 0);
}

inline void write_pair(JXChar *destination, uint32_t value) {
  std::memcpy(destination, &kDigitPairs[value], sizeof(DigitPair));
}

// Stores nine digits, leading zeros included.
inline void write_group(JXChar *destination, uint32_t value) {
  const uint32_t high = value / 10000;
  const uint32_t low = value % 10000;
  destination[0] = '0' + high / 10000;
  write_pair(destination + 1, high % 10000 / 100);
  write_pair(destination + 3, high % 100);
  write_pair(destination + 5, low / 100);
  write_pair(destination + 7, low % 100);
}

// Stores nineteen digits, leading zeros included.
inline void write_long_group(JXChar *destination, uint64_t value) {
  const uint64_t high = value / kGroup;
  const auto middle = static_cast<uint32_t>(high % kGroup);
  destination[0] = '0' + static_cast<uint32_t>(high / kGroup);
  write_group(destination + 1, middle);
  write_group(destination + 1 + kGroupDigits, static_cast<uint32_t>(value % kGroup));
}

// Stores the decimal digits of value, the last one at end[-1].
inline void write_decimal(JXChar *end, uint32_t value) {
  while (value >= 100) {
    end -= 2;
    write_pair(end, value % 100);
    value /= 100;
  }
  if (value >= 10) {
    write_pair(end - 2, value);
  } else {
    end[-1] = '0' + value;
  }
}

inline void write_decimal(JXChar *end, uint64_t value) {
  while (value > UINT32_MAX) {
    const uint64_t rest = value / kGroup;
    end -= kGroupDigits;
    write_group(end, static_cast<uint32_t>(value - rest * kGroup));
    value = rest;
  }
  write_decimal(end, static_cast<uint32_t>(value));
}

inline constexpr uint32_t kHighestBase = 16;

// The number of digits of value in a base from 2 to 16; 1 for 0.
template <typename Word>
uint32_t count_digits(Word value, uint32_t base) {
  if (base == 10) return decimal_count(value);
  const auto bits = static_cast<uint32_t>(std::bit_width(value | 1u));
  switch (base) {
    case 16:
      return (bits + 3) / 4;
    case 8:
      return (bits + 2) / 3;
    case 4:
      return (bits + 1) / 2;
    case 2:
      return bits;
    default:
      break;
  }
  uint32_t count = 1;
  for (; value >= base; value /= base) ++count;
  return count;
}

// Stores the last `count` hexadecimal digits of value, 4 or 8, four at a time.
inline void write_hexadecimal(JXChar *destination, uint32_t value, uint32_t count, bool uppercase) {
  const __m128i nibble_mask = _mm_set1_epi8(0x0F);
  const __m128i bytes = _mm_cvtsi32_si128(static_cast<int>(__builtin_bswap32(value)));
  const __m128i high = _mm_and_si128(_mm_srli_epi16(bytes, 4), nibble_mask);
  const __m128i nibbles = _mm_unpacklo_epi8(high, _mm_and_si128(bytes, nibble_mask));
  const __m128i letters = _mm_cmpgt_epi8(nibbles, _mm_set1_epi8(9));
  const __m128i to_letter = _mm_set1_epi8(static_cast<char>((uppercase ? 'A' : 'a') - '0' - 10));
  const __m128i text =
      _mm_add_epi8(_mm_add_epi8(nibbles, _mm_set1_epi8('0')), _mm_and_si128(letters, to_letter));
  const __m128i halves = _mm_unpacklo_epi8(text, _mm_setzero_si128());
  if (count == 8) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(destination),
                     _mm_unpacklo_epi16(halves, _mm_setzero_si128()));
    destination += 4;
  }
  _mm_storeu_si128(reinterpret_cast<__m128i *>(destination),
                   _mm_unpackhi_epi16(halves, _mm_setzero_si128()));
}

// Stores the last `count` digits of value in a base from 2 to 16, the last one at end[-1].
template <typename Word>
void write_digits(Word value, uint32_t base, bool uppercase, JXChar *end, uint32_t count) {
  if (base == 10) {
    write_decimal(end, value);
    return;
  }
  if (base == 16 && (count == 4 || count == 8)) {
    write_hexadecimal(end - count, static_cast<uint32_t>(value), count, uppercase);
    return;
  }
  const JXChar *table = uppercase ? UpTable : LowTable;
  if ((base & (base - 1)) == 0) {
    const int bits_per_digit = std::countr_zero(base);
    for (; count > 0; --count, value >>= bits_per_digit) *--end = table[value & (base - 1)];
    return;
  }
  for (; count > 0; --count, value /= base) *--end = table[value % base];
}

}  // namespace jx
