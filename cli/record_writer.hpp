// Lines into records.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cli/record_form.hpp"
#include "cli/session.hpp"

namespace cli {

// Takes text in lines, in chunks that may end anywhere but inside a character, and gives each line
// as a record in the same encoding.
class RecordWriter {
 public:
  // shown: what messages call the text.
  RecordWriter(Session &session, const RecordForm &form, uint32_t encoding, std::string shown);

  // Appends to records those that the next bytes complete. A Failure with the record for a line
  // that has no room in one.
  void feed(std::string_view text, std::string &records);
  // The same at the end of the text; the last line needs no line end.
  void finish(std::string &records);

 private:
  void put(std::string_view line, std::string &records);
  void put_fixed(std::string_view line, std::string &records) const;
  void put_length(size_t bytes, std::string &records) const;
  void end_block(std::string &records);
  void require_room(size_t bytes, size_t most) const;

  RecordForm form_;
  std::string shown_;
  std::string line_end_;
  std::string blank_;
  std::string held_;    // the start of a line
  std::string block_;   // that is being filled
  uint64_t count_ = 0;  // of records
};

}  // namespace cli
