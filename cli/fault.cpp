// Finding the place where text is malformed.
#include "cli/fault.hpp"

#include <algorithm>

namespace cli {
namespace {

constexpr size_t kBytesPerByte = 12;      // the most that a conversion makes of one byte
constexpr size_t kSliceBytes = 65536;     // looked at in one go
constexpr size_t kLongestCharacter = 16;  // in bytes

}  // namespace

size_t behind_last_line_end(std::string_view bytes, std::string_view line_end) {
  const size_t unit = line_end.size();
  size_t at = bytes.size() / unit * unit;
  while (at > 0 && bytes.substr(at - unit, unit) != line_end) at -= unit;
  return at;
}

FaultFinder::FaultFinder(Session &session, uint32_t from, uint32_t to, uint64_t offset)
    : session_(session), from_(from), to_(to), offset_(offset), record_offset_(offset) {
  line_end_ = session.encode(U"\n", from);
}

bool FaultFinder::converts(std::string_view text) {
  if (!transcoder_) transcoder_.emplace(session_.nls(), from_, to_);
  room_.resize(std::max(room_.size(), text.size() * kBytesPerByte));
  status_ = (*transcoder_)(text, room_, &produced_);
  return status_.ok();
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
  const size_t found = behind_last_line_end(std::string_view(pending_).substr(searched), line_end_);
  if (found > 0 && !check_lines(searched + found)) return false;
  return pending_.size() < kSliceBytes || check_long_line();
}

// Converts the lines that make up the first bytes of what is pending at once; when that fails, one
// by one to find the line.
bool FaultFinder::check_lines(size_t bytes) {
  const std::string_view lines = std::string_view(pending_).substr(0, bytes);
  const size_t unit = line_end_.size();
  const bool is_good = converts(lines.substr(converted_));
  if (!is_good) transcoder_.reset();
  size_t start = 0;
  for (size_t at = 0; at < lines.size(); at += unit) {
    if (lines.substr(at, unit) != line_end_) continue;
    const std::string_view line = lines.substr(start, at + unit - start);
    if (!is_good && !converts(line)) return locate(line, true);
    start = at + unit;
    offset_ += line.size();
    record_offset_ = offset_;
    ++records_;
  }
  pending_.erase(0, bytes);
  converted_ = 0;
  return true;
}

// Lets go of all but the start of a character that may be cut off: the last bytes are converted one
// by one to see where a character ends.
bool FaultFinder::check_long_line() {
  const std::string_view line = pending_;
  const size_t bulk = std::max(line.size() - kLongestCharacter, converted_);
  if (!converts(line.substr(converted_, bulk - converted_))) return locate(line, true);
  size_t boundary = 0;
  for (size_t at = bulk; at < line.size(); ++at) {
    if (!converts(line.substr(at, 1))) return locate(line, true);
    if (produced_ > 0) boundary = at + 1;
  }
  offset_ += boundary;
  pending_.erase(0, boundary);
  converted_ = pending_.size();
  return true;
}

bool FaultFinder::finish() {
  if (fault_ || pending_.empty()) return !fault_;
  const bool is_good = converts(std::string_view(pending_).substr(converted_));
  return locate(pending_, !is_good);
}

// Converts byte by byte: what was taken since the last character came out is the one at fault.
// is_certain: there is a fault; where it cannot be found, the text as a whole is named. False when
// a fault was found.
bool FaultFinder::locate(std::string_view text, bool is_certain) {
  const wem::Status known = is_certain ? status_ : wem::Status(JXHOST_E_MALFORMED);
  transcoder_.emplace(session_.nls(), from_, to_);
  std::string character;
  uint64_t at = offset_;
  for (const char byte : text) {
    character += byte;
    if (!converts({&byte, 1})) {
      fault_ = Fault{status_, records_ + 1, record_offset_, at, character, false};
      return false;
    }
    if (produced_ == 0) continue;
    at += character.size();
    character.clear();
  }
  if (!character.empty()) {
    fault_ = Fault{known, records_ + 1, record_offset_, at, character, true};
  } else if (is_certain) {
    const std::string start(text.substr(0, kLongestCharacter));
    fault_ = Fault{known, records_ + 1, record_offset_, offset_, start, false};
  }
  return !fault_;
}

Failure to_failure(const std::string &path, const Fault &fault) {
  std::string detail = "record " + std::to_string(fault.record) + ", byte offset " +
                       std::to_string(fault.offset) + ", bytes " + to_hex(fault.bytes, " ");
  if (fault.is_cut_off) detail += ", cut off by the end of the file";
  return Failure(path, fault.status, detail);
}

}  // namespace cli
