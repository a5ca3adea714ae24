// Records into lines.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/byte_room.hpp"
#include "cli/record_splitter.hpp"
#include "cli/session.hpp"

namespace cli {

// Takes the bytes of a file of records, in chunks that may end anywhere, and gives each record as a
// line in the encoding of the file.
class RecordReader {
 public:
  // leaves_out: line ends in records. shown: what messages call the file. offset: of the first
  // byte, which is that of a record. A UsageError when records of the form cannot be whole
  // characters.
  RecordReader(Session &session, const RecordForms &forms, uint32_t encoding, bool leaves_out,
               const std::string &shown, uint64_t offset);

  // The lines of the records that the next bytes complete, valid until the next call. A Failure
  // with record and byte offset for bytes that are no records, for a record with a line end in it
  // unless those are left out, and for one that ends inside a unit of the encoding.
  std::string_view feed(std::string_view bytes);
  // The same at the end of the file.
  std::string_view finish();

  // The lines that came out last; after a Failure those of the records before it.
  std::string_view lines() const { return lines_.bytes(); }
  // The line ends that were left out, and the bytes of one.
  struct LeftOut {
    uint64_t line_offset;  // in the lines, of what was after it
    uint64_t offset;       // in the file
  };
  const std::vector<LeftOut> &left_out() const { return left_out_; }
  const std::string &line_end() const { return line_end_; }
  // How many they are, and each of them without its line end; where none was left out.
  size_t line_count() const { return starts_.size(); }
  std::string_view line(size_t index) const;

  // The record, from 1, and the byte offset in the file of something in the lines.
  struct Place {
    uint64_t record;
    uint64_t offset;
  };
  // Of the byte at an offset in the lines that came out last.
  Place place_of(uint64_t line_offset) const;
  // Of the start of one of the lines that came out last, the first of which is 0.
  Place place_of_line(size_t line) const;
  // The same for an offset in all lines that ever came out.
  Place place_in_all(uint64_t line_offset) const;

 private:
  struct Start {
    uint64_t line_offset;
    uint64_t offset;
    uint64_t record;
  };

  void begin();
  std::string_view strip(std::string_view record) const;
  void put(std::string_view record, uint64_t offset);
  std::string_view put_before_line_ends(std::string_view record, uint64_t *offset);

  RecordForms forms_;
  RecordSplitter splitter_;
  bool leaves_out_;
  std::string line_end_;
  std::string blank_;
  uint64_t eight_blank_bytes_ = 0;
  ByteRoom lines_;
  bool may_have_line_end_ = false;  // what is held back, and the bytes of the records
  uint64_t first_record_ = 1;       // of the lines
  uint64_t first_offset_ = 0;       // of what they were made of
  uint64_t bytes_before_ = 0;       // of lines
  std::vector<Start> starts_;       // of the records that came out last, and after what is left out
  std::vector<LeftOut> left_out_;
};

}  // namespace cli
