// The formatting engine's stages: a directive is parsed into a record, its arguments are fetched,
// its field is rendered, and everything goes out through one sink.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "kernel/kernel.hpp"

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
  Origin origin = Origin::kAbsent;
  int32_t value = 0;  // kText: the amount; kNumberedArgument: the argument's index
};

// A directive as it stands in the format.
struct Directive {
  int32_t start;          // of its "%"
  int32_t end;            // just after its conversion character, or the end of the format
  int32_t argument = -1;  // index of the numbered argument; -1: the next one of the list
  Amount width;
  Amount precision;
  bool left = false;  // flags, after "-" has cancelled "0" and "+" has cancelled " "
  bool plus = false;
  bool space = false;
  bool alternate = false;
  bool zero = false;
  LengthModifier length = LengthModifier::kNone;
  const Conversion *conversion = nullptr;  // null: the directive is not valid

  ArgumentType type() const {
    return conversion ? conversion->types[static_cast<uint8_t>(length)] : ArgumentType::kNone;
  }
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

// Conversions between what was taken and what is needed. Floating values are truncated toward zero;
// one that is out of range becomes the lowest integer.
int64_t integer64_of(const Value &value);
int32_t integer32_of(const Value &value);
double real_of(const Value &value);
// The address of a string; null when the argument was taken as something else.
const void *address_of(const Value &value);

// The argument list of one call.
class Arguments {
 public:
  explicit Arguments(va_list list) { va_copy(list_, list); }
  Arguments(const Arguments &) = delete;
  Arguments &operator=(const Arguments &) = delete;
  ~Arguments() { va_end(list_); }

  // Notes what a directive needs of the numbered arguments.
  void note(const Directive &directive);
  // Takes the numbered arguments off the list, up to the first that nobody needs.
  void take_numbered();
  bool has_numbered() const { return has_numbered_; }

  // The value of a directive; an argument that nobody needed reads as zero.
  void get_value(const Directive &directive, Value *value);
  int32_t amount_of(const Amount &amount);

 private:
  void note_type(int32_t argument, ArgumentType type);
  void take(ArgumentType type, Value *value);

  va_list list_;
  bool has_numbered_ = false;
  Value numbered_[kArgumentCount];  // valid when has_numbered_ is set
};

// The output: pieces that are written whole or not at all, and counted in both cases. Once a piece
// did not fit nothing more is written.
class Sink {
 public:
  Sink(JXChar *buffer, int32_t capacity_chars)
      : buffer_(buffer), capacity_chars_(capacity_chars > 0 ? capacity_chars : 0) {}

  uint64_t chars() const { return chars_; }
  bool is_truncated() const { return is_truncated_; }
  // Room for a routine that writes a piece by itself, and where; it tells the outcome to add_piece.
  int32_t room() const {
    return is_truncated_ ? 0 : capacity_chars_ - static_cast<int32_t>(chars_);
  }
  JXChar *place() const { return is_truncated_ ? buffer_ : buffer_ + chars_; }
  void add_piece(JXStatus status, uint64_t chars) {
    if (status != JX_OK) is_truncated_ = true;
    chars_ += chars;
  }

  void put_text(const JXChar *text, uint32_t chars) {
    add_piece(skzfJXString(text, chars, place(), room(), nullptr), chars);
  }
  void put_character(JXChar character) {
    if (reserve(1)) buffer_[chars_] = character;
    ++chars_;
  }
  // Appends `chars` times a character, as one piece.
  void put_fill(JXChar character, uint64_t chars) { insert_fill(chars_, character, chars); }
  // The same in front of everything from `position` on, which moves to make room.
  void insert_fill(uint64_t position, JXChar character, uint64_t chars);

 private:
  bool reserve(uint64_t chars) {
    if (chars > static_cast<uint64_t>(room())) is_truncated_ = true;
    return !is_truncated_;
  }

  JXChar *buffer_;
  int32_t capacity_chars_;
  bool is_truncated_ = false;
  uint64_t chars_ = 0;  // of all pieces, written or not
};

// Writes the output of one directive; its text is what an invalid directive shows.
void put_directive(const JXChar *format, const Directive &directive, JXChar decimal_point,
                   Arguments *arguments, Sink *sink);

}  // namespace jx
