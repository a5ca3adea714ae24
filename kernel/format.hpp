// The formatting engine's stages: a directive is parsed into a record, its arguments are fetched,
// its field is rendered, and everything goes out through one sink.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <utility>

#include "jx/runtime.h"
#include "kernel/copy.hpp"
#include "kernel/digits.hpp"

namespace jx {

inline constexpr int32_t kArgumentCount = 10;  // arguments that can be named by number

// How an argument is taken from the list. When several directives name one argument, the highest
// of their types is the one it is taken by.
enum class ArgumentType : uint8_t {
  kNone = 0,
  kChar = 1,
  kInt = 2,
  kLong = 3,
  kLongLong = 5,
  kPointer = 6,
  kDouble = 7,
  kLongDouble = 8,
  kRefused = 0xFF,  // the conversion does not go with the length modifier
};

enum class FieldKind : uint8_t {
  kSigned,
  kUnsigned,
  kCharacter,
  kString,         // ends at a zero or after precision units
  kCountedString,  // of exactly precision units
  kFloating,
  kPercent,
};

enum class LengthModifier : uint8_t { kNone, kShort, kLong, kLongLong, kLongDouble };

// A conversion character: what its field is and which argument it needs.
struct Conversion {
  JXChar letter;
  FieldKind kind;
  uint8_t base;           // of an integer field
  bool has_prefix;        // "#" adds the base in front of the digits
  bool uppercase;         // of digits, prefix and exponent
  JXChar form;            // of a floating field: 'e', 'f' or 'g'
  ArgumentType types[5];  // by LengthModifier
};

// A width or a precision.
struct Amount {
  enum class Origin : uint8_t { kAbsent, kText, kNextArgument, kNumberedArgument };
  int32_t value = 0;  // kText: the amount; kNumberedArgument: the argument's index
  Origin origin = Origin::kAbsent;
};

// Flags of a directive.
inline constexpr uint8_t kLeft = 1;
inline constexpr uint8_t kPlus = 2;
inline constexpr uint8_t kSpace = 4;
inline constexpr uint8_t kAlternate = 8;
inline constexpr uint8_t kZero = 16;

// A directive as it stands in the format.
struct Directive {
  int32_t start = 0;      // of its "%"
  int32_t end = 0;        // just after its conversion character, or the end of the format
  int32_t argument = -1;  // index of the numbered argument; -1: the next one of the list
  Amount width;
  Amount precision;
  uint8_t flags = 0;  // after "-" has cancelled "0" and "+" has cancelled " "
  LengthModifier length = LengthModifier::kNone;
  ArgumentType type = ArgumentType::kNone;  // of the value
  const Conversion *conversion = nullptr;   // null: the directive is not valid

  bool has(uint8_t flag) const { return (flags & flag) != 0; }
  bool names_arguments() const {
    return argument >= 0 || width.origin == Amount::Origin::kNumberedArgument ||
           precision.origin == Amount::Origin::kNumberedArgument;
  }
};

// Reads the directive whose "%" is at start. JX_E_BADFORMAT for an argument number outside 1 to 10
// or a "*" with digits but no "$"; every other fault leaves conversion null.
JXStatus parse_directive(const JXChar *format, int32_t format_chars, int32_t start,
                         Directive *directive);

// An argument as it was taken.
struct Value {
  ArgumentType type;
  union {
    int64_t integer;  // kChar to kPointer, with the sign of the type it was taken by
    double real;
    long double extended;
  };
};

// Floating values truncated toward zero; one that is out of range becomes the lowest integer.
int64_t truncated64_of(const Value &value);
int32_t truncated32_of(const Value &value);

// Conversions between what was taken and what is needed.
inline bool is_floating(ArgumentType type) { return type >= ArgumentType::kDouble; }
inline int64_t integer64_of(const Value &value) {
  return is_floating(value.type) ? truncated64_of(value) : value.integer;
}
inline int32_t integer32_of(const Value &value) {
  return is_floating(value.type) ? truncated32_of(value) : static_cast<int32_t>(value.integer);
}
double real_of(const Value &value);
// The address of a string; null when the argument was taken as something else.
const void *address_of(const Value &value);

// The argument list of one call. Whoever makes it starts and ends the list.
class Arguments {
 public:
  Arguments() = default;
  Arguments(const Arguments &) = delete;
  Arguments &operator=(const Arguments &) = delete;

  // Notes what a directive needs of the numbered arguments.
  void note(const Directive &directive);
  // Takes the numbered arguments off the list, up to the first that nobody needs.
  void take_numbered();
  bool has_numbered() const { return has_numbered_; }

  // The value of a directive; an argument that nobody needed reads as zero.
  void get_value(const Directive &directive, Value *value) {
    if (directive.argument < 0 && directive.type == ArgumentType::kInt) {
      value->type = ArgumentType::kInt;
      value->integer = va_arg(list, int);
      return;
    }
    fetch_value(directive, value);
  }
  // A width or a precision; 0 when there is none.
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

// The output: pieces that are written whole or not at all, and counted in both cases. Once a piece
// did not fit nothing more is written.
class Sink {
 public:
  Sink(JXChar *buffer, int32_t capacity_chars)
      : buffer_(buffer ? buffer : &nowhere_),
        place_(buffer_),
        room_chars_(static_cast<uint32_t>(std::max(capacity_chars, 0))) {}

  // Characters of all pieces, written or not.
  uint64_t chars() const { return static_cast<uint64_t>(place_ - buffer_) + refused_chars_; }
  bool is_truncated() const { return refused_chars_ != 0; }

  // Room for a piece that the caller writes itself. Null, and the piece is refused, without room.
  JXChar *add(uint64_t chars) {
    JXChar *place = add_if_fits(chars);
    if (!place) refuse(chars);
    return place;
  }
  // The same for a whole field, whose pieces can be tried one by one when it does not fit.
  JXChar *add_if_fits(uint64_t chars) {
    if (chars > room_chars_) return nullptr;
    room_chars_ -= static_cast<uint32_t>(chars);
    return std::exchange(place_, place_ + chars);
  }

  // For a routine that writes a piece by itself: where, how much fits, and then what came of it.
  JXChar *place() const { return place_; }
  int32_t room_chars() const { return static_cast<int32_t>(room_chars_); }
  void note_piece(JXStatus status, uint32_t chars) {
    if (status != JX_OK || !add_if_fits(chars)) refuse(chars);
  }

  void put_text(const JXChar *text, uint32_t chars) {
    if (JXChar *place = add(chars)) copy_chars(text, chars, place);
  }
  void put_character(JXChar character) {
    if (JXChar *place = add(1)) *place = character;
  }
  // Appends `chars` times a character, as one piece.
  void put_fill(JXChar character, uint64_t chars) { insert_fill(this->chars(), character, chars); }
  // The same in front of everything from `position` on, which moves to make room.
  void insert_fill(uint64_t position, JXChar character, uint64_t chars);

 private:
  // A piece that does not fit is counted and leaves no room for any other.
  void refuse(uint64_t chars) {
    refused_chars_ += chars;
    room_chars_ = 0;
  }

  JXChar nowhere_;  // what a null buffer points to, so that a piece of no characters has a place
  JXChar *buffer_;
  JXChar *place_;               // of the next piece
  uint32_t room_chars_;         // from there on
  uint64_t refused_chars_ = 0;  // of the pieces that did not fit; a piece without room has some
};

// Writes the output of one directive; its text is what an invalid directive shows.
void put_directive(const JXChar *format, const Directive &directive, JXChar decimal_point,
                   Arguments *arguments, Sink *sink);

}  // namespace jx
