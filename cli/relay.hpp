// A pipe handed on to the module through another pipe, and checked on the way.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "cli/descriptor.hpp"
#include "cli/fault.hpp"

namespace cli {

// The module opens files by name and tells nothing about the bytes it consumed. A relay copies a
// source into a pipe, on a thread of its own, and remembers what passed.
class Relay {
 public:
  // Starts to copy source_fd, of which head was read already; the first mark_bytes are not text.
  // The text is checked in its encoding.
  Relay(Session &session, int source_fd, std::string head, size_t mark_bytes, uint32_t encoding);
  // Waits for the thread, which ends when the source ends or nobody reads any more: every file
  // opened on the relay must be closed before, unless its end was read.
  ~Relay() { wait(); }

  // The name under which the module opens the pipe; then let_go ends the own hold on it.
  std::string path() const { return path_of(read_end_.get()); }
  void let_go() { read_end_.reset(); }

  // The following wait for the thread as the destructor does.

  // The last bytes that passed.
  std::string_view tail();
  // The first fault in what passed.
  const std::optional<Fault> &fault();
  // The system error that ended the reading of the source; 0 for none.
  int error();

 private:
  void run();
  void pass_on(std::string_view bytes);
  bool wait_for_bytes() const;
  void wait();

  int source_fd_;
  std::string head_;
  size_t mark_bytes_;
  FaultFinder finder_;
  Descriptor read_end_;
  Descriptor write_end_;
  std::string tail_;
  bool is_wanted_ = true;
  int error_ = 0;
  std::thread thread_;  // last: runs on all of the above
};

}  // namespace cli
