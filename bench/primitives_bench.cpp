// The routines on 32-bit units and on bytes, against those of the C library. The limit is a call of
// a function in the module that does next to nothing.
#include <algorithm>
#include <cstring>
#include <cwchar>

#include "bench/module.hpp"
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

Areas areas;

void unit_jobs() {
  areas.b[kMost] = 0;  // for wcsspn, the only peer of the C library
  const Areas &x = areas;
  auto *find = opaque<const wchar_t *(const wchar_t *, wchar_t, size_t)>(&std::wmemchr);
  auto *fill = opaque(&std::wmemset);
  auto *compare = opaque(&std::wmemcmp);
  auto *length = opaque(&std::wcslen);
  sizes_job(
      "scan-units", "Scan for a 32-bit unit that is absent", " units", "wmemchr",
      [=, &x](size_t n) { return find(x.wide_a, L'y', n); }, "std::find",
      [&x](size_t n) { return std::find(x.a, x.a + n, U'y'); }, "jxzspos",
      [&x](uint32_t n) { return jxzspos(x.units_a, static_cast<int32_t>(n), U'y'); });
  sizes_job(
      "scan-other", "Scan for a 32-bit unit that differs", " units", "wcsspn",
      [&x](size_t n) { return opaque(&std::wcsspn)(x.wide_b + (kMost - n), L"x"); },
      "std::find_if_not",
      [&x](size_t n) {
        return std::find_if_not(x.a, x.a + n, [](char32_t c) { return c == U'x'; });
      },
      "skMemTNScan", [&x](uint32_t n) { return skMemTNScan(x.units_a, n, U'x'); });
  sizes_job(
      "fill", "32-bit units filled", " units", "wmemset",
      [=, &x](size_t n) { return fill(x.wide_a, L'x', n); }, "std::fill_n",
      [&x](size_t n) { return std::fill_n(x.a, n, U'x'); }, "skMemTSet",
      [&x](uint32_t n) { return skMemTSet(x.units_a, U'x', n), 0; });
  sizes_job(
      "compare-units", "Equal 32-bit units compared", " units", "wmemcmp",
      [=, &x](size_t n) { return compare(x.wide_a, x.wide_b, n); }, "std::mismatch",
      [&x](size_t n) { return std::mismatch(x.a, x.a + n, x.b).first; }, "skWMemCmp",
      [&x](uint32_t n) { return skWMemCmp(x.units_a, x.units_b, n); });
  sizes_job(
      "length-units", "Length of a 32-bit text", " units", "wcslen",
      [=, &x](size_t) { return length(x.wide_a); }, "char_traits<char32_t>::length",
      [&x](size_t) { return std::char_traits<char32_t>::length(x.a); }, "skStrTLen",
      [&x](uint32_t) { return skStrTLen(x.units_a); },
      [](size_t n) {
        std::fill_n(areas.a, kMost, U'x');
        areas.a[n] = 0;
      });
}

void byte_jobs() {
  const Areas &x = areas;
  std::fill_n(areas.a, kMost, U'x');
  auto *find = opaque<const void *(const void *, int, size_t)>(&std::memchr);
  auto *compare = opaque(&std::memcmp);
  auto *copy = opaque(&std::memcpy);
  auto *move = opaque(&std::memmove);
  auto *length = opaque(&std::strlen);
  const auto none = [](size_t) { return 0; };
  sizes_job(
      "scan-bytes", "Scan for a byte that is absent", " bytes", "memchr",
      [=, &x](size_t n) { return find(x.bytes_a, 'y', n); }, "std::find",
      [&x](size_t n) { return std::find(x.bytes_a, x.bytes_a + n, 'y'); }, "skMemScan",
      [&x](uint32_t n) { return skMemScan(x.bytes_a, n, 'y'); });
  sizes_job(
      "compare-bytes", "Equal bytes compared", " bytes", "memcmp",
      [=, &x](size_t n) { return compare(x.bytes_a, x.bytes_b, n); }, nullptr, none, "skMemCmp",
      [&x](uint32_t n) { return skMemCmp(x.bytes_a, x.bytes_b, n); });
  sizes_job(
      "copy-bytes", "Bytes copied", " bytes", "memcpy",
      [=, &x](size_t n) { return copy(x.bytes_b, x.bytes_a, n); }, "memmove",
      [=, &x](size_t n) { return move(x.bytes_b, x.bytes_a, n); }, "skMemCpy",
      [&x](uint32_t n) { return skMemCpy(x.bytes_a, x.bytes_b, n), 0; });
  sizes_job(
      "length-bytes", "Length of an 8-bit text", " bytes", "strlen",
      [=, &x](size_t) { return length(x.bytes_a); }, nullptr, none, "skStrLen",
      [&x](uint32_t) { return skStrLen(x.bytes_a); },
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
