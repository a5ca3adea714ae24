// Records into lines.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/record_form.hpp"
#include "cli/session.hpp"

namespace cli {

// Takes the bytes of a file of records, in chunks that may end anywhere, and gives each record as a
// line in the encoding of the file.
class RecordReader {
 public:
  // shown: what messages call the file.
  RecordReader(Session &session, const RecordForms &forms, uint32_t encoding, std::string shown);

  // Replaces lines by those of the records that the next bytes complete. A Failure with record and
  // byte offset for bytes that are no records, and for a record with a line end in it.
  void feed(std::string_view bytes, std::string &lines);
  // The same at the end of the file.
  void finish(std::string &lines);

  // The record, from 1, and the byte offset in the file of what is at an offset in the lines that
  // came out last.
  struct Place {
    uint64_t record;
    uint64_t offset;
  };
  Place place_of(uint64_t line_offset) const;
  // How many bytes of lines came out before these.
  uint64_t bytes_before() const { return bytes_before_; }

 private:
  struct Start {
    uint64_t line_offset;
    uint64_t offset;
  };

  void begin(std::string &lines);
  size_t take(std::string_view text, uint64_t offset, std::string &lines);
  size_t take_block(std::string_view text, uint64_t offset);
  size_t take_after_length(std::string_view text, uint64_t offset, std::string &lines);
  void put(std::string_view record, uint64_t offset, std::string &lines);
  [[noreturn]] void fail(uint64_t offset, const std::string &why) const;

  RecordForms forms_;
  std::string shown_;
  std::string line_end_;
  std::string blank_;
  std::string held_;           // the start of a record
  uint64_t offset_ = 0;        // of the next byte to take, that of held_ first
  size_t block_left_ = 0;      // bytes of the block
  uint64_t count_ = 0;         // of records
  uint64_t bytes_before_ = 0;  // of lines
  uint64_t bytes_made_ = 0;    // the last time
  std::vector<Start> starts_;  // of the records that came out last
};

}  // namespace cli
