// Digits of unsigned integers as JXChars: counted first, then stored straight in place, two digits
// a store. Nothing but integer words, so that every processor runs the same code.
//
// Numbers of random length are limited by mispredicted branches: a loop over the digits costs one a
// number. Decimal numbers of 32 bits have one branch, on three digits or fewer. Against such a loop
// this takes 0.68 of the time on x86-64 and 0.75 on i386; for numbers of one length the loop is as
// fast.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "jx/runtime.h"

namespace jx {

struct DigitPair {
  JXChar first;
  JXChar second;
};

constexpr JXChar digit_of(uint32_t value) { return value + (value < 10 ? '0' : 'A' - 10); }

// The two digits of each number below kBase squared: "00" to "99", or "00" to "FF".
template <uint32_t kBase>
consteval std::array<DigitPair, kBase * kBase> make_pairs() {
  std::array<DigitPair, kBase * kBase> pairs{};
  for (uint32_t i = 0; i < pairs.size(); ++i) pairs[i] = {digit_of(i / kBase), digit_of(i % kBase)};
  return pairs;
}
inline constexpr auto kDecimalPairs = make_pairs<10>();
inline constexpr auto kHexadecimalPairs = make_pairs<16>();

// 10^0 to 10^19, the powers of ten that fit 64 bits.
inline constexpr std::array<uint64_t, 20> kSmallPowers = [] {
  std::array<uint64_t, 20> powers{1};
  for (uint32_t i = 1; i < 20; ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

inline constexpr uint32_t kGroupDigits = 9;  // decimal digits that always fit 32 bits
inline constexpr uint32_t kGroup = 1000000000;
inline constexpr uint32_t kLongGroupDigits = 19;  // decimal digits that always fit 64 bits

// For each highest bit, what takes a number with this bit to its count of decimal digits in the
// upper word: all such numbers have the same count or, from the power of ten in between on, one
// more.
inline constexpr std::array<uint64_t, 32> kDigitCounts = [] {
  std::array<uint64_t, 32> counts{};
  uint64_t digits = 1;
  for (uint32_t bit = 0; bit < 32; ++bit) {
    const uint64_t next_power = kSmallPowers[static_cast<size_t>(digits)];
    const bool has_more = next_power < uint64_t{2} << bit;
    counts[bit] = has_more ? ((digits + 1) << 32) - next_power : digits << 32;
    digits += has_more ? 1 : 0;
  }
  return counts;
}();

// The number of decimal digits of value; 1 for 0.
constexpr uint32_t decimal_count(uint32_t value) {
  const auto bit = static_cast<uint32_t>(std::bit_width(value | 1u)) - 1;
  return static_cast<uint32_t>((value + kDigitCounts[bit]) >> 32);
}
constexpr uint32_t decimal_count(uint64_t value) {
  // 1233 / 4096 approximates log10(2) well enough for 64 bits; the comparison decides the rest.
  const uint32_t bits = static_cast<uint32_t>(std::bit_width(value | 1u));
  const uint32_t estimate = (bits * 1233) >> 12;
  return estimate + (value >= kSmallPowers[estimate] || estimate == 0 ? 1 : 0);
}

[[gnu::always_inline]] inline void write_pair(JXChar *destination, uint32_t value) {
  std::memcpy(destination, &kDecimalPairs[value], sizeof(DigitPair));
}

// Stores four digits, leading zeros included.
[[gnu::always_inline]] inline void write_four(JXChar *destination, uint32_t value) {
  write_pair(destination, value / 100);
  write_pair(destination + 2, value % 100);
}

// Stores nine digits, leading zeros included.
inline void write_group(JXChar *destination, uint32_t value) {
  const uint32_t high = value / 10000;
  destination[0] = '0' + high / 10000;
  write_four(destination + 1, high % 10000);
  write_four(destination + 5, value % 10000);
}

// Stores nineteen digits, leading zeros included.
inline void write_long_group(JXChar *destination, uint64_t value) {
  const uint64_t high = value / kGroup;
  const auto middle = static_cast<uint32_t>(high % kGroup);
  destination[0] = '0' + static_cast<uint32_t>(high / kGroup);
  write_group(destination + 1, middle);
  write_group(destination + 1 + kGroupDigits, static_cast<uint32_t>(value % kGroup));
}

// How a number of 4 to 10 digits is taken apart: its first four are
// (value * (factor + 1) >> 32) >> shift.
struct FirstFour {
  uint32_t factor;
  uint16_t shift;
  uint16_t middle;  // index of the two digits before the last four; 0 if there are none
};

inline constexpr std::array<FirstFour, 11> kFirstFour = [] {
  std::array<FirstFour, 11> divisions{};
  for (uint32_t count = 4; count <= 10; ++count) {
    const uint64_t divisor = kSmallPowers[count - 4];
    const auto shift = static_cast<uint16_t>(std::bit_width(divisor) - 1);
    const uint64_t unit = uint64_t{1} << (32 + shift);
    divisions[count] = {static_cast<uint32_t>((unit - 1) / divisor), shift,
                        static_cast<uint16_t>(count < 6 ? 0 : count - 6)};
  }
  return divisions;
}();

// The factor, rounded up, is exact for every value of the count: its error stays below a unit.
static_assert([] {
  for (uint32_t count = 4; count <= 10; ++count) {
    const uint64_t divisor = kSmallPowers[count - 4];
    const uint64_t unit = uint64_t{1} << (32 + kFirstFour[count].shift);
    const uint64_t error = (uint64_t{kFirstFour[count].factor} + 1) * divisor - unit;
    const uint64_t highest = count < 10 ? kSmallPowers[count] - 1 : UINT32_MAX;
    if (error * highest >= unit) return false;
  }
  return true;
}());

// Stores the decimal digits of value; count is its decimal_count.
[[gnu::always_inline]] inline void write_decimal(JXChar *destination, uint32_t value,
                                                 uint32_t count) {
  if (value < 1000) {
    destination[0] = '0' + (value < 10 ? value : value / 100);
    if (value >= 10) write_pair(destination + count - 2, value % 100);  // of two: the first as well
    return;
  }
  // The first four digits and the last four, which may overlap, over the two in between.
  const FirstFour &division = kFirstFour[count];
  const uint64_t product = uint64_t{value} * division.factor + value;
  const uint32_t high = value / 10000;
  write_pair(destination + division.middle, high % 100);
  write_four(destination, static_cast<uint32_t>(product >> 32) >> division.shift);
  write_four(destination + count - 4, value - high * 10000);
}

inline void write_decimal(JXChar *destination, uint64_t value, uint32_t count) {
  while (value > UINT32_MAX) {
    const uint64_t rest = value / kGroup;
    count -= kGroupDigits;
    write_group(destination + count, static_cast<uint32_t>(value - rest * kGroup));
    value = rest;
  }
  write_decimal(destination, static_cast<uint32_t>(value), count);
}

// The same for digits that are read again at once: a load waits long for stores that overlap, and
// here none do. The loop is predicted if most numbers have one length, as rounded ones do.
inline void write_digit_pairs(JXChar *destination, uint64_t value, uint32_t count) {
  JXChar *end = destination + count;
  while (value > UINT32_MAX) {
    const uint64_t rest = value / kGroup;
    end -= kGroupDigits;
    write_group(end, static_cast<uint32_t>(value - rest * kGroup));
    value = rest;
  }
  auto rest = static_cast<uint32_t>(value);
  for (; rest >= 100; rest /= 100) {
    end -= 2;
    write_pair(end, rest % 100);
  }
  if (rest >= 10) {
    write_pair(end - 2, rest);
  } else {
    end[-1] = '0' + rest;
  }
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

// Stores the last `count` hexadecimal digits of value.
template <typename Word>
[[gnu::always_inline]] inline void write_hexadecimal(JXChar *destination, Word value,
                                                     uint32_t count, bool uppercase) {
  // The digits "0" to "9" have this bit as well.
  const JXChar lowercase = uppercase ? 0 : 'a' - 'A';
  const uint64_t two_lowercase = uint64_t{lowercase} << 32 | lowercase;
  JXChar *end = destination + count;
  for (; end - destination >= 2; value >>= 8) {
    end -= 2;
    uint64_t pair;
    std::memcpy(&pair, &kHexadecimalPairs[value & 0xFF], sizeof pair);
    pair |= two_lowercase;
    std::memcpy(end, &pair, sizeof pair);
  }
  if (end != destination) *destination = kHexadecimalPairs[value & 0xF].second | lowercase;
}

// Stores the digits of value in a base from 2 to 16; count is its count_digits.
template <typename Word>
void write_digits(Word value, uint32_t base, bool uppercase, JXChar *destination, uint32_t count) {
  if (base == 10) return write_decimal(destination, value, count);
  if (base == 16) return write_hexadecimal(destination, value, count, uppercase);
  const JXChar lowercase = uppercase ? 0 : 'a' - 'A';
  while (count > 0) {
    destination[--count] = digit_of(static_cast<uint32_t>(value % base)) | lowercase;
    value /= base;
  }
}

}  // namespace jx
