// Taking records apart.
#include "cli/record_reader.hpp"

#include <algorithm>

#include "cli/failure.hpp"

namespace cli {
namespace {

constexpr uint32_t kLongestRecord = 1 << 28;  // with a length of four bytes: more is no record

uint32_t byte_at(std::string_view text, size_t at) { return static_cast<unsigned char>(text[at]); }

uint32_t big16(std::string_view text) { return byte_at(text, 0) << 8 | byte_at(text, 1); }

uint32_t length_of(Framing framing, std::string_view header) {
  if (framing == Framing::kBig32) return big16(header) << 16 | big16(header.substr(2));
  return byte_at(header, 3) << 24 | byte_at(header, 2) << 16 | byte_at(header, 1) << 8 |
         byte_at(header, 0);
}

}  // namespace

RecordReader::RecordReader(Session &session, const RecordForms &forms, uint32_t encoding,
                           std::string shown)
    : forms_(forms),
      shown_(std::move(shown)),
      line_end_(session.encode(U"\n", encoding)),
      blank_(session.encode(U" ", encoding)) {
  if (forms_.in.length % blank_.size() != 0) {
    throw UsageError("--records fixed: the length is no multiple of " +
                     std::to_string(blank_.size()) + ", the bytes of a character");
  }
}

void RecordReader::fail(uint64_t offset, const std::string &why) const {
  throw Failure(shown_, JXHOST_E_MALFORMED,
                "record " + std::to_string(count_ + 1) + ", byte offset " + std::to_string(offset))
      .saying(why);
}

void RecordReader::begin(std::string &lines) {
  bytes_before_ += bytes_made_;
  lines.clear();
  starts_.clear();
}

void RecordReader::feed(std::string_view bytes, std::string &lines) {
  begin(lines);
  const bool is_held = !held_.empty();
  if (is_held) held_ += bytes;
  const std::string_view text = is_held ? std::string_view(held_) : bytes;
  size_t done = 0;
  while (done < text.size()) {
    const size_t taken = take(text.substr(done), offset_ + done, lines);
    if (taken == 0) break;
    done += taken;
  }
  offset_ += done;
  if (is_held) {
    held_.erase(0, done);
  } else {
    held_ = text.substr(done);
  }
  bytes_made_ = lines.size();
}

void RecordReader::finish(std::string &lines) {
  begin(lines);
  if (!held_.empty()) {
    if (forms_.in.framing != Framing::kFixed) fail(offset_, "the file ends in a record");
    if (forms_.short_last == ShortRecord::kRefuse) {
      fail(offset_, "the last record has " + std::to_string(held_.size()) + " of " +
                        std::to_string(forms_.in.length) + " bytes");
    }
    if (held_.size() % blank_.size() != 0) fail(offset_, "the file ends in a character");
    const bool is_padded = forms_.short_last == ShortRecord::kPad;
    while (is_padded && held_.size() < forms_.in.length) held_ += blank_;
    put(held_, offset_, lines);
  }
  if (block_left_ != 0) fail(offset_, "the file ends in a block");
  bytes_made_ = lines.size();
}

// Takes a record from the start of text; returns its bytes, or 0 when there are more to come.
size_t RecordReader::take(std::string_view text, uint64_t offset, std::string &lines) {
  if (forms_.in.framing != Framing::kFixed) return take_after_length(text, offset, lines);
  const size_t length = forms_.in.length;
  if (text.size() < length) return 0;
  put(text.substr(0, length), offset, lines);
  return length;
}

size_t RecordReader::take_block(std::string_view text, uint64_t offset) {
  const uint32_t length = big16(text);
  if ((length & 0x8000) != 0 || big16(text.substr(2)) != 0 || length < 2 * kHeaderBytes) {
    fail(offset, "this is no length of a block");
  }
  block_left_ = length - kHeaderBytes;
  return kHeaderBytes;
}

size_t RecordReader::take_after_length(std::string_view text, uint64_t offset, std::string &lines) {
  const Framing framing = forms_.in.framing;
  if (text.size() < kHeaderBytes) return 0;
  if (framing == Framing::kBdw && block_left_ == 0) return take_block(text, offset);
  uint64_t bytes = 0;
  if (framing == Framing::kRdw || framing == Framing::kBdw) {
    bytes = big16(text);
    if (bytes < kHeaderBytes || byte_at(text, 3) != 0 || byte_at(text, 2) > 3) {
      fail(offset, "this is no length of a record");
    }
    if (byte_at(text, 2) != 0) fail(offset, "this is a segment of a record, which is not joined");
    if (framing == Framing::kBdw && bytes > block_left_)
      fail(offset, "it is longer than its block");
  } else {
    bytes = uint64_t{length_of(framing, text)} + kHeaderBytes;
    if (bytes > kLongestRecord) fail(offset, "this is no length of a record");
  }
  if (text.size() < bytes) return 0;
  const auto size = static_cast<size_t>(bytes);
  put(text.substr(kHeaderBytes, size - kHeaderBytes), offset + kHeaderBytes, lines);
  if (framing == Framing::kBdw) block_left_ -= size;
  return size;
}

void RecordReader::put(std::string_view record, uint64_t offset, std::string &lines) {
  const size_t found = find_line_end(record, line_end_);
  if (found != record.npos) fail(offset + found, "the record has a line end in it");
  while (forms_.strips_blanks && record.ends_with(blank_)) record.remove_suffix(blank_.size());
  starts_.push_back({lines.size(), offset});
  lines += record;
  lines += line_end_;
  ++count_;
}

RecordReader::Place RecordReader::place_of(uint64_t line_offset) const {
  const auto after = std::ranges::upper_bound(starts_, line_offset, {}, &Start::line_offset);
  if (after == starts_.begin()) return {count_, offset_};
  const Start &start = *(after - 1);
  const auto index = static_cast<uint64_t>(after - starts_.begin());
  return {count_ - starts_.size() + index, start.offset + line_offset - start.line_offset};
}

}  // namespace cli
