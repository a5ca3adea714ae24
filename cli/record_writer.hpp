// Lines into records.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "cli/byte_room.hpp"
#include "cli/record_form.hpp"
#include "cli/session.hpp"

namespace cli {

// Takes text in lines, in chunks that may end anywhere but inside a unit of the encoding, and gives
// each line as a record in the same encoding.
class RecordWriter {
 public:
  // Gives the place of a record, from 1, for a message: "record 3, byte offset 17".
  using PlaceText = std::function<std::string(uint64_t record)>;

  // drops_returns: a carriage return before a line end is a part of it. shown: what messages call
  // the text. A UsageError when records of the form cannot be whole characters.
  RecordWriter(Session &session, const RecordForm &form, uint32_t encoding, bool drops_returns,
               std::string shown, PlaceText place);

  // Appends to records those that the next bytes complete. A Failure with the record for a line
  // that has no room in one.
  void feed(std::string_view text, ByteRoom &records);
  // The same at the end of the text; the last line needs no line end.
  void finish(ByteRoom &records);
  // How many records were made.
  uint64_t count() const { return count_; }

 private:
  void end_line(std::string_view line, ByteRoom &records);
  void put(std::string_view line, ByteRoom &records);
  void put_fixed(std::string_view line, ByteRoom &records) const;
  void put_counted(std::string_view line, ByteRoom &records) const;
  void end_block(ByteRoom &records);
  void require_room(size_t bytes) const;

  RecordForm form_;
  size_t room_;  // of a record, in bytes
  std::string shown_;
  PlaceText place_;
  std::string line_end_;
  std::string return_;  // a carriage return to drop; empty for none
  std::string blank_;
  std::string held_;    // the start of a line
  ByteRoom block_;      // that is being filled
  uint64_t count_ = 0;  // of records
};

}  // namespace cli
