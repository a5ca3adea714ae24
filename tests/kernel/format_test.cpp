// Formatted text: every rule of the directives as a row, and what the engine costs in memory.
#include <gtest/gtest.h>
#include <pthread.h>

#include <bit>
#include <climits>
#include <cmath>

#include "tests/kernel/kernel_support.hpp"

namespace {

using jx_test::GuardedBuffer;

constexpr int32_t kAmple = 400;

struct Outcome {
  JXStatus status;
  uint32_t length;
  std::string text;
};

template <typename... Args>
Outcome run_in(int32_t capacity, std::string_view format, Args... args) {
  GuardedBuffer buffer(kAmple);
  Outcome outcome{};
  const jx::test::JXString wide = jx::test::jx(format);
  outcome.status = jxzFormatBuff(nullptr, wide.data(), static_cast<int32_t>(wide.size()),
                                 buffer.data(), capacity, &outcome.length, args...);
  bool is_clean = false;
  outcome.text = buffer.text(&is_clean);
  EXPECT_TRUE(is_clean && static_cast<int64_t>(outcome.text.size()) <= std::max(capacity, 0));
  return outcome;
}

template <typename... Args>
Outcome run(std::string_view format, Args... args) {
  return run_in(kAmple, format, args...);
}

struct Row {
  int line;
  Outcome outcome;
  std::string_view expected;
};

TEST(Format, Directives) {
  const void *const null = nullptr;
  const auto missing = std::bit_cast<double>(0xFFFFFC0000000000);
  const Row rows[] = {
      {__LINE__, run(""), ""},
      {__LINE__, run("abc%"), "abc%"},
      {__LINE__, run("%d%", 7), "7%"},
      {__LINE__, run("100%%"), "100%"},
      {__LINE__, run("ZOR_util%04X%08X_%*s", 1, 1234, 5, U"node7"), "ZOR_util0001000004D2_node7"},
      {__LINE__, run("%*s%04X%06X", 3, U"tmp", 1234, 1), "tmp04D2000001"},
      {__LINE__, run("%5%"), "<<%5%>>"},
      {__LINE__, run("%-%%l%%.%"), "<<%-%>><<%l%>><<%.%>>"},
      {__LINE__, run("%q%d", 3), "<<%q>>3"},
      {__LINE__, run("%hd %lf %hhd %lld", 5LL), "<<%hd>> <<%lf>> <<%hh>>d 5"},
      {__LINE__, run("%llld %F %n %ls %Ld"), "<<%lll>>d <<%F>> <<%n>> <<%ls>> <<%Ld>>"},
      {__LINE__, run("%5"), "<<%5>>"},
      {__LINE__, run("%5-d"), "<<%5->>d"},
      {__LINE__, run("%5*d"), "<<%5*>>d"},
      {__LINE__, run("%0$d"), "<<%0$>>d"},
      {__LINE__, run("%.-5d"), "<<%.->>5d"},
      {__LINE__, run("%l"), "<<%l>>"},
      {__LINE__, run("%*", 4), "<<%*>>"},
      {__LINE__, run("%10q|"), "<<%10q>>|"},
      {__LINE__, run("%*q%d", 5, 7), "<<%*q>>7"},
      {__LINE__, run("%05d", -42), "-0042"},
      {__LINE__, run("%+d % d %+ d", 0, 7, 8), "+0  7 +8"},
      {__LINE__, run("% 05d|%-05d|%0-5d|", 7, 7, 7), " 0007|7    |7    |"},
      {__LINE__, run("%*d|%*d|", 5, 1, -5, 1), "    1|1    |"},
      {__LINE__, run("%0*d|", -4, 1), "1   |"},
      {__LINE__, run("%d %i", INT_MIN, INT_MAX), "-2147483648 2147483647"},
      {__LINE__, run("%lld", LLONG_MIN), "-9223372036854775808"},
      {__LINE__, run("%u %lu", -1, 7L), "4294967295 7"},
      {__LINE__, run("%llu", ~0ULL), "18446744073709551615"},
      {__LINE__, run("%llo", ~0ULL), "1777777777777777777777"},
      {__LINE__, run("%#08x", 0x1F), "00000x1f"},
      {__LINE__, run("%#o %#x %#X", 8, 0, 255), "010 0 0XFF"},
      {__LINE__, run("%#.4o %#.2o %#.4x", 8, 8, 31), "0010 010 0x001f"},
      {__LINE__, run("%#.0o%#.0x%.0d|%3.0d", 0, 0, 0, 0), "|   "},
      {__LINE__, run("%08.3d %08.3d", 5, -5), "00000005 -0000005"},
      {__LINE__, run("%+.0d", 0), "+"},
      {__LINE__,
       run("%p %#P %#p", reinterpret_cast<void *>(0xABC), reinterpret_cast<void *>(0xABC), null),
       "abc 0XABC 0"},
      {__LINE__, run("%-4c|%3C|%hc%Lc", 0x41, 0x42, 0x43, 0x44), "A   |  B|CD"},
      {__LINE__, run("%.3s|%.9s|%s|%6s|%-6s|", U"abcdef", U"abc", U"abc", U"abc", U"abc"),
       "abc|abc|abc|   abc|abc   |"},
      {__LINE__, run("%.*S|%05S|%.0S|", 2, U"xyz", U"gone", U"xyz"), "xy|<<%05S>>||"},
      {__LINE__, run("%S%d", U"xyz", 4), "<<%S>>4"},
      {__LINE__, run("%.*S%hS%d", -1, U"xyz", "xyz", 4), "<<%.*S>><<%hS>>4"},
      {__LINE__, run("%s|%5s|%.2S|%hs|%.3hS|", null, null, null, null, null), "|     ||||"},
      {__LINE__, run("%03s|", U"a"), "  a|"},
      {__LINE__, run("%2$d %1$d", 1, 2), "2 1"},
      {__LINE__, run("%1$d %1$f", 2.5), "2 2.500000"},
      {__LINE__, run("%1$*2$d|", 7, 5), "    7|"},
      {__LINE__, run("%1$*2$d|", 7, -5), "7    |"},
      {__LINE__, run("%1$.*2$f|", 3.14159, 2), "3.14|"},
      {__LINE__, run("%3$d %3$s", 9), "0 "},
      {__LINE__, run("%1$d%% %1$q %2$+d", 1, 2), "1% <<%1$q>> +2"},
      {__LINE__, run("%1$S%2$d", U"a", 5), "<<%1$S>>5"},
      {__LINE__, run("%1$s|%1$f", 1.5), "|1.500000"},
      {__LINE__, run("%1$u %1$d %1$llx", -1LL), "4294967295 -1 ffffffffffffffff"},
      {__LINE__, run("%1$c %1$x %1$.1Lf", 65.9L), "A 41 65.9"},
      {__LINE__, run("%1$d %1$u %1$lld %1$f", -2.9), "-2 4294967294 -2 -2.900000"},
      {__LINE__, run("%1$d %1$lld %1$f", 1e30),
       "-2147483648 -9223372036854775808 "
       "1000000000000000019884624838656.000000"},
      {__LINE__, run("%10$d%9$d%8$d%7$d%6$d%5$d%4$d%3$d%2$d%1$d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 0),
       "0987654321"},
      {__LINE__, run("%d %1$d %d %2$d", 1, 2, 3, 4), "1 2 4 3"},
      {__LINE__, run("%.*f|%.f|%.1f", -1, 1.2, 2.5, 0.25), "1.200000|3|0.3"},
      {__LINE__, run("%f %+.1f % .1f %08.2f", -0.0, -2.25, 1.0, -1.5),
       "0.000000 -2.3  1.0 -0001.50"},
      {__LINE__, run("%E %g %G %.2Lf %#.0f", 1e100, 1e-10, 1e-10, 2.5L, 3.0),
       "1.000000E+100 1e-10 1E-10 2.50 3."},
      {__LINE__, run("%f %+G %5.1f|%-5e|", -HUGE_VAL, HUGE_VAL, HUGE_VAL, -HUGE_VAL),
       "-inf +INF   inf|-inf |"},
      {__LINE__, run("%f|%+f|%3g|%03g", missing, missing, missing, missing), ".B|+.B| .B|0.B"},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(row.outcome.text, row.expected) << "line " << row.line;
    EXPECT_EQ(row.outcome.status, JX_OK) << "line " << row.line;
    EXPECT_EQ(row.outcome.length, row.expected.size()) << "line " << row.line;
  }
}

TEST(Format, RefusalsAndTruncation) {
  const struct {
    int line;
    Outcome outcome;
    JXStatus status;
    uint32_t length;
    std::string_view text;
  } rows[] = {
      {__LINE__, run("%11$d", 1), JX_E_BADFORMAT, 0, ""},
      {__LINE__, run("%*5d", 1, 2), JX_E_BADFORMAT, 0, ""},
      {__LINE__, run("%99999999999999999999$d", 1), JX_E_BADFORMAT, 0, ""},
      {__LINE__, run("%.*11$d", 1), JX_E_BADFORMAT, 0, ""},
      {__LINE__, run("ab%*5", 1), JX_E_BADFORMAT, 0, "ab"},
      {__LINE__, run("ab%dcd%11$d", 1), JX_E_BADFORMAT, 0, "ab1"},
      {__LINE__, run("ab%1$dcd%11$d", 1), JX_E_BADFORMAT, 0, "ab"},
      {__LINE__, run_in(5, "abc%d", 123), JX_E_TRUNCATED, 6, "abc"},
      {__LINE__, run_in(3, "%5d", 1), JX_E_TRUNCATED, 5, "1"},
      {__LINE__, run_in(3, "%.4d", 5), JX_E_TRUNCATED, 4, "5"},
      {__LINE__, run_in(3, "%-5d|", 1), JX_E_TRUNCATED, 6, "1"},
      {__LINE__, run_in(1, "%#x", 5), JX_E_TRUNCATED, 3, "0"},
      {__LINE__, run_in(3, "%+d", 555), JX_E_TRUNCATED, 4, "+"},
      {__LINE__, run_in(6, "%q%d", 5), JX_E_TRUNCATED, 7, "<<%q>>"},
      {__LINE__, run_in(5, "%q"), JX_E_TRUNCATED, 6, "<<%q"},
      {__LINE__, run_in(2, "abc%d", 1), JX_E_TRUNCATED, 4, ""},
      {__LINE__, run_in(4, "%.1f", 123.4), JX_E_TRUNCATED, 5, ""},
      {__LINE__, run_in(0, "%s%s", U"", U"a"), JX_E_TRUNCATED, 1, ""},
      {__LINE__, run_in(0, ""), JX_OK, 0, ""},
      {__LINE__, run_in(-5, "%s", U""), JX_OK, 0, ""},
      {__LINE__, run_in(-5, "a"), JX_E_TRUNCATED, 1, ""},
      {__LINE__, run_in(9, "a%*d", INT_MIN, 1), JX_E_TRUNCATED, 2147483649u, "a1"},
      {__LINE__, run_in(9, "%99999999999d", 1), JX_E_TRUNCATED, 2147483647u, "1"},
      {__LINE__, run_in(9, "%2147483647d%2147483647d%9d", 1, 1, 1), JX_E_TRUNCATED, UINT32_MAX,
       "1"},
      {__LINE__, run_in(9, "%.2147483647f", 1.0), JX_E_TRUNCATED, 2147483649u, ""},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(row.outcome.status, row.status) << "line " << row.line;
    EXPECT_EQ(row.outcome.length, row.length) << "line " << row.line;
    EXPECT_EQ(row.outcome.text, row.text) << "line " << row.line;
  }
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

void *format_hardest_texts(void *outcome) {
  static JXChar buffer[4000];
  uint32_t length = 0;
  const int64_t before = allocations;
  bool is_right = true;
  for (const double value : {5e-324, 2.2250738585072009e-308, 1.7976931348623157e308}) {
    const JXStatus status =
        jxzFormatBuff(nullptr, hardest_format.data(), 0, buffer, 4000, &length, 1.0, value, -20LL);
    is_right = is_right && status == JX_OK && length > 1900;
  }
  *static_cast<bool *>(outcome) = is_right && allocations == before;
  return nullptr;
}

// No heap, and little stack: what a thread that makes the longest texts has used of its stack,
// with what the C library puts there itself, is less than 12 KiB.
TEST(Format, NeedsNoHeapAndLittleStack) {
  constexpr size_t kStackBytes = 64 * 1024;
  constexpr size_t kMostBytes = 12 * 1024;
  alignas(4096) static uint8_t stack[kStackBytes];
  std::fill(std::begin(stack), std::end(stack), uint8_t{0xA5});
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstack(&attributes, stack, kStackBytes), 0);
  pthread_t thread;
  bool is_right = false;
  ASSERT_EQ(pthread_create(&thread, &attributes, format_hardest_texts, &is_right), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_TRUE(is_right);
  size_t untouched = 0;
  while (stack[untouched] == 0xA5) ++untouched;
  EXPECT_LT(kStackBytes - untouched, kMostBytes);
}

#endif

}  // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// Stands before the C library's, so that the test sees whether the module allocates.
extern "C" void *malloc(size_t bytes) {
  ++allocations;
  return __libc_malloc(bytes);
}
#endif
