// Records on both sides of a conversion.
#include "cli/record_filter.hpp"

#include <algorithm>

#include "cli/fault.hpp"
#include "cli/line_ends.hpp"

namespace cli {
namespace {

bool may_shift(Session &session, uint32_t encoding) {
  if (encoding >= JX_ENCODING_UTF8 && encoding <= JX_ENCODING_UTF32LE) return false;
  JXEncodingInfo info = {};
  require(wem::Status(session.nls()->encoding_info(session.nls(), encoding, &info)), "");
  return info.max_bytes_per_char != 1;
}

std::string line_end_after(Session &session, const TextChanges &changes, uint32_t to) {
  const bool is_kept = changes.line_end == LineEnd::kKeep;
  return session.encode(is_kept ? U"\n" : line_end_text(changes.line_end), to);
}

}  // namespace

RecordFilter::RecordFilter(Session &session, uint32_t from, uint32_t to, const TextChanges &changes,
                           const RecordForms &forms)
    : session_(session),
      from_(from),
      to_(to),
      changes_(changes),
      forms_(forms),
      text_(session, from, to, changes),
      may_shift_(may_shift(session, from)) {}

void RecordFilter::begin(const std::string &shown, uint64_t offset) {
  shown_ = shown;
  if (!forms_.out.is_lines()) {
    writer_.emplace(session_, forms_.out, to_, forms_.in.is_lines(), shown,
                    [this](uint64_t record) { return place_text(record); });
  }
  if (forms_.in.is_lines()) {
    starts_.emplace(session_.encode(U"\n", from_), offset);
    return text_.begin(shown, offset);
  }
  reader_.emplace(session_, forms_, from_, shown, offset);
  text_.begin(shown, 0, [this](uint64_t at) { return reader_->place_in_all(at).offset; });
  line_end_ = line_end_after(session_, changes_, to_);
}

wem::Status RecordFilter::feed(std::string_view bytes, const Sink &sink) {
  chunk_ = bytes;
  made_.clear();
  if (writer_) records_before_ = writer_->count();
  try {
    const wem::Status status = reader_ ? convert_records(bytes) : convert(bytes);
    if (!status.ok()) return status;
  } catch (const Failure &) {
    sink(made_.bytes());
    throw;
  }
  if (starts_) starts_->pass(bytes);
  sink(made_.bytes());
  return wem::Status();
}

// What is wrong in the text of a record goes before what is wrong with the next one.
wem::Status RecordFilter::convert_records(std::string_view bytes) {
  try {
    reader_->feed(bytes);
  } catch (const Failure &) {
    static_cast<void>(convert(reader_->lines()));
    throw;
  }
  return convert(reader_->lines());
}

wem::Status RecordFilter::finish(const Sink &sink) {
  chunk_ = {};
  made_.clear();
  if (writer_) records_before_ = writer_->count();
  wem::Status status;
  if (reader_) status = convert(reader_->finish());
  if (status.ok()) status = text_.finish([this](std::string_view made) { put(made); });
  if (!status.ok()) return status;
  if (writer_) writer_->finish(made_);
  sink(made_.bytes());
  return status;
}

wem::Status RecordFilter::convert(std::string_view lines) {
  is_whole_ = true;
  const wem::Status status = text_.feed(lines, [this](std::string_view made) { put(made); });
  if (reader_ && !status.ok()) fail(lines, status);
  if (reader_ && may_shift_ && !is_whole_ && !changes_.is_lenient()) {
    fail(lines, wem::Status(JXHOST_E_MALFORMED));
  }
  return status;
}

void RecordFilter::put(std::string_view lines) {
  if (lines.empty()) return;
  is_whole_ = lines.ends_with(line_end_);
  if (writer_) {
    writer_->feed(lines, made_);
  } else {
    made_.append(lines);
  }
}

// Throws the failure of the first fault in the lines of records. In encodings with shifts that can
// be one that the last record left open.
void RecordFilter::fail(std::string_view lines, wem::Status status) {
  FaultFinder finder(session_, from_, to_);
  const bool is_good = finder.feed(lines) && finder.finish();
  const std::string line_end = session_.encode(U"\n", from_);
  const std::string_view others =
      lines.substr(0, lines.size() - std::min(lines.size(), line_end.size()));
  const uint64_t before =
      is_good ? after_last_line_end(others, line_end) : finder.fault()->record_offset;
  if (!writer_) put_before(before, lines);
  Fault fault = is_good ? Fault() : *finder.fault();
  const RecordReader::Place place = reader_->place_of(is_good ? lines.size() : fault.offset);
  if (is_good) {
    throw Failure(shown_, status,
                  "record " + std::to_string(place.record) + ", byte offset " +
                      std::to_string(place.offset) + ", the end of the record");
  }
  fault.record = place.record;
  fault.offset = place.offset;
  throw to_failure(shown_, fault);
}

// Begins what came out anew, with the lines before an offset.
void RecordFilter::put_before(uint64_t offset, std::string_view lines) {
  made_.clear();
  TextFilter text(session_, from_, to_, changes_);
  text.begin(shown_, 0);
  static_cast<void>(text.feed(lines.substr(0, static_cast<size_t>(offset)),
                              [this](std::string_view made) { made_.append(made); }));
}

// Where other characters end lines too, nobody counts how many begin before.
std::string RecordFilter::place_text(uint64_t record) const {
  const std::string text = "record " + std::to_string(record);
  const auto line = static_cast<size_t>(record - 1 - records_before_);
  if (reader_) return text + ", byte offset " + std::to_string(reader_->place_of_line(line).offset);
  if (changes_.changes_line_ends()) return text;
  return text + ", byte offset " + std::to_string(starts_->find(line, chunk_));
}

std::unique_ptr<Filter> make_filter(Session &session, uint32_t from, uint32_t to,
                                    const TextChanges &changes, const RecordForms &forms) {
  if (!forms.is_none()) {
    return std::make_unique<RecordFilter>(session, from, to, changes, forms);
  }
  return std::make_unique<TextFilter>(session, from, to, changes);
}

}  // namespace cli
