// How far a copy is, while the module works at it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "cli/progress.hpp"

namespace cli {

// Looks at the file that grows from a thread of its own, which runs only when there is a terminal
// to show the progress on.
class CopyWatch {
 public:
  // total: bytes of all files to copy. folder_fd: where files grow; lent for the object's lifetime.
  CopyWatch(uint64_t total, int folder_fd);
  CopyWatch(const CopyWatch &) = delete;
  CopyWatch &operator=(const CopyWatch &) = delete;
  ~CopyWatch();

  // The file of that name, which lives as long as the program, grows from now on.
  void begin(const char *name) { name_ = name; }
  // It is whole and had so many bytes.
  void end(uint64_t bytes) {
    name_ = nullptr;
    done_ += bytes;
  }

 private:
  void run();
  uint64_t growing_bytes() const;

  Progress progress_;
  int folder_fd_;
  std::atomic<const char *> name_ = nullptr;
  std::atomic<uint64_t> done_ = 0;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool is_over_ = false;
  std::thread thread_;
};

}  // namespace cli
