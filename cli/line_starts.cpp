// Looking for the line feeds of one chunk.
#include "cli/line_starts.hpp"

#include "cli/line_ends.hpp"

namespace cli {

void LineStarts::pass(std::string_view chunk) {
  const size_t unit = line_end_.size();
  std::string joined;
  if (unit > 1) {
    joined = cut_;
    joined += chunk;
    chunk = joined;
  }
  const size_t whole = chunk.size() / unit * unit;
  const size_t after = after_last_line_end(chunk, line_end_);
  if (after > 0) last_start_ = offset_ + after;
  cut_ = chunk.substr(whole);
  offset_ += whole;
}

uint64_t LineStarts::find(size_t line, std::string_view chunk) const {
  if (line == 0) return last_start_;
  std::string text = cut_;
  text += chunk;
  size_t start = 0;
  for (; line > 0; --line) {
    const size_t end = find_line_end(text, start, line_end_);
    if (end == text.npos) break;
    start = end + line_end_.size();
  }
  return offset_ + start;
}

}  // namespace cli
