// The bare conversions of numbers, without a format string, against std::to_chars.
#include "bench/formats.hpp"

namespace {

using namespace jx::bench;

template <typename Chars, typename Convert>
void numbers_case(Job &job, const char *name, Chars chars, Convert convert) {
  job.begin(name, kValues);
  const auto narrow = [=](size_t i, char *b) { return chars(i, b) - b; };
  add<char>(job, "std::to_chars (8)", narrow);
  add<char32_t>(job, "std::to_chars, widened (32)", widened(narrow));
  add<char32_t>(
      job, kModule,
      [=](size_t i, char32_t *b) {
        uint32_t length = 0;
        if (convert(i, units(b), &length) != JX_OK) fail("a conversion fails");
        return length;
      },
      Kind::kModule);
  job.end();
}

void double_case(Job &job, const char *name, const std::vector<double> &values,
                 std::chars_format form, char conversion, int precision) {
  const double *v = values.data();
  numbers_case(
      job, name,
      [=](size_t i, char *b) { return std::to_chars(b, b + kRoom, v[i], form, precision).ptr; },
      [=](size_t i, JXChar *b, uint32_t *length) {
        return skzfDouble(v[i], static_cast<uint32_t>(conversion), '.', 0, precision, 0, b, kRoom,
                          length);
      });
}

}  // namespace

int main() {
  const auto longs =
      make_values<uint64_t>([](Random &random) { return random.next() >> random.below(64); });
  const auto everyday = make_values<double>([](Random &random) {
    return std::ldexp(random.uniform(), static_cast<int>(random.below(20)));
  });
  const auto all = make_values<double>([](Random &random) { return any_double(random, 1000); });
  Job job("numbers", "Numbers without a format", "ns/number", 1e9);
  numbers_case(
      job, "64-bit integers",
      [v = longs.data()](size_t i, char *b) { return std::to_chars(b, b + kRoom, v[i]).ptr; },
      [v = longs.data()](size_t i, JXChar *b, uint32_t *length) {
        return skzfIMax(v[i], 10, 0, b, kRoom, length);
      });
  double_case(job, "below 2^20, 6 places", everyday, std::chars_format::fixed, 'f', 6);
  double_case(job, "below 2^20, general", everyday, std::chars_format::general, 'g', 6);
  double_case(job, "1e±300, exponent, 17 places", all, std::chars_format::scientific, 'e', 17);
  double_case(job, "1e±300, fixed, 6 places", all, std::chars_format::fixed, 'f', 6);
  job.print();
  return 0;
}
