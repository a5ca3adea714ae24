// What a command reads: a file by name, standard input or another descriptor.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/arguments.hpp"
#include "cli/descriptor.hpp"
#include "cli/detection.hpp"
#include "cli/fault.hpp"
#include "cli/line_ends.hpp"
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
// The encoding of text with that start: as asked, where it follows the mark in the byte order of
// the mark; when none was asked for by the mark, else UTF-8.
uint32_t settle(Encoding asked, std::string_view head);

// It is opened once, and the module works on that descriptor. Offsets count from where it stood.
class Input {
 public:
  // What the command wants of it.
  enum class Use {
    kBytes,  // the bytes, as they come
    kText,   // records; what is not a file is checked on its way to the module
    kLines,  // the same, and what ended each
  };

  // "-" is standard input; names of descriptors mean these as they are. A Failure when it cannot be
  // read or is a directory. A file opened by name is locked against writers from the first look at
  // it on.
  Input(Session &session, const std::string &name, Use use);
  // What fd is open on, which stays the caller's, under the name that messages call it.
  Input(Session &session, int fd, std::string shown, Use use);

  // What messages call it.
  const std::string &shown() const { return shown_; }
  // Whether its bytes can be read again: a file that has some.
  bool is_rereadable() const { return is_rereadable_; }
  // Whether it has a position to move.
  bool is_seekable() const { return start_ >= 0; }
  // Size in bytes of what can be read again.
  uint64_t size() const { return size_; }
  // How far reading is; 0 where that is not known. On any thread.
  uint64_t bytes_done() const;
  // Identifies the file by device and inode.
  const struct ::stat &file_status() const { return file_status_; }
  // Throws a Failure when standard output is this file.
  void refuse_standard_output() const;

  // The encoding that it has, see settle; a Failure when it is to be told and cannot be. Not for
  // kBytes, unless it can be read again.
  uint32_t encoding(Encoding asked);
  // The same for kBytes, by the first bytes that were read, which are all when is_whole; and how
  // many there must be.
  uint32_t encoding_of_bytes(Encoding asked, std::string_view head, bool is_whole);
  // The same for the bytes of records, in which those of a byte-order mark are data.
  uint32_t encoding_of_records(Encoding asked, std::string_view head, bool is_whole) {
    return asked.is_auto ? encoding_of_bytes(asked, head, is_whole) : settle(asked, {});
  }
  size_t head_bytes(Encoding asked) const {
    return asked.is_auto && !is_rereadable_ ? kSampleBytes : kLongestMark;
  }
  // Whether it begins with the byte-order mark of an encoding. Not for kBytes.
  bool has_byte_order_mark(uint32_t encoding);
  // Opens it through the module; once. encoding is that of its text, not for kBytes.
  wem::File open(const wem::OpenOptions &options, uint32_t encoding = 0);
  // What ended the record that was read last, see LineEnds. For kLines, after every record.
  const char *end_of(const wem::Record &record);
  // Whether the next read may wait for somebody to write.
  bool is_waiting();

  // For the following the file must be closed, or its end must have been read.

  // Whether the input ends with these bytes.
  bool ends_with(std::string_view bytes);
  // Throws the Failure of a source that could not be read to its end.
  void require_complete();
  // The first fault in an encoding, or of a conversion to another; none when there is none, or
  // when the source cannot be read again and was not checked.
  std::optional<Fault> find_fault(uint32_t from, uint32_t to, bool has_new_ends = false);
  // The same for the last line only, where a character may be cut off: quick.
  std::optional<Fault> find_cut_end(uint32_t from, uint32_t to);

 private:
  void find_descriptor(int fd);
  void find_named(const std::string &name);
  void examine();
  const std::string &head();
  Detection detect();
  wem::File open_descriptor(const wem::OpenOptions &options);
  std::string read_at(uint64_t offset, size_t bytes);
  // How far the descriptor moved from where it began; 0 where it has no position.
  int64_t consumed_bytes() const;
  std::optional<Fault> scan(uint32_t from, uint32_t to, uint64_t start, bool has_new_ends = false);

  Session &session_;
  std::string shown_;
  Use use_;
  Descriptor own_;  // of a file opened by name
  int fd_ = -1;     // what is read
  struct ::stat file_status_ = {};
  int64_t start_ = -1;  // the descriptor's position at first; -1: it has none
  bool is_rereadable_ = false;
  bool is_lockable_ = false;
  bool is_at_end_ = false;  // of head_
  uint64_t size_ = 0;
  std::optional<std::string> head_;
  std::optional<LineEnds> line_ends_;
  uint64_t watched_ = 0;  // bytes of a file that line_ends_ has
  std::unique_ptr<Relay> relay_;
};

}  // namespace cli
