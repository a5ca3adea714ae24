// The number of a line, in decimal.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cli {

// Counted as text: most steps change one digit.
class LineNumber {
 public:
  static constexpr size_t kLongest = 22;  // of text, in characters

  uint64_t value() const { return value_; }
  // At least six columns and two blanks after them. Valid until the next step.
  std::string_view text() const {
    return std::string_view(text_.data(), text_.size()).substr(std::min(first_, kColumnsAt));
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
  static constexpr size_t kLast = kLongest - 3;        // the last digit
  static constexpr size_t kColumnsAt = kLast + 1 - 6;  // where the text of small numbers begins

  static constexpr std::array<char, kLongest> one() {
    std::array<char, kLongest> text;
    text.fill(' ');
    text[kLast] = '1';
    return text;
  }

  uint64_t value_ = 1;
  size_t first_ = kLast;  // the first digit
  std::array<char, kLongest> text_ = one();
};

}  // namespace cli
