// Random formats, valid and not, against a model that knows what it put into them: the model builds
// each directive together with its output and never reads a format.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <random>

#include "jx/wem.h"
#include "tests/kernel/exact_text.hpp"
#include "tests/kernel/kernel_support.hpp"

namespace {

using jx::test::JXString;
using jx_test::digits_in_base;
using jx_test::GuardedBuffer;
using jx_test::scaled;
using Random = std::mt19937_64;

enum Type { kNone = 0, kChar = 1, kInt, kLong, kLongLong = 5, kPointer, kDouble, kLongDouble };

enum Kind { kNumber, kWide, kBytes };

struct Conversion {
  std::string_view letters;  // none: the format ends before it
  const char *modifier;
  Type type = kNone;  // none: the directive is invalid, or a percent sign
  Kind kind = kNumber;
};

// The first three are one of each kind.
constexpr Conversion kConversions[] = {
    {"diuoxX", "", kInt},
    {"sS", "", kPointer, kWide},
    {"sS", "h", kPointer, kBytes},
    {"diuoxX", "l", kLong},
    {"diuoxX", "ll", kLongLong},
    {"pP", "", kPointer},
    {"cC", "", kChar},
    {"cC", "h", kChar},
    {"cC", "L", kChar},
    {"eEfgG", "", kDouble},
    {"eEfgG", "L", kLongDouble},
    {"diuoxX", "", kInt},
    {"%", ""},
    {"qFn@%", ""},
    {"diuoxXpPeEfgG%q", "h"},
    {"cCsSpPeEfgG%n", "l"},
    {"cCsSpPeEfgG%@", "ll"},
    {"diuoxXsSpP%F", "L"},
};

// A number is the same in every type but for the fraction of the floating ones.
struct Argument {
  Kind kind = kNumber;
  Type type = kNone;  // the highest that a directive needs
  int64_t integer = 0;
  double floating = 0;
  std::string text = {};  // what a pointer points to: ends at a zero, but more can be read
  JXString wide = {};     // the same in characters
};

// An argument list in memory: behind the registers on x86-64, all of it on i386.
class List {
 public:
  void add(const Argument &argument) {
    const auto number = reinterpret_cast<void *>(static_cast<intptr_t>(argument.integer));
    const void *text = argument.text.data();
    if (argument.kind == kWide) text = argument.wide.data();
    if (argument.text.empty()) text = nullptr;
    if (argument.type == kChar || argument.type == kInt) push(static_cast<int>(argument.integer));
    if (argument.type == kLong) push(static_cast<long>(argument.integer));
    if (argument.type == kLongLong) push(argument.integer);
    if (argument.type == kPointer) push(argument.kind == kNumber ? number : text);
    if (argument.type == kDouble) push(argument.floating);
    if (argument.type == kLongDouble) push(static_cast<long double>(argument.floating));
  }
  JXStatus call(const JXString &format, JXChar *buffer, size_t capacity, uint32_t *length) {
#ifdef __x86_64__
    const struct {
      uint32_t used_integers = 48, used_floats = 304;  // bytes: every register is used up
      const void *memory, *registers;
    } state = {.memory = memory_, .registers = nullptr};
#else
    const void *state = memory_;
#endif
    va_list list;
    static_assert(sizeof(list) == sizeof(state));
    std::memcpy(&list, &state, sizeof(list));
    return jxzFormatBuffV(nullptr, format.data(), static_cast<int32_t>(format.size()), buffer,
                          static_cast<int32_t>(capacity), length, list);
  }

 private:
  template <typename T>
  void push(T value) {
    constexpr size_t kAlignment = std::max(alignof(T), sizeof(void *));
    size_ = (size_ + kAlignment - 1) / kAlignment * kAlignment;
    std::memcpy(memory_ + size_, &value, sizeof(value));
    size_ += sizeof(value);
  }
  alignas(16) uint8_t memory_[1024] = {};
  size_t size_ = 0;
};

struct Directive {
  std::string text = "%";
  std::string flags = {};
  int width = 0;
  int precision = -1;
  char letter = 0;  // 0: invalid
  Type type = kNone;
  Argument argument = {};

  bool has(char flag) const { return flags.find(flag) != std::string::npos; }
  bool is_any_of(const char *letters) const { return letter && std::strchr(letters, letter); }
};

// One random format with its arguments and the pieces of its output.
class Case {
 public:
  explicit Case(Random *random)
      : random_(*random), is_numbered_(pick(3) == 0), taken_(is_numbered_ ? pick(5) : 0) {
    // Numbers after one that nobody uses, here taken_, are not taken at all.
    if (is_numbered_) arguments_.resize(6);
    for (size_t i = 0; i < taken_; ++i) arguments_[i] = make_argument(kNumbered[i], kNone, i == 0);
    for (size_t i = pick(6); i > 0 && !is_bad_; --i) {
      add_directive(kConversions[pick(std::size(kConversions))]);
    }
    for (size_t i = 0; i < taken_; ++i) {
      while (arguments_[i].type == kNone && !is_bad_) add_directive(kConversions[kNumbered[i]]);
    }
    if (is_bad_) return;
    if (pick(12) == 0) {
      add_directive({"", pick(2) ? "l" : ""});
    } else {
      append(random_text());
      format_ += pieces_.back().second;
    }
  }

  void check() {
    List list;
    for (const Argument &argument : arguments_) list.add(argument);
    // With room to spare, with little, and with too little.
    for (const size_t capacity : {length_ + 60, length_ + pick(30), pick(length_ + 1)}) {
      JXStatus expected_status = JX_OK;
      const std::string expected = output_in(capacity, &expected_status);
      GuardedBuffer buffer(length_ + 60);
      uint32_t length = 77;
      const JXStatus status = list.call(jx::test::jx(format_), buffer.data(), capacity, &length);
      ASSERT_EQ(buffer.text(), expected) << format_ << " in " << capacity;
      ASSERT_EQ(status, is_bad_ ? JX_E_BADFORMAT : expected_status) << format_;
      ASSERT_EQ(length, is_bad_ ? 0 : length_) << format_ << " in " << capacity;
    }
  }

 private:
  static constexpr Kind kNumbered[] = {kNumber, kWide, kNumber, kBytes};

  size_t pick(size_t count) { return static_cast<size_t>(random_() % count); }
  char pick_char(std::string_view text) { return text[pick(text.size())]; }

  std::string random_text() {
    std::string text;
    while (pick(3) != 0) text.push_back(pick_char("abc<>$19.*-"));
    return text;
  }

  Argument make_argument(Kind kind, Type type, bool is_small) {
    Argument argument = {.kind = kind, .type = type};
    argument.integer = static_cast<int32_t>(random_() >> pick(32));
    if (type == kLongLong) argument.integer = static_cast<int64_t>(random_() >> pick(64));
    if (is_small || pick(2) == 0) argument.integer = static_cast<int64_t>(pick(40)) - 20;
    // Integer conversions cut the fraction off; no place rounds it from the middle.
    argument.floating = static_cast<double>(argument.integer) + (argument.integer < 0 ? -0.6 : 0.6);
    if (kind == kNumber || pick(8) == 0) return argument;
    argument.text = "abcdefghijklmnopqrstuvwxyz";
    argument.text[pick(12)] = 0;
    argument.wide = jx::test::jx(argument.text);
    return argument;
  }

  // The argument for a directive: the next one, or one whose number goes into the text.
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
    if (pick(40) != 0) {
      return static_cast<int>(take(kNumber, is_numbered_ ? kLong : kInt, true, text).integer);
    }
    *text += "7d";
    is_bad_ = true;
    return 0;
  }

  void add_directive(const Conversion &conversion) {
    // The text before the first directive is there whatever happens to the directive.
    append(random_text());
    mark_ = pieces_.size() - (pieces_.size() == 1 ? 0 : 1);
    format_ += pieces_.back().second;
    Directive d = {.type = conversion.type};
    while (pick(3) == 0) d.flags.push_back(pick_char("-+ #0"));
    std::string amounts = d.flags;
    if (pick(2) == 0) d.width = add_amount(std::to_string(1 + pick(12)), &amounts);
    if (pick(3) == 0) {
      amounts += ".";
      d.precision = add_amount(pick(4) ? std::to_string(pick(12)) : "", &amounts);
    }
    // The value stands behind its width and precision in the list, its number before them.
    if (d.type != kNone) d.argument = take(conversion.kind, d.type, false, &d.text);
    if (d.type == kNone && is_numbered_ && pick(2) == 0) add_number(1 + pick(4), &d.text);
    d.text += amounts + conversion.modifier;
    if (d.text == "%" && conversion.letters.empty()) d.text += "-";
    if (!conversion.letters.empty()) d.letter = pick_char(conversion.letters);
    if (d.letter) d.text.push_back(d.letter);
    format_ += d.text;
    if (is_bad_) return pieces_.resize(std::min(mark_, numbered_));
    const bool is_percent = d.letter == '%' && (amounts + conversion.modifier).empty();
    if (d.type == kNone && !is_percent) d.letter = 0;
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
    const double value = d.is_any_of("di")      ? static_cast<double>(d.argument.integer)
                         : d.is_any_of("eEfgG") ? d.argument.floating
                                                : 0;
    const bool has_sign = d.is_any_of("dieEfgG") && (value < 0 || d.has('+') || d.has(' '));
    if (has_sign) append(value < 0 ? "-" : d.has('+') ? "+" : " ");
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

  static std::string text_of(const Directive &d) {
    if (d.type == kChar) return {jx_test::as_byte(static_cast<JXChar>(d.argument.integer))};
    const std::string &text = d.argument.text;
    const size_t most = d.precision < 0 ? SIZE_MAX : static_cast<size_t>(d.precision);
    return d.letter == 'S' ? text.substr(0, most) : std::string(text.c_str()).substr(0, most);
  }

  static std::string floating_text(const Directive &d) {
    const char conversion = static_cast<char>(d.letter | 0x20);
    std::string text = jx_test::exact_text(std::fabs(d.argument.floating), conversion,
                                           d.precision < 0 ? 6 : d.precision, d.has('#'));
    if (d.letter != conversion) std::replace(text.begin(), text.end(), 'e', 'E');
    return text;
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

  Random &random_;
  const bool is_numbered_;
  const size_t taken_;
  bool is_bad_ = false;  // the call ends with the last directive
  std::vector<Argument> arguments_;
  std::string format_;
  std::vector<std::pair<size_t, std::string>> pieces_;
  size_t length_ = 0;
  size_t mark_ = 0;             // the pieces that a bad directive leaves
  size_t numbered_ = SIZE_MAX;  // the same for the first directive with a number
};

JXStatus decode_bytes(JXTranscoder *, const void *source, uint32_t bytes, void *destination,
                      uint32_t capacity_bytes, uint32_t *, uint32_t) {
  EXPECT_EQ(capacity_bytes, bytes * 4);
  const JXString text = jx::test::jx(std::string_view(static_cast<const char *>(source), bytes));
  std::memcpy(destination, text.data(), text.size() * sizeof(JXChar));
  return JX_OK;
}

TEST(Format, RandomAgainstTheModel) {
  JXTranscoder decoder = {decode_bytes};
  JXLocale locale = {&decoder, '.'};
  JXHost host = {};
  host.locale = &locale;
  jxextent(&host);
  Random random(20260728);
  for (int64_t i = scaled(260000); i > 0; --i) {
    ASSERT_NO_FATAL_FAILURE(Case(&random).check()) << "case " << i;
  }
  jxextent(nullptr);
}

}  // namespace
