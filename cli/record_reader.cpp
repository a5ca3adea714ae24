// Records, each with a line end.
#include "cli/record_reader.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "cli/failure.hpp"
#include "cli/line_ends.hpp"
#include "cli/short_copy.hpp"

namespace cli {
namespace {

constexpr size_t kWordBytes = sizeof(uint64_t);

uint64_t word_at(const char *bytes) {
  uint64_t word = 0;
  std::memcpy(&word, bytes, kWordBytes);
  return word;
}

}  // namespace

RecordReader::RecordReader(Session &session, const RecordForms &forms, uint32_t encoding,
                           bool leaves_out, const std::string &shown, uint64_t offset)
    : forms_(forms),
      splitter_(forms.in, shown, offset),
      leaves_out_(leaves_out),
      line_end_(session.encode(U"\n", encoding)),
      blank_(session.encode(U" ", encoding)) {
  if (forms_.in.length % blank_.size() != 0) {
    throw UsageError("--records fixed: the length is no multiple of " +
                     std::to_string(blank_.size()) + ", the bytes of a character");
  }
  std::string blanks;
  while (blanks.size() < kWordBytes) blanks += blank_;
  eight_blank_bytes_ = word_at(blanks.data());
}

void RecordReader::begin() {
  bytes_before_ += lines_.size();
  lines_.clear();
  starts_.clear();
  left_out_.clear();
  first_record_ = splitter_.count() + 1;
  first_offset_ = splitter_.offset();
}

std::string_view RecordReader::feed(std::string_view bytes) {
  begin();
  // Looked for once in all records, and kept in mind of a start that is held back.
  const bool has_line_end = line_end_.size() > 1 || bytes.find(line_end_[0]) != bytes.npos;
  may_have_line_end_ = may_have_line_end_ || has_line_end;
  splitter_.feed(bytes, [this](std::string_view record, uint64_t offset) { put(record, offset); });
  // Once a record is complete, what is held back is of these bytes alone.
  if (splitter_.count() >= first_record_) may_have_line_end_ = has_line_end;
  return lines_.bytes();
}

std::string_view RecordReader::finish() {
  begin();
  splitter_.finish(forms_.short_last, [this](std::string_view record, uint64_t offset) {
    if (forms_.short_last != ShortRecord::kPad) return put(record, offset);
    std::string padded(record);
    while (padded.size() < forms_.in.length) padded += blank_;
    put(padded, offset);
  });
  return lines_.bytes();
}

// Eight bytes at a time, the last of which are the high ones of a word.
std::string_view RecordReader::strip(std::string_view record) const {
  static_assert(std::endian::native == std::endian::little);
  size_t size = record.size();
  while (size >= kWordBytes) {
    const uint64_t others = word_at(record.data() + size - kWordBytes) ^ eight_blank_bytes_;
    if (others != 0) {
      const auto blanks = static_cast<size_t>(std::countl_zero(others)) / 8;
      return record.substr(0, size - blanks / blank_.size() * blank_.size());
    }
    size -= kWordBytes;
  }
  record = record.substr(0, size);
  while (record.ends_with(blank_)) record.remove_suffix(blank_.size());
  return record;
}

void RecordReader::put(std::string_view record, uint64_t offset) {
  if (line_end_.size() > 1 && record.size() % line_end_.size() != 0) {
    splitter_.fail(offset, "the record ends inside a character");
  }
  if (forms_.strips_blanks) record = strip(record);
  if (may_have_line_end_) record = put_before_line_ends(record, &offset);
  starts_.push_back({lines_.size(), offset, splitter_.count() + 1});
  char *to = lines_.reserve(record.size() + line_end_.size());
  copy_line(to, record);
  line_end_.copy(to + record.size(), line_end_.size());
  lines_.commit(record.size() + line_end_.size());
}

// Puts the record up to the last line end in it, and returns the rest.
std::string_view RecordReader::put_before_line_ends(std::string_view record, uint64_t *offset) {
  for (size_t end = find_line_end(record, 0, line_end_); end != record.npos;
       end = find_line_end(record, 0, line_end_)) {
    if (!leaves_out_) {
      splitter_.fail(*offset + end, "the record has a line end in it",
                     "convert goes on with --on-error, bytes shows any record");
    }
    starts_.push_back({lines_.size(), *offset, splitter_.count() + 1});
    lines_.append(record.substr(0, end));
    left_out_.push_back({lines_.size(), *offset + end});
    record.remove_prefix(end + line_end_.size());
    *offset += end + line_end_.size();
  }
  return record;
}

std::string_view RecordReader::line(size_t index) const {
  const bool is_last = index + 1 == starts_.size();
  const uint64_t start = starts_[index].line_offset;
  const uint64_t end = is_last ? lines_.size() : starts_[index + 1].line_offset;
  return lines().substr(static_cast<size_t>(start),
                        static_cast<size_t>(end - start) - line_end_.size());
}

RecordReader::Place RecordReader::place_of(uint64_t line_offset) const {
  const auto after = std::ranges::upper_bound(starts_, line_offset, {}, &Start::line_offset);
  if (after == starts_.begin()) return {first_record_, first_offset_};
  const Start &start = *(after - 1);
  return {start.record, start.offset + line_offset - start.line_offset};
}

RecordReader::Place RecordReader::place_of_line(size_t line) const {
  const auto start = std::ranges::lower_bound(starts_, first_record_ + line, {}, &Start::record);
  if (start == starts_.end()) return {first_record_, first_offset_};
  return {start->record, start->offset};
}

// Of a character that began in the lines before these, where they begin is near enough.
RecordReader::Place RecordReader::place_in_all(uint64_t line_offset) const {
  if (line_offset < bytes_before_) return {first_record_, first_offset_};
  return place_of(line_offset - bytes_before_);
}

}  // namespace cli
