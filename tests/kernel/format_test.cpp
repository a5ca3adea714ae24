// Formatted text: every rule of the directives as a row, and the memory that a call uses.
#include <gtest/gtest.h>
#include <pthread.h>

#include <bit>
#include <climits>
#include <cmath>

#include "tests/kernel/kernel_support.hpp"

namespace {

using jx::test::GuardedBuffer;

constexpr int32_t kAmple = 400;

struct Outcome {
  std::string_view format;
  std::string text;
  JXStatus status;
  uint32_t length;
};

template <typename... Args>
Outcome run_in(int32_t capacity, std::string_view format, Args... args) {
  GuardedBuffer buffer(kAmple);
  Outcome outcome = {format, "", 0, 77};
  const jx::test::JXString wide = jx::test::jx(format);
  outcome.status = jxzFormatBuff(nullptr, wide.data(), static_cast<int32_t>(wide.size()),
                                 buffer.data(), capacity, &outcome.length, args...);
  outcome.text = buffer.text();
  return outcome;
}

template <typename... Args>
Outcome run(std::string_view format, Args... args) {
  return run_in(kAmple, format, args...);
}

struct Row {
  Outcome outcome;
  std::string_view text;
  JXStatus status = JX_OK;
  uint32_t length = 0;  // of the text when all is well
};

void check(std::initializer_list<Row> rows) {
  for (const Row &row : rows) {
    EXPECT_EQ(row.outcome.text, row.text) << row.outcome.format;
    EXPECT_EQ(row.outcome.status, row.status) << row.outcome.format;
    const size_t length = row.status == JX_OK ? row.text.size() : row.length;
    EXPECT_EQ(row.outcome.length, length) << row.outcome.format;
  }
}

TEST(Format, Grammar) {
  check({
      {run("abc%"), "abc%"},
      {run("ZOR_util%04X%08X_%*s", 1, 1234, 5, U"node7"), "ZOR_util0001000004D2_node7"},
      {run("%*s%04X%06X", 3, U"tmp", 1234, 1), "tmp04D2000001"},
      {run("%%%5%%-%%l%%.%"), "%<<%5%>><<%-%>><<%l%>><<%.%>>"},
      {run("%q%d", 3), "<<%q>>3"},
      {run("%hd %lf %hhd %lld", 5LL), "<<%hd>> <<%lf>> <<%hh>>d 5"},
      {run("%llld %F %n %ls %Ld"), "<<%lll>>d <<%F>> <<%n>> <<%ls>> <<%Ld>>"},
      {run("%5-d%5*d%0$d%.-5d%5"), "<<%5->>d<<%5*>>d<<%0$>>d<<%.->>5d<<%5>>"},
      {run("%*q%d%*", 5, 7, 4), "<<%*q>>7<<%*>>"},
      {run("%S%d", U"xyz", 4), "<<%S>>4"},
      {run("%2:d%:d"), "<<%2:>>d<<%:>>d"},
      {run("%.*S%hS%d", -1, U"xyz", "xyz", 4), "<<%.*S>><<%hS>>4"},
  });
}

TEST(Format, Values) {
  const void *const null = nullptr;
  void *const pointer = reinterpret_cast<void *>(0xABC);
  check({
      {run("%05d|%+d|% d|%+ d", -42, 0, 7, 8), "-0042|+0| 7|+8"},
      {run("%00d|%005d|%0*d|%0*s|%00s", 7, 7, 4, 7, 3, U"a", U"b"), "7|00007|0007|  a|b"},
      {run("%d %lld", INT_MIN, LLONG_MIN), "-2147483648 -9223372036854775808"},
      {run("%u %lu %llu", -1, 7L, ~0ULL), "4294967295 7 18446744073709551615"},
      {run("%#08x|%#o|%#x|%#X", 0x1F, 8, 0, 255), "00000x1f|010|0|0XFF"},
      {run("%#.0o%#.0x%.0d|%3.0d|%+.0d", 0, 0, 0, 0, 0), "|   |+"},
      {run("%08.3d %08.3d", 5, -5), "00000005 -0000005"},
      {run("%p %#P %#p", pointer, pointer, null), "abc 0XABC 0"},
      {run("%-4c|%3C|%hc%Lc", 0x41, 0x42, 0x43, 0x44), "A   |  B|CD"},
      {run("%.3s|%.9s|%-6s|%03s", U"abcdef", U"abc", U"abc", U"a"), "abc|abc|abc   |  a"},
      {run("%.*S|%05S|%.0S|", 2, U"xyz", U"gone", U"xyz"), "xy|<<%05S>>||"},
      {run("%s|%5s|%.2S|%hs|%.3hS|", null, null, null, null, null), "|     ||||"},
  });
}

TEST(Format, Floating) {
  const auto missing = [](uint64_t code) { return std::bit_cast<double>(~(code << 40)); };
  check({
      {run("%.2f %.0f %.1f %.1f", 0.125, 2.5, 0.15, 99.99), "0.13 3 0.1 100.0"},
      {run("%.0f %#.0f %.f %.*f", 3.0, 3.0, 0.5, -1, 1.2), "3 3. 1 1.200000"},
      {run("%.3e %.0e %#.0e %.2e", 9.9996, 1.0, 1.0, 0.0), "1.000e+01 1e+00 1.e+00 0.00e+00"},
      {run("%e %.3e %.1E", 1e100, 9.9999999e-100, 1.5e9), "1.000000e+100 1.000e-99 1.5E+09"},
      {run("%g %g %.0g %g %g", 1e5, 1e6, 5.0, 1e-4, 1e-5), "100000 1e+06 5e+00 0.0001 1e-05"},
      {run("%g %#.3g %#.0g", 0.0, 0.0, -0.0), "0 0.000 0."},
      {run("%g %g %.2g", 999999.5, 9.9999996, 99.5), "1000000 10 100"},
      {run("%.3g %.3g %#g %G", 1.2345e-5, 1234.5, 1.0, 1e-10), "1.23e-05 1.23e+03 1.00000 1E-10"},
      {run("%f %+.1f % .1f %08.2f", -0.0, -2.25, 1.0, -1.5), "0.000000 -2.3  1.0 -0001.50"},
      {run("%-5e|%+G|%05.1f", -HUGE_VAL, HUGE_VAL, HUGE_VAL), "-inf |+INF|00inf"},
      {run("%e %#G", std::nan(""), std::nan("")), "nan NAN"},
      {run("%f|%+f|%3g|%03g", missing(3), missing(3), missing(3), missing(3)), ".B|+.B| .B|0.B"},
      {run("%f %e %#g %#.0f", missing(1), missing(0), missing(2), missing(27)), ". ._ .A .Z"},
  });
}

TEST(Format, NumberedArguments) {
  check({
      {run("%2$d %1$d", 1, 2), "2 1"},
      {run("%1$d %1$f", 2.5), "2 2.500000"},
      {run("%1$*2$d|", 7, 5), "    7|"},
      {run("%1$.*2$f|", 3.14159, 2), "3.14|"},
      {run("%3$d %3$s", 9), "0 "},
      {run("%1$s|%1$f", 1.5), "|1.500000"},
      {run("%1$u %1$d %1$llx", -1LL), "4294967295 -1 ffffffffffffffff"},
      {run("%1$d %1$lld %1$.0f", 1e20), "-2147483648 -9223372036854775808 100000000000000000000"},
      {run("%10$d%9$d%8$d%7$d%6$d%5$d%4$d%3$d%2$d%1$d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 0),
       "0987654321"},
  });
}

TEST(Format, RefusalsAndTruncation) {
  check({
      {run("%11$d", 1), "", JX_E_BADFORMAT, 0},
      {run("%*5d", 1, 2), "", JX_E_BADFORMAT, 0},
      {run("%99999999999999999999$d", 1), "", JX_E_BADFORMAT, 0},
      {run("%.*11$d", 1), "", JX_E_BADFORMAT, 0},
      {run("ab%*5", 1), "ab", JX_E_BADFORMAT, 0},
      {run("ab%dcd%11$d", 1), "ab1", JX_E_BADFORMAT, 0},
      {run_in(5, "abc%d", 123), "abc", JX_E_TRUNCATED, 6},
      {run_in(3, "%5d", 1), "1", JX_E_TRUNCATED, 5},
      {run_in(3, "%.4d", 5), "5", JX_E_TRUNCATED, 4},
      {run_in(-5, "%s", U""), ""},
      {run_in(-5, "a"), "", JX_E_TRUNCATED, 1},
      {run_in(9, "a%*d", INT_MIN, 1), "a1", JX_E_TRUNCATED, 2147483649},
      {run_in(9, "%2147483647d%2147483647d%9d", 1, 1, 1), "1", JX_E_TRUNCATED, UINT32_MAX},
      {run_in(9, "%.2147483647f", 1.0), "", JX_E_TRUNCATED, 2147483649},
  });
}

TEST(Format, FormatLengthAndDecimalPoint) {
  JXChar buffer[16];
  uint32_t length = 9;
  const JXLocale comma = {nullptr, ','};
  const jx::test::JXString format = jx::test::jx(std::string_view("%.1f\0%d", 7));
  EXPECT_EQ(jxzFormatBuff(&comma, format.data(), 0, buffer, 16, &length, 1.5), JX_OK);
  EXPECT_EQ(jx::test::narrow(buffer, length), "1,5");
  EXPECT_EQ(jxzFormatBuff(&comma, format.data(), 7, buffer, 16, nullptr, 1.5, 4), JX_OK);
  EXPECT_EQ(jx::test::narrow(buffer, 5), std::string_view("1,5\0004", 5));
  EXPECT_EQ(jxzFormatBuff(nullptr, format.data(), -1, buffer, 16, &length), JX_E_BADARG);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(jxzFormatBuff(nullptr, nullptr, 0, nullptr, 0, &length), JX_OK);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

extern "C" void *__libc_malloc(size_t bytes);
thread_local int64_t allocations = 0;
const jx::test::JXString hardest_format =
    jx::test::jx(std::string_view("%2$.1100f|%1$.767g|%2$.800e|%3$*3$.5lld\0", 41));

void *format_hardest_texts(void *is_right) {
  static JXChar buffer[4000];
  const int64_t before = allocations;
  for (const double value : {5e-324, 2.2250738585072009e-308, 1.7976931348623157e308}) {
    uint32_t length = 0;
    const JXStatus status =
        jxzFormatBuff(nullptr, hardest_format.data(), 0, buffer, 4000, &length, 1.0, value, -20LL);
    if (status != JX_OK || length <= 1900 || allocations != before) return nullptr;
  }
  return is_right;
}

// The stack bytes that a thread uses, the C library's own included.
ptrdiff_t stack_used_by(void *(*body)(void *)) {
  alignas(4096) static uint8_t stack[64 * 1024];
  std::fill(std::begin(stack), std::end(stack), uint8_t{0xA5});
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  EXPECT_EQ(pthread_attr_setstack(&attributes, stack, sizeof(stack)), 0);
  pthread_t thread;
  EXPECT_EQ(pthread_create(&thread, &attributes, body, stack), 0);
  void *result = nullptr;
  pthread_join(thread, &result);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(result, stack);
  const auto *used =
      std::find_if(stack, std::end(stack), [](uint8_t byte) { return byte != 0xA5; });
  return std::end(stack) - used;
}

TEST(Format, NeedsNoHeapAndLittleStack) {
  const ptrdiff_t idle = stack_used_by([](void *argument) { return argument; });
  EXPECT_LT(stack_used_by(format_hardest_texts) - idle, 6 * 1024);
}

#endif

}  // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// Interposes malloc, so that the test sees whether the module allocates.
extern "C" void *malloc(size_t bytes) {
  ++allocations;
  return __libc_malloc(bytes);
}
#endif
