// Line ends of one kind.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "cli/find_units.hpp"
#include "cli/text_changes.hpp"

namespace cli {

// Replaces each line end of a text, which is a line feed, a carriage return, both, or NEL (U+0085,
// the line end of EBCDIC), and adds a missing last one: of the kind asked for, else as the line
// before ends, else a line feed. A text without characters has no line to end. Unit: char32_t, or
// char for an encoding in which the two controls are bytes that occur in no other character.
template <typename Unit>
class LineEndFilter {
 public:
  using View = std::basic_string_view<Unit>;
  using String = std::basic_string<Unit>;

  // nel: NEL in the encoding, of one or two units; empty when it has none.
  LineEndFilter(const TextChanges &changes, Unit line_feed, Unit carriage_return, String nel)
      : is_kept_(changes.line_end == LineEnd::kKeep),
        adds_final_(changes.adds_final_end),
        feed_(line_feed),
        return_(carriage_return),
        nel_(std::move(nel)) {
    const std::u32string_view text = line_end_text(changes.line_end);
    for (const char32_t character : text) {
      if (character == U'\u0085')
        line_end_ += nel_;
      else
        line_end_ += character == U'\r' ? return_ : feed_;
    }
  }

  // Appends the next part of a text to what came out. What may be the start of a line end of two
  // units is held back.
  void feed(View text, String &out) {
    if (text.empty()) return;
    if (!held_.empty()) {
      const size_t before = held_.size();
      held_ += text.substr(0, 1);
      String start;
      start.swap(held_);
      // Whether both are one line end, or the first is one or is none.
      text.remove_prefix(take(start, out, true) - before);
    }
    while (!text.empty()) {
      const size_t length = find_end(text);
      if (length > 0) is_inside_line_ = true;
      out += text.substr(0, length);
      text.remove_prefix(length);
      if (text.empty()) return;
      const size_t taken = take(text, out, false);
      if (taken == 0) {
        held_ = text;
        return;
      }
      text.remove_prefix(taken);
    }
  }

  // Appends what is left at the end of the text.
  void finish(String &out) {
    if (!held_.empty()) take(held_, out, true);
    held_.clear();
    if (!adds_final_ || !is_inside_line_) return;
    if (line_end_.empty()) line_end_ = feed_;
    out += line_end_;
    is_inside_line_ = false;
  }

 private:
  // Where a line end may begin; the length of the text when it has none.
  size_t find_end(View text) const {
    const Unit nel = nel_.empty() ? feed_ : nel_[0];
    return find_any(text, std::array<Unit, 3>{feed_, return_, nel});
  }

  // Takes what begins like a line end, or the unit that does not go on like one. Returns how many
  // units that were; 0 when the end of the part leaves it open, unless is_last.
  size_t take(View text, String &out, bool is_last) {
    const bool is_open = text.size() == 1 && !is_last;
    size_t units = 1;
    if (text[0] == return_) {
      if (is_open) return 0;
      units = text.size() > 1 && text[1] == feed_ ? 2 : 1;
    } else if (text[0] != feed_) {
      if (is_open && nel_.size() > 1) return 0;
      units = nel_.size();
      if (!text.starts_with(nel_)) {
        out += text[0];
        is_inside_line_ = true;
        return 1;
      }
    }
    if (is_kept_) line_end_ = text.substr(0, units);
    out += line_end_;
    is_inside_line_ = false;
    return units;
  }

  bool is_kept_;
  bool adds_final_;
  Unit feed_;
  Unit return_;
  String nel_;
  String line_end_;  // that was asked for, or the last one that was found
  String held_;      // the start of a line end
  bool is_inside_line_ = false;
};

}  // namespace cli
