// A random format, valid or not, with its arguments, against a model that never parses a format: it
// builds each directive together with its output. Where they agree, the C library prints it too.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "jx/jxhost.h"
#include "support/choices.hpp"
#include "tests/kernel/format_directive.hpp"

namespace jx::test {

// One random format with its arguments and the pieces of its output.
class FormatCase {
 public:
  explicit FormatCase(Choices *choices)
      : choices_(*choices), is_numbered_(pick(3) == 0), taken_(is_numbered_ ? pick(5) : 0) {
    // Arguments after the first that no directive uses, here taken_, are not taken.
    if (is_numbered_) arguments_.resize(6);
    for (size_t i = 0; i < taken_; ++i) arguments_[i] = make_argument(kNumbered[i], kNone, i == 0);
    for (size_t i = pick(6); i > 0 && !is_bad_; --i) {
      add_directive(pick_char("diuoxXdxcCsSsSpPeEfgG%qFn@"), pick(3) ? "" : kModifiers[pick(4)]);
    }
    for (size_t i = 0; i < taken_; ++i) {
      while (arguments_[i].type == kNone && !is_bad_) {
        add_directive(kNumbered[i] == kNumber ? 'd' : 's', kNumbered[i] == kBytes ? "h" : "");
      }
    }
    if (is_bad_) return;
    append(random_text());
    format_ += pieces_.back().second;
  }

  // How the module differs from the model, or the model from the C library where both agree; empty
  // when nothing does.
  std::string check() {
    ArgumentList list;
    for (const Argument &argument : arguments_) list.add(argument);
    // With room to spare, with little, and with too little.
    for (const size_t capacity : {length_ + 60, length_ + pick(30), pick(length_ + 1)}) {
      JXStatus expected_status = JX_OK;
      const std::string expected = output_in(capacity, &expected_status);
      if (is_bad_) expected_status = JX_E_BADFORMAT;
      GuardedBuffer buffer(length_ + 60);
      uint32_t length = 77;
      const JXStatus status = list.call(jx::test::jx(format_), buffer.data(), capacity, &length);
      if (buffer.text() == expected && status == expected_status &&
          length == (is_bad_ ? 0 : length_)) {
        continue;
      }
      return format_ + " in " + std::to_string(capacity) + ": " + buffer.text() + ", expected " +
             expected + "; status " + std::to_string(status) + ", length " + std::to_string(length);
    }
    JXStatus ignored = JX_OK;
    const std::string text = output_in(length_, &ignored);
    const std::string in_c = is_c_ ? list.print(format_, length_) : text;
    return in_c == text ? "" : format_ + " in C: " + in_c.c_str() + ", expected " + text;
  }

 private:
  static constexpr Kind kNumbered[] = {kNumber, kWide, kNumber, kBytes};
  static constexpr const char *kModifiers[] = {"h", "l", "ll", "L"};

  size_t pick(size_t count) { return static_cast<size_t>(choices_.below(count)); }
  char pick_char(std::string_view text) { return text[pick(text.size())]; }

  std::string random_text() {
    std::string text;
    while (pick(3) != 0) text.push_back(pick_char("abc<>$19.*-"));
    return text;
  }

  Argument make_argument(Kind kind, Type type, bool is_small) {
    Argument argument = {.kind = kind, .type = type};
    if (kind != kNumber && pick(8) == 0) return argument;
    argument.integer = static_cast<int32_t>(choices_.word() >> pick(32));
    if (type == kLongLong) argument.integer = static_cast<int64_t>(choices_.word() >> pick(64));
    if (is_small || pick(2) == 0) argument.integer = static_cast<int64_t>(pick(40)) - 20;
    // Integer conversions cut the fraction off; rounding it to any place is no tie.
    argument.floating = static_cast<double>(argument.integer) + (argument.integer < 0 ? -0.6 : 0.6);
    // A number of one type may be any double, of those without a number and missing ones too.
    if ((type == kDouble || type == kLongDouble) && pick(2) == 0) {
      uint64_t bits = choices_.word() << (pick(4) == 0 ? 32 : 0);
      // A conversion to long double makes a NaN a quiet one, which may be a missing value.
      constexpr uint64_t kInfinity = 0x7FF0000000000000, kQuiet = 0x0008000000000000;
      const bool may_be_long = type == kLongDouble || is_numbered_;
      if (may_be_long && (bits << 1 >> 1) > kInfinity) bits |= kQuiet;
      argument.floating = std::bit_cast<double>(bits);
    }
    if (kind == kNumber) return argument;
    argument.text = "abcdefghijklmnopqrstuvwxyz";
    argument.text[pick(12)] = 0;
    argument.wide = jx::test::jx(argument.text);
    return argument;
  }

  // The argument for a directive: the next one, or a numbered one, with the number added to the
  // text.
  Argument take(Kind kind, Type type, bool is_small, std::string *text) {
    if (!is_numbered_) return arguments_.emplace_back(make_argument(kind, type, is_small));
    size_t i = 0;
    do {
      i = pick(6);
    } while (i == taken_ || (i < taken_ && (kNumbered[i] != kind || (is_small && i > 0))));
    if (i < taken_) arguments_[i].type = std::max(arguments_[i].type, type);
    add_number(i + 1, text);
    return arguments_[i];
  }

  void add_number(size_t number, std::string *text) {
    numbered_ = std::min(numbered_, mark_);
    const bool is_bad = pick(60) == 0;
    is_bad_ = is_bad_ || is_bad;
    *text += std::to_string(is_bad ? 11 + pick(90) : number) + "$";
  }

  // "*" or "*N$" with the argument's value, or digits.
  int add_amount(const std::string &digits, std::string *text) {
    if (pick(2) != 0) {
      *text += digits;
      return std::atoi(digits.c_str());
    }
    *text += "*";
    return static_cast<int>(take(kNumber, is_numbered_ ? kLong : kInt, true, text).integer);
  }

  void add_directive(char letter, const std::string &modifier) {
    // The text before the first directive is output even if the directive fails.
    append(random_text());
    mark_ = pieces_.size() - (pieces_.size() == 1 ? 0 : 1);
    format_ += pieces_.back().second;
    Directive d = {.letter = letter, .type = type_of(letter, modifier)};
    const bool has_end = letter != 'S';  // a counted string is as long as its precision
    while (pick(3) == 0) d.flags.push_back(pick_char("-+ #0"));
    std::string amounts = d.flags;
    if (pick(2) == 0)
      d.width = add_amount(std::to_string(1 + pick(pick(16) == 0 ? 400 : 12)), &amounts);
    if (pick(3) == 0) {
      amounts += ".";
      d.precision = add_amount(
          pick(4) ? std::to_string(pick(has_end && pick(16) == 0 ? 400 : 12)) : "", &amounts);
    }
    // The value comes after its width and precision in the list, its number before them.
    const Kind kind = !d.is_any_of("sS") ? kNumber : modifier == "h" ? kBytes : kWide;
    if (d.type != kNone) d.argument = take(kind, d.type, false, &d.text);
    if (d.type == kNone && is_numbered_ && pick(2) == 0) add_number(1 + pick(4), &d.text);
    d.text += amounts + modifier + letter;
    format_ += d.text;
    if (is_bad_) return pieces_.resize(std::min(mark_, numbered_));
    const bool is_percent = letter == '%' && amounts.empty() && modifier.empty();
    if (d.type == kNone && !is_percent) d.letter = 0;
    is_c_ = is_c_ && (is_percent || is_same_in_c(d));
    put(d);
  }

  // ---- The output as pieces, each whole or not at all ----

  void insert(size_t at, const std::string &text) {
    pieces_.emplace_back(at, text);
    length_ += text.size();
  }
  void append(const std::string &text) { insert(length_, text); }

  std::string output_in(size_t capacity, JXStatus *status) const {
    std::string output;
    for (const auto &[at, text] : pieces_) {
      if (text.size() > capacity - output.size()) *status = JX_E_TRUNCATED;
      if (*status == JX_OK) output.insert(at, text);
    }
    return output;
  }

  void put(const Directive &d) {
    if (!d.letter || (d.letter == 'S' && d.precision < 0)) {
      for (const std::string &text : {std::string("<<"), d.text, std::string(">>")}) append(text);
      return;
    }
    const size_t start = length_;
    const bool is_number = d.is_any_of("eEfgGdiuoxXpP");
    // The fraction never changes the sign.
    const bool is_negative = d.argument.floating < 0;
    const bool has_sign = d.is_any_of("dieEfgG") && (is_negative || d.has('+') || d.has(' '));
    if (has_sign) append(is_negative ? "-" : d.has('+') ? "+" : " ");
    if (d.is_any_of("eEfgG")) {
      append(floating_text(d));
    } else if (is_number) {
      put_integer(d);
    } else {
      append(d.letter == '%' ? "%" : text_of(d));
    }
    const auto width = static_cast<size_t>(std::abs(d.width));
    if (width <= length_ - start) return;
    const bool is_left = d.has('-') || d.width < 0;
    const bool has_zeros = d.has('0') && !is_left && is_number;
    const size_t at = is_left ? length_ : has_zeros && has_sign ? start + 1 : start;
    insert(at, std::string(width - (length_ - start), has_zeros ? '0' : ' '));
  }

  void put_integer(const Directive &d) {
    const bool is_wide = d.type == kLongLong || (d.type == kLong && sizeof(long) == 8) ||
                         (d.type == kPointer && sizeof(void *) == 8);
    const int64_t value = d.argument.integer;
    auto magnitude = static_cast<uint64_t>(d.is_any_of("di") && value < 0 ? -value : value);
    if (!is_wide) magnitude &= UINT32_MAX;
    const uint32_t base = d.letter == 'o' ? 8 : d.is_any_of("xXpP") ? 16 : 10;
    const bool has_prefix = d.has('#') && magnitude != 0 && base != 10;
    if (has_prefix) append("0");
    if (has_prefix && base == 16) append(d.is_any_of("XP") ? "X" : "x");
    std::string digits = digits_in_base(magnitude, base, d.is_any_of("XP"));
    if (magnitude == 0 && d.precision == 0) digits.clear();
    append(digits);
    const int present = static_cast<int>(digits.size()) + (has_prefix && base == 8 ? 1 : 0);
    const int zeros = std::max(d.precision - present, 0);
    insert(length_ - digits.size(), std::string(static_cast<size_t>(zeros), '0'));
  }

  Choices &choices_;
  const bool is_numbered_;
  const size_t taken_;
  bool is_c_ = !is_numbered_;  // the C library should print the same
  bool is_bad_ = false;        // the call ends with the last directive
  std::vector<Argument> arguments_;
  std::string format_;
  std::vector<std::pair<size_t, std::string>> pieces_;
  size_t length_ = 0;
  size_t mark_ = 0;             // the pieces that a bad directive leaves
  size_t numbered_ = SIZE_MAX;  // the same for the first directive with a number
};

// The host of the formatter: a locale whose decoder makes a character of each byte.
class FormatHost {
 public:
  FormatHost() {
    host_.locale = &locale_;
    jxextent(&host_);
  }
  FormatHost(const FormatHost &) = delete;
  FormatHost &operator=(const FormatHost &) = delete;
  ~FormatHost() { jxextent(nullptr); }

 private:
  static JXStatus decode_bytes(JXTranscoder *, const void *source, uint32_t bytes,
                               void *destination, uint32_t capacity_bytes, uint32_t *, uint32_t) {
    if (capacity_bytes != bytes * sizeof(JXChar)) return JXHOST_E_NOROOM;
    const JXString text = jx::test::jx(std::string_view(static_cast<const char *>(source), bytes));
    std::memcpy(destination, text.data(), text.size() * sizeof(JXChar));
    return JX_OK;
  }

  JXTranscoder decoder_ = {decode_bytes};
  JXLocale locale_ = {&decoder_, '.'};
  JXHost host_ = {};
};

}  // namespace jx::test
