// Records on both sides of a conversion.
#include "cli/record_filter.hpp"

#include "cli/fault.hpp"

namespace cli {
namespace {

// Every line end of text, of whatever kind, ends a record, unless another is asked for.
TextChanges with_line_feeds(TextChanges changes, const RecordForms &forms) {
  if (forms.in.is_lines() && !forms.out.is_lines()) changes.line_end = LineEnd::kLf;
  return changes;
}

}  // namespace

RecordFilter::RecordFilter(Session &session, uint32_t from, uint32_t to, const TextChanges &changes,
                           const RecordForms &forms)
    : session_(session),
      from_(from),
      to_(to),
      forms_(forms),
      text_(session, from, to, with_line_feeds(changes, forms)) {}

void RecordFilter::begin(const std::string &shown, uint64_t offset) {
  shown_ = shown;
  if (!forms_.in.is_lines()) reader_.emplace(session_, forms_, from_, shown);
  if (!forms_.out.is_lines()) writer_.emplace(session_, forms_.out, to_, shown);
  if (!reader_) return text_.begin(shown, offset);
  text_.begin(shown, 0, [this](uint64_t at) {
    return reader_->place_of(at - reader_->bytes_before()).offset;
  });
}

wem::Status RecordFilter::feed(std::string_view bytes, const Sink &sink) {
  if (!reader_) return convert(bytes, sink);
  reader_->feed(bytes, lines_);
  return convert(lines_, sink);
}

wem::Status RecordFilter::finish(const Sink &sink) {
  wem::Status status;
  if (reader_) {
    reader_->finish(lines_);
    status = convert(lines_, sink);
  }
  if (status.ok()) status = text_.finish([&](std::string_view lines) { put(lines, sink); });
  if (!status.ok() || !writer_) return status;
  records_.clear();
  writer_->finish(records_);
  sink(records_);
  return status;
}

wem::Status RecordFilter::convert(std::string_view lines, const Sink &sink) {
  const wem::Status status = text_.feed(lines, [&](std::string_view made) { put(made, sink); });
  if (!status.ok() && reader_) locate();
  return status;
}

// Throws the failure of the first fault in the lines that were converted last.
void RecordFilter::locate() const {
  FaultFinder finder(session_, from_, to_);
  if (finder.feed(lines_) && finder.finish()) return;
  Fault fault = *finder.fault();
  const RecordReader::Place place = reader_->place_of(fault.offset);
  fault.record = place.record;
  fault.offset = place.offset;
  throw to_failure(shown_, fault);
}

void RecordFilter::put(std::string_view lines, const Sink &sink) {
  if (!writer_) return sink(lines);
  records_.clear();
  writer_->feed(lines, records_);
  sink(records_);
}

std::unique_ptr<Filter> make_filter(Session &session, uint32_t from, uint32_t to,
                                    const TextChanges &changes, const RecordForms &forms) {
  if (!forms.is_none()) {
    return std::make_unique<RecordFilter>(session, from, to, changes, forms);
  }
  return std::make_unique<TextFilter>(session, from, to, changes);
}

}  // namespace cli
