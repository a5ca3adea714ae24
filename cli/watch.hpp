// How far work is, while it goes on.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

#include "cli/progress.hpp"

namespace cli {

// Shows how much is done from a thread of its own, so that the work needs no steps in which it
// could do that. The thread runs only when there is a terminal to show it on.
class Watch {
 public:
  // total: how many units there are; 0 when that is not known: nothing is shown then. done: how
  // many of them are done; called on the thread until the destructor has run.
  Watch(uint64_t total, std::function<uint64_t()> done,
        Progress::Unit unit = Progress::Unit::kBytes);
  Watch(const Watch &) = delete;
  Watch &operator=(const Watch &) = delete;
  ~Watch();

 private:
  void run();

  Progress progress_;
  std::function<uint64_t()> done_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool is_over_ = false;
  std::thread thread_;
};

// A total, or 0 when standard output is a terminal, on which the work itself can be seen.
uint64_t unless_shown(uint64_t total);

}  // namespace cli
