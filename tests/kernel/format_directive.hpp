// A directive of a random format: what it is made of and the text of its argument.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <string>

#include "tests/kernel/argument_list.hpp"
#include "tests/kernel/kernel_support.hpp"

namespace jx::test {

inline Type type_of(char letter, const std::string &modifier) {
  const auto is_any_of = [&](const char *letters) { return std::strchr(letters, letter); };
  const bool is_plain = modifier.empty();
  if (is_any_of("diuoxX") && modifier == "l") return kLong;
  if (is_any_of("diuoxX") && modifier == "ll") return kLongLong;
  if (is_any_of("diuoxX")) return is_plain ? kInt : kNone;
  if (is_any_of("cC")) return is_plain || modifier == "h" || modifier == "L" ? kChar : kNone;
  if (is_any_of("eEfgG") && modifier == "L") return kLongDouble;
  if (is_any_of("eEfgG")) return is_plain ? kDouble : kNone;
  return (is_any_of("sSpP") && is_plain) || (is_any_of("sS") && modifier == "h") ? kPointer : kNone;
}

struct Directive {
  std::string text = "%";
  std::string flags = {};
  int width = 0;
  int precision = -1;
  char letter = 0;  // 0: invalid
  Type type = kNone;
  Argument argument = {};

  bool has(char flag) const { return flags.find(flag) != std::string::npos; }
  bool is_any_of(const char *letters) const { return letter && std::strchr(letters, letter); }
};

// Whether the C library prints the same.
inline bool is_same_in_c(const Directive &d) {
  const double value = d.argument.floating;
  // Ties are rounded in another way, and 'g' takes a precision of 0 for 1 and chooses its form
  // after rounding: the number has bits far below its digits and rounds to no power of ten.
  if (d.is_any_of("eEfgG")) {
    const double scaled = std::ldexp(value, 34);
    if (!std::isfinite(value) || scaled == std::trunc(scaled) || d.precision >= 20) return false;
    return !d.is_any_of("gG") || (d.precision != 0 && Exact(std::fabs(value)).digits[0] != '9');
  }
  if (d.is_any_of("oxX") && d.has('#') && (d.has('0') || d.precision == 0)) return false;
  return d.is_any_of("diuoxX") && (d.precision < 0 || !d.has('0'));
}

inline std::string text_of(const Directive &d) {
  if (d.type == kChar) return {as_byte(static_cast<JXChar>(d.argument.integer))};
  const std::string text = d.letter == 'S' ? d.argument.text : d.argument.text.c_str();
  return text.substr(0, d.precision < 0 ? SIZE_MAX : static_cast<size_t>(d.precision));
}

inline std::string missing_text(uint8_t code) {
  if (code == 2) return ".";
  return std::string(".") + (code == 1 ? '_' : as_byte(JXChar{62} + code));
}

inline std::string floating_text(const Directive &d) {
  const char conversion = static_cast<char>(d.letter | 0x20);
  const bool is_small = d.letter == conversion;
  const auto bits = std::bit_cast<uint64_t>(d.argument.floating);
  if (bits >> 48 == 0xFFFF) return missing_text(static_cast<uint8_t>(-(bits >> 40)));
  if (std::isnan(d.argument.floating)) return is_small ? "nan" : "NAN";
  if (std::isinf(d.argument.floating)) return is_small ? "inf" : "INF";
  std::string text = exact_text(std::fabs(d.argument.floating), conversion,
                                d.precision < 0 ? 6 : d.precision, d.has('#'));
  if (!is_small) std::replace(text.begin(), text.end(), 'e', 'E');
  return text;
}

}  // namespace jx::test
