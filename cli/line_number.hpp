// The number of a line, in decimal.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace cli {

// Counted as text: most steps change one digit.
class LineNumber {
 public:
  LineNumber() = default;
  explicit LineNumber(uint64_t value) : value_(value), first_(kLast + 1) {
    do {
      text_[--first_] = static_cast<char>('0' + value % 10);
      value /= 10;
    } while (value > 0);
  }

  static constexpr size_t kRoom = 24;  // of copy_to

  uint64_t value() const { return value_; }
  // At least six columns and two blanks after them. Valid until the next step.
  std::string_view text() const {
    const size_t start = std::min(first_, kColumnsAt);
    return {text_.data() + start, kEnd - start};
  }
  // Copies the text to the start of kRoom bytes and returns its end. Always that many: a copy of a
  // known size needs no call.
  char *copy_to(char *to) const {
    std::memcpy(to, text().data(), kRoom);
    return to + text().size();
  }
  LineNumber &operator++() {
    ++value_;
    size_t at = kLast;
    while (text_[at] == '9') text_[at--] = '0';
    if (at < first_) {
      first_ = at;
      text_[at] = '0';
    }
    ++text_[at];
    return *this;
  }

 private:
  static constexpr size_t kEnd = 22;                   // of the text: 20 digits, two blanks
  static constexpr size_t kLast = kEnd - 3;            // the last digit
  static constexpr size_t kColumnsAt = kLast + 1 - 6;  // where the text of small numbers begins

  using Text = std::array<char, kColumnsAt + kRoom>;
  static constexpr Text one() {
    Text text = {};
    text.fill(' ');
    text[kLast] = '1';
    return text;
  }

  uint64_t value_ = 1;
  size_t first_ = kLast;  // the first digit
  Text text_ = one();
};

}  // namespace cli
