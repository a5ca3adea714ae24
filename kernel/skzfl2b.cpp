// skzfIFast and skzfIMax: digits of 32- and 64-bit unsigned integers in base 2 to 16.
#include "jx/runtime.h"
#include "kernel/digits.hpp"

namespace {

uint32_t usable_base(uint32_t base) {
  if (base > jx::kHighestBase) return jx::kHighestBase;
  return base < 2 ? 10 : base;
}

template <typename Word>
JXStatus write_number(Word value, uint32_t base, uint8_t uppercase, JXChar *destination,
                      int32_t capacity_chars, uint32_t *count_out) {
  base = usable_base(base);
  const uint32_t count = jx::count_digits(value, base);
  if (count_out) *count_out = count;
  if (int64_t{count} > capacity_chars) return JX_E_TRUNCATED;
  jx::write_digits(value, base, uppercase != 0, destination, count);
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
