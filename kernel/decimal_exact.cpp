// The exact decimal expansion of a double by arithmetic on arrays of 32-bit words: the integer part
// is divided by 10^9 again and again, the fraction multiplied by it.
#include <algorithm>

#include "kernel/decimal.hpp"

namespace jx {

namespace {

constexpr uint32_t kWordBits = 32;
constexpr uint32_t kIntegerWords = (1024 + kWordBits) / kWordBits;  // up to just above 2^1024
constexpr uint32_t kIntegerGroups = (kIntegerDigits + kGroupDigits - 1) / kGroupDigits;
constexpr uint32_t kFractionWords = (-kLowestExponent + kWordBits - 1) / kWordBits;

// Stores value * 2^shift, shift below 32, in three words, least significant first.
void store_shifted(uint64_t value, uint32_t shift, uint32_t *words) {
  const uint64_t low = value << shift;
  words[0] = static_cast<uint32_t>(low);
  words[1] = static_cast<uint32_t>(low >> kWordBits);
  words[2] = shift == 0 ? 0 : static_cast<uint32_t>(value >> (64 - shift));
}

// Integers of 64 bits and more: groups of nine digits from the last to the first.
uint32_t write_large_integer(Binary value, JXChar *digits) {
  const auto shift = static_cast<uint32_t>(value.exponent);
  uint32_t words[kIntegerWords + 2] = {};
  store_shifted(value.significand, shift % kWordBits, words + shift / kWordBits);
  uint32_t size = std::min(shift / kWordBits + 3, kIntegerWords);
  uint32_t groups[kIntegerGroups] __attribute__((uninitialized));
  uint32_t group_count = 0;
  while (size > 0) {
    uint64_t remainder = 0;
    for (uint32_t i = size; i-- > 0;) {
      const uint64_t dividend = (remainder << kWordBits) | words[i];
      words[i] = static_cast<uint32_t>(dividend / kGroup);
      remainder = dividend % kGroup;
    }
    groups[group_count++] = static_cast<uint32_t>(remainder);
    while (size > 0 && words[size - 1] == 0) --size;
  }
  uint32_t count = decimal_count(groups[group_count - 1]);
  write_decimal(digits + count, groups[group_count - 1]);
  for (uint32_t i = group_count - 1; i-- > 0; count += kGroupDigits) {
    write_group(digits + count, groups[i]);
  }
  return count;
}

// A fraction below 1 as words after the binary point, of which it knows the run that is not zero:
// a product costs only as many steps as that run has words.
class Fraction {
 public:
  explicit Fraction(Binary value) {
    const Binary fraction = fraction_of(value);
    const auto bits = static_cast<uint32_t>(-fraction.exponent);
    size_ = (bits + kWordBits - 1) / kWordBits;
    store_shifted(fraction.significand, size_ * kWordBits - bits, words_);
    // A fraction of few bits leaves zeros beyond its words.
    high_ = std::min<uint32_t>(3, size_);
    while (high_ > 0 && words_[high_ - 1] == 0) --high_;
    drop_low_zeros();
  }

  bool is_zero() const { return low_ >= high_; }

  // Takes off the next nine digits.
  uint32_t next_group() {
    uint64_t carry = 0;
    for (uint32_t i = low_; i < high_; ++i) {
      carry += uint64_t{words_[i]} * kGroup;
      words_[i] = static_cast<uint32_t>(carry);
      carry >>= kWordBits;
    }
    if (high_ < size_ && carry != 0) {
      words_[high_++] = static_cast<uint32_t>(carry);
      carry = 0;
    }
    drop_low_zeros();
    return static_cast<uint32_t>(carry);
  }

 private:
  void drop_low_zeros() {
    while (low_ < high_ && words_[low_] == 0) ++low_;
  }

  uint32_t low_ = 0;   // first word that is not zero
  uint32_t high_ = 0;  // just after the last word that is not zero
  uint32_t size_;      // words after the binary point
  uint32_t words_[kFractionWords + 2];
};

// The first digits of a number below 1: skips the zeros after the point, then stores the group that
// holds the first digit.
void start_below_one(Fraction *fraction, Decimal *out) {
  uint32_t group = 0;
  while (group == 0) {
    group = fraction->next_group();
    out->point -= static_cast<int32_t>(kGroupDigits);
  }
  out->count = decimal_count(group);
  out->point += static_cast<int32_t>(out->count);
  write_decimal(out->digits + out->count, group);
}

}  // namespace

uint32_t write_integer_part(Binary value, JXChar *digits) {
  if (value.exponent > 63 - kSignificandBits) return write_large_integer(value, digits);
  if (value.exponent <= -64) return 0;
  const uint64_t whole = value.exponent >= 0 ? value.significand << value.exponent
                                             : value.significand >> -value.exponent;
  if (whole == 0) return 0;
  const uint32_t count = decimal_count(whole);
  write_decimal(digits + count, whole);
  return count;
}

void expand_exactly(Binary value, uint32_t wanted, Decimal *out) {
  out->count = write_integer_part(value, out->digits);
  out->point = static_cast<int32_t>(out->count);
  if (value.exponent >= 0 || (out->count != 0 && out->count >= wanted)) return;
  Fraction fraction __attribute__((uninitialized)) (value);
  if (out->count == 0 && !fraction.is_zero()) start_below_one(&fraction, out);
  while (out->count < wanted && !fraction.is_zero()) {
    write_group(out->digits + out->count, fraction.next_group());
    out->count += kGroupDigits;
  }
}

}  // namespace jx
