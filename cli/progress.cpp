// The progress bar.
#include "cli/progress.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

namespace cli {
namespace {

constexpr unsigned kWidth = 40;
constexpr auto kFirstAfter = std::chrono::milliseconds(500);
constexpr auto kInterval = std::chrono::milliseconds(100);

}  // namespace

Progress::Progress(uint64_t total)
    : total_(total),
      is_on_(total > 0 && isatty(STDERR_FILENO) == 1),
      next_(std::chrono::steady_clock::now() + kFirstAfter) {}

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
  std::fprintf(stderr, "\r[%s] %3u%%", bar.c_str(), static_cast<unsigned>(share * 100));
}

}  // namespace cli
