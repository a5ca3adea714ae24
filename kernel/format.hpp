// The stages of jxzFormatBuff: parse a directive into a record, fetch its arguments, render its
// field, append it to one sink.
#pragma once

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdint>
#include <utility>

#include "jx/runtime.h"
#include "kernel/copy.hpp"
#include "kernel/digits.hpp"

// Hidden, so that a call within the module needs no table of addresses.
namespace [[gnu::visibility("hidden")]] jx {

inline constexpr int32_t kArgumentCount = 10;  // numbered arguments, "1$" to "10$"
inline constexpr int32_t kNoPrecision = -1;

// The type by which an argument is taken from the list. When several directives name one argument,
// the highest of their types counts.
enum class ArgumentType : uint8_t {
  kNone = 0,
  kChar = 1,
  kInt = 2,
  kLong = 3,
  kLongLong = 5,
  kPointer = 6,
  kDouble = 7,
  kLongDouble = 8,
  kRefused = 0xFF,  // the conversion does not take the length modifier
};

enum class FieldKind : uint8_t {
  kSigned,
  kUnsigned,
  kCharacter,
  kString,         // ends at a zero or after precision units
  kCountedString,  // exactly precision units
  kFloating,
  kPercent,
};

enum class LengthModifier : uint8_t { kNone, kShort, kLong, kLongLong, kLongDouble };

// The argument type of a conversion for each LengthModifier.
using ArgumentTypes = std::array<ArgumentType, 5>;

// A conversion character and how its argument is taken and rendered.
struct Conversion {
  JXChar letter;
  FieldKind kind;
  uint8_t base;     // of an integer field
  bool has_prefix;  // "#" puts the prefix of the base before the digits
  bool uppercase;   // of digits, prefix and exponent
  JXChar form;      // of a floating field: 'e', 'f' or 'g'
  ArgumentTypes types;
};

// A width or a precision.
struct Amount {
  enum class Origin : uint8_t { kAbsent, kText, kNextArgument, kNumberedArgument };
  int32_t value = 0;  // kText: the amount; kNumberedArgument: the index of the argument
  Origin origin = Origin::kAbsent;
};

// Flags of a directive.
inline constexpr uint8_t kLeft = 1;
inline constexpr uint8_t kPlus = 2;
inline constexpr uint8_t kSpace = 4;
inline constexpr uint8_t kAlternate = 8;
inline constexpr uint8_t kZero = 16;

// A parsed directive. Offsets are in characters from the start of the format.
struct Directive {
  int32_t start = 0;      // of its "%"
  int32_t end = 0;        // just after its conversion character, or the end of the format
  int32_t argument = -1;  // index of the numbered argument; -1: the next argument of the list
  Amount width;
  Amount precision;
  uint8_t flags = 0;  // kLeft clears kZero, kPlus clears kSpace
  LengthModifier length = LengthModifier::kNone;
  ArgumentType type = ArgumentType::kNone;  // of the value
  const Conversion *conversion = nullptr;   // null: the directive is not valid

  bool has(uint8_t flag) const { return (flags & flag) != 0; }
  bool names_arguments() const {
    return argument >= 0 || width.origin == Amount::Origin::kNumberedArgument ||
           precision.origin == Amount::Origin::kNumberedArgument;
  }
};

// Parses the directive whose "%" is at start. JX_E_BADFORMAT for an argument number outside 1 to 10
// or a "*" with digits but no "$"; any other fault leaves conversion null.
JXStatus parse_directive(const JXChar *format, int32_t format_chars, int32_t start,
                         Directive *directive);

// An argument and the type by which it was taken.
struct Value {
  ArgumentType type;
  union {
    int64_t integer;       // kChar to kPointer, sign-extended
    double real;           // kDouble
    long double extended;  // kLongDouble
  };
};

// A floating value truncated toward zero; the lowest integer when out of range.
int64_t truncated64_of(const Value &value);
int32_t truncated32_of(const Value &value);

inline bool is_floating(ArgumentType type) { return type >= ArgumentType::kDouble; }
// A value as an integer or a double, converted from any type.
inline int64_t integer64_of(const Value &value) {
  return is_floating(value.type) ? truncated64_of(value) : value.integer;
}
inline int32_t integer32_of(const Value &value) {
  return is_floating(value.type) ? truncated32_of(value) : static_cast<int32_t>(value.integer);
}
// Inline: a double that a function of the 32-bit ABI returns goes through a register that changes
// some values that are not a number, and could make a missing one of them.
[[gnu::always_inline]] inline double real_of(const Value &value) {
  if (value.type == ArgumentType::kDouble) return value.real;
  if (value.type == ArgumentType::kLongDouble) return static_cast<double>(value.extended);
  return static_cast<double>(value.integer);
}
// The address of a string; null when the argument was taken as something else.
const void *address_of(const Value &value);

// The arguments of one call. The creator starts and ends `list`.
class Arguments {
 public:
  Arguments() = default;
  Arguments(const Arguments &) = delete;
  Arguments &operator=(const Arguments &) = delete;

  // Records the types of the numbered arguments that a directive needs.
  void note(const Directive &directive);
  // Takes the numbered arguments from the list, up to the first that no directive needs.
  void take_numbered();
  bool has_numbered() const { return has_numbered_; }

  // The value of a directive; a numbered argument that was not taken is zero.
  void get_value(const Directive &directive, Value *value) {
    if (directive.argument < 0 && directive.type == ArgumentType::kInt) {
      value->type = ArgumentType::kInt;
      value->integer = va_arg(list, int);
      return;
    }
    fetch_value(directive, value);
  }
  // A width or precision; 0 when absent.
  int32_t amount_of(const Amount &amount) {
    return amount.origin <= Amount::Origin::kText ? amount.value : fetch_amount(amount);
  }

  va_list list;

 private:
  void fetch_value(const Directive &directive, Value *value);
  int32_t fetch_amount(const Amount &amount);
  void note_type(int32_t argument, ArgumentType type);
  void take(ArgumentType type, Value *value);

  bool has_numbered_ = false;
  Value numbered_[kArgumentCount];  // valid when has_numbered_ is set
};

inline JXChar decimal_point_of(const JXLocale *locale) {
  return locale ? locale->decimal_point : JXChar{'.'};
}

// The output buffer. A piece is appended whole or not at all, and counted either way. After the
// first piece that does not fit, nothing more is written.
class Sink {
 public:
  // The output up to `end` is there already.
  Sink(JXChar *buffer, JXChar *end, JXChar *limit) : buffer_(buffer), end_(end), limit_(limit) {}

  // The end of the room, which is that of the address space at most. A null buffer has none.
  static JXChar *limit_of(JXChar *buffer, int32_t capacity_chars) {
    if (!buffer) return nullptr;
    const size_t most = ~reinterpret_cast<uintptr_t>(buffer) / sizeof(JXChar);
    return buffer + std::min(static_cast<size_t>(std::max(capacity_chars, 0)), most);
  }

  // Characters of all pieces, written or not.
  uint64_t chars() const { return static_cast<uint64_t>(end_ - buffer_) + refused_chars_; }
  uint64_t refused_chars() const { return refused_chars_; }  // of those that were not
  bool is_truncated() const { return refused_chars_ != 0; }

  // Appends a piece for the caller to fill in. Null when it does not fit: the piece is refused.
  JXChar *append(uint64_t chars) {
    JXChar *piece = append_if_fits(chars);
    if (!piece) refuse(chars);
    return piece;
  }
  // The same without the refusal: the caller may try smaller pieces.
  JXChar *append_if_fits(uint64_t chars) {
    if (chars > static_cast<size_t>(limit_ - end_)) return nullptr;
    return std::exchange(end_, end_ + chars);
  }

  // For a routine that writes at end() itself, up to limit(): moves the end after what it wrote,
  // and counts a piece that did not fit.
  JXChar *end() const { return end_; }
  JXChar *limit() const { return limit_; }
  void move_end(JXChar *end, uint64_t refused_chars) {
    end_ = end;
    if (refused_chars != 0) refuse(refused_chars);
  }
  // For a routine that takes a buffer: it writes at end(), up to room_chars() characters, and
  // append_written() then appends the piece, or refuses it by the routine's status.
  int32_t room_chars() const { return static_cast<int32_t>(limit_ - end_); }
  void append_written(JXStatus status, uint32_t chars) {
    if (status != JX_OK || !append_if_fits(chars)) refuse(chars);
  }

  void append_text(const JXChar *text, uint32_t chars) {
    if (JXChar *piece = append(chars)) copy_chars(text, chars, piece);
  }
  void append_character(JXChar character) {
    if (JXChar *piece = append(1)) *piece = character;
  }
  // Appends a character `chars` times, as one piece.
  void append_fill(JXChar character, uint64_t chars) {
    insert_fill(this->chars(), character, chars);
  }
  // The same at `offset` in the output; what follows moves up.
  void insert_fill(uint64_t offset, JXChar character, uint64_t chars);

 private:
  // Counts a piece that does not fit, and leaves no room for others.
  void refuse(uint64_t chars) {
    refused_chars_ += chars;
    limit_ = end_;
  }

  JXChar *buffer_;
  JXChar *end_;                 // of the output, where the next piece goes
  JXChar *limit_;               // of the room
  uint64_t refused_chars_ = 0;  // of the pieces that did not fit; these are never empty
};

// Appends the field of one directive, or "<<", its text and ">>" if it is not valid.
void put_directive(const JXChar *format, const Directive &directive, const JXLocale *locale,
                   Arguments *arguments, Sink *sink);

}  // namespace jx
