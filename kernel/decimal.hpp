// Exact decimal digits of doubles. A double is decomposed into its bits, and integer arithmetic on
// the stack decides every digit. Rounding happens once, half away from zero.
#pragma once

#include <bit>
#include <cstdint>

#include "jx/runtime.h"
#include "kernel/digits.hpp"

// Hidden, so that a call within the module needs no table of addresses.
namespace [[gnu::visibility("hidden")]] jx {

inline constexpr int32_t kSignificandBits = 52;  // stored bits of a double's significand
inline constexpr int32_t kExponentBias = 1023;
inline constexpr uint32_t kExponentMask = 0x7FF;
inline constexpr int32_t kLowestExponent = -1074;   // of the smallest double's last bit
inline constexpr int32_t kNotFiniteExponent = 972;  // infinities and NaNs decompose to this

// The magnitude of a double: significand * 2^exponent. An infinity decomposes to 2^1024.
struct DecomposedDouble {
  uint64_t significand;
  int32_t exponent;
};

inline DecomposedDouble decompose(double value) {
  const auto bits = std::bit_cast<uint64_t>(value);
  const uint64_t hidden = uint64_t{1} << kSignificandBits;
  const uint64_t significand = bits & (hidden - 1);
  const auto field = static_cast<int32_t>((bits >> kSignificandBits) & kExponentMask);
  if (field == 0) return {significand, kLowestExponent};
  return {significand | hidden, field - kExponentBias - kSignificandBits};
}

// The fraction of a number, without its integer part.
inline DecomposedDouble fraction_of(DecomposedDouble value) {
  if (value.exponent >= 0) return {0, 0};
  if (value.exponent <= -64) return value;
  return {value.significand & ((uint64_t{1} << -value.exponent) - 1), value.exponent};
}

// The longest integer part, 2^1024 and just above, has 309 digits. A fraction has at most 1074
// decimal places, and 767 digits after its leading zeros: a full significand that ends at 2^-1074
// begins with 307 zeros. The last group of digits may run over the count that was asked for.
inline constexpr uint32_t kIntegerDigits = 309;
inline constexpr uint32_t kFractionDigits = 767;
inline constexpr uint32_t kDecimalDigits = kFractionDigits + kLongGroupDigits;

// The number 0.d1d2d3... * 10^point, d1 not zero. Digits after the first `count` are zeros; zero
// has count 0 and point 0.
struct Decimal {
  int32_t point;
  uint32_t count;
  JXChar digits[kDecimalDigits];
};

// Writes the digits of the integer part and returns their count: at most kIntegerDigits, 0 for a
// number below 1.
uint32_t write_integer_part(DecomposedDouble value, JXChar *digits);

// Writes at least the first `wanted` digits of a number, unrounded; fewer if the expansion ends
// before.
void expand_exactly(DecomposedDouble value, uint32_t wanted, Decimal *out);

// The largest x with 10^x <= value, the power of ten of the first digit; value is not zero.
int32_t decimal_exponent(DecomposedDouble value);

// Rounds a number that is not zero to its first `wanted` digits; exponent is its decimal_exponent.
// With 0 wanted, the first digit decides between zero and 10^(exponent + 1); a negative count gives
// zero.
void round_to_digits(DecomposedDouble value, int32_t exponent, int64_t wanted, Decimal *out);

}  // namespace jx
