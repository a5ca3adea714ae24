// Test texts and files, and the least that a reader or a writer of lines can do.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace jx::bench {

// The same numbers in every run.
class Random {
 public:
  uint64_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    return state_ ^= state_ << 17;
  }
  uint64_t below(uint64_t bound) { return next() % bound; }
  double uniform() { return static_cast<double>(next() >> 11) * 0x1p-53; }

 private:
  uint64_t state_ = 0x9E3779B97F4A7C15u;
};

// A folder in memory, removed at the end with all that is in it.
class Scratch {
 public:
  Scratch();
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;
  ~Scratch();
  std::string at(const std::string &name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline constexpr size_t kWidestLine = 4096;    // no test line has more characters ...
inline constexpr size_t kLongestLine = 8192;   // ... or more bytes
inline const char *const kSink = "/dev/null";  // shows the cost without the file system's

enum class Script : uint8_t { kAscii, kEuropean, kCjk };
const char *name_of(Script script);

// Lines of words, each within a half of the mean length; `bytes` in all as UTF-8. European: one
// letter in eight needs two bytes, one in 200 three. CJK: ideographs and their punctuation (three
// bytes), one digit in 30. All of it is in the basic plane.
std::vector<std::u32string> make_lines(Script script, size_t mean, size_t bytes);
std::string to_utf8(const std::u32string &line);
std::string join_utf8(const std::vector<std::u32string> &lines);

void write_file(const std::string &path, const std::string &bytes);

// The least that a program does with a record: counts it and looks at its first and last unit.
class Tally {
 public:
  template <typename Unit>
  void line(const Unit *data, size_t units) {
    ++lines_;
    units_ += units;
    if (units) edges_ += code(data[0]) + 3 * code(data[units - 1]);
  }
  uint64_t value() const { return lines_ * 1'000'003 + units_ * 31 + edges_; }

 private:
  template <typename Unit>
  static uint64_t code(Unit unit) {
    using Integer = std::conditional_t<sizeof(Unit) == 1, uint8_t,
                                       std::conditional_t<sizeof(Unit) == 2, uint16_t, uint32_t>>;
    return static_cast<Integer>(unit);
  }
  uint64_t lines_ = 0, units_ = 0, edges_ = 0;
};

// Lines in place in a buffer: read(2) of one block at a time, memchr for the end, a cut line moved
// to the front before the next block.
class BlockLines {
 public:
  BlockLines(const std::string &path, size_t block);
  BlockLines(const BlockLines &) = delete;
  BlockLines &operator=(const BlockLines &) = delete;
  ~BlockLines();
  bool next(const char *&line, size_t &bytes);

 private:
  bool refill();  // false at the end of the file

  int fd_;
  size_t block_;
  std::vector<char> buffer_;
  char *begin_;
  size_t held_ = 0;
};

// Gathers bytes in a block and writes full blocks with write(2).
class BlockWriter {
 public:
  BlockWriter(int fd, size_t block) : fd_(fd), buffer_(block) {}
  void put(const char *data, size_t bytes);
  void flush();

 private:
  int fd_;
  std::vector<char> buffer_;
  size_t used_ = 0;
};

inline bool BlockLines::next(const char *&line, size_t &bytes) {
  for (size_t searched = 0;; searched = held_) {
    if (searched == held_ && !refill()) return false;  // every test file ends with a line end
    const void *end = std::memchr(begin_ + searched, '\n', held_ - searched);
    if (!end) continue;
    line = begin_;
    bytes = static_cast<size_t>(static_cast<const char *>(end) - begin_);
    begin_ += bytes + 1;
    held_ -= bytes + 1;
    return true;
  }
}

inline void BlockWriter::put(const char *data, size_t bytes) {
  while (bytes >= buffer_.size() - used_) {
    const size_t part = buffer_.size() - used_;
    std::memcpy(buffer_.data() + used_, data, part);
    used_ = buffer_.size();
    flush();
    data += part;
    bytes -= part;
  }
  std::memcpy(buffer_.data() + used_, data, bytes);
  used_ += bytes;
}

// Splits a file into lines and has each converted: (bytes, count, tally).
template <typename Convert>
uint64_t split_then(const std::string &path, Convert convert) {
  BlockLines lines(path, 8192);
  Tally tally;
  const char *line = nullptr;
  size_t bytes = 0;
  while (lines.next(line, bytes)) convert(line, bytes, tally);
  return tally.value();
}

}  // namespace jx::bench
