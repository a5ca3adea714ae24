// What "convert" changes in a text besides its encoding.
#pragma once

#include <string_view>

#include "cli/arguments.hpp"

namespace cli {

// How the lines of the output end.
enum class LineEnd { kKeep, kLf, kCrlf, kCr, kNel };
// What becomes of bytes that are no text and of characters that the target does not have.
enum class OnFault { kStop, kReplace, kSkip, kEscape };

struct TextChanges {
  LineEnd line_end = LineEnd::kKeep;
  bool adds_final_end = false;  // to a last line without a line end
  OnFault on_fault = OnFault::kStop;
  bool transliterates = false;  // characters that the target does not have, where possible

  // Whether nothing but the encoding changes.
  bool is_none() const { return !changes_line_ends() && !is_lenient(); }
  bool changes_line_ends() const { return line_end != LineEnd::kKeep || adds_final_end; }
  // Whether a fault of the text may be put up with.
  bool is_lenient() const { return on_fault != OnFault::kStop || transliterates; }
};

// The values of --eol, --final-eol, --on-error and --translit; a UsageError for others.
TextChanges text_changes(const Arguments &arguments);
// The characters of a line end; none for kKeep.
std::u32string_view line_end_text(LineEnd line_end);

}  // namespace cli
