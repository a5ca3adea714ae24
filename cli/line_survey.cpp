// What the lines of a text are like.
#include "cli/line_survey.hpp"

#include <algorithm>
#include <numeric>

#include "cli/find_units.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

// A unit is its bytes in the order of the file.
uint32_t unit_at(std::string_view bytes, size_t at, size_t unit_bytes) {
  uint32_t unit = 0;
  for (size_t i = 0; i < unit_bytes; ++i) unit = unit << 8 | static_cast<uint8_t>(bytes[at + i]);
  return unit;
}

// The next line in a text of which some encodings have no sign.
std::string encode_next_line(Session &session, uint32_t encoding) {
  try {
    return session.encode(U"\x85", encoding);
  } catch (const Failure &) {
    return {};
  }
}

}  // namespace

LineSurvey::LineSurvey(Session &session, uint32_t encoding) : marks_{'\n', '\r', '\0', '\n'} {
  if (encoding == 0) return;
  const std::string lf = session.encode(U"\n", encoding);
  const std::string cr = session.encode(U"\r", encoding);
  unit_bytes_ = lf.size();
  lf_ = unit_at(lf, 0, unit_bytes_);
  cr_ = unit_at(cr, 0, unit_bytes_);
  nel_ = encode_next_line(session, encoding);
  marks_ = {lf[0], cr[0], '\0', nel_.empty() ? lf[0] : nel_[0]};
}

// In between the marks nothing has to be looked at.
void LineSurvey::feed_bytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const size_t plain = was_cr_ || !recent_.empty() ? 0 : find_any(bytes, marks_);
    if (plain > 0) {
      line_units_ += plain;
      is_ended_ = false;
      bytes.remove_prefix(plain);
      if (bytes.empty()) return;
    }
    take(static_cast<uint8_t>(bytes[0]));
    bytes.remove_prefix(1);
  }
}

void LineSurvey::feed(std::string_view bytes) {
  if (unit_bytes_ == 1) return feed_bytes(bytes);
  size_t at = 0;
  while (!rest_.empty() && rest_.size() < unit_bytes_ && at < bytes.size()) rest_ += bytes[at++];
  if (rest_.size() == unit_bytes_) {
    take(unit_at(rest_, 0, unit_bytes_));
    rest_.clear();
  }
  for (; at + unit_bytes_ <= bytes.size(); at += unit_bytes_) {
    take(unit_at(bytes, at, unit_bytes_));
  }
  rest_ += bytes.substr(at);
}

void LineSurvey::take(uint32_t unit) {
  is_ended_ = false;
  if (unit == 0) ++zeros_;
  if (was_cr_) {
    was_cr_ = false;
    if (unit == lf_) return end_line(kCrlf, 0);
    end_line(kCr, 0);
    is_ended_ = false;
  }
  if (unit == lf_) return end_line(kLf, 0);
  if (unit == cr_) {
    was_cr_ = true;
    return;
  }
  ++line_units_;
  if (nel_.empty()) return;
  if (recent_.empty() && unit >> (8 * (unit_bytes_ - 1)) != static_cast<uint8_t>(nel_[0])) return;
  for (size_t i = unit_bytes_; i-- > 0;) recent_ += static_cast<char>(unit >> (8 * i));
  if (recent_ == nel_) return end_line(kNel, nel_.size() / unit_bytes_);
  while (!nel_.starts_with(recent_)) recent_.erase(0, unit_bytes_);
}

void LineSurvey::end_line(End end, size_t own_units) {
  ++counts_[end];
  close_line(line_units_ - own_units);
  is_ended_ = true;
}

void LineSurvey::close_line(uint64_t units) {
  ++lines_;
  const uint64_t bytes = units * unit_bytes_;
  if (bytes > longest_bytes_) {
    longest_bytes_ = bytes;
    longest_line_ = lines_;
  }
  line_units_ = 0;
  recent_.clear();
}

void LineSurvey::finish() {
  if (was_cr_) end_line(kCr, 0);
  was_cr_ = false;
  if (!is_ended_) close_line(line_units_);
}

const char *LineSurvey::kind() const {
  const auto kinds = std::ranges::count_if(counts_, [](uint64_t count) { return count > 0; });
  if (kinds == 0) return "none";
  if (kinds > 1) return "mixed";
  return kNames[static_cast<size_t>(
      std::ranges::find_if(counts_, [](uint64_t count) { return count > 0; }) - counts_.begin())];
}

}  // namespace cli
