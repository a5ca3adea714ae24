// The table of encodings: numbers, names, and that every row does what it says.
#include <new>
#include <sstream>

#include "host/encodings.hpp"
#include "host/nls_support.hpp"

namespace {

// How many nothrow allocations succeed before one fails; below 0: all do.
thread_local int allocations_left = -1;

}  // namespace

void *operator new(size_t bytes, const std::nothrow_t &) noexcept {
  if (allocations_left == 0) return nullptr;
  if (allocations_left > 0) --allocations_left;
  return ::operator new(bytes);
}

namespace jx::test {
namespace {

using jxhost::Encoding;
using jxhost::Form;

std::vector<const Encoding *> all_encodings() {
  std::vector<const Encoding *> rows;
  for (uint32_t i = 0; const uint32_t number = jxhost_encoding_at(i); ++i) {
    rows.push_back(jxhost::find_encoding(number));
  }
  return rows;
}

TEST(Encodings, AreFoundByName) {
  const std::pair<const char *, uint32_t> rows[] = {
      {"Utf_8", 20},
      {"latin1", 28591},
      {"windows-1252", 1252},
      {"WIN1251", 1251},
      {"ibm-37", 37},
      {"850", 850},
      {"27", 27},
      {"cp27", 0},
      {"cp62", 0},
      {"", 0},
      {"--", 0},
      {"utf-9", 0},
      {"1", 0},
      {"latin", 0},
      {"cp", 0},
      {"cp99999999999", 0},
      {"latin1 latin1", 0},
      {nullptr, 0},
      {"a name that is longer than every other is", 0},
  };
  for (const auto &[name, number] : rows) {
    EXPECT_EQ(jxhost_encoding_by_name(name), number) << (name ? name : "null");
  }
  // No name means two encodings.
  for (const Encoding *row : all_encodings()) {
    EXPECT_EQ(jxhost_encoding_by_name(row->name), row->number);
    std::istringstream aliases(row->aliases);
    for (std::string alias; aliases >> alias;) {
      EXPECT_EQ(jxhost_encoding_by_name(alias.c_str()), row->number) << alias;
    }
  }
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
  // The C library writes DEL in this one and refuses to read it.
  if (row.number == 50227 && c == 0x7f) return;
  EXPECT_EQ(decode(bytes).first, JX_OK);
  if (row.form == Form::kPage) {
    EXPECT_EQ(by_iconv("UTF-32LE", row.iconv_name, chars).second, bytes);
  }
}

TEST(Encodings, EveryRowConvertsWithinItsLengths) {
  TestHost host;
  for (const Encoding *row : all_encodings()) {
    const Converter encode(host, 27, row->number);
    const Converter decode(host, row->number, 27);
    for (char32_t c = 0; c < 0x30000; c += c < 0x500 ? 1 : 61) {
      if (c < 0xd800 || c > 0xdfff) check_character(*row, encode, decode, c);
    }
    for (int byte = 0; row->form == Form::kPage && byte < 256; ++byte) {
      const std::string source(1, static_cast<char>(byte));
      const auto [error, expected] = by_iconv(row->iconv_name, "UTF-32LE", source);
      EXPECT_EQ(decode(source), Outcome(error ? JXHOST_E_MALFORMED : JX_OK, expected)) << row->name;
    }
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

TEST(Nls, MeasuresWhatOneCallWouldProduce) {
  TestHost host;
  JXNls *nls = host->nls;
  std::u32string text;
  for (int i = 0; i < 400; ++i) text += U"日本ab語";
  uint32_t bytes = 0;
  for (const uint32_t from : {20u, 25u, 27u, 50220u, 932u}) {
    const std::string source = Converter(host, 27, from)(jxchars(text)).second;
    const auto source_bytes = static_cast<uint32_t>(source.size());
    for (const uint32_t to : {20u, 24u, 27u, 50220u, 51932u}) {
      EXPECT_EQ(nls->measure_conversion(nls, from, source.data(), source_bytes, to, &bytes), JX_OK);
      EXPECT_EQ(bytes, Converter(host, from, to)(source).second.size()) << from << " to " << to;
    }
  }
  EXPECT_EQ(nls->measure_conversion(nls, 20, "a\xff", 2, 27, &bytes), JXHOST_E_MALFORMED);
  EXPECT_EQ(nls->measure_conversion(nls, 20, nullptr, 0, 27, &bytes), JX_OK);
  EXPECT_EQ(bytes, 0u);
}

TEST(Nls, GivesNothingAndKeepsNothingWhenMemoryIsOut) {
  TestHost host;
  JXNls *nls = host->nls;
  const uint32_t before = jxhost_live_objects(host.get());
  for (const auto &[from, to] : {std::pair{27u, 20u}, {1252u, 1047u}, {932u, 50220u}}) {
    JXTranscoder *transcoder = nullptr;
    int failures = 0;
    for (; !transcoder; ++failures) {
      allocations_left = failures;
      transcoder = nls->create_transcoder(nls, from, to, 0, nullptr);
      allocations_left = -1;
      EXPECT_EQ(jxhost_live_objects(host.get()), before + (transcoder ? 1 : 0));
    }
    EXPECT_GT(failures, 1);
    EXPECT_EQ(nls->destroy_transcoder(nls, transcoder), JX_OK);
  }
  EXPECT_EQ(nls->destroy_transcoder(nls, nullptr), JXHOST_E_BADOBJECT);
}

}  // namespace
}  // namespace jx::test
