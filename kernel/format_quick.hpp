// The quick path of jxzFormatBuff: directives of the form % [0] [width or *] [.precision] [l] [l]
// letter, which most are. They need no record: what is read stays in registers, and an integer is
// written in one piece. What they do not take (flags, numbered arguments, too little room) goes to
// the general path, with the same results.
//
// Time against {fmt} with the formats compiled in, which makes 8-bit characters, on x86-64 and on
// i386: "%d" 1.05 and 1.28, "%llu" 1.17 and 0.84, "%g" 0.88 and 0.87, "%s: %d of %llu at %.6f"
// 0.79 and 0.67, "ZOR_util%04X%08X_%s" 1.24 and 0.96. Integers alone, written by hand into 32-bit
// characters, take 1.12 and 1.25 ("%d"), 1.16 and 0.63 ("%llu"). Numbers of random length and sign
// cost a mispredicted branch at each decision on them, and so there is one at most.
//
// Only skzfbuff.cpp includes this. What has to be inlined into its loops says so: the compiler
// leaves it out of line otherwise, and keeps the directive in memory.
#pragma once

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdint>

#include "jx/runtime.h"
#include "kernel/digits.hpp"
#include "kernel/format.hpp"
#include "kernel/string_length.hpp"

namespace jx {

// What a plain directive may have before its letter.
inline constexpr uint32_t kPlainZeros = 1;
inline constexpr uint32_t kPlainWidth = 2;
inline constexpr uint32_t kPlainStar = 4;  // the width is the next argument
inline constexpr uint32_t kPlainPrecision = 8;
inline constexpr uint32_t kPlainLong = 16;
inline constexpr uint32_t kPlainLongLong = 32;
inline constexpr uint32_t kPlainLetter = 128;  // always: no letter, no directive

enum class PlainKind : uint8_t { kOther, kDecimal, kHexadecimal, kString, kDouble };

// How a letter is taken here. The forms that it refuses are for the general path.
struct PlainLetter {
  uint8_t refused_forms;
  PlainKind kind;
};
inline constexpr std::array<PlainLetter, 128> kPlainLetters = [] {
  std::array<PlainLetter, 128> letters{};
  letters.fill({0xFF, PlainKind::kOther});
  const auto take = [&](char letter, PlainKind kind, uint32_t forms) {
    letters[static_cast<uint8_t>(letter)] = {static_cast<uint8_t>(~(forms | kPlainLetter)), kind};
  };
  constexpr uint32_t kIntegerForms = kPlainZeros | kPlainWidth | kPlainLong | kPlainLongLong;
  for (const char letter : {'d', 'i', 'u'}) take(letter, PlainKind::kDecimal, kIntegerForms);
  for (const char letter : {'x', 'X'}) take(letter, PlainKind::kHexadecimal, kIntegerForms);
  for (const char letter : {'e', 'f', 'g'}) take(letter, PlainKind::kDouble, kPlainPrecision);
  take('s', PlainKind::kString, kPlainZeros | kPlainWidth | kPlainStar);
  return letters;
}();

struct PlainDirective {
  const JXChar *end;  // just after the letter
  JXChar letter;
  PlainKind kind;
  uint32_t forms;     // of the bits above
  uint32_t width;     // 0: none
  int32_t precision;  // kNoPrecision: none

  bool has(uint32_t form) const { return (forms & form) != 0; }
};

inline constexpr uint32_t kLongestInteger = 21;  // with its sign, and one to spare

// Reads the characters of one directive; 0 after the end of the format.
class PlainCursor {
 public:
  PlainCursor(const JXChar *at, const JXChar *end) : at_(at), end_(end), character_(*at) {}

  JXChar character() const { return character_; }
  const JXChar *at() const { return at_; }
  void advance() { character_ = ++at_ < end_ ? *at_ : 0; }
  // Stops in a number above 999: the digit it stops at is no letter.
  uint32_t read_number() {
    uint32_t number = 0;
    for (; character_ - '0' < 10 && number < 100; advance()) {
      number = number * 10 + (character_ - '0');
    }
    return number;
  }
  // Reads "l" or "ll".
  uint32_t read_long() {
    advance();
    if (character_ != 'l') return kPlainLong;
    advance();
    return kPlainLongLong;
  }

 private:
  const JXChar *at_;
  const JXChar *end_;
  JXChar character_;
};

// Reads the directive from the character after its "%" on; there is at least one. False if it is
// one for the general path.
[[gnu::always_inline]] static inline bool read_plain(const JXChar *from, const JXChar *end,
                                                     PlainDirective *plain) {
  PlainCursor cursor(from, end);
  plain->width = 0;
  plain->precision = kNoPrecision;
  plain->forms = kPlainLetter;
  if (cursor.character() < 'A') {  // digits, "*" and "." come before all letters
    if (cursor.character() == '0') {
      plain->forms |= kPlainWidth | kPlainZeros;
      cursor.advance();
    }
    if (cursor.character() - '1' < 9) {
      plain->forms |= kPlainWidth;
      plain->width = cursor.read_number();
    } else if (cursor.character() == '*' && !plain->has(kPlainZeros)) {
      plain->forms |= kPlainStar;
      cursor.advance();
    }
    if (cursor.character() == '.') {
      cursor.advance();
      plain->forms |= kPlainPrecision;
      plain->precision = static_cast<int32_t>(cursor.read_number());
    }
  }
  if (cursor.character() == 'l') plain->forms |= cursor.read_long();
  plain->letter = cursor.character();
  plain->end = cursor.at() + 1;
  if (plain->letter >= kPlainLetters.size()) return false;
  const PlainLetter letter = kPlainLetters[plain->letter];
  plain->kind = letter.kind;
  return !plain->has(letter.refused_forms);
}

// The same for a decimal integer without flags and width.
[[gnu::always_inline]] static inline bool read_bare(const JXChar *from, const JXChar *end,
                                                    PlainDirective *plain) {
  PlainCursor cursor(from, end);
  plain->width = 0;
  plain->forms = kPlainLetter;
  if (cursor.character() == 'l') plain->forms |= cursor.read_long();
  plain->letter = cursor.character();
  plain->end = cursor.at() + 1;
  return plain->letter == 'd' || plain->letter == 'u' || plain->letter == 'i';
}

static inline JXChar *put_padding(JXChar *at, JXChar character, uint64_t chars) {
  for (; chars > 0; --chars) *at++ = character;
  return at;
}

// Writes an integer field, and returns its end. Padding zeros of a hexadecimal number are written
// as digits: the loop then has the same length in every call, and its branch is predicted.
template <uint32_t kBase, typename Word>
[[gnu::always_inline]] static inline JXChar *put_plain_digits(const PlainDirective &plain,
                                                              Word magnitude, uint32_t sign_chars,
                                                              JXChar *at) {
  uint32_t digits = count_digits(magnitude, kBase);
  if (kBase == 16 && plain.has(kPlainZeros)) digits = std::max(digits, plain.width);
  uint32_t zeros = 0;
  if (plain.width > digits + sign_chars) {
    const uint32_t padding = plain.width - digits - sign_chars;
    zeros = plain.has(kPlainZeros) ? padding : 0;
    at = put_padding(at, ' ', padding - zeros);
  }
  if (kBase == 10) *at = '-';  // a digit replaces it, unless there is a sign
  at = put_padding(at + sign_chars, '0', zeros);
  if constexpr (kBase == 10) {
    write_decimal(at, magnitude, digits);
  } else {
    write_hexadecimal(at, magnitude, digits, plain.letter == 'X');
  }
  return at + digits;
}

// Takes and writes an integer. Whether a number is negative is hard to predict: no branch on it.
template <uint32_t kBase>
[[gnu::always_inline]] static inline JXChar *put_plain_integer(const PlainDirective &plain,
                                                               bool is_signed, Arguments *arguments,
                                                               JXChar *at) {
  if (!plain.has(kPlainLong | kPlainLongLong)) {
    const uint32_t bits = va_arg(arguments->list, uint32_t);
    const uint32_t sign = is_signed ? bits >> 31 : 0;
    return put_plain_digits<kBase>(plain, (bits ^ (0 - sign)) + sign, sign, at);
  }
  uint64_t bits;
  if (plain.has(kPlainLongLong)) {
    bits = va_arg(arguments->list, uint64_t);
  } else {
    const long number = va_arg(arguments->list, long);
    bits = is_signed ? static_cast<uint64_t>(number) : static_cast<unsigned long>(number);
  }
  const uint64_t sign = is_signed ? bits >> 63 : 0;
  const uint64_t magnitude = (bits ^ (0 - sign)) + sign;
  const auto sign_chars = static_cast<uint32_t>(sign);
  if (sizeof(void *) == 8 || magnitude > UINT32_MAX) {
    return put_plain_digits<kBase>(plain, magnitude, sign_chars, at);
  }
  // Not covered: coverage is measured on a 64-bit processor, where all lengths go one way.
  return put_plain_digits<kBase>(plain, static_cast<uint32_t>(magnitude), sign_chars, at);
  // Covered.
}

// Out of line, and the directive by its parts, so that the directive stays in registers. Returns
// the end of the output. The characters of pieces that do not fit go to *refused_chars.
[[gnu::noinline]] static JXChar *put_plain_double(JXChar letter, int32_t precision,
                                                  const JXLocale *locale, Arguments *arguments,
                                                  JXChar *at, const JXChar *limit,
                                                  uint64_t *refused_chars) {
  const double number = va_arg(arguments->list, double);
  if (number < 0) *at++ = '-';
  uint32_t count = 0;
  const JXStatus status = skzfDouble(number, letter, decimal_point_of(locale), 0, precision, 0, at,
                                     static_cast<int32_t>(limit - at), &count);
  if (status == JX_OK) return at + count;
  *refused_chars = count;
  return at;
}

// The same for a string: the text is a piece, and its padding is another.
[[gnu::always_inline]] static inline JXChar *put_plain_string(uint32_t width_chars, bool has_star,
                                                              Arguments *arguments, JXChar *at,
                                                              const JXChar *limit,
                                                              uint64_t *refused_chars) {
  const int32_t width = has_star ? va_arg(arguments->list, int) : static_cast<int32_t>(width_chars);
  const auto *text = va_arg(arguments->list, const JXChar *);
  const uint32_t chars = text ? string_length<JXChar, true>(text) : 0;
  const auto room = static_cast<size_t>(limit - at);
  const uint32_t field_chars =
      width < 0 ? 0 - static_cast<uint32_t>(width) : static_cast<uint32_t>(width);
  const uint32_t padding = field_chars > chars ? field_chars - chars : 0;
  if (chars > room) {
    *refused_chars = uint64_t{chars} + padding;
    return at;
  }
  const bool fits = padding <= room - chars;
  if (!fits) *refused_chars = padding;
  if (fits && width > 0) at = put_padding(at, ' ', padding);
  copy_chars(text, chars, at);
  return fits && width < 0 ? put_padding(at + chars, ' ', padding) : at + chars;
}

// Takes the arguments of a plain directive, writes its field and returns its end. There is room for
// a number. Only strings and doubles can be refused.
[[gnu::always_inline]] static inline JXChar *put_plain(const PlainDirective &plain,
                                                       const JXLocale *locale, Arguments *arguments,
                                                       JXChar *at, const JXChar *limit,
                                                       uint64_t *refused_chars) {
  if (plain.kind == PlainKind::kDecimal) {
    return put_plain_integer<10>(plain, plain.letter != 'u', arguments, at);
  }
  if (plain.kind == PlainKind::kHexadecimal) {
    return put_plain_integer<16>(plain, false, arguments, at);
  }
  uint64_t refused = 0;  // apart from *refused_chars, which stays in a register
  if (plain.kind == PlainKind::kString) {
    at = put_plain_string(plain.width, plain.has(kPlainStar), arguments, at, limit, &refused);
  } else {
    at = put_plain_double(plain.letter, plain.precision, locale, arguments, at, limit, &refused);
  }
  *refused_chars = refused;
  return at;
}

}  // namespace jx
