// What the benchmarks of formatting share: values, rows, and digits written by hand straight into
// 32-bit characters, the limit.
#pragma once

#include <fmt/compile.h>
#include <fmt/format.h>
#include <fmt/printf.h>
#include <fmt/xchar.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>
#include <string_view>
#include <vector>

#include "bench/contender.hpp"
#include "bench/peers.hpp"
#include "jx/runtime.h"

namespace jx::bench {

inline constexpr size_t kRoom = 512;
inline constexpr size_t kValues = 8000;  // of a pass

template <typename Value>
std::vector<Value> make_values(Value (*make)(Random &)) {
  Random random;
  std::vector<Value> values;
  for (size_t i = 0; i < kValues; ++i) values.push_back(make(random));
  return values;
}

// A double with a binary exponent of at most `widest`, either way.
inline double any_double(Random &random, int widest) {
  const auto exponent = static_cast<int>(random.below(2 * static_cast<uint64_t>(widest))) - widest;
  return (1 + random.uniform()) * std::ldexp(1.0, exponent);
}

// A row: make(i, buffer) formats value i and returns the length. The checksum is of the lengths and
// of the first and last characters.
template <typename Char, typename Make>
void add(Job &job, std::string name, Make make, Kind kind = Kind::kPeer) {
  job.add(
      std::move(name),
      [make](Watch &) {
        uint64_t sum = 0;
        Char text[kRoom];
        for (size_t i = 0; i < kValues; ++i) {
          const auto length = static_cast<size_t>(make(i, text));
          sum += length * 131 + static_cast<uint64_t>(text[0]) +
                 7 * static_cast<uint64_t>(text[length - 1]);
          keep(*text);
        }
        return sum;
      },
      kind);
}

template <typename Make>
auto widened(Make make) {
  return [make](size_t i, char32_t *out) {
    char narrow[kRoom];
    const auto length = static_cast<size_t>(make(i, narrow));
    for (size_t k = 0; k < length; ++k) out[k] = static_cast<unsigned char>(narrow[k]);
    return length;
  };
}

inline size_t copied(const std::string &text, char *out) {
  std::memcpy(out, text.data(), text.size());
  return text.size();
}

inline const JXChar *units(const char32_t *text) { return reinterpret_cast<const JXChar *>(text); }
inline JXChar *units(char32_t *text) { return reinterpret_cast<JXChar *>(text); }

template <typename... Arguments>
uint32_t format_with_module(const char32_t *format, char32_t *out, Arguments... arguments) {
  uint32_t length = 0;
  const auto format_chars = static_cast<int32_t>(std::char_traits<char32_t>::length(format));
  (void)jxzFormatBuff(nullptr, units(format), format_chars, units(out), kRoom, &length,
                      arguments...);
  return length;
}

// Two decimal digits as 32-bit characters in one word.
inline constexpr auto kDigitPairs = [] {
  std::array<uint64_t, 100> table{};
  for (size_t i = 0; i < 100; ++i) table[i] = ('0' + i / 10) | uint64_t{'0' + i % 10} << 32;
  return table;
}();

// `count` digits, leading zeros included.
inline void put_digits(uint32_t value, unsigned count, char32_t *out) {
  for (; count >= 2; count -= 2, value /= 100) {
    std::memcpy(out + count - 2, &kDigitPairs[value % 100], 8);
  }
  if (count) *out = U'0' + value;
}

inline size_t put_decimal(uint32_t value, char32_t *out) {
  static constexpr uint32_t kPowers[] = {0,      10,      100,      1000,      10000,
                                         100000, 1000000, 10000000, 100000000, 1000000000};
  const unsigned guess = (32 - static_cast<unsigned>(__builtin_clz(value | 1))) * 1233 >> 12;
  const unsigned count = guess + (guess == 0 || value >= kPowers[guess]);
  put_digits(value, count, out);
  return count;
}

inline size_t put_decimal(uint64_t value, char32_t *out) {
  if (value <= 0xFFFFFFFFu) return put_decimal(static_cast<uint32_t>(value), out);
  const size_t length = put_decimal(value / 100'000'000u, out);
  put_digits(static_cast<uint32_t>(value % 100'000'000u), 8, out + length);
  return length + 8;
}

// Six decimals of a value in [2^-11, 2^53), exact, a half rounded away from zero.
inline size_t put_fixed6(double value, char32_t *out) {
  uint64_t bits = 0;
  std::memcpy(&bits, &value, 8);
  const int shift = 1075 - static_cast<int>(bits >> 52 & 0x7FF);  // value = significand / 2^shift
  const uint64_t significand = (bits & 0xFFFFFFFFFFFFF) | 0x10000000000000;
  uint64_t whole = shift < 64 ? significand >> shift : 0;
  const uint64_t fraction = shift ? significand << (64 - shift) : 0;  // times 2^-64
  const uint64_t low = (fraction & 0xFFFFFFFF) * 1'000'000;           // product in two halves
  const uint64_t high = (fraction >> 32) * 1'000'000 + (low >> 32);
  auto decimals = static_cast<uint32_t>(high >> 32);
  if ((high & 0x80000000u) && ++decimals == 1'000'000) {
    ++whole;
    decimals = 0;
  }
  const size_t length = put_decimal(whole, out);
  out[length] = U'.';
  put_digits(decimals, 6, out + length + 1);
  return length + 7;
}

inline char32_t *put_hex(uint32_t value, int width, char32_t *out) {
  for (int i = width - 1; i >= 0; --i, value >>= 4) out[i] = U"0123456789ABCDEF"[value & 15];
  return out + width;
}

template <size_t kSize>
char32_t *put(const char32_t (&text)[kSize], char32_t *out) {
  std::memcpy(out, text, (kSize - 1) * sizeof *text);
  return out + kSize - 1;
}

}  // namespace jx::bench
