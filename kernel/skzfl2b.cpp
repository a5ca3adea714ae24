// Digits of 32- and 64-bit unsigned integers in any base from 2 to 16.
#include "kernel/digits.hpp"
#include "kernel/kernel.hpp"

namespace {

constexpr uint32_t kHighestBase = 16;

uint32_t usable_base(uint32_t base) {
  if (base > kHighestBase) return kHighestBase;
  return base < 2 ? 10 : base;
}

template <typename Word>
uint32_t count_digits(Word value, uint32_t base) {
  if (base == 10) return jx::decimal_count(value);
  if (std::has_single_bit(base)) {
    const auto bits_per_digit = static_cast<uint32_t>(std::countr_zero(base));
    const auto bits = static_cast<uint32_t>(std::bit_width(value | 1u));
    return (bits + bits_per_digit - 1) / bits_per_digit;
  }
  uint32_t count = 1;
  for (; value >= base; value /= base) ++count;
  return count;
}

template <typename Word>
void write_digits(Word value, uint32_t base, const JXChar *table, JXChar *end, uint32_t count) {
  if (std::has_single_bit(base)) {
    const int bits_per_digit = std::countr_zero(base);
    for (; count > 0; --count, value >>= bits_per_digit) *--end = table[value & (base - 1)];
    return;
  }
  for (; count > 0; --count, value /= base) *--end = table[value % base];
}

// Both widths: the digits are counted first and then stored where they belong.
template <typename Word>
JXStatus write_number(Word value, uint32_t base, uint8_t uppercase, JXChar *destination,
                      int32_t capacity_chars, uint32_t *count_out) {
  base = usable_base(base);
  const uint32_t count = count_digits(value, base);
  if (count_out) *count_out = count;
  if (int64_t{count} > capacity_chars) return JX_E_TRUNCATED;
  if (base == 10) {
    jx::write_decimal(destination + count, value);
  } else {
    const JXChar *table = uppercase ? jx::kUpTable : jx::kLowTable;
    write_digits(value, base, table, destination + count, count);
  }
  return JX_OK;
}

}  // namespace

extern "C" {

JXStatus skzfIFast(uint32_t value, uint32_t base, uint8_t uppercase, JXChar *destination,
                   int32_t capacity_chars, uint32_t *count_out) {
  return write_number(value, base, uppercase, destination, capacity_chars, count_out);
}

JXStatus skzfIMax(uint64_t value, uint32_t base, uint8_t uppercase, JXChar *destination,
                  int32_t capacity_chars, uint32_t *count_out) {
  return write_number(value, base, uppercase, destination, capacity_chars, count_out);
}

}  // extern "C"
