// The exact decimal expansion of a double, with arrays of machine words: repeated division by a
// power of ten for the integer part, repeated multiplication for the fraction.
#include <algorithm>

#include "kernel/decimal.hpp"

namespace jx {

namespace {

// One step makes as many digits as always fit a machine word.
#ifdef __SIZEOF_INT128__
using Word = uint64_t;
__extension__ using DoubleWord = unsigned __int128;
constexpr uint32_t kStepDigits = kLongGroupDigits;
void write_step(JXChar *destination, Word value) { write_long_group(destination, value); }
#else
using Word = uint32_t;
using DoubleWord = uint64_t;
constexpr uint32_t kStepDigits = kGroupDigits;
void write_step(JXChar *destination, Word value) { write_group(destination, value); }
#endif

constexpr uint32_t kWordBits = 8 * sizeof(Word);
constexpr Word kStep = static_cast<Word>(kSmallPowers[kStepDigits]);
constexpr uint32_t kIntegerWords = (1024 + kWordBits) / kWordBits;  // up to just above 2^1024
constexpr uint32_t kIntegerSteps = (kIntegerDigits + kStepDigits - 1) / kStepDigits;
constexpr uint32_t kFractionWords = (-kLowestExponent + kWordBits - 1) / kWordBits;
constexpr uint32_t kShiftedWords = 64 / kWordBits + 1;  // that 64 bits touch at any bit offset

// Stores value * 2^shift, least significant word first; shift is less than kWordBits.
void store_shifted(uint64_t value, uint32_t shift, Word *words) {
  const uint64_t low = value << shift;
  for (uint32_t i = 0; i + 1 < kShiftedWords; ++i) {
    words[i] = static_cast<Word>(low >> (i * kWordBits));
  }
  words[kShiftedWords - 1] = shift == 0 ? 0 : static_cast<Word>(value >> (64 - shift));
}

// Divides a stream of words, most significant first, by kStep. A hardware division of two words by
// one is slow; this multiplies by the reciprocal of the divisor, shifted until its highest bit is
// set, and corrects the estimated quotient by the remainder.
class StepDivider {
 public:
  // Takes the next word of the dividend and returns the next word of the quotient.
  Word next_word(Word word) {
    const DoubleWord dividend = ((DoubleWord{remainder_} << kWordBits) | word) << kShift;
    const DoubleWord estimate =
        DoubleWord{kReciprocal} * static_cast<Word>(dividend >> kWordBits) + dividend;
    Word quotient = static_cast<Word>(estimate >> kWordBits) + 1;
    Word rest = static_cast<Word>(dividend) - quotient * kDivisor;
    // Half of the estimates are one too high: a branch would be mispredicted often.
    const Word one_too_many = rest > static_cast<Word>(estimate) ? ~Word{0} : 0;
    quotient += one_too_many;
    rest += kDivisor & one_too_many;
    if (rest >= kDivisor) [[unlikely]] {
      ++quotient;
      rest -= kDivisor;
    }
    remainder_ = rest >> kShift;
    return quotient;
  }

  Word remainder() const { return remainder_; }

 private:
  static constexpr uint32_t kShift = std::countl_zero(kStep);
  static constexpr Word kDivisor = kStep << kShift;
  // The word below its leading 1.
  static constexpr Word kReciprocal = static_cast<Word>(~DoubleWord{0} / kDivisor);

  Word remainder_ = 0;
};

// Integers of more than 64 bits: groups of digits, last group first. One pass over the words makes
// four divisions, each fed by the quotient words of the one before, so that the processor overlaps
// them.
uint32_t write_large_integer(DecomposedDouble value, JXChar *digits) {
  const auto shift = static_cast<uint32_t>(value.exponent);
  Word words[kIntegerWords + kShiftedWords - 1] = {};
  store_shifted(value.significand, shift % kWordBits, words + shift / kWordBits);
  uint32_t size = std::min(shift / kWordBits + kShiftedWords, kIntegerWords);
  Word groups[kIntegerSteps + 3] __attribute__((uninitialized));
  uint32_t group_count = 0;
  while (size > 0) {
    StepDivider first, second, third, fourth;
    for (uint32_t i = size; i-- > 0;) {
      words[i] = fourth.next_word(third.next_word(second.next_word(first.next_word(words[i]))));
    }
    for (const StepDivider &divider : {first, second, third, fourth}) {
      groups[group_count++] = divider.remainder();
    }
    while (size > 0 && words[size - 1] == 0) --size;
  }
  while (groups[group_count - 1] == 0) --group_count;
  uint32_t count = decimal_count(groups[group_count - 1]);
  write_decimal(digits, groups[group_count - 1], count);
  for (uint32_t i = group_count - 1; i-- > 0; count += kStepDigits) {
    write_step(digits + count, groups[i]);
  }
  return count;
}

// A fraction below 1 as words after the binary point. It tracks the run of words that are not zero,
// and a multiplication touches only these.
class Fraction {
 public:
  explicit Fraction(DecomposedDouble value) {
    const DecomposedDouble fraction = fraction_of(value);
    const auto bits = static_cast<uint32_t>(-fraction.exponent);
    size_ = (bits + kWordBits - 1) / kWordBits;
    store_shifted(fraction.significand, size_ * kWordBits - bits, words_);
    // A fraction of few bits has fewer words than were stored; the rest are zeros.
    high_ = std::min(kShiftedWords, size_);
    while (high_ > 0 && words_[high_ - 1] == 0) --high_;
    drop_low_zeros();
  }

  bool is_zero() const { return low_ >= high_; }

  // Removes the next kStepDigits digits and returns them as a number.
  Word next_group() {
    DoubleWord carry = 0;
    for (uint32_t i = low_; i < high_; ++i) {
      carry += DoubleWord{words_[i]} * kStep;
      words_[i] = static_cast<Word>(carry);
      carry >>= kWordBits;
    }
    if (high_ < size_ && carry != 0) {
      words_[high_++] = static_cast<Word>(carry);
      carry = 0;
    }
    drop_low_zeros();
    return static_cast<Word>(carry);
  }

 private:
  void drop_low_zeros() {
    while (low_ < high_ && words_[low_] == 0) ++low_;
  }

  uint32_t low_ = 0;   // first word that is not zero
  uint32_t high_ = 0;  // just after the last word that is not zero
  uint32_t size_;      // words after the binary point
  Word words_[kFractionWords + kShiftedWords - 1];
};

// Skips the zeros after the decimal point, then stores the group with the first nonzero digit.
void start_below_one(Fraction *fraction, Decimal *out) {
  Word group = 0;
  while (group == 0) {
    group = fraction->next_group();
    out->point -= static_cast<int32_t>(kStepDigits);
  }
  out->count = decimal_count(group);
  out->point += static_cast<int32_t>(out->count);
  write_decimal(out->digits, group, out->count);
}

}  // namespace

uint32_t write_integer_part(DecomposedDouble value, JXChar *digits) {
  if (value.exponent > 63 - kSignificandBits) return write_large_integer(value, digits);
  if (value.exponent <= -64) return 0;
  const uint64_t whole = value.exponent >= 0 ? value.significand << value.exponent
                                             : value.significand >> -value.exponent;
  if (whole == 0) return 0;
  const uint32_t count = decimal_count(whole);
  write_decimal(digits, whole, count);
  return count;
}

void expand_exactly(DecomposedDouble value, uint32_t wanted, Decimal *out) {
  out->count = write_integer_part(value, out->digits);
  out->point = static_cast<int32_t>(out->count);
  if (value.exponent >= 0 || (out->count != 0 && out->count >= wanted)) return;
  Fraction fraction __attribute__((uninitialized)) (value);
  if (out->count == 0 && !fraction.is_zero()) start_below_one(&fraction, out);
  while (out->count < wanted && !fraction.is_zero()) {
    write_step(out->digits + out->count, fraction.next_group());
    out->count += kStepDigits;
  }
}

}  // namespace jx
