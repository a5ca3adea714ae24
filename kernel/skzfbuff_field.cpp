// Fields: what a directive puts out, with sign, prefix, precision and width.
#include <algorithm>
#include <cstring>
#include <cwchar>

#include "kernel/format.hpp"
#include "kernel/scan.hpp"

namespace jx {

namespace {

constexpr int32_t kNoPrecision = -1;
constexpr int32_t kDefaultIntegerPrecision = 1;
constexpr int32_t kDefaultFloatingPrecision = 6;
constexpr JXChar kOpenInvalid[2] = {'<', '<'};
constexpr JXChar kCloseInvalid[2] = {'>', '>'};

// A directive with its width and precision fetched.
struct Field {
  const Directive *directive;
  const Conversion *conversion;
  JXChar decimal_point;
  int64_t width;      // 0: none
  bool left;          // padding follows
  int32_t precision;  // kNoPrecision: none
};

Field resolve(const Directive &directive, JXChar decimal_point, Arguments *arguments) {
  Field field{&directive, directive.conversion, decimal_point, 0, directive.left, kNoPrecision};
  // The order matters: each "*" takes its argument from the list.
  field.width = arguments->amount_of(directive.width);
  if (field.width < 0) {
    field.left = true;
    field.width = -field.width;
  }
  if (directive.precision.origin != Amount::Origin::kAbsent) {
    field.precision = std::max(arguments->amount_of(directive.precision), kNoPrecision);
  }
  return field;
}

void put_invalid(const JXChar *format, const Directive &directive, Sink *sink) {
  sink->put_text(kOpenInvalid, 2);
  sink->put_text(format + directive.start, static_cast<uint32_t>(directive.end - directive.start));
  sink->put_text(kCloseInvalid, 2);
}

// Writes the sign character, if any, and returns how many characters that was.
uint32_t put_sign(const Directive &directive, bool is_negative, Sink *sink) {
  if (!is_negative && !directive.plus && !directive.space) return 0;
  sink->put_character(is_negative ? '-' : directive.plus ? '+' : ' ');
  return 1;
}

// Bits of the type that an integer directive works in.
uint32_t type_bits(const Directive &directive) {
  switch (directive.type()) {
    case ArgumentType::kLongLong:
      return 64;
    case ArgumentType::kLong:
      return 8 * sizeof(long);
    case ArgumentType::kPointer:
      return 8 * sizeof(void *);
    default:
      return 32;
  }
}

// Digits, with zeros in front up to the precision; `leading` digits were written before.
void put_digits(const Field &field, uint64_t magnitude, uint32_t leading, Sink *sink) {
  const int32_t precision =
      field.precision == kNoPrecision ? kDefaultIntegerPrecision : field.precision;
  if (magnitude == 0 && precision == 0) return;
  const Conversion &conversion = *field.conversion;
  const uint64_t start = sink->chars();
  uint32_t count = 0;
  const JXStatus status =
      magnitude > UINT32_MAX ? skzfIMax(magnitude, conversion.base, conversion.uppercase,
                                        sink->place(), sink->room(), &count)
                             : skzfIFast(static_cast<uint32_t>(magnitude), conversion.base,
                                         conversion.uppercase, sink->place(), sink->room(), &count);
  sink->add_piece(status, count);
  const int64_t zeros = int64_t{precision} - count - leading;
  if (zeros > 0) sink->insert_fill(start, '0', static_cast<uint64_t>(zeros));
}

uint32_t put_signed(const Field &field, const Value &value, Sink *sink) {
  const bool is_wide = type_bits(*field.directive) == 64;
  const int64_t number = is_wide ? integer64_of(value) : integer32_of(value);
  const auto bits = static_cast<uint64_t>(number);
  const uint32_t sign_chars = put_sign(*field.directive, number < 0, sink);
  put_digits(field, number < 0 ? 0 - bits : bits, 0, sink);
  return sign_chars;
}

void put_unsigned(const Field &field, const Value &value, Sink *sink) {
  auto magnitude = static_cast<uint64_t>(integer64_of(value));
  if (type_bits(*field.directive) == 32) magnitude = static_cast<uint32_t>(magnitude);
  uint32_t leading = 0;
  if (field.directive->alternate && field.conversion->has_prefix && magnitude != 0) {
    sink->put_character('0');
    if (field.conversion->base == 8) {
      leading = 1;
    } else {
      sink->put_character(field.conversion->uppercase ? 'X' : 'x');
    }
  }
  put_digits(field, magnitude, leading, sink);
}

uint32_t put_floating(const Field &field, const Value &value, Sink *sink) {
  const double number = real_of(value);
  // Missing values and other NaNs compare as not less than zero and so get no "-".
  const bool is_negative = number < 0;
  const uint32_t sign_chars = put_sign(*field.directive, is_negative, sink);
  const int32_t precision =
      field.precision == kNoPrecision ? kDefaultFloatingPrecision : field.precision;
  uint32_t count = 0;
  const JXStatus status =
      skzfDouble(number, field.conversion->form, field.decimal_point, field.conversion->uppercase,
                 precision, field.directive->alternate, sink->place(), sink->room(), &count);
  sink->add_piece(status, count);
  return sign_chars;
}

// The length of a string that ends at a zero or, with a precision, after that many units. Nothing
// behind the zero is read, so a scan over the whole precision would not do.
uint32_t string_chars(const void *text, bool is_bytes, int32_t precision) {
  const size_t most = precision == kNoPrecision ? SIZE_MAX : static_cast<size_t>(precision);
  static_assert(sizeof(wchar_t) == sizeof(JXChar));
  return static_cast<uint32_t>(is_bytes ? strnlen(static_cast<const char *>(text), most)
                                        : wcsnlen(static_cast<const wchar_t *>(text), most));
}

void put_string(const Field &field, const Value &value, Sink *sink) {
  const void *text = address_of(value);
  if (!text) return;
  const bool is_bytes = field.directive->length == LengthModifier::kShort;
  const uint32_t chars = field.conversion->kind == FieldKind::kCountedString
                             ? static_cast<uint32_t>(field.precision)
                             : string_chars(text, is_bytes, field.precision);
  if (!is_bytes) {
    sink->put_text(static_cast<const JXChar *>(text), chars);
    return;
  }
  // Without room, and with an empty string, nothing is decoded.
  sink->add_piece(skzfString(static_cast<const char *>(text), chars, sink->place(),
                             static_cast<uint32_t>(sink->room()), nullptr),
                  chars);
}

// Writes the field without its padding and returns the characters of its sign.
uint32_t put_content(const Field &field, const Value &value, Sink *sink) {
  switch (field.conversion->kind) {
    case FieldKind::kSigned:
      return put_signed(field, value, sink);
    case FieldKind::kFloating:
      return put_floating(field, value, sink);
    case FieldKind::kUnsigned:
      put_unsigned(field, value, sink);
      return 0;
    case FieldKind::kCharacter:
      sink->put_character(static_cast<JXChar>(integer32_of(value)));
      return 0;
    case FieldKind::kPercent:
      sink->put_character('%');
      return 0;
    default:
      put_string(field, value, sink);
      return 0;
  }
}

void pad(const Field &field, uint64_t start, uint32_t sign_chars, Sink *sink) {
  const int64_t padding = field.width - static_cast<int64_t>(sink->chars() - start);
  if (padding <= 0) return;
  const auto chars = static_cast<uint64_t>(padding);
  const FieldKind kind = field.conversion->kind;
  const bool is_number =
      kind == FieldKind::kSigned || kind == FieldKind::kUnsigned || kind == FieldKind::kFloating;
  if (field.left) {
    sink->put_fill(' ', chars);
  } else if (field.directive->zero && is_number) {
    sink->insert_fill(start + sign_chars, '0', chars);
  } else {
    sink->insert_fill(start, ' ', chars);
  }
}

}  // namespace

void Sink::insert_fill(uint64_t position, JXChar character, uint64_t chars) {
  if (reserve(chars)) {
    JXChar *at = buffer_ + position;
    const auto moved = static_cast<size_t>(chars_ - position);
    if (moved != 0) std::memmove(at + chars, at, moved * sizeof(JXChar));
    fill_units(at, character, static_cast<size_t>(chars));
  }
  chars_ += chars;
}

void put_directive(const JXChar *format, const Directive &directive, JXChar decimal_point,
                   Arguments *arguments, Sink *sink) {
  const Field field = resolve(directive, decimal_point, arguments);
  if (!field.conversion) {
    put_invalid(format, directive, sink);
    return;
  }
  Value value;
  arguments->get_value(directive, &value);
  // Whether a counted string has its count is known only now: it may come from an argument.
  if (field.conversion->kind == FieldKind::kCountedString && field.precision == kNoPrecision) {
    put_invalid(format, directive, sink);
    return;
  }
  const uint64_t start = sink->chars();
  const uint32_t sign_chars = put_content(field, value, sink);
  pad(field, start, sign_chars, sink);
}

}  // namespace jx
