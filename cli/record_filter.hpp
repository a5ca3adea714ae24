// Text in records into another encoding and other records.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cli/record_form.hpp"
#include "cli/record_reader.hpp"
#include "cli/record_writer.hpp"
#include "cli/text_filter.hpp"

namespace cli {

// Records become lines, lines are converted, and become records again: either form may be lines.
// Faults are named by the record and the byte offset in the file.
class RecordFilter final : public Filter {
 public:
  RecordFilter(Session &session, uint32_t from, uint32_t to, const TextChanges &changes,
               const RecordForms &forms);

  void begin(const std::string &shown, uint64_t offset) override;
  wem::Status feed(std::string_view bytes, const Sink &sink) override;
  wem::Status finish(const Sink &sink) override;
  std::string tally_text() const override { return text_.tally_text(); }

 private:
  wem::Status convert(std::string_view lines, const Sink &sink);
  void locate() const;
  void put(std::string_view lines, const Sink &sink);

  Session &session_;
  uint32_t from_;
  uint32_t to_;
  RecordForms forms_;
  TextFilter text_;
  std::string shown_;
  std::optional<RecordReader> reader_;
  std::optional<RecordWriter> writer_;
  std::string lines_;    // of the records that were read last
  std::string records_;  // of the lines that came out last
};

// The filter for a conversion.
std::unique_ptr<Filter> make_filter(Session &session, uint32_t from, uint32_t to,
                                    const TextChanges &changes, const RecordForms &forms);

}  // namespace cli
