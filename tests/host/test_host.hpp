// A host for one test. Records its journal, unless the configuration sends it elsewhere, and counts
// leaks.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "jx/jxhost.h"
#include "support/text.hpp"

namespace jx::test {

class TestHost {
 public:
  explicit TestHost(JXHostConfig config = JXHOST_CONFIG_INIT) {
    if (config.journal_fd < 0) config.journal_sink = keep_line;
    config.journal_context = this;
    host_ = jxhost_create(&config);
  }
  TestHost(const TestHost &) = delete;
  TestHost &operator=(const TestHost &) = delete;
  ~TestHost() { EXPECT_EQ(end(), 0u) << (lines_.empty() ? "" : lines_.back()); }

  JXHost *get() const { return host_; }
  JXHost *operator->() const { return host_; }
  JXJournal *journal() const { return jxhost_journal(host_); }
  // Takes the lines so far, each as "LEVEL STATUS TEXT".
  std::vector<std::string> take_lines() { return std::exchange(lines_, {}); }
  // Destroys the host and returns the number of leaks.
  uint32_t end() { return jxhost_destroy(std::exchange(host_, nullptr)); }

  JXPool *pool(const char *name8 = "test") {
    return host_->create_pool(host_, 0, 0, 0, nullptr, name8);
  }
  JXLock *lock() { return host_->create_lock(host_, 0, 0, 0, "test"); }
  JXTable *table() { return host_->create_table(host_, 0, 0, 0, 0, 0, 0, 0, "test"); }
  JXExtension *extension(std::string_view name) {
    const JXString text = jx(name);
    return host_->load_extension(host_, text.data(), chars(text), nullptr);
  }

 private:
  static void keep_line(void *context, uint32_t level, JXStatus status, const char *text8) {
    const char *name = jxhost_status_name(status);
    static_cast<TestHost *>(context)->lines_.push_back(
        std::to_string(level) + " " + (name ? name : std::to_string(status)) + " " + text8);
  }

  JXHost *host_;
  std::vector<std::string> lines_;
};

// Runs the work on four threads at once, each with a number.
template <typename Work>
void on_threads(const Work &work) {
  std::vector<std::jthread> threads;
  for (uint32_t number = 1; number <= 4; ++number) threads.emplace_back(work, number);
}

}  // namespace jx::test
