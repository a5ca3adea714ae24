// Where the lines of a text begin, for a message.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

// Follows the chunks of a text, which may end anywhere, and remembers of those that passed only
// where their last line begins.
class LineStarts {
 public:
  // line_end: a line feed in the encoding. offset: of the first byte.
  LineStarts(std::string line_end, uint64_t offset)
      : line_end_(std::move(line_end)), offset_(offset), last_start_(offset) {}

  // Takes note that a chunk passed.
  void pass(std::string_view chunk);
  // The offset of a line, if the chunk that comes next has its start: 0 is the one under way.
  uint64_t find(size_t line, std::string_view chunk) const;

 private:
  std::string line_end_;
  std::string cut_;      // the start of a unit
  uint64_t offset_;      // of cut_
  uint64_t last_start_;  // of the line under way
};

}  // namespace cli
