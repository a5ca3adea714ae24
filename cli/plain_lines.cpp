// Gathering, checking and printing lines.
#include "cli/plain_lines.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "cli/ascii.hpp"
#include "cli/short_copy.hpp"

namespace cli {
namespace {

constexpr size_t kPlainBytes = 65536;
constexpr size_t kPlainSliceBytes =
    4096;  // checked in one go: with what comes out in the fast caches

}  // namespace

PlainLines::PlainLines(Session &session, bool is_numbered)
    : session_(session), is_numbered_(is_numbered) {}

// Puts the end of the line before and the number of the next.
inline char *PlainLines::lay_out_head(char *to) const {
  if (needs_line_end_) *to++ = '\n';
  return is_numbered_ ? number_.copy_to(to) : to;
}

void PlainLines::append(std::string_view text) {
  char *to = lay_out_head(room_.data() + used_);
  copy_line(to, text);
  used_ = static_cast<size_t>(to - room_.data()) + text.size();
  needs_line_end_ = true;
  ++number_;
}

bool PlainLines::print_slowly(std::string_view record, bool is_partial) {
  if (!settle()) return false;
  if (is_partial || is_inside_line_) return print_part(record, is_partial);
  room_ = session_.output().reserve(std::max(kLongestHead + record.size(), kPlainBytes));
  append(record);
  return true;
}

// A part may end inside a character: what is whole is printed.
bool PlainLines::print_part(std::string_view text, bool is_partial) {
  if (!parts_) parts_.emplace(session_.nls(), JX_ENCODING_UTF8, JX_ENCODING_UTF8);
  const std::span<char> room = session_.output().reserve(kLongestHead + text.size() + kLongestUtf8);
  char *const body = is_inside_line_ ? room.data() : lay_out_head(room.data());
  const auto head_bytes = static_cast<size_t>(body - room.data());
  size_t bytes = 0;
  if (!(*parts_)(text, room.subspan(head_bytes), &bytes).ok()) return false;
  if (!is_partial) {
    std::array<char, kLongestUtf8> line_end;
    size_t line_end_bytes = 0;
    if (!(*parts_)("\n", line_end, &line_end_bytes).ok()) return false;
    ++number_;
  }
  session_.output().commit(head_bytes + bytes);
  is_inside_line_ = is_partial;
  needs_line_end_ = !is_partial;
  return true;
}

// Whether a text is UTF-8 that ends with a whole character.
bool PlainLines::is_utf8(std::string_view text) {
  Transcoder decoder(session_.nls(), JX_ENCODING_UTF8, JX_ENCODING_UTF8);
  scratch_.resize(kPlainSliceBytes + kLongestUtf8);
  size_t produced = 0;
  bool may_be_cut = false;
  while (!text.empty()) {
    const std::string_view slice = text.substr(0, kPlainSliceBytes);
    const bool is_plain = is_ascii(slice);
    // Of characters of one byte the first tells whether one before them was cut off.
    const std::string_view checked = is_plain ? slice.substr(0, may_be_cut) : slice;
    if (!decoder(checked, scratch_, &produced).ok()) return false;
    may_be_cut = !is_plain;
    text.remove_prefix(slice.size());
  }
  return !may_be_cut || decoder("\n", scratch_, &produced).ok();
}

bool PlainLines::settle() {
  const std::string_view text(room_.data(), std::exchange(used_, 0));
  room_ = {};
  if (is_utf8(text)) {
    session_.output().commit(text.size());
    return true;
  }
  size_t good = 0;  // with the line end before the line that is not
  for (size_t end = text.find('\n'); end != text.npos; end = text.find('\n', good)) {
    if (!is_utf8(text.substr(good, end - good))) break;
    good = end + 1;
  }
  session_.output().commit(good);
  undone_ = 1 + static_cast<uint64_t>(std::ranges::count(text.substr(good), '\n'));
  needs_line_end_ = false;
  return false;
}

void PlainLines::finish(bool has_line_end) {
  if (needs_line_end_ && has_line_end) session_.output() << "\n";
}

}  // namespace cli
