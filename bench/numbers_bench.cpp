// Numbers and formatted text against the C library, the C++ library and {fmt}. A row called
// "number" is the bare conversion; "format" goes through the formatter with a format string.
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cwchar>
#include <random>
#include <string_view>

#include "bench/wide.hpp"
#include "jx/runtime.h"

namespace {

using jx::bench::wide;

constexpr size_t kValues = 1024;
constexpr int32_t kRoom = 400;

// The values: the counter of unique names, integers of every length, doubles of everyday size and
// of every exponent.
struct Inputs {
  std::array<uint32_t, kValues> counters;
  std::array<int32_t, kValues> integers;
  std::array<uint64_t, kValues> longs;
  std::array<double, kValues> everyday;
  std::array<double, kValues> all;
  Inputs() {
    std::mt19937_64 random(1);
    for (size_t i = 0; i < kValues; ++i) {
      counters[i] = static_cast<uint32_t>(i + 1);
      integers[i] = static_cast<int32_t>(random()) >> (random() % 31);
      longs[i] = random() >> (random() % 63);
      everyday[i] =
          std::ldexp(static_cast<double>(random() >> 11), -53 + static_cast<int>(random() % 20));
      uint64_t bits = random() >> 1;
      if (bits >> 52 == 0x7FF) bits ^= uint64_t{1} << 61;
      all[i] = std::bit_cast<double>(bits);
    }
  }
};

const Inputs inputs;

// Runs `convert` on the values in turn.
template <typename Values, typename Convert>
void run(benchmark::State &state, const Values &values, Convert convert) {
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(convert(values[i]));
    i = (i + 1) % kValues;
  }
}

template <size_t kSize, typename... Args>
uint32_t jx_format(const std::array<JXChar, kSize> &format, Args... args) {
  static JXChar buffer[kRoom];
  uint32_t length = 0;
  if (jxzFormatBuff(nullptr, format.data(), kSize, buffer, kRoom, &length, args...) != JX_OK) {
    std::abort();
  }
  benchmark::DoNotOptimize(buffer);
  return length;
}

template <typename... Args>
int c_format(const char *format, Args... args) {
  static char buffer[kRoom];
  const int length = std::snprintf(buffer, sizeof(buffer), format, args...);
  benchmark::DoNotOptimize(buffer);
  return length;
}

template <typename... Args>
int wide_format(const wchar_t *format, Args... args) {
  static wchar_t buffer[kRoom];
  const int length = std::swprintf(buffer, kRoom, format, args...);
  benchmark::DoNotOptimize(buffer);
  return length;
}

template <typename... Args>
char *fmt_format(std::string_view format, Args... args) {
  static char buffer[kRoom];
  char *end = fmt::format_to(buffer, fmt::runtime(format), args...);
  benchmark::DoNotOptimize(buffer);
  return end;
}

template <typename... Args>
char *to_chars(Args... args) {
  static char buffer[kRoom];
  char *end = std::to_chars(buffer, buffer + kRoom, args...).ptr;
  benchmark::DoNotOptimize(buffer);
  return end;
}

uint32_t jx_double(double value, char conversion, int32_t precision) {
  static JXChar buffer[kRoom];
  uint32_t count = 0;
  if (skzfDouble(value, static_cast<uint32_t>(conversion), '.', 0, precision, 0, buffer, kRoom,
                 &count) != JX_OK) {
    std::abort();
  }
  benchmark::DoNotOptimize(buffer);
  return count;
}

uint32_t jx_integer(uint64_t value) {
  static JXChar buffer[kRoom];
  uint32_t count = 0;
  if (skzfIMax(value, 10, 0, buffer, kRoom, &count) != JX_OK) std::abort();
  benchmark::DoNotOptimize(buffer);
  return count;
}

// One row: subject, library, values and the call.
#define JX_ROW(subject, who, values, expression)                      \
  void subject##_##who(benchmark::State &state) {                     \
    run(state, inputs.values, [](auto value) { return expression; }); \
  }                                                                   \
  BENCHMARK(subject##_##who)

constexpr auto kName = wide("ZOR_util%04X%08X_%*s");
constexpr char kNode[] = "node7.example";
constexpr wchar_t kWideNode[] = L"node7.example";
JX_ROW(name_format, jx, counters, jx_format(kName, value, 4711, 13, kWideNode));
JX_ROW(name_format, snprintf, counters, c_format("ZOR_util%04X%08X_%*s", value, 4711, 13, kNode));
JX_ROW(name_format, swprintf, counters,
       wide_format(L"ZOR_util%04X%08X_%*ls", value, 4711, 13, kWideNode));
JX_ROW(name_format, fmt, counters,
       fmt_format("ZOR_util{:04X}{:08X}_{:>{}}", value, 4711, kNode, 13));

constexpr auto kD = wide("%d");
JX_ROW(d_format, jx, integers, jx_format(kD, value));
JX_ROW(d_format, snprintf, integers, c_format("%d", value));
JX_ROW(d_format, swprintf, integers, wide_format(L"%d", value));
JX_ROW(d_format, fmt, integers, fmt_format("{}", value));

constexpr auto kLlu = wide("%llu");
JX_ROW(llu_format, jx, longs, jx_format(kLlu, value));
JX_ROW(llu_format, snprintf, longs, c_format("%llu", static_cast<unsigned long long>(value)));
JX_ROW(llu_format, swprintf, longs, wide_format(L"%llu", static_cast<unsigned long long>(value)));
JX_ROW(llu_format, fmt, longs, fmt_format("{}", value));
JX_ROW(u64_number, jx, longs, jx_integer(value));
JX_ROW(u64_number, to_chars, longs, to_chars(value));

constexpr auto kF = wide("%.6f");
JX_ROW(f_format, jx, everyday, jx_format(kF, value));
JX_ROW(f_format, snprintf, everyday, c_format("%.6f", value));
JX_ROW(f_format, swprintf, everyday, wide_format(L"%.6f", value));
JX_ROW(f_format, fmt, everyday, fmt_format("{:.6f}", value));
JX_ROW(f_number, jx, everyday, jx_double(value, 'f', 6));
JX_ROW(f_number, to_chars, everyday, to_chars(value, std::chars_format::fixed, 6));
JX_ROW(f_all_number, jx, all, jx_double(value, 'f', 6));
JX_ROW(f_all_number, to_chars, all, to_chars(value, std::chars_format::fixed, 6));

constexpr auto kE = wide("%.17e");
JX_ROW(e_format, jx, all, jx_format(kE, value));
JX_ROW(e_format, snprintf, all, c_format("%.17e", value));
JX_ROW(e_format, swprintf, all, wide_format(L"%.17e", value));
JX_ROW(e_format, fmt, all, fmt_format("{:.17e}", value));
JX_ROW(e_number, jx, all, jx_double(value, 'e', 17));
JX_ROW(e_number, to_chars, all, to_chars(value, std::chars_format::scientific, 17));

constexpr auto kG = wide("%g");
JX_ROW(g_format, jx, everyday, jx_format(kG, value));
JX_ROW(g_format, snprintf, everyday, c_format("%g", value));
JX_ROW(g_format, swprintf, everyday, wide_format(L"%g", value));
JX_ROW(g_format, fmt, everyday, fmt_format("{:g}", value));
JX_ROW(g_number, jx, everyday, jx_double(value, 'g', 6));
JX_ROW(g_number, to_chars, everyday, to_chars(value, std::chars_format::general, 6));

}  // namespace

BENCHMARK_MAIN();
