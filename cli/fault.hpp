// Where text stops being valid in its encoding.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/session.hpp"

namespace cli {

// The first character that cannot be converted.
struct Fault {
  wem::Status status;          // malformed, or not in the target encoding
  uint64_t record = 0;         // number of its line, from 1
  uint64_t record_offset = 0;  // byte offset of the line
  uint64_t offset = 0;         // byte offset of the character
  std::string bytes;           // the bytes of the character up to the one that is wrong
  bool is_cut_off = false;     // the input ends inside the character
};

// Follows a byte stream and finds its first fault. Many lines are checked at once; only in a line
// with a fault single bytes are looked at. Memory does not grow with the length of lines.
class FaultFinder {
 public:
  // Checks a conversion between two encodings of a stream whose first byte is at offset.
  // has_new_ends: which gives the lines another end, so that NEL need not be in the other encoding.
  FaultFinder(Session &session, uint32_t from, uint32_t to, uint64_t offset = 0,
              bool has_new_ends = false);

  // Takes the next bytes. False when a fault was found in them or before.
  bool feed(std::string_view bytes);
  // Takes note of the end. False when there is a fault.
  bool finish();
  const std::optional<Fault> &fault() const { return fault_; }
  // How many of the last bytes taken are not checked yet.
  size_t unchecked_bytes() const { return pending_.size(); }

 private:
  bool feed_slice(std::string_view slice);
  bool check_lines(size_t bytes);
  bool check_long_line();
  // A conversion, where NEL is to pass as a line feed through characters.
  struct Steps {
    Transcoder first;
    std::optional<Transcoder> second;
  };

  bool converts(std::optional<Steps> &steps, std::string_view text);
  bool ends_whole(std::optional<Steps> &steps);
  bool locate(std::string_view text, bool is_certain);

  Session &session_;
  uint32_t from_;
  uint32_t to_;
  bool passes_nel_;
  std::u32string characters_;  // where the first of two steps goes
  std::string line_end_;       // in the encoding of the stream
  std::string line_end_out_;   // and in the other
  bool may_shift_;             // the encoding of the stream is not a form of Unicode
  std::string pending_;        // from a start of a line or of a character on: not checked yet
  size_t converted_ = 0;       // bytes of pending_ that the transcoder has already
  std::string room_;           // where conversions go
  size_t produced_ = 0;        // by the last conversion
  wem::Status status_;         // of the last conversion
  std::optional<Steps> transcoder_;
  // In a line that is checked in parts and may shift: a transcoder that stopped where pending_
  // begins, since only the shifts before it tell what its bytes mean.
  std::optional<Steps> behind_;
  uint64_t offset_;         // of pending_
  uint64_t record_offset_;  // of the line that pending_ is of
  uint64_t records_ = 0;    // complete lines before it
  std::optional<Fault> fault_;
};

// A failure that names record, byte offset and bytes. whole: what was looked through.
Failure to_failure(const std::string &path, const Fault &fault, const char *whole = "file");

}  // namespace cli
