// The fields of jxzFormatBuff: sign, prefix, zeros, digits or text, and padding.
#include <algorithm>
#include <cstring>
#include <cwchar>

#include "kernel/fill.hpp"
#include "kernel/format.hpp"

namespace jx {

namespace {

constexpr int32_t kDefaultFloatingPrecision = 6;
constexpr JXChar kOpenInvalid[2] = {'<', '<'};
constexpr JXChar kCloseInvalid[2] = {'>', '>'};

// A directive with its width and precision resolved.
struct Field {
  const Directive *directive;
  const Conversion *conversion;
  uint64_t width;     // 0: none
  bool left;          // padding goes after the text
  int32_t precision;  // kNoPrecision: none
};

// Width before precision: each "*" takes the next argument of the list.
void resolve(const Directive &directive, Arguments *arguments, Field *field) {
  field->directive = &directive;
  field->conversion = directive.conversion;
  const int64_t width = arguments->amount_of(directive.width);
  field->width = static_cast<uint64_t>(width < 0 ? -width : width);
  field->left = width < 0 || directive.has(kLeft);
  field->precision = directive.precision.origin == Amount::Origin::kAbsent
                         ? kNoPrecision
                         : std::max(arguments->amount_of(directive.precision), kNoPrecision);
}

void put_invalid(const JXChar *format, const Directive &directive, Sink *sink) {
  sink->append_text(kOpenInvalid, 2);
  sink->append_text(format + directive.start,
                    static_cast<uint32_t>(directive.end - directive.start));
  sink->append_text(kCloseInvalid, 2);
}

// Pads the field appended since `start` to its width. Zeros go after the sign.
void pad(const Field &field, uint64_t start, uint32_t sign_chars, bool with_zeros, Sink *sink) {
  const uint64_t chars = sink->chars() - start;
  if (chars >= field.width) return;
  const uint64_t padding = field.width - chars;
  if (field.left) {
    sink->append_fill(' ', padding);
  } else if (with_zeros) {
    sink->insert_fill(start + sign_chars, '0', padding);
  } else {
    sink->insert_fill(start, ' ', padding);
  }
}

// The sign character of a number; 0: none.
JXChar sign_character(const Directive &directive, bool is_negative) {
  if (is_negative) return '-';
  if (directive.has(kPlus)) return '+';
  return directive.has(kSpace) ? ' ' : 0;
}

// Whether an integer of this type has 64 bits.
bool is_wide(ArgumentType type) {
  switch (type) {
    case ArgumentType::kLong:
      return sizeof(long) == 8;
    case ArgumentType::kPointer:
      return sizeof(void *) == 8;
    default:
      return type == ArgumentType::kLongLong;
  }
}

// The parts of an integer field, in order.
struct Integer {
  uint64_t magnitude;
  JXChar sign;            // 0: none
  uint32_t prefix_chars;  // "0" or "0x"
  uint32_t zeros;         // up to the precision
  uint32_t digits;
};

void measure_integer(const Field &field, const Value &value, Integer *integer) {
  const Directive &directive = *field.directive;
  const uint32_t base = field.conversion->base;
  const bool wide = is_wide(directive.type);
  integer->sign = 0;
  if (field.conversion->kind == FieldKind::kSigned) {
    const int64_t number = wide ? integer64_of(value) : integer32_of(value);
    integer->sign = sign_character(directive, number < 0);
    integer->magnitude =
        number < 0 ? 0 - static_cast<uint64_t>(number) : static_cast<uint64_t>(number);
  } else {
    const auto number = static_cast<uint64_t>(integer64_of(value));
    integer->magnitude = wide ? number : static_cast<uint32_t>(number);
  }
  const bool has_prefix =
      directive.has(kAlternate) && field.conversion->has_prefix && integer->magnitude != 0;
  integer->prefix_chars = !has_prefix ? 0 : base == 8 ? 1 : 2;
  integer->digits = integer->magnitude <= UINT32_MAX
                        ? count_digits(static_cast<uint32_t>(integer->magnitude), base)
                        : count_digits(integer->magnitude, base);
  if (integer->magnitude == 0 && field.precision == 0) integer->digits = 0;
  // The octal prefix counts as a digit.
  const uint32_t present = integer->digits + (base == 8 ? integer->prefix_chars : 0);
  const int32_t zeros = field.precision - static_cast<int32_t>(present);
  integer->zeros = static_cast<uint32_t>(std::max(zeros, 0));
}

void write_integer(const Conversion &conversion, const Integer &integer, JXChar *at) {
  if (integer.digits == 0) return;
  if (integer.magnitude <= UINT32_MAX) {
    write_digits(static_cast<uint32_t>(integer.magnitude), conversion.base, conversion.uppercase,
                 at, integer.digits);
  } else {
    write_digits(integer.magnitude, conversion.base, conversion.uppercase, at, integer.digits);
  }
}

JXChar *write_prefix(const Conversion &conversion, uint32_t chars, JXChar *at) {
  if (chars > 0) *at++ = '0';
  if (chars > 1) *at++ = conversion.uppercase ? 'X' : 'x';
  return at;
}

JXChar *write_repeated(JXChar character, uint64_t chars, JXChar *at) {
  for (; chars > 0; --chars) *at++ = character;
  return at;
}

// Writes a field that fits, from left to right.
void write_whole_integer(const Field &field, const Integer &integer, uint64_t padding, JXChar *at) {
  const bool with_zeros = field.directive->has(kZero);
  if (!field.left && !with_zeros) at = write_repeated(' ', padding, at);
  if (integer.sign) *at++ = integer.sign;
  if (!field.left && with_zeros) at = write_repeated('0', padding, at);
  at = write_prefix(*field.conversion, integer.prefix_chars, at);
  at = write_repeated('0', integer.zeros, at);
  write_integer(*field.conversion, integer, at);
  if (field.left) write_repeated(' ', padding, at + integer.digits);
}

// Appends a field that does not fit piece by piece, up to the first that does not fit. Zeros and
// padding come last, although they go before the digits.
void put_integer_pieces(const Field &field, const Integer &integer, Sink *sink) {
  const uint64_t start = sink->chars();
  if (integer.sign) sink->append_character(integer.sign);
  JXChar prefix[2];
  write_prefix(*field.conversion, integer.prefix_chars, prefix);
  for (uint32_t i = 0; i < integer.prefix_chars; ++i) sink->append_character(prefix[i]);
  const uint64_t digits_start = sink->chars();
  if (JXChar *at = sink->append(integer.digits)) write_integer(*field.conversion, integer, at);
  if (integer.zeros > 0) sink->insert_fill(digits_start, '0', integer.zeros);
  pad(field, start, integer.sign ? 1 : 0, field.directive->has(kZero), sink);
}

void put_integer(const Field &field, const Value &value, Sink *sink) {
  Integer integer __attribute__((uninitialized));
  measure_integer(field, value, &integer);
  const uint64_t chars =
      uint64_t{integer.sign ? 1u : 0u} + integer.prefix_chars + integer.zeros + integer.digits;
  const uint64_t padding = field.width > chars ? field.width - chars : 0;
  if (JXChar *at = sink->append_if_fits(chars + padding)) {
    write_whole_integer(field, integer, padding, at);
  } else {
    put_integer_pieces(field, integer, sink);
  }
}

void put_floating(const Field &field, const Value &value, JXChar decimal_point, Sink *sink) {
  const uint64_t start = sink->chars();
  const double number = real_of(value);
  // A NaN, and so a missing value, is not less than zero and gets no "-".
  const JXChar sign = sign_character(*field.directive, number < 0);
  if (sign) sink->append_character(sign);
  const int32_t precision =
      field.precision == kNoPrecision ? kDefaultFloatingPrecision : field.precision;
  uint32_t count = 0;
  const JXStatus status = skzfDouble(
      number, field.conversion->form, decimal_point, field.conversion->uppercase, precision,
      field.directive->has(kAlternate), sink->end(), sink->room_chars(), &count);
  sink->append_written(status, count);
  pad(field, start, sign ? 1 : 0, field.directive->has(kZero), sink);
}

// The length of a string that ends at a zero or, with a precision, after that many units. Reads
// nothing after the zero: the string's memory may end there.
uint32_t string_chars(const void *text, bool is_bytes, int32_t precision) {
  const size_t most = precision == kNoPrecision ? SIZE_MAX : static_cast<size_t>(precision);
  static_assert(sizeof(wchar_t) == sizeof(JXChar));
  return static_cast<uint32_t>(is_bytes ? strnlen(static_cast<const char *>(text), most)
                                        : wcsnlen(static_cast<const wchar_t *>(text), most));
}

void put_string(const Field &field, const Value &value, Sink *sink) {
  const uint64_t start = sink->chars();
  const void *text = address_of(value);
  if (text) {
    const bool is_bytes = field.directive->length == LengthModifier::kShort;
    const uint32_t chars = field.conversion->kind == FieldKind::kCountedString
                               ? static_cast<uint32_t>(field.precision)
                               : string_chars(text, is_bytes, field.precision);
    if (is_bytes) {
      const JXStatus status = skzfString(static_cast<const char *>(text), chars, sink->end(),
                                         static_cast<uint32_t>(sink->room_chars()), nullptr);
      sink->append_written(status, chars);
    } else {
      sink->append_text(static_cast<const JXChar *>(text), chars);
    }
  }
  pad(field, start, 0, false, sink);
}

void put_character(const Field &field, JXChar character, Sink *sink) {
  const uint64_t start = sink->chars();
  sink->append_character(character);
  pad(field, start, 0, false, sink);
}

}  // namespace

void Sink::insert_fill(uint64_t offset, JXChar character, uint64_t chars) {
  const uint64_t moved = this->chars() - offset;
  if (!append(chars)) return;
  JXChar *at = buffer_ + offset;
  if (moved != 0) std::memmove(at + chars, at, static_cast<size_t>(moved) * sizeof(JXChar));
  fill_units(at, character, static_cast<size_t>(chars));
}

void put_directive(const JXChar *format, const Directive &directive, const JXLocale *locale,
                   Arguments *arguments, Sink *sink) {
  Field field __attribute__((uninitialized));
  resolve(directive, arguments, &field);
  if (!field.conversion) {
    put_invalid(format, directive, sink);
    return;
  }
  Value value __attribute__((uninitialized));
  arguments->get_value(directive, &value);
  switch (field.conversion->kind) {
    case FieldKind::kSigned:
    case FieldKind::kUnsigned:
      put_integer(field, value, sink);
      break;
    case FieldKind::kFloating:
      put_floating(field, value, decimal_point_of(locale), sink);
      break;
    case FieldKind::kCharacter:
      put_character(field, static_cast<JXChar>(integer32_of(value)), sink);
      break;
    case FieldKind::kPercent:
      sink->append_character('%');
      break;
    case FieldKind::kCountedString:
      // The parser cannot tell: the precision may come from an argument, and be negative.
      if (field.precision == kNoPrecision) {
        put_invalid(format, directive, sink);
      } else {
        put_string(field, value, sink);
      }
      break;
    default:
      put_string(field, value, sink);
      break;
  }
}

}  // namespace jx
