// Byte streams in, converted text out.
#include "cli/copying.hpp"

#include <span>

namespace cli {
namespace {

constexpr size_t kFirstBytes = 4;  // the longest byte-order mark
constexpr uint32_t kSlackChars = 16;

wem::Status write_bytes(wem::File &file, std::string_view bytes) {
  return file.write(std::as_bytes(std::span(bytes)));
}

}  // namespace

std::string_view ByteReader::next() {
  const size_t wanted = is_first_ ? kFirstBytes : 1;
  is_first_ = false;
  size_t used = 0;
  while (used < wanted && !is_at_end_) {
    const auto record = file_.read_into(std::span(buffer_).subspan(used));
    if (record) used += record->bytes.size();
    is_at_end_ = record.status() == JXWEM_E_EOF;
    if (!record && !is_at_end_) throw Failure(shown_, record.status());
  }
  return {reinterpret_cast<const char *>(buffer_.data()), used};
}

StreamWriter::StreamWriter(Session &session, Target &target, uint32_t from, uint32_t to,
                           std::optional<uint64_t> check_offset)
    : target_(target), from_(from), to_(to), offset_(check_offset.value_or(0)) {
  if (check_offset) finder_.emplace(session, from, to, offset_);
}

wem::File &StreamWriter::open(const wem::OpenOptions &options, uint32_t chunk_bytes) {
  const uint32_t room = chunk_bytes + kSlackChars;
  file_ = &target_.open(options.stream(room).direct().encodings(to_, from_));
  return *file_;
}

wem::Status StreamWriter::write(std::string_view chunk, const std::string &source) {
  if (!finder_ || finder_->feed(chunk)) {
    offset_ += chunk.size();
    return write_bytes(*file_, chunk);
  }
  const Fault &fault = *finder_->fault();
  if (fault.record_offset > offset_) {
    const auto good_bytes = static_cast<size_t>(fault.record_offset - offset_);
    require(write_bytes(*file_, chunk.substr(0, good_bytes)), target_.shown());
  }
  throw to_failure(source, fault);
}

void StreamWriter::finish(const std::string &source) {
  if (finder_ && !finder_->finish()) throw to_failure(source, *finder_->fault());
}

}  // namespace cli
