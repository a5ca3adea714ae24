// Finding the place where text is malformed.
#include "cli/fault.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "cli/line_ends.hpp"

namespace cli {
namespace {

constexpr size_t kSliceBytes = 65536;     // looked at in one go
constexpr size_t kLongestCharacter = 16;  // in bytes

}  // namespace

FaultFinder::FaultFinder(Session &session, uint32_t from, uint32_t to, uint64_t offset,
                         bool has_new_ends)
    : session_(session),
      from_(from),
      to_(to),
      passes_nel_(has_new_ends && lacks_nel_of(session, from, to)),
      line_end_(session.encode(U"\n", from)),
      line_end_out_(session.encode(U"\n", to)),
      may_shift_(from < JX_ENCODING_UTF8 || from > JX_ENCODING_UTF32LE),
      offset_(offset),
      record_offset_(offset) {}

bool FaultFinder::converts(std::optional<Steps> &steps, std::string_view text) {
  const uint32_t next = passes_nel_ ? JX_ENCODING_UTF32LE : to_;
  if (!steps) steps.emplace(Transcoder(session_.nls(), from_, next), std::nullopt);
  room_.resize(std::max(room_.size(), text.size() * Transcoder::kBytesPerByte));
  status_ = steps->first(text, room_, &produced_);
  if (!passes_nel_ || !status_.ok()) return status_.ok();
  if (!steps->second) steps->second.emplace(session_.nls(), JX_ENCODING_UTF32LE, to_);
  characters_.resize(produced_ / sizeof(char32_t));
  std::memcpy(characters_.data(), room_.data(), produced_);
  std::ranges::replace(characters_, U'\u0085', U'\n');
  const std::string_view bytes(reinterpret_cast<const char *>(characters_.data()), produced_);
  room_.resize(std::max(room_.size(), bytes.size() * Transcoder::kBytesPerByte));
  status_ = (*steps->second)(bytes, room_, &produced_);
  return status_.ok();
}

// Whether the text so far ends with a whole character, or with a return to the initial state. Only
// then is a line end after it still a line end; the start of a character takes it up or refuses it.
bool FaultFinder::ends_whole(std::optional<Steps> &steps) {
  return converts(steps, line_end_) &&
         std::string_view(room_).substr(0, produced_) == line_end_out_;
}

bool FaultFinder::feed(std::string_view bytes) {
  bool is_good = !fault_;
  while (is_good && !bytes.empty()) {
    const std::string_view slice = bytes.substr(0, kSliceBytes);
    is_good = feed_slice(slice);
    bytes.remove_prefix(slice.size());
  }
  return is_good;
}

bool FaultFinder::feed_slice(std::string_view slice) {
  // No line end is in what was pending, whose start is that of a character.
  const size_t searched = pending_.size() / line_end_.size() * line_end_.size();
  pending_ += slice;
  const size_t found = after_last_line_end(std::string_view(pending_).substr(searched), line_end_);
  if (found > 0 && !check_lines(searched + found)) return false;
  return pending_.size() < kSliceBytes || check_long_line();
}

// Converts the lines that make up the first bytes of what is pending at once; when that fails, one
// by one to find the line.
bool FaultFinder::check_lines(size_t bytes) {
  const std::string_view lines = std::string_view(pending_).substr(0, bytes);
  const bool is_good = converts(transcoder_, lines.substr(converted_));
  if (!is_good && behind_) return locate(lines, true);
  if (!is_good) {
    transcoder_.reset();
    size_t start = 0;
    while (start < lines.size()) {
      const size_t end = find_line_end(lines, start, line_end_) + line_end_.size();
      const std::string_view line = lines.substr(start, end - start);
      if (!converts(transcoder_, line)) return locate(line, true);
      offset_ += line.size();
      record_offset_ = offset_;
      ++records_;
      start = end;
    }
  } else {
    offset_ += bytes;
    record_offset_ = offset_;
    records_ += count_line_ends(lines, line_end_);
  }
  pending_.erase(0, bytes);
  converted_ = 0;
  behind_.reset();
  return true;
}

// Lets go of all but the start of a character that may be cut off: the last bytes are converted one
// by one to see where a character ends.
bool FaultFinder::check_long_line() {
  const std::string_view line = pending_;
  const size_t bulk = std::max(line.size() - kLongestCharacter, converted_);
  if (!converts(transcoder_, line.substr(converted_, bulk - converted_))) return locate(line, true);
  // Where nothing comes out, as between shifts that shift nothing, any place is as good.
  size_t boundary = bulk / line_end_.size() * line_end_.size();
  for (size_t at = bulk; at < line.size(); ++at) {
    if (!converts(transcoder_, line.substr(at, 1))) return locate(line, true);
    if (produced_ > 0) boundary = at + 1;
  }
  if (may_shift_ && !converts(behind_, line.substr(0, boundary))) return locate(line, true);
  offset_ += boundary;
  pending_.erase(0, boundary);
  converted_ = pending_.size();
  return true;
}

bool FaultFinder::finish() {
  if (fault_ || pending_.empty()) return !fault_;
  const bool is_good = converts(transcoder_, std::string_view(pending_).substr(converted_));
  if (is_good && ends_whole(transcoder_)) return true;
  return locate(pending_, !is_good);
}

// Converts byte by byte: what was taken since the last character came out is the one at fault.
// is_certain: there is a fault; where it cannot be found, the text as a whole is named. False when
// a fault was found.
bool FaultFinder::locate(std::string_view text, bool is_certain) {
  Fault fault;
  fault.status = is_certain ? status_ : wem::Status(JXHOST_E_MALFORMED);
  fault.record = records_ + 1;
  fault.record_offset = record_offset_;
  transcoder_ = std::exchange(behind_, std::nullopt);
  const size_t unit = line_end_.size();
  size_t start = 0;  // of the character under way
  const auto note = [&](std::string_view bytes) {
    fault.offset = offset_ + start;
    fault.bytes = bytes;
    fault_ = fault;
    return false;
  };
  for (size_t end = 1; end <= text.size(); ++end) {
    if (!converts(transcoder_, text.substr(end - 1, 1))) {
      fault.status = status_;
      return note(text.substr(start, end - start));
    }
    if (produced_ == 0) continue;
    start = end;
    if (end % unit != 0 || text.substr(end - unit, unit) != line_end_) continue;
    ++fault.record;
    fault.record_offset = offset_ + end;
  }
  if (start < text.size() && !ends_whole(transcoder_)) {
    fault.is_cut_off = true;
    return note(text.substr(start));
  }
  if (!is_certain) return true;
  fault.record = records_ + 1;
  fault.record_offset = record_offset_;
  start = 0;
  return note(text.substr(0, kLongestCharacter));
}

Failure to_failure(const std::string &path, const Fault &fault, const char *whole) {
  std::string detail = "record " + std::to_string(fault.record) + ", byte offset " +
                       std::to_string(fault.offset) + ", bytes " + to_hex(fault.bytes, " ");
  if (fault.is_cut_off) detail += std::string(", cut off by the end of the ") + whole;
  return Failure(path, fault.status, detail);
}

}  // namespace cli
