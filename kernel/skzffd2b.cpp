// skzfFDblToBuff: digits of the fraction of a double.
#include <algorithm>
#include <cstring>

#include "kernel/decimal.hpp"
#include "kernel/fill.hpp"

extern "C" JXStatus skzfFDblToBuff(double value, JXChar *destination, uint32_t digit_count,
                                   uint32_t *count_out, uint32_t *leading_zeros_out) {
  const jx::DecomposedDouble parts = jx::decompose(value);
  *count_out = 0;
  if (leading_zeros_out) *leading_zeros_out = 0;
  // Zero and numbers without fraction bits have no digits.
  if (parts.significand == 0 || parts.exponent >= 0) return JX_OK;
  jx::Decimal fraction __attribute__((uninitialized));
  jx::expand_exactly(jx::fraction_of(parts), digit_count, &fraction);
  const auto zeros = static_cast<uint32_t>(-fraction.point);
  uint32_t stored_zeros = 0;
  if (leading_zeros_out) {
    if (fraction.count == 0) return JX_OK;
    *leading_zeros_out = zeros;
  } else {
    stored_zeros = std::min(zeros, digit_count);
  }
  const uint32_t stored = std::min(fraction.count, digit_count - stored_zeros);
  jx::fill_units(destination, '0', stored_zeros);
  if (stored != 0) {
    std::memcpy(destination + stored_zeros, fraction.digits, stored * sizeof(JXChar));
  }
  const uint32_t written = stored_zeros + stored;
  jx::fill_units(destination + written, '0', digit_count - written);
  *count_out = digit_count;
  return JX_OK;
}
