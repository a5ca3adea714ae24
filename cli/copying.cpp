// Byte streams in, converted text out.
#include "cli/copying.hpp"

#include <algorithm>
#include <span>

#include "cli/input.hpp"

namespace cli {
namespace {

constexpr uint32_t kSlackChars = 16;

wem::Status write_bytes(wem::File &file, std::string_view bytes) {
  return file.write(std::as_bytes(std::span(bytes)));
}

}  // namespace

std::string_view ByteReader::next() {
  const size_t wanted = is_first_ ? first_bytes_ : 1;
  is_first_ = false;
  size_t used = 0;
  while (used < wanted && !is_at_end_) {
    const auto record = file_.read_into({buffer_.get() + used, chunk_bytes_ - used});
    if (record) used += record->bytes.size();
    is_at_end_ = record.status() == JXWEM_E_EOF;
    if (!record && !is_at_end_) throw Failure(shown_, record.status());
  }
  return {reinterpret_cast<const char *>(buffer_.get()), used};
}

StreamWriter::StreamWriter(Session &session, Target &target, uint32_t from, uint32_t to,
                           std::optional<uint64_t> check_offset, Filter *filter, bool has_new_ends)
    : target_(target),
      from_(filter ? to : from),
      to_(to),
      filter_(filter),
      held_offset_(check_offset.value_or(0)) {
  if (check_offset) finder_.emplace(session, from, to, held_offset_, has_new_ends);
}

wem::File &StreamWriter::open(const wem::OpenOptions &options, uint32_t chunk_bytes) {
  const uint32_t room = chunk_bytes + kSlackChars;
  chunk_bytes_ = chunk_bytes;
  file_ = &target_.open(options.stream(room).direct().encodings({.file = to_, .record = from_}));
  return *file_;
}

// What came out of a filter, in records of the target.
Filter::Sink StreamWriter::sink(wem::Status *status_out) {
  return [this, status_out](std::string_view bytes) {
    while (status_out->ok() && !bytes.empty()) {
      const std::string_view part = bytes.substr(0, chunk_bytes_);
      *status_out = write_bytes(*file_, part);
      bytes.remove_prefix(part.size());
    }
  };
}

wem::Status StreamWriter::put(std::string_view bytes) {
  if (!filter_) return write_bytes(*file_, bytes);
  wem::Status written;
  const wem::Status converted = filter_->feed(bytes, sink(&written));
  return written.ok() ? converted : written;
}

wem::Status StreamWriter::write(std::string_view chunk, const std::string &source) {
  if (!finder_) return put(chunk);
  held_ += chunk;
  const bool is_good = finder_->feed(chunk);
  size_t checked = held_.size() - finder_->unchecked_bytes();
  if (!is_good) {
    const uint64_t record_offset = std::max(finder_->fault()->record_offset, held_offset_);
    checked = static_cast<size_t>(record_offset - held_offset_);
  }
  const wem::Status status = write_held(checked);
  if (!is_good) throw to_failure(source, *finder_->fault());
  return status;
}

wem::Status StreamWriter::write_held(size_t count) {
  wem::Status status;
  std::string_view left = std::string_view(held_).substr(0, count);
  while (status.ok() && !left.empty()) {
    const std::string_view part = left.substr(0, chunk_bytes_);
    status = put(part);
    left.remove_prefix(part.size());
  }
  held_.erase(0, count);
  held_offset_ += count;
  return status;
}

wem::Status StreamWriter::finish(const std::string &source) {
  if (finder_ && !finder_->finish()) throw to_failure(source, *finder_->fault());
  wem::Status status = write_held(held_.size());
  if (status.ok() && filter_) {
    wem::Status written;
    status = filter_->finish(sink(&written));
    if (!written.ok()) status = written;
  }
  // Nothing at all places a byte-order mark.
  return status.ok() ? write_bytes(*file_, {}) : status;
}

}  // namespace cli
