// What the kernel tests share: test sizes, guarded output buffers, digits, and the exact reference
// for doubles: decimal strings, rounded half away from zero.
#pragma once

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "jx/runtime.h"
#include "support/scale.hpp"
#include "support/text.hpp"

namespace jx::test {

// One byte for every character, so that lengths stay what they are.
inline char as_byte(JXChar character) {
  return character < 0x100 ? static_cast<char>(character) : '?';
}

inline std::string digits_in_base(uint64_t value, uint32_t base, bool uppercase) {
  char text[64];
  char *const end = std::to_chars(text, std::end(text), value, static_cast<int>(base)).ptr;
  if (uppercase) std::transform(text, end, text, [](char c) { return std::toupper(c); });
  return {text, end};
}

// An output buffer whose unwritten characters can be told from written ones.
class GuardedBuffer {
 public:
  static constexpr JXChar kUntouched = 0xDEADBEEF;
  explicit GuardedBuffer(size_t chars) : cells_(chars + 8, kUntouched) {}
  JXChar *data() { return cells_.data(); }
  // The characters before the first untouched one; one more after it spoils the text.
  std::string text() const {
    const auto end = std::find(cells_.begin(), cells_.end(), kUntouched);
    std::string text(static_cast<size_t>(end - cells_.begin()), 0);
    std::transform(cells_.begin(), end, text.begin(), as_byte);
    const bool is_clean = std::count(end, cells_.end(), kUntouched) == cells_.end() - end;
    return is_clean ? text : text + " and more";
  }

 private:
  std::vector<JXChar> cells_;
};

// A finite value without its sign: all its digits, 0.digits * 10^point. Zero: zeros and point 1.
struct Exact {
  std::string digits;
  int point;

  explicit Exact(double value) {
    constexpr int kPlaces = 780;  // no double has more than 767 digits
    char text[kPlaces + 16];
    std::snprintf(text, sizeof(text), "%.*e", kPlaces, value);
    digits = text[0] + std::string(text + 2, kPlaces);
    point = std::atoi(text + 2 + kPlaces + 1) + 1;
  }
  bool is_zero() const { return digits[0] == '0'; }
};

// A digit for the carry and the first `kept` digits.
inline std::string rounded(const Exact &exact, int kept) {
  if (kept < 0) return "0";
  std::string digits = "0" + exact.digits;
  const size_t length = static_cast<size_t>(kept) + 1;
  const bool is_up = digits.size() > length && digits[length] >= '5';
  digits.resize(length, '0');
  if (!is_up) return digits;
  auto last = digits.rbegin();
  while (*last == '9') *last++ = '0';
  ++*last;
  return digits;
}

inline std::string fixed_text(const Exact &exact, int places, bool has_point) {
  const auto after = static_cast<size_t>(places);
  std::string digits = rounded(exact, exact.point + places);
  if (digits.size() <= after) digits.insert(0, after + 1 - digits.size(), '0');
  const size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
  digits.erase(0, std::min(zeros, digits.size() - after - 1));
  if (places > 0 || has_point) digits.insert(digits.size() - after, 1, '.');
  return digits;
}

inline std::string exponent_text(const Exact &exact, int places, bool has_point) {
  std::string digits = rounded(exact, places + 1);
  const bool has_carried = digits[0] != '0';
  digits.erase(has_carried ? digits.size() - 1 : 0, 1);
  if (places > 0 || has_point) digits.insert(1, 1, '.');
  char suffix[16];
  std::snprintf(suffix, sizeof(suffix), "e%+03d", exact.point - (has_carried ? 0 : 1));
  return digits + suffix;
}

// What the 'e', 'f' and 'g' conversions make of the value without its sign.
inline std::string exact_text(double value, char conversion, int precision, bool alternate) {
  const Exact exact(value);
  if (conversion == 'f') return fixed_text(exact, precision, alternate);
  if (conversion == 'e') return exponent_text(exact, precision, alternate);
  const int exponent = exact.point - 1;
  const bool is_fixed = exact.is_zero() || (exponent >= -4 && exponent < std::max(precision, 0));
  const int places = exact.is_zero() ? precision : precision - 1 - exponent;
  std::string text = is_fixed ? fixed_text(exact, places, alternate)
                              : exponent_text(exact, std::max(precision - 1, 0), alternate);
  if (alternate || text.find('.') == std::string::npos) return text;
  const size_t end = std::min(text.find('e'), text.size());
  const size_t last = text.find_last_not_of('0', end - 1);
  const size_t kept = text[last] == '.' ? last : last + 1;
  return text.erase(kept, end - kept);
}

}  // namespace jx::test
