// The directives of a format, read for the arguments they take.
#include <algorithm>
#include <array>

#include "cli/failure.hpp"
#include "cli/format_arguments.hpp"

namespace cli {
namespace {

constexpr uint64_t kMostNumbered = 10;

enum class Length { kNone, kH, kL, kLl, kLongDouble };

// The format cannot be formatted: the engine says so itself.
struct Refused {};

class FormatReader {
 public:
  explicit FormatReader(std::u32string_view format) : format_(format) {}

  FormatUses read() {
    try {
      size_t percent = format_.find(U'%');
      while (percent != format_.npos && percent + 1 < format_.size()) {
        at_ = percent + 1;
        read_directive();
        percent = format_.find(U'%', at_);
      }
    } catch (const Refused &) {
      return {{}, true};
    }
    return {in_list_order(), false};
  }

 private:
  char32_t peek() const { return at_ < format_.size() ? format_[at_] : U'\0'; }
  bool skip(char32_t character) {
    if (peek() != character) return false;
    ++at_;
    return true;
  }
  static bool is_digit(char32_t c) { return c >= U'0' && c <= U'9'; }
  uint64_t read_digits() {
    uint64_t value = 0;
    for (; is_digit(peek()); ++at_)
      value = std::min<uint64_t>(value * 10 + (peek() - U'0'), 1u << 31);
    return value;
  }
  // The index of a numbered argument whose "$" was just read.
  static int to_index(uint64_t number) {
    if (number < 1 || number > kMostNumbered) throw Refused();
    return static_cast<int>(number) - 1;
  }

  // A "*": the index of its argument.
  int read_star() {
    ArgumentUse use;
    use.kind = ArgumentKind::kLong;
    if (!is_digit(peek()) || peek() == U'0') return take(-1, use);
    const uint64_t number = read_digits();
    if (!skip(U'$')) throw Refused();
    return take(to_index(number), use);
  }

  Length read_length() {
    if (skip(U'h')) return Length::kH;
    if (skip(U'L')) return Length::kLongDouble;
    if (!skip(U'l')) return Length::kNone;
    return skip(U'l') ? Length::kLl : Length::kL;
  }

  void read_directive() {
    int index = -1;
    const size_t start = at_;
    bool has_width = false;
    if (is_digit(peek()) && peek() != U'0') {
      const uint64_t number = read_digits();
      has_width = !skip(U'$');
      if (!has_width) index = to_index(number);
    }
    if (!has_width) {
      while (peek() != U'\0' && std::u32string_view(U"-+ #0").find(peek()) != format_.npos) ++at_;
      if (skip(U'*')) {
        read_star();
      } else {
        read_digits();
      }
    }
    ArgumentUse use;
    if (skip(U'.')) read_precision(use);
    const Length length = read_length();
    const bool is_plain = at_ == start;
    const char32_t conversion = peek();
    if (at_ < format_.size()) ++at_;
    if (conversion == U'%' && is_plain) {
      last_is_numbered_ = false;
      return;
    }
    last_is_numbered_ = index >= 0;
    if (set_kind(use, conversion, length)) take(index, use);
  }

  // Keeps the precision for the strings that are exactly that long.
  void read_precision(ArgumentUse &use) {
    use.is_exact = true;
    if (skip(U'*')) {
      use.exact_argument = read_star();
    } else {
      use.exact_units = static_cast<uint32_t>(read_digits());
    }
  }

  // What the conversion takes; false when the directive is not valid and takes nothing.
  static bool set_kind(ArgumentUse &use, char32_t conversion, Length length) {
    const auto is_one_of = [conversion](std::u32string_view set) {
      return conversion != U'\0' && set.find(conversion) != set.npos;
    };
    using enum ArgumentKind;
    if (is_one_of(U"diuoxX")) {
      constexpr std::array<ArgumentKind, 5> kKinds = {kInt, kNone, kLong, kLongLong, kNone};
      use.kind = kKinds[static_cast<size_t>(length)];
    } else if (is_one_of(U"cC")) {
      use.kind = length == Length::kL || length == Length::kLl ? kNone : kChar;
    } else if (is_one_of(U"sS")) {
      use.kind = length == Length::kNone || length == Length::kH ? kPointer : kNone;
      use.is_text = length == Length::kNone;
      use.is_bytes = length == Length::kH;
    } else if (is_one_of(U"pP")) {
      use.kind = length == Length::kNone ? kPointer : kNone;
    } else if (is_one_of(U"eEfgG")) {
      use.kind = length == Length::kNone         ? kDouble
                 : length == Length::kLongDouble ? kLongDouble
                                                 : kNone;
    }
    use.is_exact = use.is_exact && conversion == U'S';
    return use.kind != kNone;
  }

  // Takes an argument by number, or the next one for -1; its index.
  int take(int index, const ArgumentUse &use) {
    (index >= 0 ? has_numbered_ : has_sequential_) = true;
    if (index < 0) {
      uses_.push_back(use);
      return static_cast<int>(uses_.size()) - 1;
    }
    ArgumentUse &known = numbered_[static_cast<size_t>(index)];
    const bool is_string = use.is_text || use.is_bytes;
    const bool was_string = known.is_text || known.is_bytes;
    const bool is_first = known.kind == ArgumentKind::kNone;
    if (!is_first && (is_string || was_string) &&
        (use.is_text != known.is_text || use.is_bytes != known.is_bytes)) {
      throw UsageError("FORMAT uses argument " + std::to_string(index + 1) +
                       " both as a string and otherwise");
    }
    if (is_first || use.kind > known.kind) known.kind = use.kind;
    known.is_text = use.is_text;
    known.is_bytes = use.is_bytes;
    if (use.is_exact) {
      known.is_exact = true;
      known.exact_units = std::max(known.exact_units, use.exact_units);
      known.exact_argument = std::max(known.exact_argument, use.exact_argument);
    }
    return index;
  }

  std::vector<ArgumentUse> in_list_order() const {
    if (!has_numbered_) return uses_;
    if (has_sequential_ || !last_is_numbered_) {
      throw UsageError("FORMAT mixes numbered directives with others");
    }
    std::vector<ArgumentUse> arguments;
    for (const ArgumentUse &use : numbered_) {
      // The engine takes the arguments up to the first number that is not used.
      if (use.kind == ArgumentKind::kNone) break;
      arguments.push_back(use);
    }
    return arguments;
  }

  std::u32string_view format_;
  size_t at_ = 0;
  std::vector<ArgumentUse> uses_;
  std::array<ArgumentUse, kMostNumbered> numbered_;
  bool has_numbered_ = false;
  bool has_sequential_ = false;
  bool last_is_numbered_ = false;
};

}  // namespace

FormatUses read_format(std::u32string_view format) { return FormatReader(format).read(); }

}  // namespace cli
