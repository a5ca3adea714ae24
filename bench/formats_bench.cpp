// Formatted text against the C library in both ABIs; numbers_bench has more peers, 64-bit only.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cwchar>

#include "bench/paired.hpp"
#include "bench/wide.hpp"
#include "jx/runtime.h"

namespace {

using namespace jx::bench;

constexpr int32_t kRoom = 64;

template <size_t kSize, typename... Args>
void ours(const std::array<JXChar, kSize> &format, Args... args) {
  static JXChar buffer[kRoom];
  uint32_t length = 0;
  if (jxzFormatBuff(nullptr, format.data(), kSize, buffer, kRoom, &length, args...) != JX_OK) {
    std::abort();
  }
  keep(buffer);
}

template <typename... Args>
void narrow_peer(const char *format, Args... args) {
  static char buffer[kRoom];
  if (std::snprintf(buffer, sizeof buffer, format, args...) < 0) std::abort();
  keep(buffer);
}

template <typename... Args>
void wide_peer(const wchar_t *format, Args... args) {
  static wchar_t buffer[kRoom];
  if (std::swprintf(buffer, kRoom, format, args...) < 0) std::abort();
  keep(buffer);
}

// Numbers of every length, and doubles below a million.
constexpr uint64_t kScatter = 11'400'714'819'323'198'485u;
int32_t any_int(uint32_t i) { return static_cast<int32_t>(i * 2'654'435'761u) >> (i % 31); }
unsigned long long any_long(uint32_t i) { return (i * kScatter) >> (i % 63); }
double any_double(uint32_t i) { return i * 3.14159265; }

template <typename Convert>
std::function<void()> repeated(Convert convert) {
  return [convert] {
    for (uint32_t i = 1; i < 100'000; ++i) convert(i);
  };
}

constexpr auto kName = wide("ZOR_util%04X%08X_%*s");
constexpr auto kD = wide("%d");
constexpr auto kLlu = wide("%llu");
constexpr auto kF = wide("%.6f");
constexpr auto kE = wide("%.17e");
constexpr auto kG = wide("%g");
constexpr char kNode[] = "node7.example";
constexpr wchar_t kWideNode[] = L"node7.example";

// A format in all three ways, each with the expression for its arguments.
#define FORMAT_PAIRS(format, text, wide_text, ...)                                            \
  pairs.push_back({text, "swprintf", repeated([](uint32_t i) { ours(format, __VA_ARGS__); }), \
                   repeated([](uint32_t i) { wide_peer(wide_text, __VA_ARGS__); })});         \
  pairs.push_back({text, "snprintf", repeated([](uint32_t i) { ours(format, __VA_ARGS__); }), \
                   repeated([](uint32_t i) { narrow_peer(text, __VA_ARGS__); })})

}  // namespace

int main(int argc, char **argv) {
  std::vector<Pair> pairs;
  const auto name = [](uint32_t i) { ours(kName, i & 1023u, 4711u, 13, kWideNode); };
  pairs.push_back({"ZOR_util%04X%08X_%*s", "swprintf", repeated(name), repeated([](uint32_t i) {
                     wide_peer(L"ZOR_util%04X%08X_%*ls", i & 1023u, 4711u, 13, kWideNode);
                   })});
  pairs.push_back({"ZOR_util%04X%08X_%*s", "snprintf", repeated(name), repeated([](uint32_t i) {
                     narrow_peer("ZOR_util%04X%08X_%*s", i & 1023u, 4711u, 13, kNode);
                   })});
  FORMAT_PAIRS(kD, "%d", L"%d", any_int(i));
  FORMAT_PAIRS(kLlu, "%llu", L"%llu", any_long(i));
  FORMAT_PAIRS(kF, "%.6f", L"%.6f", any_double(i));
  FORMAT_PAIRS(kE, "%.17e", L"%.17e", any_double(i));
  FORMAT_PAIRS(kG, "%g", L"%g", any_double(i));
  return run_pairs(argc, argv, pairs);
}
