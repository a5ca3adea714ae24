// Text in records into another encoding and other records.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cli/byte_room.hpp"
#include "cli/line_starts.hpp"
#include "cli/record_form.hpp"
#include "cli/record_reader.hpp"
#include "cli/record_writer.hpp"
#include "cli/text_filter.hpp"

namespace cli {

// Records become lines, lines are converted, and become records again: either form may be lines.
// Faults are named by the record and the byte offset in the file. Records come out whole, and those
// before one with a fault do, as far as they were in one chunk.
class RecordFilter final : public Filter {
 public:
  RecordFilter(Session &session, uint32_t from, uint32_t to, const TextChanges &changes,
               const RecordForms &forms);

  // offset: of the first byte, which is that of a record.
  void begin(const std::string &shown, uint64_t offset) override;
  wem::Status feed(std::string_view bytes, const Sink &sink) override;
  wem::Status finish(const Sink &sink) override;
  std::string tally_text() const override { return text_.tally_text(); }

 private:
  wem::Status convert_records(std::string_view bytes);
  wem::Status convert(std::string_view lines);
  wem::Status convert_left_out(std::string_view *lines, const Sink &sink);
  void put(std::string_view lines);
  [[noreturn]] void fail(std::string_view lines, wem::Status status);
  Failure failure_at(size_t line_offset, wem::Status status) const;
  bool leaves_shift_open(std::string_view text) const;
  void put_before(std::string_view lines);
  std::string place_text(uint64_t record) const;

  Session &session_;
  uint32_t from_;
  uint32_t to_;
  TextChanges changes_;
  RecordForms forms_;
  TextFilter text_;
  std::string line_end_;  // of what the conversion makes of the records
  bool may_shift_;        // the encoding of the records
  std::string shown_;
  std::optional<RecordReader> reader_;
  std::optional<LineStarts> starts_;  // of lines that become records
  std::optional<RecordWriter> writer_;
  std::string_view chunk_;       // that is being converted
  uint64_t records_before_ = 0;  // that were written before it
  bool is_whole_ = true;         // what came out last ends with a line end
  ByteRoom made_;                // what came out of the chunk
};

// The filter for a conversion.
std::unique_ptr<Filter> make_filter(Session &session, uint32_t from, uint32_t to,
                                    const TextChanges &changes, const RecordForms &forms);

}  // namespace cli
