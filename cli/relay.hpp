// A pipe handed on to the module through another pipe, and checked on the way.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "cli/descriptor.hpp"
#include "cli/fault.hpp"
#include "cli/line_ends.hpp"

namespace cli {

// The module tells nothing about the bytes it consumed, and its direct reader goes back to the end
// of each line, which a pipe cannot. A relay copies a source into a pipe, on a thread of its own,
// and remembers what passed.
class Relay {
 public:
  struct Source {
    std::string shown;       // what messages call it
    int fd = -1;             // read from its current offset
    std::string head;        // the bytes that were read already
    size_t mark_bytes = 0;   // how many of these are a byte-order mark
    bool is_at_end = false;  // whether there are no others
    uint32_t encoding = 0;   // in which the text is checked
  };

  // Starts to copy. line_ends is fed if there is one, and lives longer. With a longest_record, in
  // bytes, every read of the pipe gives a line or a part of one that is a unit longer: what a
  // direct reader of such records takes off a file. A Failure when the system has no pipe or thread
  // left.
  Relay(Session &session, Source source, LineEnds *line_ends, size_t longest_record);
  // Waits for the thread, which ends when the source ends or nobody reads any more: every file
  // opened on the relay must be closed before, unless its end was read.
  ~Relay() { wait(); }

  // What the module reads; then let_go ends the own hold on it.
  int read_end() const { return read_end_.get(); }
  void let_go() { read_end_.reset(); }

  // The following wait for the thread as the destructor does.

  // The last bytes that passed.
  std::string_view tail();
  // The first fault in what passed.
  const std::optional<Fault> &fault();
  // Throws what ended the reading before the source's end.
  void require_complete();

 private:
  void run();
  void copy();
  void pass_on(std::string_view bytes);
  void send(std::string_view bytes);
  void write_packets(bool is_end);
  bool wait_for_bytes() const;
  void wait();

  Source source_;
  FaultFinder finder_;
  LineEnds *line_ends_;
  std::string line_end_;
  size_t packet_bytes_;  // 0: a stream
  std::string unsent_;   // of packets: the start of the next
  Descriptor read_end_;
  Descriptor write_end_;
  std::string tail_;
  bool is_wanted_ = true;
  std::exception_ptr failure_;
  std::thread thread_;  // last: runs on all of the above
};

}  // namespace cli
