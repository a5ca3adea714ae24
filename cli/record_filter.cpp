// Records on both sides of a conversion.
#include "cli/record_filter.hpp"

#include "cli/fault.hpp"

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
  const bool leaves_out = changes_.on_fault != OnFault::kStop;
  reader_.emplace(session_, forms_, from_, leaves_out, shown, offset);
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
  const Filter::Sink sink = [this](std::string_view made) { put(made); };
  is_whole_ = true;
  wem::Status status = reader_ ? convert_left_out(&lines, sink) : wem::Status();
  if (status.ok()) status = text_.feed(lines, sink);
  if (reader_ && !status.ok()) fail(lines, status);
  if (reader_ && may_shift_ && !is_whole_ && !changes_.is_lenient()) {
    fail(lines, wem::Status(JXHOST_E_MALFORMED));
  }
  return status;
}

// Converts the lines up to the last line end that was left out of a record, which is a fault to put
// up with.
wem::Status RecordFilter::convert_left_out(std::string_view *lines, const Sink &sink) {
  const std::string_view all = *lines;
  wem::Status status;
  for (const RecordReader::LeftOut &left_out : reader_->left_out()) {
    if (!status.ok()) break;
    const auto done = static_cast<size_t>(lines->data() - all.data());
    const auto bytes = static_cast<size_t>(left_out.line_offset) - done;
    status = text_.feed(lines->substr(0, bytes), sink);
    lines->remove_prefix(bytes);
    if (status.ok()) status = text_.refuse(reader_->line_end(), left_out.offset, sink);
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

// Throws the failure of the first fault in the lines of records. In encodings with shifts it may be
// one that the record before left open, or the last one.
void RecordFilter::fail(std::string_view lines, wem::Status status) {
  const bool has_new_ends = changes_.line_end != LineEnd::kKeep;
  FaultFinder finder(session_, from_, to_, 0, has_new_ends);
  const bool is_good = finder.feed(lines) && finder.finish();
  const size_t count = reader_->line_count();
  size_t line = is_good ? count : static_cast<size_t>(finder.fault()->record - 1);
  if (line > 0 && may_shift_) --line;
  for (; line < count; ++line) {
    FaultFinder record(session_, from_, to_, 0, has_new_ends);
    const std::string_view text = reader_->line(line);
    const bool is_text = record.feed(text) && record.finish();
    if (is_text && !(may_shift_ && leaves_shift_open(text))) continue;
    const auto start = static_cast<size_t>(text.data() - lines.data());
    if (!writer_) put_before(lines.substr(0, start));
    if (is_text) throw failure_at(start + text.size(), status).saying("a shift is left open");
    Fault fault = *record.fault();
    const RecordReader::Place place = reader_->place_of(start + fault.offset);
    fault.record = place.record;
    fault.offset = place.offset;
    throw to_failure(shown_, fault, "record");
  }
  throw failure_at(0, status);
}

Failure RecordFilter::failure_at(size_t line_offset, wem::Status status) const {
  const RecordReader::Place place = reader_->place_of(line_offset);
  return Failure(
      shown_, status,
      "record " + std::to_string(place.record) + ", byte offset " + std::to_string(place.offset));
}

// Whether a line end after valid text would be none.
bool RecordFilter::leaves_shift_open(std::string_view text) const {
  const std::string line = std::string(text) + session_.encode(U"\n", from_);
  std::string room(line.size() * Transcoder::kBytesPerByte, '\0');
  size_t produced = 0;
  Transcoder transcoder(session_.nls(), from_, to_);
  const wem::Status status = transcoder(line, room, &produced);
  room.resize(produced);
  return !status.ok() || !room.ends_with(session_.encode(U"\n", to_));
}

// Begins what came out anew, with the lines before a fault.
void RecordFilter::put_before(std::string_view lines) {
  made_.clear();
  TextFilter text(session_, from_, to_, changes_);
  text.begin(shown_, 0);
  static_cast<void>(text.feed(lines, [this](std::string_view made) { made_.append(made); }));
}

// Where other characters end lines too, nobody counts how many begin before.
std::string RecordFilter::place_text(uint64_t record) const {
  std::string text = "record " + std::to_string(record);
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
