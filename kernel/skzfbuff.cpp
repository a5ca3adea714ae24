// Formatted text in a caller's buffer. The format is walked once: a run of text, then the directive
// after it. At the first directive that names an argument by number the rest of the format is read
// ahead, because the type of every argument must be known before any is taken.
#include <algorithm>

#include "kernel/format.hpp"
#include "kernel/scan.hpp"

namespace {

using jx::Arguments;
using jx::Directive;
using jx::Sink;

// A format, or what is left of it.
struct Format {
  const JXChar *text;
  const JXChar *end;
};

// The next "%" from `place` on that opens a directive: not the last character of the format. Null
// when there is none.
inline const JXChar *find_directive(const JXChar *place, const JXChar *end) {
  if (end - place < 2) return nullptr;
  if (*place == '%') return place;
  const auto rest = static_cast<size_t>(end - place);
  const size_t index = jx::scan_units<JXChar>(place, rest, '%');
  return index + 1 >= rest ? nullptr : place + index;
}

JXStatus parse(const Format &format, const JXChar *start, Directive *directive) {
  return jx::parse_directive(format.text, static_cast<int32_t>(format.end - format.text),
                             static_cast<int32_t>(start - format.text), directive);
}

// Reads every directive from `start` on, notes the numbered arguments and takes them.
JXStatus take_numbered(const Format &format, const JXChar *start, Arguments *arguments) {
  while (start) {
    Directive directive;
    const JXStatus status = parse(format, start, &directive);
    if (status != JX_OK) return status;
    arguments->note(directive);
    start = find_directive(format.text + directive.end, format.end);
  }
  arguments->take_numbered();
  return JX_OK;
}

inline void put_run(const JXChar *start, const JXChar *end, Sink *sink) {
  if (start != end) sink->put_text(start, static_cast<uint32_t>(end - start));
}

// A directive of the form % [0] [width or *] [.precision] [l] [l] letter, which most are: it needs
// no record, only what fits into registers.
struct Plain {
  const JXChar *end;    // just after the letter
  JXChar letter;        // 0: the directive is of another form
  uint32_t width;       // 0: none
  int32_t precision;    // kNone: none
  uint32_t long_count;  // letters l
  bool with_zeros;
  bool has_star;  // the width is the next argument
};

constexpr int32_t kNone = -1;
constexpr uint32_t kMostPlain = 999;  // width and precision beyond it are left to the full parser

inline uint32_t read_plain_number(const JXChar **at, const JXChar *end) {
  uint32_t number = 0;
  for (; *at < end && **at - '0' < 10 && number <= kMostPlain; ++*at) {
    number = number * 10 + (**at - '0');
  }
  return number;
}

// Reads what follows a "%", of which there is at least one character.
inline void read_plain(const JXChar *at, const JXChar *end, Plain *plain) {
  plain->with_zeros = *at == '0';
  plain->has_star = *at == '*';
  if (plain->has_star) ++at;
  plain->width = plain->has_star ? 0 : read_plain_number(&at, end);
  plain->precision = kNone;
  if (at < end && *at == '.') {
    ++at;
    plain->precision = static_cast<int32_t>(read_plain_number(&at, end));
  }
  plain->long_count = 0;
  for (; at < end && *at == 'l' && plain->long_count < 2; ++at) ++plain->long_count;
  const bool is_small = plain->width <= kMostPlain && plain->precision <= int32_t{kMostPlain};
  plain->letter = at < end && is_small ? *at : 0;
  plain->end = at + 1;
}

enum class PlainKind { kOther, kSigned, kUnsigned, kHexadecimal, kDouble, kString };

// Tells how a directive can be written at once. An integer must fit, because otherwise its pieces
// have to be tried one by one.
inline PlainKind kind_of(const Plain &plain, int64_t room_chars) {
  constexpr int64_t kLongestInteger = 21;
  const bool is_bare_width = !plain.has_star && plain.precision == kNone;
  const bool fits = is_bare_width && room_chars >= kLongestInteger + plain.width;
  switch (plain.letter) {
    case 'd':
    case 'i':
      return fits ? PlainKind::kSigned : PlainKind::kOther;
    case 'u':
      return fits ? PlainKind::kUnsigned : PlainKind::kOther;
    case 'x':
    case 'X':
      return fits ? PlainKind::kHexadecimal : PlainKind::kOther;
    case 'e':
    case 'f':
    case 'g':
      return plain.has_star || plain.with_zeros || plain.width != 0 || plain.long_count != 0
                 ? PlainKind::kOther
                 : PlainKind::kDouble;
    case 's':
      return plain.precision != kNone || plain.long_count != 0 ? PlainKind::kOther
                                                               : PlainKind::kString;
    default:
      return PlainKind::kOther;
  }
}

// The next integer of the list, by the number of letters l.
inline int64_t next_signed(uint32_t long_count, Arguments *arguments) {
  if (long_count == 0) return va_arg(arguments->list, int);
  return long_count == 1 ? va_arg(arguments->list, long) : va_arg(arguments->list, long long);
}

inline uint64_t next_unsigned(uint32_t long_count, Arguments *arguments) {
  if (long_count == 0) return va_arg(arguments->list, unsigned);
  return long_count == 1 ? va_arg(arguments->list, unsigned long)
                         : va_arg(arguments->list, unsigned long long);
}

// Writes an integer field that fits. Zeros in front of hexadecimal digits are digits themselves, so
// that no run has a length that varies from call to call.
template <uint32_t kBase, typename Word>
inline void put_plain_digits(const Plain &plain, Word magnitude, bool is_negative, Sink *sink) {
  uint32_t digits = jx::count_digits(magnitude, kBase);
  if (kBase == 16 && plain.with_zeros) digits = std::max(digits, plain.width);
  const uint32_t chars = digits + (is_negative ? 1 : 0);
  const uint32_t padding = plain.width > chars ? plain.width - chars : 0;
  JXChar *at = sink->add(chars + padding);
  JXChar *const end = at + chars + padding;
  if (is_negative && plain.with_zeros) *at++ = '-';
  for (uint32_t i = 0; i < padding; ++i) *at++ = plain.with_zeros ? '0' : ' ';
  if (is_negative && !plain.with_zeros) *at = '-';
  jx::write_digits(magnitude, kBase, plain.letter == 'X', end, digits);
}

template <uint32_t kBase>
inline void put_plain_integer(const Plain &plain, uint64_t magnitude, bool is_negative,
                              Sink *sink) {
  if (magnitude <= UINT32_MAX) {
    put_plain_digits<kBase>(plain, static_cast<uint32_t>(magnitude), is_negative, sink);
  } else {
    put_plain_digits<kBase>(plain, magnitude, is_negative, sink);
  }
}

void put_plain_signed(const Plain &plain, Arguments *arguments, Sink *sink) {
  const int64_t number = next_signed(plain.long_count, arguments);
  const auto bits = static_cast<uint64_t>(number);
  put_plain_integer<10>(plain, number < 0 ? 0 - bits : bits, number < 0, sink);
}

void put_plain_double(const Plain &plain, JXChar decimal_point, Arguments *arguments, Sink *sink) {
  const double number = va_arg(arguments->list, double);
  if (number < 0) sink->put_character('-');
  uint32_t count = 0;
  const JXStatus status = skzfDouble(number, plain.letter, decimal_point, 0, plain.precision, 0,
                                     sink->place(), sink->room_chars(), &count);
  sink->note_piece(status, count);
}

void put_plain_string(const Plain &plain, Arguments *arguments, Sink *sink) {
  const int64_t width = plain.has_star ? va_arg(arguments->list, int) : int64_t{plain.width};
  const auto *text = va_arg(arguments->list, const JXChar *);
  const uint64_t start = sink->chars();
  const uint32_t chars = skStrTLen(text);
  sink->put_text(text, chars);
  if (width > int64_t{chars}) {
    sink->insert_fill(start, ' ', static_cast<uint64_t>(width - chars));
  } else if (-width > int64_t{chars}) {
    sink->put_fill(' ', static_cast<uint64_t>(-width - chars));
  }
}

inline void put_plain(PlainKind kind, const Plain &plain, JXChar decimal_point,
                      Arguments *arguments, Sink *sink) {
  switch (kind) {
    case PlainKind::kSigned:
      return put_plain_signed(plain, arguments, sink);
    case PlainKind::kUnsigned:
      return put_plain_integer<10>(plain, next_unsigned(plain.long_count, arguments), false, sink);
    case PlainKind::kHexadecimal:
      return put_plain_integer<16>(plain, next_unsigned(plain.long_count, arguments), false, sink);
    case PlainKind::kDouble:
      return put_plain_double(plain, decimal_point, arguments, sink);
    default:
      return put_plain_string(plain, arguments, sink);
  }
}

// Any other directive, with the run of text from *written on in front of it; *written moves behind
// it. The text in front of the first directive stands even when that one ends the call.
JXStatus put_other(const Format &format, const JXChar *start, JXChar decimal_point,
                   Arguments *arguments, const JXChar **written, Sink *sink) {
  Directive directive;
  JXStatus status = parse(format, start, &directive);
  if (status == JX_OK && directive.names_arguments() && !arguments->has_numbered()) {
    status = take_numbered(format, start, arguments);
  }
  if (status == JX_OK || *written == format.text) put_run(*written, start, sink);
  if (status != JX_OK) return status;
  jx::put_directive(format.text, directive, decimal_point, arguments, sink);
  *written = format.text + directive.end;
  return JX_OK;
}

JXStatus put_format(const Format &format, JXChar decimal_point, Arguments *arguments, Sink *sink) {
  const JXChar *written = format.text;
  while (const JXChar *start = find_directive(written, format.end)) {
    // Left without a first value, it can stay in registers.
    Plain plain __attribute__((uninitialized));
    read_plain(start + 1, format.end, &plain);
    const PlainKind kind = kind_of(plain, sink->room_chars() - (start - written));
    if (kind == PlainKind::kOther) {
      const JXStatus status = put_other(format, start, decimal_point, arguments, &written, sink);
      if (status != JX_OK) return status;
      continue;
    }
    put_run(written, start, sink);
    written = plain.end;
    put_plain(kind, plain, decimal_point, arguments, sink);
  }
  put_run(written, format.end, sink);
  return sink->is_truncated() ? JX_E_TRUNCATED : JX_OK;
}

// Both entries: they differ in where the argument list comes from.
JXStatus format_text(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                     JXChar *buffer, int32_t capacity_chars, uint32_t *length_out,
                     Arguments *arguments) {
  if (length_out) *length_out = 0;
  if (format_chars < 0) return JX_E_BADARG;
  if (format_chars == 0) format_chars = static_cast<int32_t>(skStrTLen(format));
  Sink sink(buffer, capacity_chars);
  const JXChar decimal_point = locale ? locale->decimal_point : JXChar{'.'};
  const JXStatus status =
      put_format({format, format + format_chars}, decimal_point, arguments, &sink);
  if (length_out && status != JX_E_BADFORMAT) {
    *length_out = static_cast<uint32_t>(std::min<uint64_t>(sink.chars(), UINT32_MAX));
  }
  return status;
}

}  // namespace

extern "C" {

JXStatus jxzFormatBuffV(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                        JXChar *buffer, int32_t capacity_chars, uint32_t *length_out,
                        va_list args) {
  Arguments arguments __attribute__((uninitialized));
  va_copy(arguments.list, args);
  const JXStatus status =
      format_text(locale, format, format_chars, buffer, capacity_chars, length_out, &arguments);
  va_end(arguments.list);
  return status;
}

// Starts the list where it is used: a copy of what va_start has just stored would wait for it.
JXStatus jxzFormatBuff(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                       JXChar *buffer, int32_t capacity_chars, uint32_t *length_out, ...) {
  Arguments arguments __attribute__((uninitialized));
  va_start(arguments.list, length_out);
  const JXStatus status =
      format_text(locale, format, format_chars, buffer, capacity_chars, length_out, &arguments);
  va_end(arguments.list);
  return status;
}

}  // extern "C"
