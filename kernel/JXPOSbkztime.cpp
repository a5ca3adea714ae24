// bkztod and jxztime: the time since 1970 and the local time of day.
#include <sys/time.h>
#include <time.h>

#include "jx/runtime.h"

namespace {

constexpr double kMicrosecondsPerSecond = 1000000.0;

timeval read_clock() {
  timeval now{};
  // Cannot fail: the address is valid, and the time zone is not asked for.
  gettimeofday(&now, nullptr);
  return now;
}

double fraction_of_second(const timeval &time) {
  return static_cast<double>(time.tv_usec) / kMicrosecondsPerSecond;
}

}  // namespace

extern "C" {

double bkztod() {
  const timeval now = read_clock();
  return static_cast<double>(now.tv_sec) + fraction_of_second(now);
}

int32_t jxztime(uint32_t *hour_out, uint32_t *minute_out, double *seconds_out) {
  const timeval now = read_clock();
  tm local{};  // still midnight if localtime_r fails: its year is out of range
  localtime_r(&now.tv_sec, &local);
  *hour_out = static_cast<uint32_t>(local.tm_hour);
  *minute_out = static_cast<uint32_t>(local.tm_min);
  *seconds_out = local.tm_sec + fraction_of_second(now);
  return 0;
}

}  // extern "C"
