// The transcoders of the reference host against iconv and the C library's routines for wide
// characters: UTF-8, UTF-16 and single-byte pages to JXChar and back, a line a call.
#include <iconv.h>

#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <string>
#include <vector>

#include "bench/paired.hpp"
#include "jx/jxhost.h"

namespace {

using namespace jx::bench;

constexpr size_t kLines = 40'000;

// Lines around 80 characters, one letter in eight of them outside ASCII.
std::vector<std::u32string> make_lines(std::u32string_view letters) {
  uint32_t random = 1;
  const auto below = [&random](size_t limit) {
    random = random * 1664525 + 1013904223;
    return (random >> 8) % limit;
  };
  std::vector<std::u32string> lines(kLines);
  for (std::u32string &line : lines) {
    for (size_t left = 40 + below(81); left > 0; --left) {
      line += below(8) ? static_cast<char32_t>('a' + below(26)) : letters[below(letters.size())];
    }
  }
  return lines;
}

// A direction of the host and of iconv, over the same lines.
class Conversion {
 public:
  Conversion(uint32_t from, const char *from_name, uint32_t to, const char *to_name,
             const std::vector<std::u32string> &lines)
      : host_(jxhost_create(nullptr)), nls_(host_->nls), peer_(iconv_open(to_name, from_name)) {
    transcoder_ = nls_->create_transcoder(nls_, from, to, 0, nullptr);
    JXTranscoder *encoder = nls_->create_transcoder(nls_, JX_ENCODING_UTF32LE, from, 0, nullptr);
    if (!transcoder_ || !encoder || peer_ == reinterpret_cast<iconv_t>(-1)) std::abort();
    for (const std::u32string &line : lines) {
      std::string text(line.size() * 4, '\0');
      uint32_t bytes = 0;
      const JXStatus status =
          encoder->transcode(encoder, line.data(), static_cast<uint32_t>(line.size() * 4),
                             text.data(), static_cast<uint32_t>(text.size()), &bytes, 0);
      if (status != JX_OK) std::abort();
      text.resize(bytes);
      lines_.push_back(std::move(text));
    }
  }

  void ours() {
    uint64_t total = 0;
    for (const std::string &line : lines_) {
      uint32_t bytes = 0;
      const JXStatus status =
          transcoder_->transcode(transcoder_, line.data(), static_cast<uint32_t>(line.size()), out_,
                                 sizeof(out_), &bytes, 0);
      if (status != JX_OK) std::abort();
      total += bytes;
    }
    keep(total);
  }
  void by_iconv() {
    uint64_t total = 0;
    for (std::string &line : lines_) {
      char *in = line.data();
      char *out = out_;
      size_t in_bytes = line.size();
      size_t room = sizeof(out_);
      if (iconv(peer_, &in, &in_bytes, &out, &room) == static_cast<size_t>(-1)) std::abort();
      total += sizeof(out_) - room;
    }
    keep(total);
  }
  // UTF-8 to wide characters, and back.
  void by_mbsnrtowcs() {
    uint64_t total = 0;
    for (const std::string &line : lines_) {
      const char *in = line.data();
      std::mbstate_t state{};
      total += mbsnrtowcs(reinterpret_cast<wchar_t *>(out_), &in, line.size(),
                          sizeof(out_) / sizeof(wchar_t), &state);
    }
    keep(total);
  }
  void by_wcsnrtombs() {
    uint64_t total = 0;
    for (const std::string &line : lines_) {
      const auto *in = reinterpret_cast<const wchar_t *>(line.data());
      std::mbstate_t state{};
      total += wcsnrtombs(out_, &in, line.size() / sizeof(wchar_t), sizeof(out_), &state);
    }
    keep(total);
  }

 private:
  JXHost *host_;
  JXNls *nls_;
  JXTranscoder *transcoder_;
  iconv_t peer_;
  std::vector<std::string> lines_;
  alignas(16) char out_[4096];
};

}  // namespace

int main() {
  if (!std::setlocale(LC_ALL, "C.UTF-8")) return 1;
  const auto european = make_lines(U"äöüßéèêçñåøæ");
  const auto cyrillic = make_lines(U"абвгдежзик");
  const auto cjk = make_lines(U"日本語文字列東京都");
  struct Row {
    const char *what;
    uint32_t number;
    const char *name;
    const std::vector<std::u32string> &lines;
  };
  const Row rows[] = {
      {"UTF-8", 20, "UTF-8", european},        {"UTF-8, CJK", 20, "UTF-8", cjk},
      {"UTF-16LE", 25, "UTF-16LE", european},  {"UTF-16BE, CJK", 24, "UTF-16BE", cjk},
      {"page 1252", 1252, "CP1252", european}, {"page 1251", 1251, "CP1251", cyrillic},
      {"page 850", 850, "CP850", european}};
  std::vector<Pair> pairs;
  std::vector<std::unique_ptr<Conversion>> conversions;
  const auto add = [&](const std::string &what, uint32_t from, const char *from_name, uint32_t to,
                       const char *to_name, const std::vector<std::u32string> &lines) {
    Conversion *made =
        conversions.emplace_back(new Conversion(from, from_name, to, to_name, lines)).get();
    pairs.push_back({what, "iconv", [made] { made->ours(); }, [made] { made->by_iconv(); }});
    return made;
  };
  for (const Row &row : rows) {
    const std::string name = row.what;
    Conversion *decode = add(name + " to JXChar", row.number, row.name, 27, "WCHAR_T", row.lines);
    Conversion *encode = add("JXChar to " + name, 27, "WCHAR_T", row.number, row.name, row.lines);
    if (row.number != 20) continue;
    pairs.push_back({name + " to JXChar", "mbsnrtowcs", [decode] { decode->ours(); },
                     [decode] { decode->by_mbsnrtowcs(); }});
    pairs.push_back({"JXChar to " + name, "wcsnrtombs", [encode] { encode->ours(); },
                     [encode] { encode->by_wcsnrtombs(); }});
  }
  add("UTF-16LE to UTF-8", 25, "UTF-16LE", 20, "UTF-8", european);
  add("UTF-8 to UTF-16LE", 20, "UTF-8", 25, "UTF-16LE", european);
  add("UTF-16LE to UTF-8, CJK", 25, "UTF-16LE", 20, "UTF-8", cjk);
  add("UTF-8 to UTF-16LE, CJK", 20, "UTF-8", 25, "UTF-16LE", cjk);
  return run_pairs("transcode", "Transcoders of the reference host, a line a call", pairs);
}
