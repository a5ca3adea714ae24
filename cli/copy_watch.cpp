// The thread that watches a copy.
#include "cli/copy_watch.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <system_error>

#include "cli/signals.hpp"

namespace cli {
namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);

}  // namespace

CopyWatch::CopyWatch(uint64_t total, int folder_fd)
    : progress_(total, Progress::Unit::kBytes), folder_fd_(folder_fd) {
  if (!progress_.is_on()) return;
  try {
    const SignalsBlocked guard;
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error &) {
    // The copy is made all the same.
  }
}

CopyWatch::~CopyWatch() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    is_over_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

uint64_t CopyWatch::growing_bytes() const {
  const char *name = name_;
  struct ::stat status = {};
  if (!name || ::fstatat(folder_fd_, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return 0;
  return static_cast<uint64_t>(status.st_size);
}

void CopyWatch::run() {
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, kInterval, [this] { return is_over_; })) {
    progress_.show(done_ + growing_bytes());
  }
}

}  // namespace cli
