// The clock at times that the test sets, and the reversals.
#include <gtest/gtest.h>
#include <sys/time.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "jx/wem.h"
#include "tests/kernel/kernel_support.hpp"

namespace {
std::optional<timeval> fixed_time;
}  // namespace

// Interposes the clock that the module reads.
extern "C" int gettimeofday(timeval *time, void *) noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  *time = fixed_time.value_or(timeval{now.tv_sec, static_cast<suseconds_t>(now.tv_nsec / 1000)});
  return 0;
}

namespace {

TEST(Time, Clocks) {
  JXHost host = {};
  jxextent(&host);
  EXPECT_NEAR(bkztod(), static_cast<double>(time(nullptr)), 2.0);
  const struct {
    timeval time;
    int32_t zone;
    double since_1970;
    double offset;
  } rows[] = {
      {{0, 500000}, -3600, 0.5, 3600.0},
      {{1700000000, 1}, 18000, 1700000000.000001, -18000.0},
      {{0, 0}, 0, 0.0, 0.0},
      {{4294967296, 250000}, INT32_MIN, 4294967296.25, 2147483648.0},
  };
  for (const auto &row : rows) {
    fixed_time = row.time;
    host.time_zone = row.zone;
    double offset = 0;
    EXPECT_EQ(bkztod(), row.since_1970);
    EXPECT_EQ(jxzdtgmt(nullptr), row.since_1970 + 315619200.0);
    EXPECT_EQ(jxzdtgmt(&offset), row.since_1970 + 315619200.0);
    EXPECT_EQ(offset, row.offset);
    EXPECT_EQ(std::signbit(offset), row.offset < 0);
  }
  fixed_time.reset();
  jxextent(nullptr);
}

TEST(Time, LocalTimeOfDay) {
  setenv("TZ", "TEST-05:45", 1);
  fixed_time = timeval{86400 * 365 + 3600 * 20 + 60 * 14 + 59, 750000};
  tzset();
  uint32_t hour = 99;
  uint32_t minute = 99;
  double seconds = 99;
  EXPECT_EQ(jxztime(&hour, &minute, &seconds), 0);
  EXPECT_TRUE(hour == 1 && minute == 59 && seconds == 59.75) << hour << ':' << minute;
  fixed_time.reset();
}

TEST(Order, Reversals) {
  for (uint32_t count = 0; count < 9; ++count) {
    std::string bytes = "abcdefgh-";
    jx::test::JXString units = jx::test::jx(bytes);
    std::string expected = bytes;
    std::reverse(expected.begin(), expected.begin() + static_cast<ptrdiff_t>(count));
    EXPECT_EQ(jxzbytrv(bytes.data(), count), 0);
    jxztchrv(units.data(), count);
    EXPECT_EQ(bytes, expected);
    EXPECT_EQ(jx::test::narrow(units.data(), units.size()), expected);
  }
}

}  // namespace
