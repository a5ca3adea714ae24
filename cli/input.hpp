// Text that a command reads: a file by name, or a pipe made readable through the module.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/descriptor.hpp"
#include "cli/fault.hpp"
#include "cli/relay.hpp"
#include "cli/session.hpp"

namespace cli {

inline constexpr size_t kLongestMark = 4;  // of the byte-order marks, in bytes

// The encoding whose byte-order mark text begins with; 0 for none.
uint32_t sniff(std::string_view head);
// The byte-order mark of an encoding; empty when it has none.
std::string_view byte_order_mark(uint32_t encoding);
// The size in bytes of the byte-order mark of an encoding at the start of text; 0 without one.
size_t byte_order_mark_size(std::string_view head, uint32_t encoding);

class Input {
 public:
  // How a source that is not a file is handed to the module.
  enum class Pipe {
    kRelayed,  // while it is read; what passes is checked on the way
    kSpooled,  // copied to memory first, for those who read parts of it again
    kDirect,   // as it is
  };

  // name "-" is standard input. Nothing is opened through the module yet.
  Input(Session &session, const std::string &name, Pipe pipe);

  // What messages call it.
  const std::string &shown() const { return shown_; }
  // Whether its bytes can be read again: a file, or a spooled pipe.
  bool is_rereadable() const { return is_rereadable_; }
  // Size in bytes of what can be read again.
  uint64_t size() const { return size_; }
  // Identifies the file by device and inode; all zero when there is none.
  const struct ::stat &file_status() const { return file_status_; }

  // The encoding: as asked, or when that is 0 by the byte-order mark, else UTF-8. Not for kDirect.
  uint32_t encoding(uint32_t asked);
  // Whether it begins with the byte-order mark of an encoding. Not for kDirect.
  bool has_byte_order_mark(uint32_t encoding);
  // Opens it through the module; a relay starts to run and checks that encoding.
  wem::File open(const wem::OpenOptions &options, uint32_t encoding = 0);

  // For the following the file must be closed, or its end must have been read.

  // Whether the input ends with these bytes.
  bool ends_with(const std::string &bytes);
  // Throws the Failure of a source that could not be read to its end.
  void require_complete();
  // The first fault in an encoding, or of a conversion to another; none when there is none, or
  // when the source cannot be read again and was not checked.
  std::optional<Fault> find_fault(uint32_t from, uint32_t to);
  // The same for the last line only, where a character may be cut off: quick.
  std::optional<Fault> find_cut_end(uint32_t from, uint32_t to);

 private:
  void find_standard_input(Pipe pipe);
  void find_named(const std::string &name, Pipe pipe);
  void spool();
  const std::string &head();
  wem::File open_bytes();
  std::optional<Fault> scan(uint32_t from, uint32_t to, uint64_t start);

  Session &session_;
  std::string shown_;
  std::string name_;         // for the module
  bool is_literal_ = false;  // the name is used without expansion
  bool is_rereadable_ = false;
  bool is_lockable_ = true;  // not a pipe or a device
  uint64_t size_ = 0;
  struct ::stat file_status_ = {};
  Descriptor source_;   // a pipe opened by name, or the spool
  int source_fd_ = -1;  // what a relay or a spool reads; -1: nothing
  std::optional<std::string> head_;
  std::unique_ptr<Relay> relay_;
};

}  // namespace cli
