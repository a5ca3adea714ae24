// The directive grammar: % [N$] [flags] [width] [.precision] [length] conversion.
#include <array>
#include <limits>

#include "kernel/format.hpp"

namespace jx {

namespace {

using enum ArgumentType;

constexpr Conversion kConversions[] = {
    {'d', FieldKind::kSigned, 10, false, false, 0, {kInt, kRefused, kLong, kLongLong, kRefused}},
    {'i', FieldKind::kSigned, 10, false, false, 0, {kInt, kRefused, kLong, kLongLong, kRefused}},
    {'u', FieldKind::kUnsigned, 10, false, false, 0, {kInt, kRefused, kLong, kLongLong, kRefused}},
    {'o', FieldKind::kUnsigned, 8, true, false, 0, {kInt, kRefused, kLong, kLongLong, kRefused}},
    {'x', FieldKind::kUnsigned, 16, true, false, 0, {kInt, kRefused, kLong, kLongLong, kRefused}},
    {'X', FieldKind::kUnsigned, 16, true, true, 0, {kInt, kRefused, kLong, kLongLong, kRefused}},
    {'p',
     FieldKind::kUnsigned,
     16,
     true,
     false,
     0,
     {kPointer, kRefused, kRefused, kRefused, kRefused}},
    {'P',
     FieldKind::kUnsigned,
     16,
     true,
     true,
     0,
     {kPointer, kRefused, kRefused, kRefused, kRefused}},
    {'c', FieldKind::kCharacter, 0, false, false, 0, {kChar, kChar, kRefused, kRefused, kChar}},
    {'C', FieldKind::kCharacter, 0, false, false, 0, {kChar, kChar, kRefused, kRefused, kChar}},
    {'s',
     FieldKind::kString,
     0,
     false,
     false,
     0,
     {kPointer, kPointer, kRefused, kRefused, kRefused}},
    {'S',
     FieldKind::kCountedString,
     0,
     false,
     false,
     0,
     {kPointer, kPointer, kRefused, kRefused, kRefused}},
    {'e',
     FieldKind::kFloating,
     0,
     false,
     false,
     'e',
     {kDouble, kRefused, kRefused, kRefused, kLongDouble}},
    {'E',
     FieldKind::kFloating,
     0,
     false,
     true,
     'e',
     {kDouble, kRefused, kRefused, kRefused, kLongDouble}},
    {'f',
     FieldKind::kFloating,
     0,
     false,
     false,
     'f',
     {kDouble, kRefused, kRefused, kRefused, kLongDouble}},
    {'g',
     FieldKind::kFloating,
     0,
     false,
     false,
     'g',
     {kDouble, kRefused, kRefused, kRefused, kLongDouble}},
    {'G',
     FieldKind::kFloating,
     0,
     false,
     true,
     'g',
     {kDouble, kRefused, kRefused, kRefused, kLongDouble}},
    {'%', FieldKind::kPercent, 0, false, false, 0, {kNone, kRefused, kRefused, kRefused, kRefused}},
};

constexpr uint8_t kNoRow = 0xFF;

// The row of each ASCII character in kConversions.
constexpr std::array<uint8_t, 128> kRows = [] {
  std::array<uint8_t, 128> rows{};
  rows.fill(kNoRow);
  uint8_t row = 0;
  for (const Conversion &conversion : kConversions) rows[conversion.letter] = row++;
  return rows;
}();

constexpr bool is_digit(JXChar character) { return character - '0' < 10; }
constexpr bool is_first_digit(JXChar character) { return character - '1' < 9; }

// Walks over the format. Beyond its end it reads the character 0.
class Cursor {
 public:
  Cursor(const JXChar *format, int32_t format_chars, int32_t position)
      : format_(format), format_chars_(format_chars), position_(position) {}

  int32_t position() const { return position_; }
  JXChar peek() const { return position_ < format_chars_ ? format_[position_] : 0; }
  JXChar next() {
    const JXChar character = peek();
    if (position_ < format_chars_) ++position_;
    return character;
  }
  bool skip(JXChar character) {
    if (peek() != character) return false;
    next();
    return true;
  }
  // The decimal digits that follow as a number; 0 when there are none, the highest number when they
  // are beyond it.
  int32_t number() {
    constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();
    int64_t value = 0;
    while (is_digit(peek())) {
      value = value * 10 + static_cast<int64_t>(next() - '0');
      if (value > kHighest) value = kHighest;
    }
    return static_cast<int32_t>(value);
  }

 private:
  const JXChar *format_;
  int32_t format_chars_;
  int32_t position_;
};

void read_flags(Cursor *cursor, Directive *directive) {
  for (;;) {
    switch (cursor->peek()) {
      case '-':
        directive->left = true;
        break;
      case '+':
        directive->plus = true;
        break;
      case ' ':
        directive->space = true;
        break;
      case '#':
        directive->alternate = true;
        break;
      case '0':
        directive->zero = true;
        break;
      default:
        return;
    }
    cursor->next();
  }
}

// A width or a precision: "*", "*N$" or digits.
JXStatus read_amount(Cursor *cursor, Amount *amount) {
  if (!cursor->skip('*')) {
    *amount = {Amount::Origin::kText, cursor->number()};
    return JX_OK;
  }
  if (!is_first_digit(cursor->peek())) {
    *amount = {Amount::Origin::kNextArgument, 0};
    return JX_OK;
  }
  const int32_t number = cursor->number();
  if (!cursor->skip('$') || number > kArgumentCount) return JX_E_BADFORMAT;
  *amount = {Amount::Origin::kNumberedArgument, number - 1};
  return JX_OK;
}

// Argument number, flags and width. A number that no "$" follows is the width and ends the flags.
JXStatus read_front(Cursor *cursor, Directive *directive) {
  if (is_first_digit(cursor->peek())) {
    const int32_t number = cursor->number();
    if (!cursor->skip('$')) {
      directive->width = {Amount::Origin::kText, number};
      return JX_OK;
    }
    if (number > kArgumentCount) return JX_E_BADFORMAT;
    directive->argument = number - 1;
  }
  read_flags(cursor, directive);
  if (cursor->peek() != '*' && !is_digit(cursor->peek())) return JX_OK;
  return read_amount(cursor, &directive->width);
}

LengthModifier read_length(Cursor *cursor) {
  if (cursor->skip('h')) return LengthModifier::kShort;
  if (cursor->skip('L')) return LengthModifier::kLongDouble;
  if (!cursor->skip('l')) return LengthModifier::kNone;
  return cursor->skip('l') ? LengthModifier::kLongLong : LengthModifier::kLong;
}

bool is_bare(const Directive &directive) {
  return directive.width.origin == Amount::Origin::kAbsent &&
         directive.precision.origin == Amount::Origin::kAbsent && !directive.left &&
         !directive.plus && !directive.space && !directive.alternate && !directive.zero;
}

// The conversion of a directive that is complete up to it; null when they do not go together.
const Conversion *find_conversion(JXChar letter, const Directive &directive) {
  if (letter >= kRows.size() || kRows[letter] == kNoRow) return nullptr;
  const Conversion *conversion = &kConversions[kRows[letter]];
  if (conversion->types[static_cast<uint8_t>(directive.length)] == kRefused) return nullptr;
  if (conversion->kind == FieldKind::kPercent && !is_bare(directive)) return nullptr;
  return conversion;
}

}  // namespace

JXStatus parse_directive(const JXChar *format, int32_t format_chars, int32_t start,
                         Directive *directive) {
  Cursor cursor(format, format_chars, start + 1);
  directive->start = start;
  JXStatus status = read_front(&cursor, directive);
  if (status != JX_OK) return status;
  if (cursor.skip('.')) {
    status = read_amount(&cursor, &directive->precision);
    if (status != JX_OK) return status;
  }
  directive->length = read_length(&cursor);
  directive->conversion = find_conversion(cursor.next(), *directive);
  directive->end = cursor.position();
  if (directive->left) directive->zero = false;
  if (directive->plus) directive->space = false;
  return JX_OK;
}

}  // namespace jx
