// Number texts: doubles against an exact reference, integers in every base.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

#include "tests/kernel/kernel_support.hpp"

namespace {

using jx_test::digits_in_base;
using jx_test::GuardedBuffer;
using jx_test::scaled;

constexpr uint64_t kSeed = 20260727;

// ---- The exact reference: decimal strings, rounded half away from zero ----

struct Exact {
  std::string digits;  // from the first one that is not zero
  int point;           // the value is 0.digits * 10^point
};

Exact expand(double value) {
  char text[1500];
  const int chars = std::snprintf(text, sizeof(text), "%.1074f", value);
  std::string digits(text, static_cast<size_t>(chars));
  int point = static_cast<int>(digits.find('.'));
  digits.erase(static_cast<size_t>(point), 1);
  const size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
  digits.erase(0, zeros);
  point = digits.empty() ? 0 : point - static_cast<int>(zeros);
  while (!digits.empty() && digits.back() == '0') digits.pop_back();
  return {digits, point};
}

// The number rounded to `places` after the point as an integer of 10^-places, in decimal.
std::string round_at(const Exact &exact, int places) {
  const int kept = exact.point + places;
  if (kept < 0) return "0";
  std::string digits = "0" + exact.digits;
  const size_t length = static_cast<size_t>(kept) + 1;
  const bool up = digits.size() > length && digits[length] >= '5';
  digits.resize(length, '0');
  for (size_t i = length; up && i-- > 0;) {
    if (digits[i] != '9') {
      ++digits[i];
      break;
    }
    digits[i] = '0';
  }
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
  return digits;
}

std::string fixed_text(const Exact &exact, int places, bool point) {
  std::string digits = round_at(exact, places);
  const auto after = static_cast<size_t>(places);
  if (digits.size() <= after) digits.insert(0, after + 1 - digits.size(), '0');
  if (places > 0 || point) digits.insert(digits.size() - after, 1, '.');
  return digits;
}

std::string exponent_text(const Exact &exact, int places, bool point) {
  const bool is_zero = exact.digits.empty();
  int exponent = is_zero ? 0 : exact.point - 1;
  std::string digits = is_zero ? std::string(static_cast<size_t>(places) + 1, '0')
                               : round_at(exact, places - exponent);
  if (digits.size() > static_cast<size_t>(places) + 1) {
    digits.pop_back();
    ++exponent;
  }
  if (places > 0 || point) digits.insert(1, 1, '.');
  char suffix[8];
  std::snprintf(suffix, sizeof(suffix), "e%+03d", exponent);
  return digits + suffix;
}

std::string drop_zeros(std::string text) {
  const size_t end = std::min(text.find('e'), text.size());
  if (text.find('.') == std::string::npos) return text;
  size_t last = end;
  while (text[last - 1] == '0') --last;
  if (text[last - 1] == '.') --last;
  return text.erase(last, end - last);
}

std::string reference_text(double value, char conversion, int precision, bool alternate) {
  const Exact exact = expand(value);
  if (conversion == 'f') return fixed_text(exact, precision, alternate);
  if (conversion == 'e') return exponent_text(exact, precision, alternate);
  const int exponent = exact.point - 1;
  const bool is_zero = exact.digits.empty();
  const bool is_fixed = is_zero || (exponent >= 0 ? exponent < precision : exponent >= -4);
  const int places = is_zero ? precision : precision - 1 - exponent;
  const std::string text = is_fixed ? fixed_text(exact, places, alternate)
                                    : exponent_text(exact, std::max(precision - 1, 0), alternate);
  return alternate ? text : drop_zeros(text);
}

// The same from the C library: it agrees but for ties, and for 'g' the form is chosen here.
std::string library_text(double value, char conversion, int precision, bool alternate) {
  char text[1500];
  if (conversion == 'g') {
    std::snprintf(text, sizeof(text), "%.25e", value);
    const int exponent = std::atoi(std::strchr(text, 'e') + 1);
    const bool is_fixed = value == 0 || (exponent >= 0 ? exponent < precision : exponent >= -4);
    const int places = value == 0 ? precision : precision - 1 - exponent;
    const std::string inner = is_fixed
                                  ? library_text(value, 'f', places, alternate)
                                  : library_text(value, 'e', std::max(precision - 1, 0), alternate);
    return alternate ? inner : drop_zeros(inner);
  }
  const char format[] = {'%', '#', '.', '*', conversion, 0};
  const char plain[] = {'%', '.', '*', conversion, 0};
  std::snprintf(text, sizeof(text), alternate ? format : plain, precision, value);
  return text;
}

std::string text_of(double value, char conversion, int precision, bool alternate = false,
                    bool uppercase = false) {
  JXChar buffer[4000];
  uint32_t count = 0;
  const JXStatus status =
      skzfDouble(value, static_cast<uint32_t>(conversion), '.', uppercase, precision, alternate,
                 buffer, static_cast<int32_t>(std::size(buffer)), &count);
  return status == JX_OK ? jx::test::narrow(buffer, count) : "status";
}

double from_bits(uint64_t bits) { return std::bit_cast<double>(bits); }

// Any finite double without its sign, every exponent equally likely.
double random_double(std::mt19937_64 *random) {
  const uint64_t bits = (*random)() & ~(uint64_t{1} << 63);
  return from_bits((bits >> 52) == 0x7FF ? bits & ~(uint64_t{1} << 62) : bits);
}

// Doubles of few bits around the size of 1, whose expansions end early: these tie.
double random_tie(std::mt19937_64 *random) {
  const auto significand = static_cast<double>((*random)() >> (40 + (*random)() % 23));
  return std::ldexp(significand, -static_cast<int>((*random)() % 30));
}

TEST(Doubles, KnownTexts) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    int line;
    double value;
    char conversion;
    int precision;
    bool alternate;
    const char *expected;
  } rows[] = {
      {__LINE__, 0.125, 'f', 2, false, "0.13"},
      {__LINE__, 2.5, 'f', 0, false, "3"},
      {__LINE__, 0.5, 'f', 0, false, "1"},
      {__LINE__, 0.15, 'f', 1, false, "0.1"},
      {__LINE__, 99.99, 'f', 1, false, "100.0"},
      {__LINE__, 9.9996, 'e', 3, false, "1.000e+01"},
      {__LINE__, 1.0, 'e', 0, false, "1e+00"},
      {__LINE__, 1.0, 'e', 0, true, "1.e+00"},
      {__LINE__, 1e100, 'e', 6, false, "1.000000e+100"},
      {__LINE__, 9.9999999e-100, 'e', 3, false, "1.000e-99"},
      {__LINE__, 0.0, 'e', 2, false, "0.00e+00"},
      {__LINE__, 100000.0, 'g', 6, false, "100000"},
      {__LINE__, 1000000.0, 'g', 6, false, "1e+06"},
      {__LINE__, 5.0, 'g', 0, false, "5e+00"},
      {__LINE__, 0.0001, 'g', 6, false, "0.0001"},
      {__LINE__, 0.00001, 'g', 6, false, "1e-05"},
      {__LINE__, 0.0, 'g', 6, false, "0"},
      {__LINE__, 0.0, 'g', 3, true, "0.000"},
      {__LINE__, -0.0, 'g', 0, true, "0."},
      {__LINE__, 999999.5, 'g', 6, false, "1000000"},
      {__LINE__, 9.9999996, 'g', 6, false, "10"},
      {__LINE__, 99.5, 'g', 2, false, "100"},
      {__LINE__, 0.000012345, 'g', 3, false, "1.23e-05"},
      {__LINE__, 1234.5, 'g', 3, false, "1.23e+03"},
      {__LINE__, 1.0, 'g', 6, true, "1.00000"},
      {__LINE__, 0.00009999999, 'g', 3, false, "1e-04"},
      {__LINE__, 3.0, 'f', 0, false, "3"},
      {__LINE__, 3.0, 'f', 0, true, "3."},
      {__LINE__, 1.25, 'f', -1, false, "1.250000"},
      {__LINE__, infinity, 'f', 3, false, "inf"},
      {__LINE__, infinity, 'g', 0, true, "inf"},
      {__LINE__, std::numeric_limits<double>::quiet_NaN(), 'e', 3, false, "nan"},
      {__LINE__, from_bits(0xFFFFFE0000000000), 'f', 6, false, "."},
      {__LINE__, from_bits(0xFFFFFF0000000000), 'e', 6, false, "._"},
      {__LINE__, from_bits(0xFFFFFD0000000000), 'g', 6, true, ".A"},
      {__LINE__, from_bits(0xFFFFE41234567890), 'f', 0, true, ".Z"},
      {__LINE__, from_bits(0xFFFF000000000000), 'f', 0, true, ".>"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(text_of(row.value, row.conversion, row.precision, row.alternate), row.expected)
        << "line " << row.line;
  }
  EXPECT_EQ(text_of(infinity, 'e', 6, false, true), "INF");
  EXPECT_EQ(text_of(std::nan(""), 'g', 6, false, true), "NAN");
  EXPECT_EQ(text_of(1.5e9, 'e', 1, false, true), "1.5E+09");
  EXPECT_EQ(text_of(1.5e-9, 'g', 6, false, true), "1.5E-09");
}

TEST(Doubles, RandomAgainstTheLibrary) {
  std::mt19937_64 random(kSeed);
  int64_t ties = 0;
  const int64_t count = scaled(1200000);
  for (int64_t i = count; i > 0; --i) {
    const double value = random_double(&random);
    const char conversion = "efg"[random() % 3];
    const auto precision = static_cast<int>(random() % 61);
    const bool alternate = random() % 8 == 0;
    const std::string text = text_of(value, conversion, precision, alternate);
    if (text == library_text(value, conversion, precision, alternate)) continue;
    ++ties;
    ASSERT_EQ(text, reference_text(value, conversion, precision, alternate))
        << conversion << ' ' << precision << ' ' << std::hexfloat << value;
  }
  // Ties are mostly numbers near 2^50, where halves are common.
  EXPECT_LT(ties, count / 1000 + 20);
}

// Values that tie, carry through nines or sit beside a power of ten, against the exact reference.
TEST(Doubles, HardRoundings) {
  std::mt19937_64 random(kSeed + 1);
  for (int64_t i = scaled(60000); i > 0; --i) {
    double value = random_tie(&random);
    if (i % 3 == 0) {
      value = std::strtod(("1e" + std::to_string(static_cast<int>(random() % 632) - 323)).c_str(),
                          nullptr);
      value = from_bits(std::bit_cast<uint64_t>(value) + random() % 5 - 2);
    }
    if (!(std::fabs(value) <= std::numeric_limits<double>::max())) continue;
    value = std::fabs(value);
    const char conversion = "efg"[random() % 3];
    const auto precision = static_cast<int>(random() % 24);
    const bool alternate = random() % 4 == 0;
    ASSERT_EQ(text_of(value, conversion, precision, alternate),
              reference_text(value, conversion, precision, alternate))
        << conversion << ' ' << precision << ' ' << std::hexfloat << value;
  }
}

TEST(Doubles, EveryDigitOfEveryExpansion) {
  std::mt19937_64 random(kSeed + 2);
  const double extremes[] = {from_bits(1), from_bits(0x000FFFFFFFFFFFFF),
                             from_bits(0x0010000000000000), from_bits(0x001FFFFFFFFFFFFF),
                             std::numeric_limits<double>::max()};
  for (int64_t i = scaled(12000); i > 0; --i) {
    double value = i % 4 == 0 ? from_bits(random() >> 12) : random_double(&random);
    if (static_cast<size_t>(i) <= std::size(extremes)) value = extremes[i - 1];
    const char conversion = "efg"[random() % 3];
    const auto precision = static_cast<int>(random() % 1200);
    ASSERT_EQ(text_of(value, conversion, precision),
              reference_text(value, conversion, precision, false))
        << conversion << ' ' << precision << ' ' << std::hexfloat << value;
  }
  EXPECT_EQ(text_of(1.5, 'f', 3000), "1.5" + std::string(2999, '0'));
}

TEST(Doubles, IntegerAndFractionParts) {
  std::mt19937_64 random(kSeed + 3);
  for (int64_t i = scaled(30000); i > 0; --i) {
    const double value = i % 2 ? random_double(&random) : random_tie(&random);
    const std::string all = fixed_text(expand(value), 1074, true);
    std::string whole = all.substr(0, all.find('.'));
    const std::string fraction = all.substr(whole.size() + 1);
    if (whole == "0") whole.clear();
    JXChar buffer[2000];
    uint32_t count = 9;
    uint32_t zeros = 9;
    ASSERT_EQ(skzfIDblToBuff(-value, buffer, 400, &count, nullptr), JX_OK);
    ASSERT_EQ(jx::test::narrow(buffer, count), whole);
    ASSERT_EQ(skzfIDblToBuff(value, buffer, 400, &count, &zeros), JX_OK);
    ASSERT_EQ(jx::test::narrow(buffer, count) + std::string(zeros, '0'), whole);
    ASSERT_TRUE(count == 0 || buffer[count - 1] != '0');
    if (count > 1) {
      ASSERT_EQ(skzfIDblToBuff(value, buffer, count - 1, &count, &zeros), JX_E_TRUNCATED);
    }

    const auto wanted = static_cast<uint32_t>(random() % 1100);
    const bool has_bits = value != 0 && std::bit_cast<uint64_t>(value) >> 52 < 0x3FF + 52;
    ASSERT_EQ(skzfFDblToBuff(value, buffer, wanted, &count, nullptr), JX_OK);
    const std::string expected = (fraction + std::string(100, '0')).substr(0, wanted);
    ASSERT_EQ(jx::test::narrow(buffer, count), has_bits ? expected : "");
    ASSERT_EQ(skzfFDblToBuff(value, buffer, wanted, &count, &zeros), JX_OK);
    const size_t first = fraction.find_first_not_of('0');
    const bool has_digits = has_bits && first != std::string::npos;
    ASSERT_EQ(zeros, has_digits ? first : 0);
    const std::string significant = has_digits ? fraction.substr(first) : "";
    ASSERT_EQ(jx::test::narrow(buffer, count),
              has_digits ? (significant + std::string(1100, '0')).substr(0, wanted) : "");
  }
  uint32_t count = 0;
  JXChar buffer[320];
  EXPECT_EQ(skzfIDblToBuff(std::numeric_limits<double>::infinity(), buffer, 320, &count, nullptr),
            JX_OK);
  EXPECT_EQ(count, 309u);
  EXPECT_EQ(jx::test::narrow(buffer, 9), "179769313");
}

TEST(Doubles, AllOrNothingAndCounted) {
  const double values[] = {
      0, 1.5, 123456.789, 1e22, 1e-7, 5e-324, 1e300, from_bits(0xFFFFFD0000000000), HUGE_VAL};
  for (const double value : values) {
    for (const char conversion : {'e', 'f', 'g'}) {
      const std::string expected = text_of(value, conversion, 6);
      for (int32_t capacity = -1; capacity <= static_cast<int32_t>(expected.size()); ++capacity) {
        GuardedBuffer buffer(expected.size());
        uint32_t count = 0;
        const bool fits = capacity == static_cast<int32_t>(expected.size());
        EXPECT_EQ(skzflDouble(value, static_cast<uint32_t>(conversion), '.', 0, 6, 0, buffer.data(),
                              capacity, &count),
                  fits ? JX_OK : JX_E_TRUNCATED);
        bool is_clean = false;
        EXPECT_EQ(buffer.text(&is_clean), fits ? expected : "");
        EXPECT_TRUE(is_clean && count == expected.size()) << expected << ' ' << capacity;
      }
    }
  }
  uint32_t count = 0;
  EXPECT_EQ(skzfDouble(1.0, 'f', '.', 0, 2147483647, 0, nullptr, 100, &count), JX_E_TRUNCATED);
  EXPECT_EQ(count, 2147483649u);
}

TEST(Integers, EveryBaseWidthAndCapacity) {
  std::mt19937_64 random(kSeed + 4);
  for (int64_t i = scaled(300000); i > 0; --i) {
    uint64_t value = random() >> (random() % 64);
    if (i % 7 == 0) value = static_cast<uint64_t>(std::pow(10.0, i % 20)) - random() % 2;
    const bool is_wide = i % 2 == 0;
    if (!is_wide) value &= UINT32_MAX;
    const auto base = static_cast<uint32_t>(random() % 19);
    const uint32_t real_base = base > 16 ? 16 : base < 2 ? 10 : base;
    const bool uppercase = i % 3 == 0;
    const std::string expected = digits_in_base(value, real_base, uppercase);
    const int32_t capacity = static_cast<int32_t>(expected.size()) - (i % 5 == 0 ? 1 : 0);
    GuardedBuffer buffer(expected.size());
    uint32_t count = 0;
    const JXStatus status = is_wide
                                ? skzfIMax(value, base, uppercase, buffer.data(), capacity, &count)
                                : skzfIFast(static_cast<uint32_t>(value), base, uppercase,
                                            buffer.data(), capacity, &count);
    bool is_clean = false;
    ASSERT_EQ(status, i % 5 == 0 ? JX_E_TRUNCATED : JX_OK);
    ASSERT_EQ(buffer.text(&is_clean), i % 5 == 0 ? "" : expected) << base;
    ASSERT_TRUE(is_clean);
    ASSERT_EQ(count, expected.size());
  }
}

}  // namespace
