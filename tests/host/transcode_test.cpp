// The transcoders: valid and malformed input, cut characters, room for output, and every pair
// against the C library.
#include <random>
#include <span>

#include "host/nls_support.hpp"
#include "support/scale.hpp"
#include "support/text_model.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

constexpr uint32_t kSjis = 932;

// Every encoding that is converted directly, with the C library's name for it and the end of its
// characters.
struct Direct {
  uint32_t number;
  const char *name;
  char32_t end;
};
constexpr Direct kDirect[] = {{20, "UTF-8", 0x110000},    {24, "UTF-16BE", 0x110000},
                              {25, "UTF-16LE", 0x110000}, {26, "UTF-32BE", 0x110000},
                              {27, "UTF-32LE", 0x110000}, {21, "ASCII", 0x80},
                              {62, "LATIN1", 0x100}};

TEST(Transcode, DecidesWhatIsValid) {
  const struct {
    uint32_t from, to;
    std::string source;
    JXStatus status;
    std::string produced;
  } rows[] = {
      // Malformed text: everything before it is produced.
      {20, 62, "ab\xf0\x9f\x98z", kMalformed, "ab"},
      {25, 27, "\0\xd8\0\xd8"s, kMalformed, ""},
      {27, 25, jxchars(U"a") + "\0\0\x11\0"s, kMalformed, "a\0"s},
      {kSjis, 20, "a\x81 ", kMalformed, "a"},
      // The first fault is reported, in decoding or in encoding.
      {20, 62, "\xc3\xbf\xc4\x80\xff", kUnmappable, "\xff"},
      {20, kSjis, "a\xc3\xbf\xff", kUnmappable, "a"},
      {20, kSjis, "a\xff\xc3\xbf", kMalformed, "a"},
      // Unmappable characters; the C library drops the tag characters unless told otherwise.
      {27, 62, jxchars(U"a\xff\x100"), kUnmappable, "a\xff"},
      {62, 21, "a\xff", kUnmappable, "a"},
      {27, kSjis, jxchars(U"a\xe0041z"), kUnmappable, "a"},
      {27, 54936, jxchars(U"a\xe0041"), 0, "a\xd3\x36\x9c\x33"},
      // Characters that the C library replaces, and bytes that it misreads.
      {20, 939, "caf\xc3\xa9", kUnmappable, "\x83\x81\x86"},
      {20, 943, "a\xc2\x80", kUnmappable, "a"},
      {27, 1390, jxchars(U"\x4e00\xffee"), kUnmappable, "\x0e\x45\x41"},
      {1390, 20, "\x0e\x45\x57\x0f\xc1\x57", kMalformed, "\xe6\x9d\xb1\x41"},
      {51949, 20, "\xb0\xa1\x8c\x63", kMalformed, "\xea\xb0\x80"},
      {51932, 20, "\x8e\xb1\x85", kMalformed, "\xef\xbd\xb1"},
      {3004, 20, "\x8f\xb0\xa1\x9f", kMalformed, "\xe4\xb8\x82"},
      {950, 20, "a\x80", kMalformed, "a"},
      {951, 20, "\x88\x62\x80", kMalformed, "\xc3\x8a\xcc\x84"},
      {20, 51932, "a\xc2\x85", kUnmappable, "a"},
      // Through JXChar, and to an encoding with shifts: every call ends in the initial state.
      {1047, 437, "\x81\xc1", 0, "aA"},
      {20, 50220, "a\xe6\x97\xa5", 0, "a\x1b$BF|\x1b(B"},
      {50220, 20, "\x1b$BF|F|\x1b(Ba", 0, "\xe6\x97\xa5\xe6\x97\xa5\x61"},
      // Between equal encodings text is copied where the C library might change it.
      {kSjis, kSjis, "\x87\x90\x81", 0, "\x87\x90\x81"},
      {1252, 1252, "\x81", 0, "\x81"},
  };
  TestHost host;
  for (const auto &row : rows) {
    SCOPED_TRACE("row " + std::to_string(&row - rows));
    const Converter convert(host, row.from, row.to);
    const Outcome expected = {row.status, row.produced};
    EXPECT_EQ(convert(row.source), expected);
    // Neither a fault nor a shift state may survive the call.
    EXPECT_EQ(convert(row.source), expected) << "again";
  }
}

// Texts with characters of every length, and the encodings that have them all.
const std::u32string kMixed = U"aé€😀日本語文字列Ж\x7ff\x800\xffff\x10000z\x10ffff plain";
const std::u32string kJapanese = U"日本語ab文字cdカナ、かな";

TEST(Transcode, CompletesCharactersThatACallCut) {
  TestHost host;
  for (const uint32_t from : {20u, 24u, 25u, 26u, 27u, 54936u, 65000u, kSjis, 3001u, 51932u, 50220u,
                              3002u, 939u, 1399u}) {
    const bool has_all = from < kSjis || from == 54936 || from == 65000;
    const std::string chars = jxchars(has_all ? kMixed : kJapanese);
    const auto [status, text] = Converter(host, 27, from)(chars);
    ASSERT_EQ(status, JX_OK) << from;
    for (const uint32_t to : {27u, 20u, 25u, 54936u}) {
      const Converter convert(host, from, to);
      const std::string whole = Converter(host, 27, to)(chars).second;
      for (size_t cut = 0; cut <= text.size(); ++cut) {
        const Outcome first = convert(text.substr(0, cut));
        const Outcome second = convert(text.substr(cut));
        EXPECT_EQ(first.first | second.first, JX_OK);
        EXPECT_EQ(first.second + second.second, whole) << from << " cut at " << cut;
      }
      std::string singly;
      for (const char byte : text) singly += convert({&byte, 1}).second;
      EXPECT_EQ(singly, whole) << from << " byte by byte to " << to;
    }
  }
}

// Converts into every room that is too small, and into the smallest that is enough, which is the
// measured one.
void check_room(const TestHost &host, uint32_t from, uint32_t to, std::u32string_view text) {
  SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
  const std::string source = Converter(host, 27, from)(jxchars(text)).second;
  const Converter convert(host, from, to);
  const auto [status, whole] = convert(source);
  ASSERT_EQ(status, JX_OK);
  for (size_t room = 0; room < whole.size(); ++room) {
    const Outcome part = convert(source, room);
    EXPECT_EQ(part, Outcome(JXHOST_E_NOROOM, whole.substr(0, part.second.size()))) << room;
  }
  EXPECT_EQ(convert(source, whole.size()), Outcome(JX_OK, whole));
  uint32_t bytes = 0;
  EXPECT_EQ(host->nls->measure_conversion(host->nls, from, source.data(),
                                          static_cast<uint32_t>(source.size()), to, &bytes),
            JX_OK);
  EXPECT_EQ(bytes, whole.size());
}

TEST(Transcode, NeedsTheRoomOfTheResultAndNoMore) {
  TestHost host;
  const std::u32string japanese = kJapanese + kJapanese + kJapanese + kJapanese;
  const std::u32string latin =
      U"abcdefghijklmnopqrstuvwxyz0123456789 äöü, and then more than a piece of the measuring";
  for (const uint32_t from : {20u, 25u, 26u, 27u, 62u, 1252u}) {
    for (const uint32_t to : {20u, 24u, 25u, 26u, 27u, 62u, 1252u, 1258u}) {
      check_room(host, from, to, latin);
    }
    for (const uint32_t to : {kSjis, 50220u}) {
      check_room(host, from, to, from < 62 ? japanese : latin.substr(0, 20));
    }
  }
}

TEST(Transcode, EveryCharacterRoundTripsThroughEveryUnicodeForm) {
  std::u32string all;
  for (char32_t c = 0; c < 0x110000; ++c) {
    if (c < 0xd800 || c > 0xdfff) all += c;
  }
  const std::span unicode = std::span(kDirect).first(5);
  std::vector<std::string> forms;
  for (const Direct &to : unicode) {
    forms.push_back(by_iconv("UTF-32LE", to.name, jxchars(all)).second);
  }
  TestHost host;
  for (size_t from = 0; from < unicode.size(); ++from) {
    for (size_t to = 0; to < unicode.size(); ++to) {
      const Converter convert(host, unicode[from].number, unicode[to].number);
      EXPECT_TRUE(convert(forms[from]) == Outcome(0, forms[to])) << from << " to " << to;
    }
  }
  const Converter convert(host, 27, 20);
  for (char32_t c = 0xd800; c < 0xe000; ++c) {
    ASSERT_EQ(convert(jxchars(std::u32string(4, c))), Outcome(kMalformed, ""));
  }
}

// Alone, and after a run of ASCII, which takes another path through the code.
TEST(Transcode, Utf8IsCheckedAtEveryLimit) {
  TestHost host;
  const Converter decode(host, 20, 27);
  const std::string seconds = "\x7f\x80\x8f\x90\x9f\xa0\xbf\xc0";
  const std::string later = "\x7f\x80\xbf\xc0";
  for (uint32_t i = 0; i < 256 * 8 * 4 * 4; ++i) {
    const std::string bytes = std::string(37, 'r') + static_cast<char>(i / 128) +
                              seconds[i / 16 % 8] + later[i / 4 % 4] + later[i % 4];
    for (const auto &[start, length] : {std::pair{37u, 1u}, {37, 2}, {37, 3}, {37, 4}, {0, 41}}) {
      const std::string source = bytes.substr(start, length);
      std::string expected;
      const JXStatus status = TextModel(20, 27).convert(source, SIZE_MAX, &expected);
      EXPECT_EQ(decode(source), Outcome(status, expected));
      decode("\xff");  // drops a cut character, so that the next row does not complete it
    }
  }
}

// Text made of runs of every kind and length, as the code sees real text.
std::u32string random_text(std::mt19937 &random, char32_t end) {
  constexpr std::pair<char32_t, char32_t> kKinds[] = {
      {0x20, 0x7e},     {0, 0x7f},        {0xa0, 0xff},       {0x400, 0x4ff},
      {0x4e00, 0x9fff}, {0xe000, 0xffff}, {0x10000, 0x10ffff}};
  std::u32string text;
  for (size_t runs = random() % 6; runs > 0; --runs) {
    const auto [first, last] = kKinds[random() % std::size(kKinds)];
    for (size_t length = random() % 40; length > 0 && last < end; --length) {
      text += static_cast<char32_t>(first + random() % (last - first + 1));
    }
  }
  return text;
}

TEST(Transcode, AgreesWithTheCLibraryOnRandomText) {
  const unsigned seed = std::random_device()();
  std::mt19937 random(seed);
  TestHost host;
  for (size_t i = 0; i < static_cast<size_t>(scaled(7350)); ++i) {
    const Direct &from = kDirect[i % std::size(kDirect)];
    const Direct &to = kDirect[i / std::size(kDirect) % std::size(kDirect)];
    std::string source =
        by_iconv("UTF-32LE", from.name, jxchars(random_text(random, from.end))).second;
    // Texts with a wrong byte, or that end early. Not in UTF-8, where the C library is laxer, and
    // not to a small encoding, for which it drops tag characters.
    if (random() % 2 && from.number != 20 && to.end == 0x110000 && !source.empty()) {
      source[random() % source.size()] = static_cast<char>(random());
    }
    if (random() % 2) source.resize(source.size() - source.size() % 3);
    const auto [error, bytes] = by_iconv(from.name, to.name, source);
    // A fresh transcoder: the text may have ended inside a character.
    const Outcome outcome = Converter(host, from.number, to.number)(source);
    EXPECT_TRUE((outcome.first == JX_OK) == (error == 0 || error == EINVAL) &&
                outcome.second == bytes)
        << "seed " << seed << ": " << from.name << " to " << to.name << ": "
        << testing::PrintToString(source);
  }
}

TEST(Transcode, TheNativePairIsSharedByThreads) {
  TestHost host;
  const Converter decode(host, JX_ENCODING_NATIVE, 27), encode(host, 27, JX_ENCODING_NATIVE);
  std::string every_byte;
  for (int byte = 0; byte < 256; ++byte) every_byte += static_cast<char>(byte);
  on_threads([&](uint32_t) {
    for (int i = 0; i < 500; ++i) {
      EXPECT_EQ(encode(decode(every_byte).second), Outcome(JX_OK, every_byte));
      // A fault in one thread does not affect another.
      EXPECT_EQ(encode(jxchars(U"\x100")), Outcome(kUnmappable, ""));
    }
  });
}

}  // namespace
}  // namespace jx::test
