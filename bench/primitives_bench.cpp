// The routines on 32-bit units and on bytes, against those of the C library. The limit is a call of
// a function in the module that does next to nothing.
#include <algorithm>
#include <cstring>
#include <cwchar>

#include "bench/contender.hpp"
#include "jx/runtime.h"

namespace {

using namespace jx::bench;

constexpr size_t kMost = 65536;

// Two areas of equal units, one unit off the grid of 16 bytes, as records in a buffer usually are.
struct Areas {
  std::vector<char32_t> left = std::vector<char32_t>(kMost + 16, U'x');
  std::vector<char32_t> right = left;
  char32_t *a = left.data() + 1, *b = right.data() + 1;
  wchar_t *wide_a = reinterpret_cast<wchar_t *>(a), *wide_b = reinterpret_cast<wchar_t *>(b);
  char *bytes_a = reinterpret_cast<char *>(a), *bytes_b = reinterpret_cast<char *>(b);
  JXChar *units_a = reinterpret_cast<JXChar *>(a), *units_b = reinterpret_cast<JXChar *>(b);
};

Areas areas;

template <typename Call>
void add(Job &job, const char *name, size_t calls, Call call, Kind kind = Kind::kPeer) {
  job.add(
      name,
      [=](Watch &) {
        for (size_t i = 0; i < calls; ++i) keep(call());
        return uint64_t{0};
      },
      kind);
}

// A job over all sizes: the C library's routine, the C++ library's way and the module's.
template <typename C, typename Cpp, typename Ours>
void sizes_job(const char *id, const char *title, const char *unit, const char *c_name, C c,
               const char *cpp_name, Cpp cpp, const char *our_name, Ours ours,
               void (*prepare)(size_t) = nullptr) {
  Job job(id, std::string(title) + ", " + our_name, "ns/call", 1e9);
  for (const size_t n : {size_t{4}, size_t{16}, size_t{64}, size_t{1024}, kMost}) {
    const size_t calls = std::clamp<size_t>((1 << 22) / n, 8, 100'000);
    if (prepare) prepare(n);
    job.begin(std::to_string(n) + unit, static_cast<double>(calls));
    add(job, c_name, calls, [=] { return c(n); });
    if (cpp_name) add(job, cpp_name, calls, [=] { return cpp(n); });
    add(
        job, kModule, calls, [=] { return ours(static_cast<uint32_t>(n)); }, Kind::kModule);
    add(
        job, "a call", calls, [=] { return opaque(&skMemCmp)(nullptr, nullptr, 0); }, Kind::kLimit);
    job.end();
  }
  job.print();
}

void unit_jobs() {
  areas.b[kMost] = 0;  // for wcsspn, the only peer of the C library
  auto *fill = opaque(&std::wmemset);
  auto *compare = opaque(&std::wmemcmp);
  auto *length = opaque(&std::wcslen);
  sizes_job(
      "scan-units", "Scan for a 32-bit unit that is absent", " units", "wmemchr",
      [](size_t n) { return std::wmemchr(areas.wide_a, L'y', n); }, "std::find",
      [](size_t n) { return std::find(areas.a, areas.a + n, U'y'); }, "jxzspos",
      [](uint32_t n) { return jxzspos(areas.units_a, static_cast<int32_t>(n), U'y'); });
  sizes_job(
      "scan-other", "Scan for a 32-bit unit that differs", " units", "wcsspn",
      [](size_t n) { return opaque(&std::wcsspn)(areas.wide_b + (kMost - n), L"x"); },
      "std::find_if_not",
      [](size_t n) {
        return std::find_if_not(areas.a, areas.a + n, [](char32_t c) { return c == U'x'; });
      },
      "skMemTNScan", [](uint32_t n) { return skMemTNScan(areas.units_a, n, U'x'); });
  sizes_job(
      "fill", "32-bit units filled", " units", "wmemset",
      [=](size_t n) { return fill(areas.wide_a, L'x', n); }, "std::fill_n",
      [](size_t n) { return std::fill_n(areas.a, n, U'x'); }, "skMemTSet",
      [](uint32_t n) { return skMemTSet(areas.units_a, U'x', n), 0; });
  sizes_job(
      "compare-units", "Equal 32-bit units compared", " units", "wmemcmp",
      [=](size_t n) { return compare(areas.wide_a, areas.wide_b, n); }, "std::mismatch",
      [](size_t n) { return std::mismatch(areas.a, areas.a + n, areas.b).first; }, "skWMemCmp",
      [](uint32_t n) { return skWMemCmp(areas.units_a, areas.units_b, n); });
  sizes_job(
      "length-units", "Length of a 32-bit text", " units", "wcslen",
      [=](size_t) { return length(areas.wide_a); }, "char_traits<char32_t>::length",
      [](size_t) { return std::char_traits<char32_t>::length(areas.a); }, "skStrTLen",
      [](uint32_t) { return skStrTLen(areas.units_a); },
      [](size_t n) {
        std::fill_n(areas.a, kMost, U'x');
        areas.a[n] = 0;
      });
}

void byte_jobs() {
  std::fill_n(areas.a, kMost, U'x');
  auto *compare = opaque(&std::memcmp);
  auto *copy = opaque(&std::memcpy);
  auto *move = opaque(&std::memmove);
  auto *length = opaque(&std::strlen);
  const auto none = [](size_t) { return 0; };
  sizes_job(
      "scan-bytes", "Scan for a byte that is absent", " bytes", "memchr",
      [](size_t n) { return std::memchr(areas.bytes_a, 'y', n); }, "std::find",
      [](size_t n) { return std::find(areas.bytes_a, areas.bytes_a + n, 'y'); }, "skMemScan",
      [](uint32_t n) { return skMemScan(areas.bytes_a, n, 'y'); });
  sizes_job(
      "compare-bytes", "Equal bytes compared", " bytes", "memcmp",
      [=](size_t n) { return compare(areas.bytes_a, areas.bytes_b, n); }, nullptr, none, "skMemCmp",
      [](uint32_t n) { return skMemCmp(areas.bytes_a, areas.bytes_b, n); });
  sizes_job(
      "copy-bytes", "Bytes copied", " bytes", "memcpy",
      [=](size_t n) { return copy(areas.bytes_b, areas.bytes_a, n); }, "memmove",
      [=](size_t n) { return move(areas.bytes_b, areas.bytes_a, n); }, "skMemCpy",
      [](uint32_t n) { return skMemCpy(areas.bytes_a, areas.bytes_b, n), 0; });
  sizes_job(
      "length-bytes", "Length of an 8-bit text", " bytes", "strlen",
      [=](size_t) { return length(areas.bytes_a); }, nullptr, none, "skStrLen",
      [](uint32_t) { return skStrLen(areas.bytes_a); },
      [](size_t n) {
        std::memset(areas.bytes_a, 'x', sizeof(char32_t) * kMost);
        areas.bytes_a[n] = 0;
      });
}

}  // namespace

int main() {
  unit_jobs();
  byte_jobs();
  return 0;
}
