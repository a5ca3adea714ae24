// Doubles in decimal, exactly. A double is taken apart by its bits and every digit is decided by
// integer arithmetic, on the stack alone. Rounding happens once, half away from zero.
#pragma once

#include <bit>
#include <cstdint>

#include "jx/runtime.h"
#include "kernel/digits.hpp"

namespace jx {

inline constexpr int32_t kSignificandBits = 52;  // stored bits of a double's significand
inline constexpr int32_t kExponentBias = 1023;
inline constexpr uint32_t kExponentMask = 0x7FF;
inline constexpr int32_t kLowestExponent = -1074;   // of the last bit of the smallest double
inline constexpr int32_t kNotFiniteExponent = 972;  // what infinities and NaNs read as

// The magnitude of a double: significand * 2^exponent. An infinity reads as 2^1024.
struct Binary {
  uint64_t significand;
  int32_t exponent;
};

inline Binary binary_of(double value) {
  const auto bits = std::bit_cast<uint64_t>(value);
  const uint64_t hidden = uint64_t{1} << kSignificandBits;
  const uint64_t significand = bits & (hidden - 1);
  const auto field = static_cast<int32_t>((bits >> kSignificandBits) & kExponentMask);
  if (field == 0) return {significand, kLowestExponent};
  return {significand | hidden, field - kExponentBias - kSignificandBits};
}

// The part of a number below 1.
inline Binary fraction_of(Binary value) {
  if (value.exponent >= 0) return {0, 0};
  if (value.exponent <= -64) return value;
  return {value.significand & ((uint64_t{1} << -value.exponent) - 1), value.exponent};
}

// The longest integer part, 2^1024 and what lies just above it, has 309 digits. A fraction has at
// most 767 digits after its leading zeros: 1074 places, of which the 307 of a significand that
// ends at 2^-1074 are zeros. Digits are made in groups, and the first may stop short.
inline constexpr uint32_t kIntegerDigits = 309;
inline constexpr uint32_t kFractionDigits = 767;
inline constexpr uint32_t kDecimalDigits = kFractionDigits + kLongGroupDigits;

// A decimal number 0.d1d2d3... * 10^point with d1 not zero. Digits beyond count are zeros; count 0
// is the number zero, with point 0.
struct Decimal {
  int32_t point;
  uint32_t count;
  JXChar digits[kDecimalDigits];
};

// Writes the digits of the integer part, at most kIntegerDigits, and returns how many there are:
// 0 for a number below 1.
uint32_t write_integer_part(Binary value, JXChar *digits);

// The digits of a number as they stand: at least `wanted` of them, unless the expansion ends
// before.
void expand_exactly(Binary value, uint32_t wanted, Decimal *out);

// The place of the first digit of a number that is not zero: the largest x with 10^x <= value.
int32_t decimal_exponent(Binary value);

// A number that is not zero, rounded to `wanted` digits counted from its first one; exponent is
// its decimal_exponent. With 0 wanted the first digit decides between zero and one unit of the
// place above it; a negative count gives zero.
void round_to_digits(Binary value, int32_t exponent, int64_t wanted, Decimal *out);

}  // namespace jx
