// The clock: the time since 1970 and the local time of day.
#include <sys/time.h>
#include <time.h>

#include "jx/runtime.h"

namespace {

constexpr double kMicrosecondsPerSecond = 1000000.0;

timeval read_clock() {
  timeval now{};
  // Cannot fail: the address is valid and no zone is asked for.
  gettimeofday(&now, nullptr);
  return now;
}

double fraction_of_second(const timeval &time) {
  return static_cast<double>(time.tv_usec) / kMicrosecondsPerSecond;
}

}  // namespace

double bkztod() {
  const timeval now = read_clock();
  return static_cast<double>(now.tv_sec) + fraction_of_second(now);
}

int32_t jxztime(uint32_t *hour_out, uint32_t *minute_out, double *seconds_out) {
  const timeval now = read_clock();
  tm local{};  // stays midnight for a year that localtime_r cannot express
  localtime_r(&now.tv_sec, &local);
  *hour_out = static_cast<uint32_t>(local.tm_hour);
  *minute_out = static_cast<uint32_t>(local.tm_min);
  *seconds_out = local.tm_sec + fraction_of_second(now);
  return 0;
}
