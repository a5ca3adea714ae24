// The directives of jxzFormatBuff: % [N$] [flags] [width] [.precision] [length] conversion.
#include <algorithm>
#include <array>
#include <limits>

#include "kernel/format.hpp"

namespace jx {

namespace {

using enum ArgumentType;

// Argument types by length modifier: none, h, l, ll, L.
constexpr ArgumentTypes kIntegers = {kInt, kRefused, kLong, kLongLong, kRefused};
constexpr ArgumentTypes kPointers = {kPointer, kRefused, kRefused, kRefused, kRefused};
constexpr ArgumentTypes kCharacters = {kChar, kChar, kRefused, kRefused, kChar};
constexpr ArgumentTypes kStrings = {kPointer, kPointer, kRefused, kRefused, kRefused};
constexpr ArgumentTypes kDoubles = {kDouble, kRefused, kRefused, kRefused, kLongDouble};
constexpr ArgumentTypes kNoArgument = {kNone, kRefused, kRefused, kRefused, kRefused};

// clang-format off
constexpr Conversion kConversions[] = {
    // letter, kind, base, has_prefix, uppercase, form, types
    {'d', FieldKind::kSigned,        10, false, false, 0,   kIntegers},
    {'i', FieldKind::kSigned,        10, false, false, 0,   kIntegers},
    {'u', FieldKind::kUnsigned,      10, false, false, 0,   kIntegers},
    {'o', FieldKind::kUnsigned,      8,  true,  false, 0,   kIntegers},
    {'x', FieldKind::kUnsigned,      16, true,  false, 0,   kIntegers},
    {'X', FieldKind::kUnsigned,      16, true,  true,  0,   kIntegers},
    {'p', FieldKind::kUnsigned,      16, true,  false, 0,   kPointers},
    {'P', FieldKind::kUnsigned,      16, true,  true,  0,   kPointers},
    {'c', FieldKind::kCharacter,     0,  false, false, 0,   kCharacters},
    {'C', FieldKind::kCharacter,     0,  false, false, 0,   kCharacters},
    {'s', FieldKind::kString,        0,  false, false, 0,   kStrings},
    {'S', FieldKind::kCountedString, 0,  false, false, 0,   kStrings},
    {'e', FieldKind::kFloating,      0,  false, false, 'e', kDoubles},
    {'E', FieldKind::kFloating,      0,  false, true,  'e', kDoubles},
    {'f', FieldKind::kFloating,      0,  false, false, 'f', kDoubles},
    {'g', FieldKind::kFloating,      0,  false, false, 'g', kDoubles},
    {'G', FieldKind::kFloating,      0,  false, true,  'g', kDoubles},
    {'%', FieldKind::kPercent,       0,  false, false, 0,   kNoArgument},
};
// clang-format on

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

const Conversion *conversion_of(JXChar letter) {
  if (letter >= kRows.size() || kRows[letter] == kNoRow) return nullptr;
  return &kConversions[kRows[letter]];
}

// Reads the format from left to right, and the character 0 at its end.
class Cursor {
 public:
  Cursor(const JXChar *next, const JXChar *end) : next_(next), end_(end) {}

  const JXChar *position() const { return next_; }
  JXChar peek() const { return next_ < end_ ? *next_ : 0; }
  JXChar next() {
    const JXChar character = peek();
    if (next_ < end_) ++next_;
    return character;
  }
  bool skip(JXChar character) {
    if (peek() != character) return false;
    next();
    return true;
  }
  // Reads decimal digits: 0 when there are none, at most the highest number.
  int32_t number() {
    constexpr uint64_t kHighest = std::numeric_limits<int32_t>::max();
    uint64_t value = 0;
    for (; next_ < end_ && is_digit(*next_); ++next_) {
      value = std::min(value * 10 + (*next_ - '0'), kHighest);
    }
    return static_cast<int32_t>(value);
  }

 private:
  const JXChar *next_;
  const JXChar *end_;
};

uint8_t flag_of(JXChar character) {
  switch (character) {
    case '-':
      return kLeft;
    case '+':
      return kPlus;
    case ' ':
      return kSpace;
    case '#':
      return kAlternate;
    case '0':
      return kZero;
    default:
      return 0;
  }
}

uint8_t read_flags(Cursor *cursor) {
  uint8_t flags = 0;
  while (const uint8_t flag = flag_of(cursor->peek())) {
    flags |= flag;
    cursor->next();
  }
  return flags;
}

void set_amount(int32_t value, Amount::Origin origin, Amount *amount) {
  amount->value = value;
  amount->origin = origin;
}

// Reads the rest of a "*" or "*N$".
JXStatus read_star(Cursor *cursor, Amount *amount) {
  if (!is_first_digit(cursor->peek())) {
    set_amount(0, Amount::Origin::kNextArgument, amount);
    return JX_OK;
  }
  const int32_t number = cursor->number();
  if (!cursor->skip('$') || number > kArgumentCount) return JX_E_BADFORMAT;
  set_amount(number - 1, Amount::Origin::kNumberedArgument, amount);
  return JX_OK;
}

// Reads argument number, flags and width. A number without "$" is the width; no flags follow it.
JXStatus read_front(Cursor *cursor, Directive *directive) {
  if (is_first_digit(cursor->peek())) {
    const int32_t number = cursor->number();
    if (!cursor->skip('$')) {
      set_amount(number, Amount::Origin::kText, &directive->width);
      return JX_OK;
    }
    if (number > kArgumentCount) return JX_E_BADFORMAT;
    directive->argument = number - 1;
  }
  directive->flags = read_flags(cursor);
  if (is_digit(cursor->peek())) {
    set_amount(cursor->number(), Amount::Origin::kText, &directive->width);
    return JX_OK;
  }
  return cursor->skip('*') ? read_star(cursor, &directive->width) : JX_OK;
}

JXStatus read_precision(Cursor *cursor, Amount *precision) {
  if (!cursor->skip('.')) return JX_OK;
  if (cursor->skip('*')) return read_star(cursor, precision);
  set_amount(cursor->number(), Amount::Origin::kText, precision);
  return JX_OK;
}

LengthModifier read_length(Cursor *cursor) {
  if (cursor->skip('l')) {
    return cursor->skip('l') ? LengthModifier::kLongLong : LengthModifier::kLong;
  }
  if (cursor->skip('h')) return LengthModifier::kShort;
  return cursor->skip('L') ? LengthModifier::kLongDouble : LengthModifier::kNone;
}

bool is_bare(const Directive &directive) {
  return directive.flags == 0 && directive.width.origin == Amount::Origin::kAbsent &&
         directive.precision.origin == Amount::Origin::kAbsent;
}

// Completes a directive by its conversion, unless the two do not go together.
void set_conversion(const Conversion *conversion, Directive *directive) {
  if (!conversion) return;
  const ArgumentType type = conversion->types[static_cast<uint8_t>(directive->length)];
  if (type == kRefused) return;
  if (conversion->kind == FieldKind::kPercent && !is_bare(*directive)) return;
  directive->conversion = conversion;
  directive->type = type;
  if (directive->has(kLeft)) directive->flags &= static_cast<uint8_t>(~kZero);
  if (directive->has(kPlus)) directive->flags &= static_cast<uint8_t>(~kSpace);
}

}  // namespace

JXStatus parse_directive(const JXChar *format, int32_t format_chars, int32_t start,
                         Directive *directive) {
  Cursor cursor(format + start + 1, format + format_chars);
  directive->start = start;
  const Conversion *conversion = conversion_of(cursor.peek());
  if (conversion) {
    // Fast path: a bare "%d" and the like.
    directive->end = start + 2;
  } else {
    JXStatus status = read_front(&cursor, directive);
    if (status == JX_OK) status = read_precision(&cursor, &directive->precision);
    if (status != JX_OK) return status;
    directive->length = read_length(&cursor);
    conversion = conversion_of(cursor.next());
    directive->end = static_cast<int32_t>(cursor.position() - format);
  }
  set_conversion(conversion, directive);
  return JX_OK;
}

}  // namespace jx
