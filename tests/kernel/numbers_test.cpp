// Number texts: doubles against an exact reference, integers in every base.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "tests/kernel/kernel_support.hpp"

namespace {

using jx::test::digits_in_base;
using jx::test::exact_text;
using jx::test::GuardedBuffer;
using jx::test::scaled;
using Random = std::mt19937_64;
using Limits = std::numeric_limits<double>;

constexpr uint64_t kSeed = 20260727;

constexpr double from_bits(uint64_t bits) { return std::bit_cast<double>(bits); }

// The text, from a buffer that it just fits; a smaller buffer must stay unchanged.
template <auto kRoutine = skzfDouble>
std::string text_of(auto value, char conversion, int precision, bool alternate) {
  JXChar buffer[4000];
  uint32_t count = 0;
  const auto run = [&](uint32_t capacity) {
    buffer[0] = buffer[capacity] = GuardedBuffer::kUntouched;
    return kRoutine(value, static_cast<uint32_t>(conversion), '.', 0, precision, alternate, buffer,
                    static_cast<int32_t>(capacity), &count);
  };
  const uint32_t chars = (run(0), count);
  const bool is_refused =
      run(chars - 1) == JX_E_TRUNCATED && buffer[0] == GuardedBuffer::kUntouched;
  const bool is_written = run(chars) == JX_OK && buffer[chars] == GuardedBuffer::kUntouched;
  return is_refused && is_written && count == chars ? jx::test::narrow(buffer, count) : "status";
}

TEST(Doubles, Edges) {
  EXPECT_EQ(text_of(1.25, 'f', -1, false), "1.250000");
  // Ties that only the exact digits decide; all nines carry into a new digit.
  EXPECT_EQ(text_of(95.0, 'e', 0, false), "1e+02");
  EXPECT_EQ(text_of(99950.0, 'e', 2, false), "1.00e+05");
  EXPECT_EQ(text_of(98950.0, 'e', 2, false), "9.90e+04");
  EXPECT_EQ(text_of(1.5, 'f', 3000, false), "1.5" + std::string(2999, '0'));
  EXPECT_EQ(text_of(Limits::infinity(), 'f', 3, true), "inf");
  EXPECT_EQ(text_of(from_bits(0xFFFFFD0000000000), 'e', 0, true), ".A");
}

TEST(Doubles, LongOnesAreRounded) {
  for (const long double value : {0.1L, 5e-324L, 1e308L, HUGE_VALL}) {
    EXPECT_EQ(text_of<skzflDouble>(value, 'e', 20, false),
              text_of(static_cast<double>(value), 'e', 20, false));
  }
}

// Any finite double without its sign, every exponent equally likely.
double any_double(Random *random) {
  const uint64_t bits = (*random)() >> 1;
  return from_bits((bits >> 52) == 0x7FF ? bits & ~(uint64_t{1} << 62) : bits);
}

// Denormals of every size, with zero and the smallest normal double.
double any_denormal(Random *random) {
  const uint64_t bits = (*random)() >> (12 + (*random)() % 52);
  return from_bits(bits + (*random)() % 2);
}

// Doubles of few bits, not far from 1: their expansions end early, and rounding meets ties.
double any_tie(Random *random) {
  const auto significand = static_cast<double>((*random)() >> (40 + (*random)() % 23));
  return std::ldexp(significand, -static_cast<int>((*random)() % 30));
}

// Powers of ten and the two doubles on each side: rounding carries through nines.
double near_power_of_ten(Random *random) {
  const std::string text = "1e" + std::to_string(static_cast<int>((*random)() % 631) - 322);
  return from_bits(std::bit_cast<uint64_t>(std::atof(text.c_str())) + (*random)() % 5 - 2);
}

TEST(Doubles, RandomAgainstTheReference) {
  const struct {
    double (*make)(Random *);
    int64_t count;
    uint32_t precisions;
  } sources[] = {
      {any_double, 40000, 61},        {any_double, 4000, 1200}, {any_denormal, 2000, 1200},
      {near_power_of_ten, 10000, 24}, {any_tie, 15000, 24},
  };
  Random random(kSeed);
  for (const auto &source : sources) {
    for (int64_t i = scaled(source.count); i > 0; --i) {
      const double value = source.make(&random);
      const char conversion = "efg"[random() % 3];
      const auto precision = static_cast<int>(random() % source.precisions);
      const bool alternate = random() % 8 == 0;
      ASSERT_EQ(text_of(value, conversion, precision, alternate),
                exact_text(value, conversion, precision, alternate))
          << conversion << ' ' << precision << ' ' << std::hexfloat << value;
    }
  }
}

// Digits before the point without trailing zeros; digits after it with leading zeros and without.
constexpr struct {
  double value;
  const char *whole;
  uint32_t whole_zeros;
  const char *fraction;
  const char *significant;
  uint32_t leading_zeros;
} kParts[] = {
    {0.0, "", 0, "", "", 0},
    {1200.0, "12", 2, "00000000", "", 0},
    {1234.0625, "1234", 0, "06250000", "62500000", 1},
    {0x1p-10, "", 0, "00097656", "97656250", 3},
    {0x1p-20, "", 0, "00000095", "95367431", 6},
    {5e-324, "", 0, "00000000", "49406564", 323},
    {0x1.8p52, "6755399441055744", 0, "", "", 0},
    {1e22, "1", 22, "", "", 0},
};

TEST(Doubles, IntegerAndFractionParts) {
  JXChar buffer[400];
  uint32_t count = 9;
  uint32_t zeros = 9;
  for (const auto &row : kParts) {
    EXPECT_EQ(skzfIDblToBuff(row.value, buffer, 400, &count, &zeros), JX_OK);
    EXPECT_EQ(jx::test::narrow(buffer, count), row.whole);
    EXPECT_EQ(zeros, row.whole_zeros) << row.value;
    const std::string whole = row.whole + std::string(row.whole_zeros, '0');
    const auto exact = static_cast<uint32_t>(whole.size());
    EXPECT_EQ(skzfIDblToBuff(-row.value, buffer, exact, &count, nullptr), JX_OK) << whole;
    EXPECT_EQ(jx::test::narrow(buffer, count), whole);
    const JXStatus status = skzfIDblToBuff(row.value, buffer, count - 1, &count, nullptr);
    EXPECT_EQ(status, count == 0 ? JX_OK : JX_E_TRUNCATED) << row.value;
    EXPECT_EQ(skzfFDblToBuff(row.value, buffer, 8, &count, nullptr), JX_OK);
    EXPECT_EQ(jx::test::narrow(buffer, count), row.fraction);
    EXPECT_EQ(skzfFDblToBuff(row.value, buffer, 8, &count, &zeros), JX_OK);
    EXPECT_EQ(jx::test::narrow(buffer, count), row.significant);
    EXPECT_EQ(zeros, row.leading_zeros) << row.value;
  }
  EXPECT_EQ(skzfIDblToBuff(Limits::infinity(), buffer, 320, &count, nullptr), JX_OK);
  EXPECT_EQ(count, 309u);
}

TEST(Integers, EveryBaseWidthAndCapacity) {
  Random random(kSeed + 2);
  for (int64_t i = scaled(100000); i > 0; --i) {
    uint64_t value = random() >> (random() % 64);
    if (i % 7 == 0) value = static_cast<uint64_t>(std::pow(10.0, i % 20)) - random() % 2;
    const bool is_wide = i % 2 == 0;
    if (!is_wide) value &= UINT32_MAX;
    const auto base = static_cast<uint32_t>(random() % 19);
    const uint32_t real_base = base > 16 ? 16 : base < 2 ? 10 : base;
    const bool uppercase = i % 3 == 0;
    const std::string text = digits_in_base(value, real_base, uppercase);
    const bool fits = i % 5 != 0;
    const int32_t capacity = static_cast<int32_t>(text.size()) - (fits ? 0 : 1);
    GuardedBuffer buffer(text.size());
    JXChar *const to = buffer.data();
    uint32_t count = 0;
    const JXStatus status =
        is_wide ? skzfIMax(value, base, uppercase, to, capacity, &count)
                : skzfIFast(static_cast<uint32_t>(value), base, uppercase, to, capacity, &count);
    ASSERT_EQ(status, fits ? JX_OK : JX_E_TRUNCATED) << text << ' ' << base;
    ASSERT_EQ(buffer.text(), fits ? text : "") << base;
    ASSERT_EQ(count, text.size()) << text << ' ' << base;
  }
}

}  // namespace
