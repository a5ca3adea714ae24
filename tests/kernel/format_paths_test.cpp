// The paths of the formatter against one another. A directive that numbers its argument takes the
// general path; the same one without the number takes a quick path where there is room, and another
// one through the list. All must agree, in every room.
#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <random>

#include "tests/kernel/kernel_support.hpp"

namespace {

using jx::test::GuardedBuffer;

JXStatus through_list(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                      JXChar *buffer, int32_t capacity, uint32_t *length, ...) {
  va_list list;
  va_start(list, length);
  const JXStatus status =
      jxzFormatBuffV(locale, format, format_chars, buffer, capacity, length, list);
  va_end(list);
  return status;
}

template <typename... Args>
void expect_agreement(std::string_view quick, std::string_view general, Args... args) {
  // What comes after a format of a given length is none of its business.
  constexpr std::string_view kAfter = "%d";
  const auto with_more = [&](std::string_view format) {
    return jx::test::jx(std::string(format).append(kAfter));
  };
  const jx::test::JXString formats[] = {with_more(general), with_more(quick)};
  const auto run = [&](auto *routine, size_t which, int32_t capacity, uint32_t *length) {
    const jx::test::JXString &format = formats[which];
    GuardedBuffer buffer(static_cast<size_t>(capacity));
    const auto chars = static_cast<int32_t>(format.size() - kAfter.size());
    const JXStatus status =
        routine(nullptr, format.data(), chars, buffer.data(), capacity, length, args...);
    return std::to_string(status) + ' ' + std::to_string(*length) + ' ' + buffer.text();
  };
  uint32_t length = 0;
  run(&jxzFormatBuff, 0, 400, &length);
  for (int32_t capacity = static_cast<int32_t>(length) + 45; capacity >= 0; --capacity) {
    const std::string expected = run(&jxzFormatBuff, 0, capacity, &length);
    ASSERT_EQ(run(&jxzFormatBuff, 1, capacity, &length), expected) << quick << " in " << capacity;
    ASSERT_EQ(run(&through_list, 1, capacity, &length), expected) << quick << " in " << capacity;
  }
}

void expect_agreement_on(int64_t number, double real, const JXChar *text, int32_t width) {
  const auto small = static_cast<int>(number);
  const auto medium = static_cast<long>(number);
  expect_agreement("%d", "%1$d", small);
  expect_agreement("<%i|some text of a run|%u>", "<%1$i|some text of a run|%2$u>", small, small);
  expect_agreement("%ld%lu %lli%%", "%1$ld%2$lu %3$lli%%", medium, medium, number);
  expect_agreement("%llu:%d:%s", "%1$llu:%2$d:%3$s", number, small, text);
  expect_agreement("%x%08X|%lx|%016llX", "%1$x%2$08X|%3$lx|%4$016llX", small, small, medium,
                   number);
  expect_agreement("%5d|%05d|%012lld|%3u", "%1$5d|%2$05d|%3$012lld|%4$3u", small, small, number,
                   small);
  expect_agreement("%s%*s|%04s", "%1$s%3$*2$s|%4$04s", text, width, text, text);
  expect_agreement("%d%.3f %g|%e", "%1$d%2$.3f %3$g|%4$e", small, real, real, real);
  expect_agreement("%d ends here %11$d", "%-d ends here %11$d", small);
  expect_agreement("%u%q%", "%1$u%q%", small);
  // No missing value, though one when it is made quiet.
  const auto signaling = std::bit_cast<double>(0xFFF7'0000'0000'0000u);
  expect_agreement("%f|%g", "%1$f|%2$g", signaling, signaling);
}

TEST(Format, PathsAgreeInEveryRoom) {
  const auto text = jx::test::jx(std::string_view("name and more than eight units\0", 31));
  for (const int64_t number : {INT64_MIN, INT64_MAX, int64_t{INT_MIN}, int64_t{INT_MAX},
                               int64_t{UINT_MAX}, int64_t{UINT_MAX} + 1, int64_t{0}, int64_t{-1}}) {
    ASSERT_NO_FATAL_FAILURE(expect_agreement_on(number, -HUGE_VAL, nullptr, -7));
  }
  std::mt19937_64 random(20261125);
  for (int64_t i = jx::test::scaled(600); i > 0; --i) {
    const auto number = static_cast<int64_t>(random() >> random() % 64) * (i % 2 == 0 ? 1 : -1);
    const auto *from = text.data() + random() % 31;
    ASSERT_NO_FATAL_FAILURE(expect_agreement_on(number, std::ldexp(1.7, static_cast<int>(i % 90)),
                                                from, static_cast<int>(random() % 50) - 25));
  }
}

// The digits of every count, at each end of its range, through the quickest path.
TEST(Format, DigitsAtPowersOfTen) {
  for (uint64_t power = 1; power != 0; power = power > UINT64_MAX / 10 ? 0 : power * 10) {
    for (const uint64_t value : {power - 1, power, power + 1, power * 5 + 4321}) {
      const jx::test::JXString format = jx::test::jx(std::string_view("%llu %u"));
      GuardedBuffer buffer(60);
      uint32_t length = 0;
      const auto low = static_cast<uint32_t>(value);
      ASSERT_EQ(jxzFormatBuff(nullptr, format.data(), 7, buffer.data(), 60, &length,
                              static_cast<unsigned long long>(value), low),
                JX_OK);
      ASSERT_EQ(buffer.text(), std::to_string(value) + ' ' + std::to_string(low));
    }
  }
}

}  // namespace
