// Finding the place where text is malformed.
#include "cli/fault.hpp"

#include <algorithm>

namespace cli {
namespace {

constexpr size_t kBytesPerByte = 8;  // the most that a conversion makes of one byte

}  // namespace

size_t behind_last_line_end(std::string_view bytes, std::string_view line_end) {
  const size_t unit = line_end.size();
  size_t at = bytes.size() / unit * unit;
  while (at > 0 && bytes.substr(at - unit, unit) != line_end) at -= unit;
  return at;
}

FaultFinder::FaultFinder(Session &session, uint32_t from, uint32_t to, uint64_t offset)
    : session_(session), from_(from), to_(to), offset_(offset) {
  line_end_ = session.encode(U"\n", from);
}

bool FaultFinder::converts(std::string_view text) {
  if (!transcoder_) transcoder_.emplace(session_.nls(), from_, to_);
  room_.resize(std::max(room_.size(), text.size() * kBytesPerByte));
  size_t produced = 0;
  status_ = (*transcoder_)(text, room_, &produced);
  return status_.ok();
}

bool FaultFinder::feed(std::string_view bytes) {
  if (fault_) return false;
  pending_ += bytes;
  const size_t complete = behind_last_line_end(pending_, line_end_);
  if (complete == 0) return true;
  const std::string_view lines = std::string_view(pending_).substr(0, complete);
  if (!check_lines(lines)) return false;
  pending_.erase(0, complete);
  return true;
}

// Converts many lines at once; when that fails, one by one to find the line.
bool FaultFinder::check_lines(std::string_view lines) {
  const size_t unit = line_end_.size();
  const bool is_good = converts(lines);
  size_t start = 0;
  if (!is_good) transcoder_.reset();
  for (size_t at = 0; at < lines.size(); at += unit) {
    if (lines.substr(at, unit) != line_end_) continue;
    const std::string_view line = lines.substr(start, at + unit - start);
    if (!is_good && !converts(line)) {
      locate(line, status_);
      return false;
    }
    start = at + unit;
    offset_ += line.size();
    ++records_;
  }
  return true;
}

bool FaultFinder::finish() {
  if (fault_ || pending_.empty()) return !fault_;
  const std::string_view line = pending_;
  const wem::Status status = converts(line) ? wem::Status(JXHOST_E_MALFORMED) : status_;
  locate(line, status);
  return !fault_;
}

// Converts byte by byte: what was taken since the last character came out is the one at fault.
void FaultFinder::locate(std::string_view line, wem::Status status) {
  transcoder_.emplace(session_.nls(), from_, to_);
  std::string character;
  uint64_t at = offset_;
  for (const char byte : line) {
    character += byte;
    size_t produced = 0;
    const wem::Status outcome = (*transcoder_)({&byte, 1}, room_, &produced);
    if (!outcome.ok()) {
      fault_ = Fault{outcome, records_ + 1, offset_, at, character, false};
      return;
    }
    if (produced == 0) continue;
    at += character.size();
    character.clear();
  }
  if (!character.empty()) fault_ = Fault{status, records_ + 1, offset_, at, character, true};
}

Failure to_failure(const std::string &path, const Fault &fault) {
  std::string detail = "record " + std::to_string(fault.record) + ", byte offset " +
                       std::to_string(fault.offset) + ", bytes " + to_hex(fault.bytes, " ");
  if (fault.is_cut_off) detail += ", cut off by the end of the file";
  return Failure(path, fault.status, detail);
}

}  // namespace cli
