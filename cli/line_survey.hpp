// What the lines of a text are like.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

class Session;

// Counts line ends as the bytes of a text pass. Lines are bytes of the file, without their ends.
class LineSurvey {
 public:
  enum End : uint8_t { kLf, kCrlf, kCr, kNel };
  static constexpr std::array<const char *, 4> kNames = {"lf", "crlf", "cr", "nel"};

  LineSurvey(Session &session, uint32_t encoding);

  void feed(std::string_view bytes);
  // Takes note of the end of the text.
  void finish();

  uint64_t count(End end) const { return counts_[end]; }
  // "lf", "crlf", "cr", "nel", "mixed" or "none".
  const char *kind() const;
  // Whether the last line has an end; true for an empty text.
  bool ends_with_line_end() const { return is_ended_; }
  uint64_t lines() const { return lines_; }
  uint64_t longest_bytes() const { return longest_bytes_; }
  // The number of the longest line, the first of them; 0 when all are empty.
  uint64_t longest_line() const { return longest_line_; }
  // Characters U+0000.
  uint64_t zeros() const { return zeros_; }

 private:
  void feed_bytes(std::string_view bytes);
  void take(uint32_t unit);
  void end_line(End end, size_t own_units);
  void close_line(uint64_t units);

  size_t unit_bytes_ = 1;
  uint32_t lf_ = '\n';
  uint32_t cr_ = '\r';
  std::string nel_;            // empty: the encoding has none
  std::array<char, 4> marks_;  // of units of one byte: those that begin a line end, and zero
  std::string rest_;           // the start of a unit
  std::string recent_;         // the last bytes of the line from where NEL may begin
  bool was_cr_ = false;
  bool is_ended_ = true;
  uint64_t line_units_ = 0;  // of the current line
  std::array<uint64_t, 4> counts_ = {};
  uint64_t lines_ = 0;
  uint64_t longest_bytes_ = 0;
  uint64_t longest_line_ = 0;
  uint64_t zeros_ = 0;
};

}  // namespace cli
