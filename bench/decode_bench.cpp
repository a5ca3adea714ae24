// Reading text lines from UTF-8 into wide characters. Peers without lines of their own get them
// from read(2) and memchr.
#include <iconv.h>

#include <boost/locale/encoding_utf.hpp>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <fstream>
#include <locale>

#include <utf8.h>

#include "bench/contender.hpp"
#include "bench/peers.hpp"

namespace {

using namespace jx::bench;

// A contender that converts line for line: convert(bytes, count, tally).
template <typename Convert>
void add_converter(Job &job, const std::string &path, std::string name, Convert convert) {
  job.add(std::move(name), [=](Watch &) { return split_then(path, convert); });
}

std::FILE *open_file(const std::string &path) {
  std::FILE *file = std::fopen(path.c_str(), "rb");
  if (!file) fail("cannot open " + path);
  return file;
}

void add_c_library(Job &job, const std::string &path) {
  job.add("fgetws", [path](Watch &) {
    std::FILE *file = open_file(path);
    Tally tally;
    wchar_t line[kWidestLine];
    while (std::fgetws(line, kWidestLine, file)) tally.line(line, std::wcslen(line) - 1);
    std::fclose(file);
    return tally.value();
  });
  const std::shared_ptr<void> converter(iconv_open("WCHAR_T", "UTF-8"), iconv_close);
  add_converter(job, path, "iconv", [converter](const char *line, size_t bytes, Tally &tally) {
    wchar_t wide[kWidestLine];
    char *from = const_cast<char *>(line), *to = reinterpret_cast<char *>(wide);
    size_t room = sizeof wide;
    if (iconv(converter.get(), &from, &bytes, &to, &room) != 0) fail("iconv");
    tally.line(wide, kWidestLine - room / sizeof(wchar_t));
  });
  add_converter(job, path, "mbsnrtowcs", [](const char *line, size_t bytes, Tally &tally) {
    wchar_t wide[kWidestLine];
    std::mbstate_t state{};
    tally.line(wide, mbsnrtowcs(wide, &line, bytes, kWidestLine, &state));
  });
}

void add_cpp_libraries(Job &job, const std::string &path) {
  job.add("wifstream, std::getline", [path](Watch &) {
    std::wifstream file;
    file.imbue(std::locale("C.UTF-8"));
    file.open(path, std::ios::binary);
    Tally tally;
    for (std::wstring line; std::getline(file, line);) tally.line(line.data(), line.size());
    return tally.value();
  });
  add_converter(job, path, "std::codecvt", [](const char *line, size_t bytes, Tally &tally) {
    static const auto &facet =
        std::use_facet<std::codecvt<char32_t, char8_t, std::mbstate_t>>(std::locale::classic());
    char32_t wide[kWidestLine];
    std::mbstate_t state{};
    const auto *from = reinterpret_cast<const char8_t *>(line);
    const char8_t *from_next = nullptr;
    char32_t *to_next = nullptr;
    facet.in(state, from, from + bytes, from_next, wide, wide + kWidestLine, to_next);
    tally.line(wide, static_cast<size_t>(to_next - wide));
  });
  add_converter(job, path, "utfcpp utf8to32", [](const char *line, size_t bytes, Tally &tally) {
    char32_t wide[kWidestLine];
    tally.line(wide, static_cast<size_t>(utf8::utf8to32(line, line + bytes, wide) - wide));
  });
  add_converter(job, path, "Boost utf_to_utf", [](const char *line, size_t bytes, Tally &tally) {
    const auto wide = boost::locale::conv::utf_to_utf<char32_t>(line, line + bytes);
    tally.line(wide.data(), wide.size());
  });
}

void add_optional([[maybe_unused]] Job &job, [[maybe_unused]] const std::string &path) {
#ifdef JX_BENCH_SIMDUTF
  add_converter(job, path, "simdutf", [](const char *line, size_t bytes, Tally &tally) {
    char32_t wide[kWidestLine];
    tally.line(wide, simdutf::convert_utf8_to_utf32(line, bytes, wide));
  });
#endif
#ifdef JX_BENCH_ICU
  add_converter(
      job, path, "ICU u_strFromUTF8 (UTF-16)", [](const char *line, size_t bytes, Tally &tally) {
        UChar wide[kWidestLine];
        UErrorCode error = U_ZERO_ERROR;
        int32_t units = 0;
        u_strFromUTF8(wide, kWidestLine, &units, line, static_cast<int32_t>(bytes), &error);
        tally.line(wide, static_cast<size_t>(units));
      });
#endif
#ifdef JX_BENCH_GLIB
  add_converter(job, path, "GLib g_utf8_to_ucs4", [](const char *line, size_t bytes, Tally &tally) {
    glong units = 0;
    gunichar *wide = g_utf8_to_ucs4(line, static_cast<glong>(bytes), nullptr, &units, nullptr);
    tally.line(wide, static_cast<size_t>(units));
    g_free(wide);
  });
#endif
#ifdef JX_BENCH_UNISTRING
  add_converter(job, path, "libunistring u8_to_u32",
                [](const char *line, size_t bytes, Tally &tally) {
                  uint32_t wide[kWidestLine];
                  size_t units = kWidestLine;
                  u8_to_u32(reinterpret_cast<const uint8_t *>(line), bytes, wide, &units);
                  tally.line(wide, units);
                });
#endif
}

void decode_case(Job &job, const std::string &path, Script script, size_t mean) {
  const auto lines = make_lines(script, mean, 2 << 20);
  write_file(path, join_utf8(lines));
  job.begin(std::string(name_of(script)) + " " + std::to_string(mean),
            static_cast<double>(lines.size()));
  add_c_library(job, path);
  add_cpp_libraries(job, path);
  add_optional(job, path);
  const JXOpenOptions options =
      text_options(JX_ACCESS_INPUT, mean < 1000 ? 1024 : 16384, JX_ENCODING_UTF32LE);
  job.add(
      kModule, [=](Watch &) { return tally_records(path, options); }, Kind::kModule);
  job.add(
      "read(2) 8 KiB, memchr, no transcoding",
      [=](Watch &) {
        split_then(path,
                   [](const char *line, size_t bytes, Tally &tally) { tally.line(line, bytes); });
        return uint64_t{0};
      },
      Kind::kLimit);
  job.end();
}

}  // namespace

int main() {
  if (!std::setlocale(LC_ALL, "C.UTF-8")) fail("no C.UTF-8 locale");
  const Scratch scratch;
  Job job("decode", "Text lines read from UTF-8 into wide characters", "ns/line", 1e9);
  for (const Script script : {Script::kAscii, Script::kEuropean, Script::kCjk}) {
    for (const size_t mean : {20u, 80u, 1000u}) decode_case(job, scratch.at("lines"), script, mean);
  }
  job.print();
  return 0;
}
