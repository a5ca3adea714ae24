// Rounding to a number of digits. Up to 18 digits come from one product with a 128-bit power of
// ten. The exact expansion makes all longer texts, and decides the few numbers for which the
// product leaves the direction of rounding open.
#include "kernel/decimal.hpp"

#include <algorithm>

namespace jx {

namespace {

struct UInt128 {
  uint64_t high;
  uint64_t low;
};

constexpr int32_t kLowestPower = -323;   // for comparison with the smallest double
constexpr int32_t kHighestPower = 341;   // scales the smallest double to 18 digits
constexpr int32_t kLastExactPower = 55;  // 5^55 is the last that fits 128 bits
constexpr int64_t kFastDigits = 18;

// floor(log2(10^power)) and floor(log10(2^power)), exact in the range of powers used here.
constexpr int32_t floor_log2_of_ten(int32_t power) { return (power * 217706) >> 16; }
constexpr int32_t floor_log10_of_two(int32_t power) { return (power * 315653) >> 20; }

// Steps through the powers of ten in 256 bits, so that the 128 bits kept are exact.
class PowerWalk {
 public:
  consteval int32_t log2() const { return log2_; }
  consteval UInt128 leading_bits() const {
    return {(uint64_t{words_[7]} << 32) | words_[6], (uint64_t{words_[5]} << 32) | words_[4]};
  }

  consteval void times_ten() {
    uint64_t carry = 0;
    for (uint32_t &word : words_) {
      carry += uint64_t{word} * 10;
      word = static_cast<uint32_t>(carry);
      carry >>= 32;
    }
    const auto shift = static_cast<int32_t>(std::bit_width(carry));
    for (uint32_t i = 8; i-- > 0;) {
      const uint64_t joined = (carry << 32) | words_[i];
      carry = words_[i];
      words_[i] = static_cast<uint32_t>(joined >> shift);
    }
    log2_ += shift;
  }

  consteval void divide_by_ten() {
    uint64_t remainder = 0;
    for (uint32_t i = 8; i-- > 0;) {
      const uint64_t dividend = (remainder << 32) | words_[i];
      words_[i] = static_cast<uint32_t>(dividend / 10);
      remainder = dividend % 10;
    }
    uint32_t below = static_cast<uint32_t>((remainder << 32) / 10);
    const int32_t shift = std::countl_zero(words_[7]);
    for (uint32_t &word : words_) {
      const uint64_t joined = (uint64_t{word} << 32) | below;
      below = word;
      word = static_cast<uint32_t>(joined >> (32 - shift));
    }
    log2_ -= shift;
  }

 private:
  uint32_t words_[8] = {0, 0, 0, 0, 0, 0, 0, 0x80000000u};  // least significant first
  int32_t log2_ = 0;
};

struct PowerTable {
  // The leading 128 bits of each power, truncated, the highest one set.
  UInt128 powers[kHighestPower - kLowestPower + 1];
  bool is_sound;  // the logarithms are right, and low is 0 for 10^0 to 10^27 only
};

consteval PowerTable make_powers() {
  PowerTable table{};
  table.is_sound = true;
  PowerWalk up;
  PowerWalk down;
  for (int32_t power = 0; power <= kHighestPower; ++power) {
    table.powers[power - kLowestPower] = up.leading_bits();
    const bool ends_early = up.leading_bits().low == 0;
    table.is_sound &= up.log2() == floor_log2_of_ten(power) && ends_early == (power <= 27);
    up.times_ten();
  }
  for (int32_t power = -1; power >= kLowestPower; --power) {
    down.divide_by_ten();
    table.powers[power - kLowestPower] = down.leading_bits();
    table.is_sound &= down.log2() == floor_log2_of_ten(power) && down.leading_bits().low != 0;
  }
  return table;
}

constexpr PowerTable kPowers = make_powers();
static_assert(kPowers.is_sound);

const UInt128 &power_of_ten(int32_t power) { return kPowers.powers[power - kLowestPower]; }

UInt128 multiply(uint64_t a, uint64_t b) {
#ifdef __SIZEOF_INT128__
  __extension__ using Wide = unsigned __int128;
  const Wide product = Wide{a} * b;
  return {static_cast<uint64_t>(product >> 64), static_cast<uint64_t>(product)};
#else
  const uint64_t a_low = static_cast<uint32_t>(a);
  const uint64_t a_high = a >> 32;
  const uint64_t b_low = static_cast<uint32_t>(b);
  const uint64_t b_high = b >> 32;
  const uint64_t low = a_low * b_low;
  const uint64_t middle = a_high * b_low + (low >> 32);
  const uint64_t cross = a_low * b_high + static_cast<uint32_t>(middle);
  return {a_high * b_high + (middle >> 32) + (cross >> 32),
          (cross << 32) | static_cast<uint32_t>(low)};
#endif
}

// Rounds value * 10^power, which is below 2^60, to an integer. False when the truncated power of
// ten leaves the direction open.
bool round_scaled(DecomposedDouble value, int32_t power, uint64_t *out) {
  const int32_t shift = std::countl_zero(value.significand);
  const uint64_t significand = value.significand << shift;
  const UInt128 &ten = power_of_ten(power);
  // The upper 128 bits of the 192-bit product; truncation makes them too small by less than two
  // units in the last place.
  UInt128 scaled = multiply(significand, ten.high);
  const uint64_t carried = multiply(significand, ten.low).high;
  scaled.low += carried;
  scaled.high += scaled.low < carried ? 1 : 0;
  // Bits of scaled.high after the binary point: at least 3, because the result is below 2^60, and
  // at most 68, because it is at least 1/10.
  const int32_t below = -1 - floor_log2_of_ten(power) - (value.exponent - shift);
  uint64_t whole = 0;
  uint64_t fraction;  // the first 64 bits after the point, in units of at least 8
  if (below < 64) {
    whole = scaled.high >> below;
    fraction = (scaled.high << (64 - below)) | (scaled.low >> below);
  } else {
    fraction = scaled.high >> (below - 64);
  }
  constexpr uint64_t kHalf = uint64_t{1} << 63;
  const bool is_exact = power >= 0 && power <= kLastExactPower;
  if (fraction == kHalf - 1 && !is_exact) return false;
  *out = whole + (fraction >> 63);
  return true;
}

// Adds one to the last of `count` digits. Nines carry; the zeros they become are dropped.
void round_up(uint32_t count, Decimal *number) {
  while (count > 0 && number->digits[count - 1] == '9') --count;
  if (count == 0) {
    number->digits[0] = '1';
    number->count = 1;
    ++number->point;
    return;
  }
  ++number->digits[count - 1];
  number->count = count;
}

// Of no digit only where the value is half of 10^exponent or more: no double below is so close to
// it that the product leaves the direction open.
void round_expansion(DecomposedDouble value, uint32_t wanted, Decimal *out) {
  expand_exactly(value, wanted + 1, out);
  if (out->count <= wanted) return;
  out->count = wanted;
  if (out->digits[wanted] >= '5') round_up(wanted, out);
}

}  // namespace

int32_t decimal_exponent(DecomposedDouble value) {
  const int32_t shift = std::countl_zero(value.significand);
  const int32_t log2 = value.exponent + 63 - shift;
  const int32_t estimate = floor_log10_of_two(log2);
  // The estimate is right or one too low: the comparison with the next power decides.
  const int32_t next_log2 = floor_log2_of_ten(estimate + 1);
  if (log2 != next_log2) return estimate + (log2 > next_log2 ? 1 : 0);
  const UInt128 &next = power_of_ten(estimate + 1);
  const uint64_t significand = value.significand << shift;
  const bool is_next = significand > next.high || (significand == next.high && next.low == 0);
  return estimate + (is_next ? 1 : 0);
}

void round_to_digits(DecomposedDouble value, int32_t exponent, int64_t wanted, Decimal *out) {
  out->count = 0;
  out->point = 0;
  if (wanted < 0) return;
  uint64_t scaled;
  const auto digits = static_cast<int32_t>(std::min<int64_t>(wanted, kDecimalDigits));
  if (digits > kFastDigits || !round_scaled(value, digits - 1 - exponent, &scaled)) {
    round_expansion(value, static_cast<uint32_t>(digits), out);
    return;
  }
  if (scaled == 0) return;
  out->point = exponent + 1;
  if (scaled == kSmallPowers[static_cast<uint32_t>(digits)]) {
    out->digits[0] = '1';
    out->count = 1;
    ++out->point;
    return;
  }
  out->count = static_cast<uint32_t>(digits);
  write_digit_pairs(out->digits, scaled, out->count);
}

}  // namespace jx
