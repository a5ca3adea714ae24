// Writing text lines from wide characters into UTF-8. Peers without files of their own gather the
// bytes in blocks of 8 KiB.
#include <iconv.h>

#include <boost/locale/encoding_utf.hpp>
#include <clocale>
#include <cstring>
#include <cwchar>

#include <utf8.h>

#include "bench/peers.hpp"
#include "bench/target.hpp"

namespace {

using namespace jx::bench;
using Lines = std::vector<std::u32string>;

constexpr size_t kRoom = 4 * kWidestLine;

const wchar_t *wide(const std::u32string &line) {
  static_assert(sizeof(wchar_t) == sizeof(char32_t));
  return reinterpret_cast<const wchar_t *>(line.c_str());
}

// A contender that converts line for line: convert(line, bytes) returns how many bytes it made.
template <typename Convert>
void add_converter(Job &job, std::string name, const Target &target, const Lines &lines,
                   Convert convert) {
  add_blocks(job, std::move(name), target, 8192, Kind::kPeer,
             [&lines, convert](BlockWriter &writer) {
               char bytes[kRoom + 1];
               for (const auto &line : lines) {
                 const size_t made = convert(line, bytes);
                 bytes[made] = '\n';
                 writer.put(bytes, made + 1);
               }
             });
}

void add_c_library(Job &job, const Target &target, const Lines &lines) {
  const std::shared_ptr<void> converter(iconv_open("UTF-8", "WCHAR_T"), iconv_close);
  add_converter(job, "iconv", target, lines, [converter](const std::u32string &line, char *bytes) {
    char *from = reinterpret_cast<char *>(const_cast<char32_t *>(line.data()));
    char *to = bytes;
    size_t from_left = line.size() * 4, to_left = kRoom;
    iconv(converter.get(), &from, &from_left, &to, &to_left);
    return static_cast<size_t>(to - bytes);
  });
  add_converter(job, "wcsnrtombs", target, lines, [](const std::u32string &line, char *bytes) {
    std::mbstate_t state{};
    const wchar_t *from = wide(line);
    return wcsnrtombs(bytes, &from, line.size(), kRoom, &state);
  });
}

void add_cpp_libraries(Job &job, const Target &target, const Lines &lines) {
  add_stream<std::wofstream>(job, "wofstream.write", target, [&lines](std::wofstream &file) {
    for (const auto &line : lines) {
      file.write(wide(line), static_cast<std::streamsize>(line.size()));
      file.put(L'\n');
    }
  });
  add_converter(job, "std::codecvt", target, lines, [](const std::u32string &line, char *bytes) {
    static const auto &facet =
        std::use_facet<std::codecvt<char32_t, char8_t, std::mbstate_t>>(std::locale::classic());
    std::mbstate_t state{};
    const char32_t *from_next = nullptr;
    char8_t *to = reinterpret_cast<char8_t *>(bytes), *to_next = nullptr;
    facet.out(state, line.data(), line.data() + line.size(), from_next, to, to + kRoom, to_next);
    return static_cast<size_t>(to_next - to);
  });
  add_converter(job, "utfcpp utf32to8", target, lines, [](const std::u32string &line, char *bytes) {
    return static_cast<size_t>(utf8::utf32to8(line.begin(), line.end(), bytes) - bytes);
  });
  add_converter(job, "Boost utf_to_utf", target, lines,
                [](const std::u32string &line, char *bytes) {
                  const auto made = boost::locale::conv::utf_to_utf<char>(line);
                  std::memcpy(bytes, made.data(), made.size());
                  return made.size();
                });
}

void add_optional([[maybe_unused]] Job &job, [[maybe_unused]] const Target &target,
                  [[maybe_unused]] const Lines &lines) {
#ifdef JX_BENCH_SIMDUTF
  add_converter(job, "simdutf", target, lines, [](const std::u32string &line, char *bytes) {
    return simdutf::convert_utf32_to_utf8(line.data(), line.size(), bytes);
  });
#endif
#ifdef JX_BENCH_ICU
  std::vector<std::u16string> halves;  // all test text is in the basic plane
  for (const auto &line : lines) halves.emplace_back(line.begin(), line.end());
  add_blocks(
      job, "ICU u_strToUTF8 (UTF-16)", target, 8192, Kind::kPeer, [halves](BlockWriter &writer) {
        char bytes[kRoom + 1];
        for (const auto &line : halves) {
          UErrorCode error = U_ZERO_ERROR;
          int32_t made = 0;
          u_strToUTF8(bytes, kRoom, &made, line.data(), static_cast<int32_t>(line.size()), &error);
          bytes[made] = '\n';
          writer.put(bytes, static_cast<size_t>(made) + 1);
        }
      });
#endif
#ifdef JX_BENCH_GLIB
  add_converter(
      job, "GLib g_ucs4_to_utf8", target, lines, [](const std::u32string &line, char *bytes) {
        glong made = 0;
        gchar *text = g_ucs4_to_utf8(reinterpret_cast<const gunichar *>(line.data()),
                                     static_cast<glong>(line.size()), nullptr, &made, nullptr);
        std::memcpy(bytes, text, static_cast<size_t>(made));
        g_free(text);
        return static_cast<size_t>(made);
      });
#endif
#ifdef JX_BENCH_UNISTRING
  add_converter(job, "libunistring u32_to_u8", target, lines,
                [](const std::u32string &line, char *bytes) {
                  size_t made = kRoom;
                  u32_to_u8(reinterpret_cast<const uint32_t *>(line.data()), line.size(),
                            reinterpret_cast<uint8_t *>(bytes), &made);
                  return made;
                });
#endif
}

void encode_case(Job &job, const std::string &path, Script script, size_t mean) {
  const Lines lines = make_lines(script, mean, 2 << 20);
  const Target target{path, join_utf8(lines)};
  std::vector<std::string> made_before;
  for (const auto &line : lines) made_before.push_back(to_utf8(line) + '\n');
  const std::string name = std::string(name_of(script)) + " " + std::to_string(mean);
  job.begin(path == kSink ? name + ", " + kSink : name, static_cast<double>(lines.size()));
  add_c_library(job, target, lines);
  add_cpp_libraries(job, target, lines);
  add_optional(job, target, lines);
  add_module(job, target, text_options(JX_ACCESS_OUTPUT, 16384, JX_ENCODING_UTF32LE), lines);
  add_blocks(job, "memcpy of UTF-8, write(2) 8 KiB", target, 8192, Kind::kLimit,
             [&made_before](BlockWriter &writer) {
               for (const auto &line : made_before) writer.put(line.data(), line.size());
             });
  job.end();
}

}  // namespace

int main() {
  if (!std::setlocale(LC_ALL, "C.UTF-8")) fail("no C.UTF-8 locale");
  const Scratch scratch;
  const std::string path = scratch.at("written");
  Job job("encode", "Text lines written from wide characters as UTF-8", "ns/line", 1e9);
  for (const size_t mean : {20u, 80u, 1000u}) encode_case(job, path, Script::kAscii, mean);
  encode_case(job, path, Script::kEuropean, 80);
  encode_case(job, path, Script::kCjk, 80);
  for (const Script script : {Script::kAscii, Script::kEuropean, Script::kCjk}) {
    encode_case(job, kSink, script, 80);
  }
  job.print();
  return 0;
}
