// skzfIDblToBuff: digits of the integer part of a double.
#include <cstring>

#include "kernel/decimal.hpp"

namespace {

uint32_t count_trailing_zeros(const JXChar *digits, uint32_t count) {
  uint32_t zeros = 0;
  while (zeros < count && digits[count - 1 - zeros] == '0') ++zeros;
  return zeros;
}

}  // namespace

extern "C" JXStatus skzfIDblToBuff(double value, JXChar *destination, uint32_t capacity_chars,
                                   uint32_t *digit_count_out, uint32_t *trailing_zeros_out) {
  JXChar digits[jx::kIntegerDigits] __attribute__((uninitialized));
  uint32_t count = jx::write_integer_part(jx::decompose(value), digits);
  if (trailing_zeros_out) {
    *trailing_zeros_out = count_trailing_zeros(digits, count);
    count -= *trailing_zeros_out;
  }
  *digit_count_out = count;
  if (count > capacity_chars) return JX_E_TRUNCATED;
  if (count != 0) std::memcpy(destination, digits, count * sizeof(JXChar));
  return JX_OK;
}
