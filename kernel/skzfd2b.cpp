// skzfDouble and skzflDouble: text of a double in fixed, exponent or general form. Chooses the
// form, rounds once, and lays the digits out around the decimal point.
#include <algorithm>
#include <cstring>

#include "kernel/copy.hpp"
#include "kernel/decimal.hpp"
#include "kernel/fill.hpp"

namespace {

using jx::Decimal;
using jx::DecomposedDouble;

constexpr uint64_t kMissingBits = 0xFFFF;  // the most significant 16 bits of a missing value
constexpr int32_t kDefaultPrecision = 6;   // for a negative precision
constexpr int32_t kMostFixedZeros = 3;     // after the point; with more, 'g' uses an exponent

struct Layout {
  bool has_exponent;
  bool has_point;           // even without fraction digits
  int64_t fraction_digits;  // after the point
};

// The dot code of a missing value, by its negated byte 5: "._", "." or a period and a letter.
JXStatus put_missing(uint64_t bits, JXChar *destination, int32_t capacity_chars,
                     uint32_t *count_out) {
  const auto code = static_cast<uint8_t>(-(bits >> 40));
  const JXChar text[2] = {'.', code == 1 ? '_' : code + JXChar{62}};
  return skzfJXString(text, code == 2 ? 1 : 2, destination, capacity_chars, count_out);
}

JXStatus put_not_finite(uint64_t bits, bool uppercase, JXChar *destination, int32_t capacity_chars,
                        uint32_t *count_out) {
  const bool is_nan = (bits << 12) != 0;
  const char *name = is_nan ? (uppercase ? "NAN" : "nan") : (uppercase ? "INF" : "inf");
  const JXChar text[3] = {static_cast<JXChar>(name[0]), static_cast<JXChar>(name[1]),
                          static_cast<JXChar>(name[2])};
  return skzfJXString(text, 3, destination, capacity_chars, count_out);
}

// The layout of a number whose first digit has the weight 10^exponent. 'g' chooses by the number
// before rounding.
Layout choose_layout(uint32_t conversion, bool is_zero, int32_t exponent, int32_t precision,
                     bool alternate) {
  if (conversion == 'f') return {false, alternate, precision};
  if (conversion == 'e') return {true, alternate, precision};
  if (is_zero) return {false, alternate, precision};
  const bool is_fixed = exponent >= 0 ? exponent < precision : exponent >= -1 - kMostFixedZeros;
  if (is_fixed) return {false, alternate, int64_t{precision} - 1 - exponent};
  return {true, alternate, std::max(precision - 1, 0)};
}

// Trims zeros from the end of the fraction.
void drop_fraction_zeros(const Decimal &number, Layout *layout) {
  uint32_t count = number.count;
  while (count > 0 && number.digits[count - 1] == '0') --count;
  const int64_t before_point = layout->has_exponent ? 1 : number.point;
  layout->fraction_digits =
      std::clamp<int64_t>(int64_t{count} - before_point, 0, layout->fraction_digits);
}

inline JXChar *put_zeros(JXChar *at, int64_t count) {
  if (count != 0) jx::fill_units(at, '0', static_cast<size_t>(count));
  return at + count;
}

// Stores the digits with index first to last - 1 of a number; index 0 is its first digit, a
// negative index is to the left of that. Beyond the stored digits, on either side, are zeros.
JXChar *put_digits(JXChar *at, const Decimal &number, int64_t first, int64_t last) {
  const int64_t digits_first = std::clamp<int64_t>(0, first, last);
  const int64_t digits_last = std::clamp<int64_t>(number.count, digits_first, last);
  at = put_zeros(at, digits_first - first);
  const auto digits = static_cast<size_t>(digits_last - digits_first);
  jx::copy_chars(number.digits + digits_first, digits, at);
  return put_zeros(at + digits, last - digits_last);
}

JXChar *put_exponent(JXChar *at, int32_t exponent, bool uppercase) {
  *at++ = uppercase ? 'E' : 'e';
  *at++ = exponent < 0 ? '-' : '+';
  auto magnitude = static_cast<uint32_t>(exponent < 0 ? -exponent : exponent);
  if (magnitude >= 100) {
    *at++ = '0' + magnitude / 100;
    magnitude %= 100;
  }
  jx::write_pair(at, magnitude);
  return at + 2;
}

uint64_t text_chars(const Decimal &number, const Layout &layout) {
  const bool point = layout.fraction_digits > 0 || layout.has_point;
  const auto fraction = static_cast<uint64_t>(layout.fraction_digits) + (point ? 1 : 0);
  if (!layout.has_exponent) return fraction + static_cast<uint64_t>(std::max(number.point, 1));
  const bool is_long = number.point - 1 >= 100 || number.point - 1 <= -100;
  return fraction + 1 + (is_long ? 5 : 4);
}

void put_number(JXChar *at, const Decimal &number, const Layout &layout, JXChar decimal_point,
                bool uppercase) {
  const int64_t before_point = layout.has_exponent ? 1 : number.point;
  if (before_point > 0) {
    at = put_digits(at, number, 0, before_point);
  } else {
    *at++ = '0';
  }
  if (layout.fraction_digits > 0 || layout.has_point) *at++ = decimal_point;
  at = put_digits(at, number, before_point, before_point + layout.fraction_digits);
  if (!layout.has_exponent) return;
  put_exponent(at, number.count == 0 ? 0 : number.point - 1, uppercase);
}

}  // namespace

extern "C" {

JXStatus skzfDouble(double value, uint32_t conversion, JXChar decimal_point, uint8_t uppercase,
                    int32_t precision, uint8_t alternate, JXChar *destination,
                    int32_t capacity_chars, uint32_t *count_out) {
  const auto bits = std::bit_cast<uint64_t>(value);
  if (bits >> 48 == kMissingBits) return put_missing(bits, destination, capacity_chars, count_out);
  const DecomposedDouble parts = jx::decompose(value);
  if (parts.exponent == jx::kNotFiniteExponent) {
    return put_not_finite(bits, uppercase != 0, destination, capacity_chars, count_out);
  }
  if (precision < 0) precision = kDefaultPrecision;
  const bool is_zero = parts.significand == 0;
  const int32_t exponent = is_zero ? 0 : jx::decimal_exponent(parts);
  Layout layout = choose_layout(conversion, is_zero, exponent, precision, alternate != 0);
  Decimal number __attribute__((uninitialized));
  number.count = 0;
  number.point = 0;
  if (!is_zero) {
    const int64_t before_point = layout.has_exponent ? 1 : exponent + 1;
    jx::round_to_digits(parts, exponent, before_point + layout.fraction_digits, &number);
  }
  const bool is_general = conversion != 'f' && conversion != 'e';
  if (is_general && !alternate) drop_fraction_zeros(number, &layout);
  const uint64_t chars = text_chars(number, layout);
  if (count_out) *count_out = static_cast<uint32_t>(chars);
  if (capacity_chars < 0 || chars > static_cast<uint32_t>(capacity_chars)) return JX_E_TRUNCATED;
  put_number(destination, number, layout, decimal_point, uppercase != 0);
  return JX_OK;
}

JXStatus skzflDouble(long double value, uint32_t conversion, JXChar decimal_point,
                     uint8_t uppercase, int32_t precision, uint8_t alternate, JXChar *destination,
                     int32_t capacity_chars, uint32_t *count_out) {
  return skzfDouble(static_cast<double>(value), conversion, decimal_point, uppercase, precision,
                    alternate, destination, capacity_chars, count_out);
}

}  // extern "C"
