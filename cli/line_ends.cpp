// Finding line ends, and remembering them.
#include "cli/line_ends.hpp"

#include <algorithm>
#include <array>
#include <bit>

#include "vector/base.hpp"

namespace cli {
namespace {

constexpr char kLineFeed = 'l';
constexpr char kCarriageReturnToo = 'c';

// How many bytes are this one.
size_t count_bytes(std::string_view bytes, char wanted) {
  using Ops = jx::vector::Base;
  const auto pattern = Ops::repeat<uint8_t>(static_cast<uint8_t>(wanted));
  size_t count = 0;
  for (; bytes.size() >= Ops::kBytes; bytes.remove_prefix(Ops::kBytes)) {
    const auto equal = Ops::mask(Ops::equal<uint8_t>(Ops::load(bytes.data()), pattern));
    if (equal != 0) count += static_cast<size_t>(std::popcount(equal));
  }
  return count + static_cast<size_t>(std::ranges::count(bytes, wanted));
}

bool has_nel(Session &session, uint32_t encoding) {
  constexpr char32_t kNel = U'\u0085';
  std::array<char, 16> room;
  size_t produced = 0;
  Transcoder transcoder(session.nls(), JX_ENCODING_UTF32LE, encoding);
  return transcoder({reinterpret_cast<const char *>(&kNel), sizeof kNel}, room, &produced).ok();
}

}  // namespace

size_t find_line_end(std::string_view bytes, size_t from, std::string_view line_end) {
  // Zeros fill up line feeds of several bytes, and much else.
  const size_t rare = line_end.find_first_not_of('\0');
  for (size_t at = bytes.find(line_end[rare], from + rare); at != bytes.npos;
       at = bytes.find(line_end[rare], at + 1)) {
    const size_t start = at - rare;
    if (start % line_end.size() != 0) continue;
    if (bytes.compare(start, line_end.size(), line_end) == 0) return start;
  }
  return bytes.npos;
}

size_t after_last_line_end(std::string_view bytes, std::string_view line_end) {
  const size_t unit = line_end.size();
  size_t at = bytes.size() / unit * unit;
  while (at > 0 && bytes.compare(at - unit, unit, line_end) != 0) at -= unit;
  return at;
}

size_t count_line_ends(std::string_view bytes, std::string_view line_end) {
  if (line_end.size() == 1) return static_cast<size_t>(count_bytes(bytes, line_end[0]));
  size_t count = 0;
  for (size_t at = find_line_end(bytes, 0, line_end); at != bytes.npos; ++count) {
    at = find_line_end(bytes, at + line_end.size(), line_end);
  }
  return count;
}

bool lacks_nel_of(Session &session, uint32_t other, uint32_t encoding) {
  return !has_nel(session, encoding) && has_nel(session, other);
}

LineEnds::LineEnds(Session &session, uint32_t encoding)
    : line_feed_(session.encode(U"\n", encoding)),
      carriage_return_(session.encode(U"\r", encoding)) {}

void LineEnds::feed(std::string_view bytes) {
  const size_t unit = line_feed_.size();
  const size_t searched = rest_.size() / unit * unit;
  rest_ += bytes;
  const std::string_view text = rest_;
  std::string marks;
  for (size_t at = find_line_end(text, searched, line_feed_); at != text.npos;
       at = find_line_end(text, at + unit, line_feed_)) {
    const bool has_return = at >= unit && text.substr(at - unit, unit) == carriage_return_;
    marks += has_return ? kCarriageReturnToo : kLineFeed;
  }
  const size_t whole = text.size() / unit * unit;
  rest_.erase(0, whole - std::min(whole, unit));
  const std::lock_guard guard(mutex_);
  found_ += marks;
}

bool LineEnds::has_next() {
  if (taken_count_ < taken_.size()) return true;
  taken_.clear();
  taken_count_ = 0;
  const std::lock_guard guard(mutex_);
  taken_.swap(found_);
  return !taken_.empty();
}

const char *LineEnds::end_of(const wem::Record &record) {
  const bool is_rest = std::exchange(is_inside_line_, record.partial);
  if (record.partial) return "part";
  if (!has_next()) return "none";
  const bool has_return = taken_[taken_count_++] == kCarriageReturnToo;
  // A carriage return at the end of a part was handed on with it.
  return has_return && !(is_rest && record.bytes.empty()) ? "crlf" : "lf";
}

}  // namespace cli
