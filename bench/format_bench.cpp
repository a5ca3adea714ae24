// Formatting into a buffer of the caller. A contender says in brackets how many bits a character of
// its output has. The module makes characters of 32 bits; "widened" copies 8-bit output afterwards.
#include <cmath>

#include "bench/formats.hpp"

namespace {

using namespace jx::bench;

void name_case(Job &job) {
  static const auto numbers = make_values<uint32_t>(
      [](Random &random) { return static_cast<uint32_t>(random.below(30000)); });
  const uint32_t *v = numbers.data();
  job.begin("ZOR_util%04X%08X_%s", kValues);
  add<char>(job, "snprintf (8)", [=](size_t i, char *b) {
    return std::snprintf(b, kRoom, "ZOR_util%04X%08X_%s", unsigned(i), v[i], "node7xy");
  });
  add<wchar_t>(job, "swprintf (32)", [=](size_t i, wchar_t *b) {
    return std::swprintf(b, kRoom, L"ZOR_util%04X%08X_%ls", unsigned(i), v[i], L"node7xy");
  });
  add<char>(job, "fmt::sprintf (8)", [=](size_t i, char *b) {
    return copied(fmt::sprintf("ZOR_util%04X%08X_%s", i, v[i], "node7xy"), b);
  });
  add<char>(job, "fmt::format_to, compiled (8)", [=](size_t i, char *b) {
    return fmt::format_to(b, FMT_COMPILE("ZOR_util{:04X}{:08X}_{}"), i, v[i], "node7xy") - b;
  });
  add<char>(job, "fmt::format_to (8)", [=](size_t i, char *b) {
    return fmt::vformat_to(b, "ZOR_util{:04X}{:08X}_{}",
                           fmt::make_format_args(i, v[i], "node7xy")) -
           b;
  });
  add<wchar_t>(job, "fmt::format_to (32)", [=](size_t i, wchar_t *b) {
    return fmt::vformat_to(b, fmt::wstring_view(L"ZOR_util{:04X}{:08X}_{}"),
                           fmt::make_wformat_args(i, v[i], L"node7xy")) -
           b;
  });
#ifdef JX_BENCH_ICU
  add<UChar>(job, "ICU u_snprintf_u (16)", [=](size_t i, UChar *b) {
    return u_snprintf_u(b, kRoom, u"ZOR_util%04X%08X_%S", unsigned(i), v[i], u"node7xy");
  });
#endif
  add<char32_t>(
      job, "by hand (32)",
      [=](size_t i, char32_t *b) {
        char32_t *p = put(U"ZOR_util", b);
        p = put_hex(v[i], 8, put_hex(static_cast<uint32_t>(i), 4, p));
        return put(U"_node7xy", p) - b;
      },
      Kind::kLimit);
  add<char32_t>(
      job, kModule,
      [=](size_t i, char32_t *b) {
        return format_with_module(U"ZOR_util%04X%08X_%s", b, unsigned(i), v[i], U"node7xy");
      },
      Kind::kModule);
  job.end();
}

void mixed_case(Job &job) {
  static const auto amounts =
      make_values<double>([](Random &random) { return std::floor(random.uniform() * 1e8) / 100; });
  const double *v = amounts.data();
  const auto big = [](size_t i) { return static_cast<unsigned long long>(i) * 1'000'000'007u; };
  job.begin("%s: %d of %llu at %.6f", kValues);
  add<char>(job, "snprintf (8)", [=](size_t i, char *b) {
    return std::snprintf(b, kRoom, "%s: %d of %llu at %.6f", "records", int(i), big(i), v[i]);
  });
  add<wchar_t>(job, "swprintf (32)", [=](size_t i, wchar_t *b) {
    return std::swprintf(b, kRoom, L"%ls: %d of %llu at %.6f", L"records", int(i), big(i), v[i]);
  });
  add<char>(job, "fmt::sprintf (8)", [=](size_t i, char *b) {
    return copied(fmt::sprintf("%s: %d of %u at %.6f", "records", i, big(i), v[i]), b);
  });
  add<char>(job, "fmt::format_to, compiled (8)", [=](size_t i, char *b) {
    return fmt::format_to(b, FMT_COMPILE("{}: {} of {} at {:.6f}"), "records", i, big(i), v[i]) - b;
  });
  add<char>(job, "fmt::format_to (8)", [=](size_t i, char *b) {
    const auto number = big(i);
    return fmt::vformat_to(b, "{}: {} of {} at {:.6f}",
                           fmt::make_format_args("records", i, number, v[i])) -
           b;
  });
  add<wchar_t>(job, "fmt::format_to (32)", [=](size_t i, wchar_t *b) {
    const auto number = big(i);
    return fmt::vformat_to(b, fmt::wstring_view(L"{}: {} of {} at {:.6f}"),
                           fmt::make_wformat_args(L"records", i, number, v[i])) -
           b;
  });
#ifdef JX_BENCH_ICU
  add<UChar>(job, "ICU u_snprintf_u (16)", [=](size_t i, UChar *b) {
    return u_snprintf_u(b, kRoom, u"%S: %d of %llu at %.6f", u"records", int(i), big(i), v[i]);
  });
#endif
  add<char32_t>(
      job, "by hand (32)",
      [=](size_t i, char32_t *b) {
        char32_t *p = put(U"records: ", b);
        p += put_decimal(static_cast<uint32_t>(i), p);
        p = put(U" of ", p);
        p += put_decimal(uint64_t{big(i)}, p);
        p = put(U" at ", p);
        return p + put_fixed6(v[i], p) - b;
      },
      Kind::kLimit);
  add<char32_t>(
      job, kModule,
      [=](size_t i, char32_t *b) {
        return format_with_module(U"%s: %d of %llu at %.6f", b, U"records", int(i), big(i), v[i]);
      },
      Kind::kModule);
  job.end();
}

// One directive in the notations of the contenders.
struct Notation {
  const char *printf;
  const wchar_t *wide_printf;
  const char32_t *module;
  const char16_t *icu;  // null: ICU prints something else
  std::string_view fmt;
  std::wstring_view wide_fmt;
};

// The rows of one value. `compiled` is the fmt format, checked when this program is compiled;
// `chars` makes the same text with std::to_chars.
template <typename Value, typename Compiled, typename Chars>
void add_rows(Job &job, const Notation &notation, const std::vector<Value> &values,
              Compiled compiled, Chars chars) {
  const Value *v = values.data();
  add<char>(job, "snprintf (8)",
            [=](size_t i, char *b) { return std::snprintf(b, kRoom, notation.printf, v[i]); });
  add<wchar_t>(job, "swprintf (32)", [=](size_t i, wchar_t *b) {
    return std::swprintf(b, kRoom, notation.wide_printf, v[i]);
  });
  add<char>(job, "fmt::sprintf (8)",
            [=](size_t i, char *b) { return copied(fmt::sprintf(notation.printf, v[i]), b); });
  add<char>(job, "fmt::format_to, compiled (8)",
            [=](size_t i, char *b) { return fmt::format_to(b, compiled, v[i]) - b; });
  add<char>(job, "fmt::format_to (8)", [=](size_t i, char *b) {
    return fmt::vformat_to(b, notation.fmt, fmt::make_format_args(v[i])) - b;
  });
  add<wchar_t>(job, "fmt::format_to (32)", [=](size_t i, wchar_t *b) {
    return fmt::vformat_to(b, fmt::wstring_view(notation.wide_fmt), fmt::make_wformat_args(v[i])) -
           b;
  });
#ifdef JX_BENCH_ICU
  if (notation.icu) {
    add<UChar>(job, "ICU u_snprintf_u (16)",
               [=](size_t i, UChar *b) { return u_snprintf_u(b, kRoom, notation.icu, v[i]); });
  }
#endif
  add<char>(job, "std::to_chars (8)", [=](size_t i, char *b) { return chars(b, v[i]) - b; });
  add<char32_t>(job, "std::to_chars, widened (32)",
                widened([=](size_t i, char *b) { return chars(b, v[i]) - b; }));
  add<char32_t>(
      job, kModule,
      [=](size_t i, char32_t *b) { return format_with_module(notation.module, b, v[i]); },
      Kind::kModule);
}

template <typename Compiled>
void double_case(Job &job, const char *name, const Notation &notation,
                 const std::vector<double> &values, Compiled compiled, std::chars_format form,
                 int precision) {
  job.begin(name, kValues);
  add_rows(job, notation, values, compiled, [=](char *b, double value) {
    return std::to_chars(b, b + kRoom, value, form, precision).ptr;
  });
  if (notation.module == std::u32string_view(U"%.6f")) {
    add<char32_t>(
        job, "by hand (32)",
        [v = values.data()](size_t i, char32_t *b) { return put_fixed6(v[i], b); }, Kind::kLimit);
  }
  job.end();
}

void integer_cases(Job &job) {
  const auto to_chars = [](char *b, auto value) { return std::to_chars(b, b + kRoom, value).ptr; };
  const auto ints = make_values<int>([](Random &random) {
    const auto magnitude = static_cast<int>(random.next() >> 33 >> random.below(31));
    return random.below(2) ? -magnitude : magnitude;
  });
  job.begin("%d", kValues);
  add_rows(job, {"%d", L"%d", U"%d", u"%d", "{}", L"{}"}, ints, FMT_COMPILE("{}"), to_chars);
  add<char32_t>(
      job, "by hand (32)",
      [v = ints.data()](size_t i, char32_t *b) -> size_t {
        const unsigned sign = v[i] < 0;
        *b = U'-';
        return sign + put_decimal((static_cast<unsigned>(v[i]) ^ (0 - sign)) + sign, b + sign);
      },
      Kind::kLimit);
  job.end();

  const auto longs = make_values<unsigned long long>(
      [](Random &random) -> unsigned long long { return random.next() >> random.below(64); });
  job.begin("%llu", kValues);
  add_rows(job, {"%llu", L"%llu", U"%llu", nullptr, "{}", L"{}"}, longs, FMT_COMPILE("{}"),
           to_chars);
  add<char32_t>(
      job, "by hand (32)",
      [v = longs.data()](size_t i, char32_t *b) { return put_decimal(uint64_t{v[i]}, b); },
      Kind::kLimit);
  job.end();
}

}  // namespace

int main() {
  Job job("format", "Formatted text", "ns/call", 1e9);
  name_case(job);
  mixed_case(job);
  integer_cases(job);
  const auto amounts =
      make_values<double>([](Random &random) { return 0.01 + random.uniform() * 1e6; });
  const auto near = make_values<double>([](Random &random) { return any_double(random, 50); });
  const auto far = make_values<double>([](Random &random) { return any_double(random, 1000); });
  double_case(job, "%.6f, 0.01 to 1e6", {"%.6f", L"%.6f", U"%.6f", u"%.6f", "{:.6f}", L"{:.6f}"},
              amounts, FMT_COMPILE("{:.6f}"), std::chars_format::fixed, 6);
  double_case(job, "%g, 0.01 to 1e6", {"%g", L"%g", U"%g", u"%g", "{:g}", L"{:g}"}, amounts,
              FMT_COMPILE("{:g}"), std::chars_format::general, 6);
  const Notation e17{"%.17e", L"%.17e", U"%.17e", nullptr, "{:.17e}", L"{:.17e}"};
  double_case(job, "%.17e, 1e±15", e17, near, FMT_COMPILE("{:.17e}"), std::chars_format::scientific,
              17);
  double_case(job, "%.17e, 1e±300", e17, far, FMT_COMPILE("{:.17e}"), std::chars_format::scientific,
              17);
  job.print();
  return 0;
}
