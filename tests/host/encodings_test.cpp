// The table of encodings: numbers, names, and each row against the actual conversion.
#include <set>
#include <sstream>

#include "host/encodings.hpp"
#include "host/nls_support.hpp"

namespace jx::test {
namespace {

using jxhost::Encoding;

std::vector<const Encoding *> all_encodings() {
  std::vector<const Encoding *> rows;
  for (uint32_t i = 0; const uint32_t number = jxhost_encoding_at(i); ++i) {
    rows.push_back(jxhost::find_encoding(number));
  }
  return rows;
}

TEST(Encodings, AreFoundByName) {
  const std::pair<const char *, uint32_t> rows[] = {
      {"Utf_8", 20}, {"WIN1251", 1251}, {"ibm-37", 37}, {"850", 850}, {"27", 27}};
  for (const auto &[name, number] : rows) EXPECT_EQ(jxhost_encoding_by_name(name), number) << name;
  for (const char *unknown : {"", "cp27", "cp", "utf-9", "latin1 l1", "cp99999999999",
                              "a name that is longer than every name in the table"}) {
    EXPECT_EQ(jxhost_encoding_by_name(unknown), 0u) << unknown;
  }
  EXPECT_EQ(jxhost_encoding_by_name(nullptr), 0u);
  // No name is used twice. Programs keep the numbers and size their buffers by the lengths.
  uint32_t numbers = 0, least = 0, most = 0;
  for (const Encoding *row : all_encodings()) {
    numbers += row->number;
    least += row->min_bytes;
    most += row->max_bytes;
    EXPECT_EQ(jxhost_encoding_by_name(row->name), row->number);
    std::istringstream aliases(jxhost_encoding_aliases(row->number));
    for (std::string alias; aliases >> alias;) {
      EXPECT_EQ(jxhost_encoding_by_name(alias.c_str()), row->number) << alias;
    }
  }
  EXPECT_EQ(std::tuple(numbers, least, most), std::tuple(1417661u, 273u, 375u))
      << "sums over the table";
}

// Every name that the C library's program lists is known, or left out by its usual name.
TEST(Encodings, TheCLibrarysNamesAreKnown) {
  std::string left_out;
  const char *reason = nullptr;
  for (uint32_t i = 0; const char *name = jxhost_encoding_left_out_at(i, &reason); ++i) {
    EXPECT_EQ(jxhost_encoding_by_name(name), 0u) << name;
    left_out += name + std::string(reason && *reason ? " " : "?");
  }
  EXPECT_EQ(left_out, "ISO-2022-CN ISO-2022-CN-EXT ISO-2022-JP-3 ISO-2022-KR TSCII ");
  const std::unique_ptr<FILE, int (*)(FILE *)> list(::popen("iconv -l", "r"), ::pclose);
  size_t known = 0;
  std::string unknown;
  for (char line[256]; std::fgets(line, sizeof line, list.get());) {
    const std::string name(line, std::strcspn(line, "\n"));
    jxhost_encoding_by_name(name.c_str()) != 0 ? void(++known) : void(unknown += name + " ");
  }
  EXPECT_GT(known, 1000u);
  EXPECT_EQ(unknown,
            "CSISO2022CN// CSISO2022KR// ISO-2022-CN-EXT// ISO-2022-CN// ISO-2022-JP-3// "
            "ISO-2022-KR// ISO2022CN// ISO2022CNEXT// ISO2022KR// TSCII// ");
}

// Encodes one character and checks the result against the table row and the way back.
void check_character(const Encoding &row, const Converter &encode, const Converter &decode,
                     char32_t c) {
  SCOPED_TRACE(row.name + (" " + std::to_string(c)));
  const std::string chars = jxchars({&c, 1});
  const auto [status, bytes] = encode(chars);
  if (status != JX_OK) {
    EXPECT_EQ(status, JXHOST_E_UNMAPPABLE);
    return;
  }
  EXPECT_GE(bytes.size(), row.min_bytes);
  EXPECT_LE(bytes.size(), row.max_bytes);
  const auto [decoded, back] = decode(bytes);
  EXPECT_EQ(decoded, JX_OK);
  EXPECT_EQ(back == jxchars(U"\x1a"), c == 0x1a) << "a substitute";
  if (row.form == jxhost::Form::kPage) {
    EXPECT_EQ(by_iconv("UTF-32LE", row.iconv_name, chars).second, bytes);
  }
}

TEST(Encodings, EveryRowConvertsWithinItsLengths) {
  TestHost host;
  for (const Encoding *row : all_encodings()) {
    const Converter encode(host, 27, row->number);
    const Converter decode(host, row->number, 27);
    for (char32_t c = 0; c < 0x30000; c += c < 0x500 || c >> 8 == 0xfb ? 1 : 61) {
      if (c < 0xd800 || c > 0xdfff) check_character(*row, encode, decode, c);
    }
    for (int byte = 0; row->form == jxhost::Form::kPage && byte < 256; ++byte) {
      const std::string source(1, static_cast<char>(byte));
      const auto [error, expected] = by_iconv(row->iconv_name, "UTF-32LE", source);
      EXPECT_EQ(decode(source), Outcome(error ? JXHOST_E_MALFORMED : JX_OK, expected)) << row->name;
    }
  }
}

TEST(Encodings, NothingFitsIntoNoRoom) {
  TestHost host;
  for (const Encoding *row : all_encodings()) {
    JXTranscoder *encode = host->nls->create_encoder(host->nls, row->number, 0, 0);
    // Braille has no blank.
    const bool is_braille = std::set<std::string>{"BRF", "ISO_11548-1"}.contains(row->name);
    const char32_t one = is_braille ? U'\u2801' : U' ';
    for (const uint32_t source_bytes : {0u, 4u}) {
      uint32_t produced = 1;
      EXPECT_EQ(encode->transcode(encode, &one, source_bytes, nullptr, 0, &produced, 0),
                source_bytes == 0 ? JX_OK : JXHOST_E_NOROOM)
          << row->name;
      EXPECT_EQ(produced, 0u) << row->name;
    }
    EXPECT_EQ(host->nls->destroy_transcoder(host->nls, encode), JX_OK);
  }
}

TEST(Nls, RefusesUnknownEncodings) {
  TestHost host;
  JXNls *nls = host->nls;
  for (const uint32_t unknown : {0u, 1u, 22u, 63u, UINT32_MAX}) {
    JXEncodingInfo info;
    uint32_t bytes = 1;
    EXPECT_EQ(nls->encoding_info(nls, unknown, &info), JXHOST_E_BADENCODING);
    EXPECT_EQ(nls->create_transcoder(nls, unknown, 20, 0, nullptr), nullptr);
    EXPECT_EQ(nls->measure_conversion(nls, 20, "", 0, unknown, &bytes), JXHOST_E_BADENCODING);
  }
}

}  // namespace
}  // namespace jx::test
