// Threads that take the next index each, and a caller that reports.
#include "cli/workers.hpp"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "cli/signals.hpp"

namespace cli {
namespace {

// What is done is reported that often: to wake the reporter for everything would cost a switch of
// threads each.
constexpr auto kReportInterval = std::chrono::milliseconds(50);

class Crew {
 public:
  Crew(size_t count, const std::function<void(size_t, size_t)> &work)
      : count_(count), work_(work), is_done_(std::make_unique<std::atomic<bool>[]>(count)) {}
  Crew(const Crew &) = delete;
  Crew &operator=(const Crew &) = delete;
  ~Crew() {
    for (std::thread &thread : threads_) thread.join();
  }

  void start(size_t threads) {
    const SignalsBlocked guard;
    try {
      while (threads_.size() < threads) {
        threads_.emplace_back([this, number = threads_.size()] { run(number); });
        const std::lock_guard lock(mutex_);
        ++running_;
      }
    } catch (const std::system_error &) {
      // As many as there are.
    }
  }
  bool is_empty() const { return threads_.empty(); }

  // Waits until something may be done; false when all is.
  bool wait() {
    std::unique_lock lock(mutex_);
    return !ended_.wait_for(lock, kReportInterval, [this] { return running_ == 0; });
  }
  bool is_done(size_t index) const { return is_done_[index]; }

 private:
  void run(size_t number) {
    for (size_t index = next_++; index < count_; index = next_++) {
      work_(number, index);
      is_done_[index] = true;
    }
    const std::lock_guard lock(mutex_);
    --running_;
    ended_.notify_one();
  }

  size_t count_;
  const std::function<void(size_t, size_t)> &work_;
  std::unique_ptr<std::atomic<bool>[]> is_done_;
  std::atomic<size_t> next_ = 0;
  std::vector<std::thread> threads_;
  std::mutex mutex_;
  std::condition_variable ended_;
  int running_ = 0;  // started and not ended; guarded by the mutex
};

}  // namespace

void work_in_order(size_t count, size_t threads, const std::function<void(size_t, size_t)> &work,
                   const std::function<void(size_t)> &done) {
  Crew crew(count, work);
  const size_t wanted = std::min(threads, count);
  if (wanted > 1) crew.start(wanted);
  if (crew.is_empty()) {
    for (size_t index = 0; index < count; ++index) {
      work(0, index);
      done(index);
    }
    return;
  }
  size_t reported = 0;
  for (bool is_running = true; is_running;) {
    is_running = crew.wait();
    while (reported < count && crew.is_done(reported)) done(reported++);
  }
}

size_t processor_count() {
  ::cpu_set_t set;
  if (::sched_getaffinity(0, sizeof set, &set) == 0) return static_cast<size_t>(CPU_COUNT(&set));
  return std::max(1u, std::thread::hardware_concurrency());
}

}  // namespace cli
