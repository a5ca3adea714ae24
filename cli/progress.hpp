// A progress bar on standard error.
#pragma once

#include <chrono>
#include <cstdint>

namespace cli {

// With the time left. Shown on a terminal only, and only for work that takes a moment. Erased at
// the end.
class Progress {
 public:
  enum class Unit { kThings, kBytes };  // of bytes the rate is shown too
  // total is 0 when it is not known: nothing is shown then.
  explicit Progress(uint64_t total, Unit unit = Unit::kThings);
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;
  ~Progress() { hide(); }
  // Whether standard error is a terminal.
  static bool is_possible();
  // Whether anything is ever shown.
  bool is_on() const { return is_on_; }
  void show(uint64_t done);
  // Erases it before something else is printed; the next show brings it back.
  void hide();

 private:
  uint64_t total_;
  Unit unit_;
  bool is_on_;
  bool is_visible_ = false;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point next_;
};

}  // namespace cli
