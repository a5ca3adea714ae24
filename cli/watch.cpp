// The thread that watches.
#include "cli/watch.hpp"

#include <unistd.h>

#include <chrono>
#include <system_error>
#include <utility>

#include "cli/signals.hpp"

namespace cli {
namespace {

constexpr auto kShowInterval = std::chrono::milliseconds(100);

}  // namespace

Watch::Watch(uint64_t total, std::function<uint64_t()> done, Progress::Unit unit)
    : progress_(total, unit), done_(std::move(done)) {
  if (!progress_.is_on()) return;
  try {
    const SignalsBlocked guard;
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error &) {
    // The work is done all the same.
  }
}

Watch::~Watch() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    is_over_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void Watch::run() {
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, kShowInterval, [this] { return is_over_; }))
    progress_.show(done_());
}

uint64_t unless_shown(uint64_t total) { return ::isatty(STDOUT_FILENO) == 1 ? 0 : total; }

}  // namespace cli
