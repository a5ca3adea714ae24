// The progress bar.
#include "cli/progress.hpp"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <string>
#include <utility>

namespace cli {
namespace {

constexpr unsigned kWidth = 40;
constexpr auto kFirstAfter = std::chrono::milliseconds(500);
constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr double kLongestTime = 359999;  // seconds, just below a hundred hours

// Bytes a second, in three digits.
std::string rate_text(double rate) {
  constexpr const char *kUnits[] = {"B/s", "kB/s", "MB/s", "GB/s", "TB/s"};
  size_t unit = 0;
  for (; rate >= 1000 && unit + 1 < std::size(kUnits); ++unit) rate /= 1000;
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%.*f %s", rate < 10 && unit > 0 ? 1 : 0, rate,
                kUnits[unit]);
  return text.data();
}

// Minutes and seconds, after hours where there are any.
std::string time_text(double time) {
  const auto seconds = static_cast<unsigned>(std::min(time, kLongestTime));
  std::array<char, 32> text;
  if (seconds < 3600) {
    std::snprintf(text.data(), text.size(), "%u:%02u", seconds / 60, seconds % 60);
  } else {
    std::snprintf(text.data(), text.size(), "%u:%02u:%02u", seconds / 3600, seconds / 60 % 60,
                  seconds % 60);
  }
  return text.data();
}

}  // namespace

Progress::Progress(uint64_t total, Unit unit)
    : total_(total), unit_(unit), is_on_(total > 0 && is_possible()), next_(start_ + kFirstAfter) {}

bool Progress::is_possible() { return ::isatty(STDERR_FILENO) == 1; }

void Progress::hide() {
  if (std::exchange(is_visible_, false)) std::fputs("\r\033[K", stderr);
}

void Progress::show(uint64_t done) {
  if (!is_on_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  is_visible_ = true;
  const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
  const auto filled = static_cast<unsigned>(share * kWidth);
  const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '-');
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const double rate = static_cast<double>(done) / seconds;
  const std::string speed = unit_ == Unit::kBytes ? "  " + rate_text(rate) : "";
  const double left = share > 0 ? seconds * (1 - share) / share : 0;
  const std::string time = share > 0 ? "  " + time_text(left) + " left" : "";
  std::fprintf(stderr, "\r[%s] %3u%%%s%s\033[K", bar.c_str(), static_cast<unsigned>(share * 100),
               speed.c_str(), time.c_str());
}

}  // namespace cli
