// Random formats, valid and not, against a model that knows what it put into them: the model builds
// each directive together with its output and never reads a format.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <deque>
#include <random>

#include "jx/wem.h"
#include "tests/kernel/kernel_support.hpp"

namespace {

using jx_test::digits_in_base;
using jx_test::GuardedBuffer;
using jx_test::scaled;
using Random = std::mt19937_64;

enum Type { kNone = 0, kChar = 1, kInt, kLong, kLongLong = 5, kPointer, kDouble, kLongDouble };

struct Value {
  int64_t integer = 0;       // what an integer or a pointer argument holds, sign-extended
  long double floating = 0;  // what a floating argument holds
  std::string string;        // what a pointer argument points to
  bool is_null = false;
};

// An argument list in memory: behind the registers on x86-64, all of it on i386.
class List {
 public:
  void add(Type type, const Value &value, const void *pointer) {
    switch (type) {
      case kChar:
      case kInt:
        push(static_cast<int>(value.integer));
        break;
      case kLong:
        push(static_cast<long>(value.integer));
        break;
      case kLongLong:
        push(static_cast<long long>(value.integer));
        break;
      case kPointer:
        push(pointer);
        break;
      case kDouble:
        push(static_cast<double>(value.floating));
        break;
      default:
        push(value.floating);
        break;
    }
  }
  JXStatus call(const jx::test::JXString &format, JXChar *buffer, int32_t capacity,
                uint32_t *length) {
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
                          capacity, length, list);
  }

 private:
  template <typename T>
  void push(T value) {
    if (alignof(T) > sizeof(void *)) size_ = (size_ + alignof(T) - 1) / alignof(T) * alignof(T);
    std::memcpy(memory_ + size_, &value, sizeof(value));
    size_ += (sizeof(value) + sizeof(void *) - 1) / sizeof(void *) * sizeof(void *);
  }
  alignas(16) uint8_t memory_[1024] = {};
  size_t size_ = 0;
};

// The output as pieces, whole or not at all.
struct Model {
  size_t capacity;
  std::string text;
  size_t length = 0;
  bool is_refused = false;

  void insert(size_t at, const std::string &piece) {
    is_refused = is_refused || piece.size() > capacity - text.size();
    if (!is_refused) text.insert(at, piece);
    length += piece.size();
  }
  void append(const std::string &piece) { insert(length, piece); }
};

struct Directive {
  std::string text_before;
  std::string text;
  bool left = false, plus = false, space = false, alternate = false, zero = false;
  bool has_width = false, has_precision = false, is_bad = false, is_numbered = false;
  int64_t width = 0;
  int width_argument = -1;  // of a "*": index into the values; -1: the width is in the text
  int64_t precision = 0;
  int precision_argument = -1;
  std::string modifier;
  char letter = 0;
  Type type = kNone;
  int argument = -1;
  bool is_invalid = false;
};

// One random format with its arguments.
class Case {
 public:
  explicit Case(Random *random) : random_(*random), is_numbered_(pick(3) == 0) {
    if (is_numbered_) {
      values_.resize(10);
      types_.resize(10, kNone);
    }
    const size_t count = pick(5);
    for (size_t i = 0; i < count; ++i) add_directive(i + 1 == count);
    tail_ = random_text();
    for (size_t i = 0; i < values_.size(); ++i) fill_value(i);
  }

  void check() {
    Model ample{SIZE_MAX / 2, {}};
    JXStatus expected = play(&ample);
    // With room to spare, with little, and with too little.
    for (const size_t capacity :
         {ample.length + 60, ample.length + pick(30), pick(ample.length + 1)}) {
      Model model{capacity, {}};
      expected = play(&model);
      GuardedBuffer buffer(ample.length + 60);
      uint32_t length = 77;
      List list = arguments();
      const std::string format = format_text();
      const JXStatus status =
          list.call(jx::test::jx(format), buffer.data(), static_cast<int32_t>(capacity), &length);
      bool is_clean = false;
      ASSERT_EQ(buffer.text(&is_clean), model.text) << format << " in " << capacity;
      ASSERT_TRUE(is_clean) << format << " in " << capacity;
      ASSERT_EQ(status, expected) << format << " in " << capacity;
      ASSERT_EQ(length, expected == JX_E_BADFORMAT ? 0 : model.length) << format;
    }
  }

 private:
  size_t pick(size_t count) { return static_cast<size_t>(random_() % count); }
  char pick_char(std::string_view text) { return text[pick(text.size())]; }

  std::string random_text() {
    std::string text;
    while (pick(3) != 0) text.push_back(pick_char("abc<>$19.*-"));
    return text;
  }

  // The value an argument gets: a sequential one, or the numbered one with the highest type.
  int need(Type type, int number) {
    if (number < 0) {
      values_.push_back({});
      types_.push_back(type);
      return static_cast<int>(values_.size()) - 1;
    }
    types_[static_cast<size_t>(number)] = std::max(types_[static_cast<size_t>(number)], type);
    return number;
  }

  // "*" or "*N$", or digits.
  void add_amount(Directive *d, int64_t *amount, int *argument, const std::string &number) {
    if (pick(2) != 0) {
      *amount = std::atoi(number.c_str());
      d->text += number;
    } else if (pick(40) == 0) {
      d->text += pick(2) ? "*11$" : "*7d";
      d->is_bad = true;
    } else if (is_numbered_) {
      const int index = static_cast<int>(pick(4));
      d->text += "*" + std::to_string(index + 1) + "$";
      *argument = need(kLong, index);
      d->is_numbered = true;
    } else {
      d->text += "*";
      *argument = need(kInt, -1);
    }
  }

  void add_front(Directive *d) {
    if (is_numbered_ && pick(8) != 0) {
      const int index = static_cast<int>(pick(60) == 0 ? 10 + pick(90) : pick(4));
      d->text += std::to_string(index + 1) + "$";
      d->is_bad = index > 9;
      d->argument = index;
      d->is_numbered = !d->is_bad;
    }
    while (pick(3) == 0) d->text.push_back(pick_char("-+ #0"));
    d->left = d->text.find('-') != std::string::npos;
    d->plus = d->text.find('+') != std::string::npos;
    d->space = d->text.find(' ') != std::string::npos && !d->plus;
    d->alternate = d->text.find('#') != std::string::npos;
    d->zero = d->text.find_last_of("$") == std::string::npos
                  ? d->text.find('0') != std::string::npos
                  : d->text.find('0', d->text.find('$')) != std::string::npos;
    if (pick(2) == 0) {
      d->has_width = true;
      add_amount(d, &d->width, &d->width_argument, std::to_string(1 + pick(12)));
    }
    if (!d->is_bad && pick(3) == 0) {
      d->has_precision = true;
      d->text += ".";
      add_amount(d, &d->precision, &d->precision_argument, pick(4) ? std::to_string(pick(12)) : "");
    }
  }

  Type type_of(const Directive &d) {
    const std::string &m = d.modifier;
    if (std::strchr("diuoxX", d.letter)) {
      return m.empty() ? kInt : m == "l" ? kLong : m == "ll" ? kLongLong : kNone;
    }
    if (std::strchr("cC", d.letter)) return m.empty() || m == "h" || m == "L" ? kChar : kNone;
    if (std::strchr("sS", d.letter)) return m.empty() || m == "h" ? kPointer : kNone;
    if (std::strchr("pP", d.letter)) return m.empty() ? kPointer : kNone;
    if (std::strchr("eEfgG", d.letter)) return m.empty() ? kDouble : m == "L" ? kLongDouble : kNone;
    return kNone;
  }

  void add_directive(bool is_last) {
    const std::vector<Type> types_before = types_;
    Directive d;
    d.text_before = random_text();
    d.text = "%";
    add_front(&d);
    if (d.is_bad) {
      directives_.push_back(d);
      return;
    }
    if (pick(3) == 0) d.modifier = std::vector<std::string>{"h", "l", "ll", "L"}[pick(4)];
    d.letter = pick_char("diuoxXdxcCsSpPeEfgG%qFn@");
    d.text += d.modifier;
    const bool is_cut = is_last && pick(12) == 0 && d.text.size() > 1;
    if (is_cut) {
      is_cut_ = true;
      d.letter = 0;
    } else {
      d.text.push_back(d.letter);
    }
    d.type = d.letter ? type_of(d) : kNone;
    const bool is_percent = d.letter == '%' &&
                            d.text.find_first_not_of("1234567890$", 1) == d.text.size() - 1 &&
                            (d.text.size() == 2 || d.text[d.text.size() - 2] == '$');
    d.is_invalid = d.type == kNone && !is_percent;
    // Only numbered values belong into a numbered format.
    if (is_numbered_ && d.argument < 0 && d.type != kNone) {
      types_ = types_before;
      return add_directive(is_last);
    }
    if (d.type != kNone) d.argument = need(d.type, d.argument);
    directives_.push_back(d);
  }

  void fill_value(size_t index) {
    Value &value = values_[index];
    value.integer = static_cast<int32_t>(random_() >> (random_() % 32));
    value.floating = static_cast<double>(static_cast<int32_t>(random_())) / 1024.0;
    if (pick(2) == 0 || is_amount(index)) {
      value.integer = static_cast<int64_t>(pick(40)) - 20;
      value.floating = static_cast<double>(value.integer) * 0.75;
    }
    value.is_null = pick(8) == 0;
    value.string = std::string("abcdefghijkl").substr(pick(12));
  }

  bool is_amount(size_t index) const {
    return std::any_of(directives_.begin(), directives_.end(), [&](const Directive &d) {
      return d.width_argument == static_cast<int>(index) ||
             d.precision_argument == static_cast<int>(index);
    });
  }

  std::string format_text() const {
    std::string text;
    for (const Directive &d : directives_) text += d.text_before + d.text;
    return is_cut_ ? text : text + tail_;
  }

  // The type an argument is taken by: numbers after one that nobody uses are not taken at all.
  Type taken_type(int index) const {
    if (!is_numbered_) return types_[static_cast<size_t>(index)];
    for (int i = 0; i < index; ++i) {
      if (types_[static_cast<size_t>(i)] == kNone) return kNone;
    }
    return types_[static_cast<size_t>(index)];
  }

  const void *pointer_of(size_t index) {
    // Integer conversions of a pointer show its bits, so those must be known: no real string then.
    const Value &value = values_[index];
    if (value.is_null) return nullptr;
    if (is_shown_as_number(index)) return reinterpret_cast<const void *>(value.integer & 0xF0);
    strings_.push_back(jx::test::jx(value.string));
    strings_.back().push_back(0);
    bytes_.push_back(value.string);
    const bool is_bytes = std::any_of(directives_.begin(), directives_.end(), [&](const auto &d) {
      return d.argument == static_cast<int>(index) && d.modifier == "h";
    });
    return is_bytes ? static_cast<const void *>(bytes_.back().c_str()) : strings_.back().data();
  }
  bool is_shown_as_number(size_t index) const {
    return std::any_of(directives_.begin(), directives_.end(),
                       [&](const Directive &d) {
                         const int i = static_cast<int>(index);
                         return d.argument == i &&
                                (d.type != kPointer || std::strchr("pP", d.letter));
                       }) ||
           is_amount(index);
  }

  List arguments() {
    List list;
    for (size_t i = 0; i < values_.size(); ++i) {
      const Type type = taken_type(static_cast<int>(i));
      if (type != kNone) list.add(type, values_[i], type == kPointer ? pointer_of(i) : nullptr);
    }
    return list;
  }

  int64_t integer_of(int index, bool is_wide) {
    const Value &value = values_[static_cast<size_t>(index)];
    int64_t integer = value.integer;
    switch (taken_type(index)) {
      case kNone:
        return 0;
      case kDouble:
      case kLongDouble:
        integer = static_cast<int64_t>(value.floating);
        break;
      case kPointer:
        integer = value.is_null ? 0 : value.integer & 0xF0;
        break;
      default:
        break;
    }
    return is_wide ? integer : static_cast<int32_t>(integer);
  }

  std::string floating_text(const Directive &d, int64_t precision, bool *is_negative) {
    const Type type = taken_type(d.argument);
    const Value &value = values_[static_cast<size_t>(d.argument)];
    double number = static_cast<double>(value.floating);
    if (type < kDouble) number = static_cast<double>(integer_of(d.argument, true));
    *is_negative = number < 0;
    JXChar text[400];
    uint32_t count = 0;
    const char form = static_cast<char>(d.letter | 0x20);
    const JXStatus status = skzfDouble(number, static_cast<uint32_t>(form), '.', d.letter != form,
                                       precision < 0 ? 6 : static_cast<int32_t>(precision),
                                       d.alternate, text, 400, &count);
    EXPECT_EQ(status, JX_OK);
    return jx::test::narrow(text, count);
  }

  void put_integer(const Directive &d, int64_t precision, size_t *sign, Model *model) {
    const bool is_wide = d.type == kLongLong || (d.type == kLong && sizeof(long) == 8) ||
                         (d.type == kPointer && sizeof(void *) == 8);
    const bool is_signed = d.letter == 'd' || d.letter == 'i';
    int64_t number = integer_of(d.argument, is_wide);
    uint64_t magnitude = static_cast<uint64_t>(number);
    if (is_signed) {
      if (number < 0) magnitude = 0 - magnitude;
      put_sign(d, number < 0, sign, model);
    } else if (!is_wide) {
      magnitude = static_cast<uint32_t>(magnitude);
    }
    const unsigned base = d.letter == 'o' ? 8 : std::strchr("xXpP", d.letter) ? 16 : 10;
    const bool uppercase = d.letter == 'X' || d.letter == 'P';
    const bool has_prefix = d.alternate && magnitude != 0 && base != 10;
    if (has_prefix) model->append("0");
    if (has_prefix && base == 16) model->append(uppercase ? "X" : "x");
    const size_t start = model->length;
    if (magnitude != 0 || precision != 0) model->append(digits_in_base(magnitude, base, uppercase));
    const int64_t present =
        static_cast<int64_t>(model->length - start) + (has_prefix && base == 8 ? 1 : 0);
    if (precision > present) {
      model->insert(start, std::string(static_cast<size_t>(precision - present), '0'));
    }
  }

  void put_sign(const Directive &d, bool is_negative, size_t *sign, Model *model) {
    if (!is_negative && !d.plus && !d.space) return;
    model->append(is_negative ? "-" : d.plus ? "+" : " ");
    *sign = 1;
  }

  std::string string_text(const Directive &d, int64_t precision) {
    const Value &value = values_[static_cast<size_t>(d.argument)];
    if (taken_type(d.argument) != kPointer || value.is_null) return "";
    return precision < 0 ? value.string : value.string.substr(0, static_cast<size_t>(precision));
  }

  // Strings that the engine cannot be given: ones read as numbers, in two widths, or counted beyond
  // their end.
  bool is_unfit(const Directive &d, int64_t precision) {
    if (d.type != kPointer || std::strchr("pP", d.letter) || d.argument < 0) return false;
    const auto index = static_cast<size_t>(d.argument);
    if (taken_type(d.argument) != kPointer || values_[index].is_null) return false;
    if (is_shown_as_number(index)) return true;
    for (const Directive &other : directives_) {
      if (other.argument == d.argument && other.modifier != d.modifier) return true;
    }
    return d.letter == 'S' && precision > static_cast<int64_t>(values_[index].string.size());
  }

 public:
  bool is_unfit() {
    return std::any_of(directives_.begin(), directives_.end(), [&](const Directive &d) {
      return !d.is_bad && is_unfit(d, precision_of(d));
    });
  }

 private:
  int64_t precision_of(const Directive &d) {
    if (!d.has_precision) return -1;
    if (d.precision_argument < 0) return d.precision;
    return std::max<int64_t>(integer_of(d.precision_argument, false), -1);
  }

  void put(const Directive &d, Model *model) {
    int64_t precision = precision_of(d);
    int64_t width = d.width_argument < 0 ? d.width : integer_of(d.width_argument, false);
    const bool left = d.left || width < 0;
    width = std::abs(width);
    if (d.is_invalid || (d.letter == 'S' && precision < 0)) {
      for (const std::string &piece : {std::string("<<"), d.text, std::string(">>")}) {
        model->append(piece);
      }
      return;
    }
    const size_t start = model->length;
    size_t sign = 0;
    const bool is_floating = d.type == kDouble || d.type == kLongDouble;
    const bool is_integer = std::strchr("diuoxXpP", d.letter) != nullptr;
    if (is_floating) {
      bool is_negative = false;
      const std::string text = floating_text(d, precision, &is_negative);
      put_sign(d, is_negative, &sign, model);
      model->append(text);
    } else if (is_integer) {
      put_integer(d, precision < 0 ? 1 : precision, &sign, model);
    } else if (d.type == kChar) {
      model->append(
          std::string(1, jx_test::as_byte(static_cast<JXChar>(integer_of(d.argument, false)))));
    } else {
      model->append(d.letter == '%' ? "%" : string_text(d, precision));
    }
    const int64_t padding = width - static_cast<int64_t>(model->length - start);
    if (padding <= 0) return;
    const bool zeros = d.zero && !left && !d.left && (is_floating || is_integer);
    const size_t at = left ? model->length : zeros ? start + sign : start;
    model->insert(at, std::string(static_cast<size_t>(padding), zeros ? '0' : ' '));
  }

  // Plays the format: a bad directive ends it, in a numbered format where its first number stands.
  JXStatus play(Model *model) {
    const auto bad = std::find_if(directives_.begin(), directives_.end(),
                                  [](const Directive &d) { return d.is_bad; });
    const auto numbered = std::find_if(directives_.begin(), directives_.end(),
                                       [](const Directive &d) { return d.is_numbered; });
    const auto end = bad == directives_.end() ? bad : std::min(bad, numbered);
    for (auto d = directives_.begin(); d != directives_.end(); ++d) {
      if (d != end || d == directives_.begin()) model->append(d->text_before);
      if (d == end) return JX_E_BADFORMAT;
      put(*d, model);
    }
    if (!is_cut_) model->append(tail_);
    return model->is_refused ? JX_E_TRUNCATED : JX_OK;
  }

  Random &random_;
  const bool is_numbered_;
  bool is_cut_ = false;
  std::vector<Directive> directives_;
  std::string tail_;
  std::vector<Value> values_;
  std::vector<Type> types_;
  std::deque<jx::test::JXString> strings_;
  std::deque<std::string> bytes_;
};

JXStatus decode_bytes(JXTranscoder *, const void *source, uint32_t bytes, void *destination,
                      uint32_t capacity_bytes, uint32_t *, uint32_t) {
  EXPECT_EQ(capacity_bytes, bytes * 4);
  const jx::test::JXString text =
      jx::test::jx(std::string_view(static_cast<const char *>(source), bytes));
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
  int64_t checked = 0;
  for (int64_t i = scaled(260000); i > 0; --i) {
    Case random_case(&random);
    if (random_case.is_unfit()) continue;
    ++checked;
    ASSERT_NO_FATAL_FAILURE(random_case.check()) << "case " << i;
  }
  RecordProperty("checked", static_cast<int>(checked));
  EXPECT_GE(checked * 10, scaled(260000) * 8);
  jxextent(nullptr);
}

}  // namespace
