// The transcoders: what is valid, where characters may be cut, how much room is needed, and that
// every pair agrees with the C library.
#include <bit>
#include <random>
#include <set>
#include <span>
#include <thread>

#include "tests/host/nls_support.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

constexpr uint32_t kAscii = 21;
constexpr uint32_t kLatin1 = 28591;
constexpr uint32_t kSjis = 932;

constexpr JXStatus kMalformed = JXHOST_E_MALFORMED;
constexpr JXStatus kUnmappable = JXHOST_E_UNMAPPABLE;

// Every encoding with code of its own and the C library's name for it.
struct Direct {
  uint32_t number;
  const char *name;
};
constexpr Direct kDirect[] = {{20, "UTF-8"},    {24, "UTF-16BE"},   {25, "UTF-16LE"},
                              {26, "UTF-32BE"}, {27, "UTF-32LE"},   {kAscii, "ASCII"},
                              {62, "LATIN1"},   {kLatin1, "LATIN1"}};

TEST(Transcode, DecidesWhatIsValid) {
  const struct {
    int line;
    uint32_t from;
    uint32_t to;
    std::string source;
    JXStatus status;
    std::string produced;
  } rows[] = {
      {__LINE__, 20, 24, "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80", 0, "\0\x7f\0\x80\x07\xff\x08\0"s},
      {__LINE__, 20, 24, "\xed\x9f\xbf\xee\x80\x80\xf0\x90\x80\x80", 0,
       "\xd7\xff\xe0\0\xd8\0\xdc\0"s},
      {__LINE__, 20, 26, "\xf4\x8f\xbf\xbf", 0, "\0\x10\xff\xff"s},
      {__LINE__, 20, 20, "\xef\xbb\xbfz", 0, "\xef\xbb\xbfz"},
      // Lone and misplaced continuation bytes.
      {__LINE__, 20, 62, "ab\x80z", kMalformed, "ab"},
      {__LINE__, 20, 62, "ab\xc3z", kMalformed, "ab"},
      {__LINE__, 20, 62, "ab\xe2\x82z", kMalformed, "ab"},
      {__LINE__, 20, 62, "ab\xf0\x9f\x98z", kMalformed, "ab"},
      {__LINE__, 20, 62, "ab\xff", kMalformed, "ab"},
      // Overlong forms, surrogates and what lies above, also when they are cut at the end.
      {__LINE__, 20, 62, "a\xc0\x80", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xc1", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xe0\x9f", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xe0\x9f\xbf", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xed\xa0", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xed\xbf\xbf", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xf0\x8f\xbf", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xf0\x8f\xbf\xbf", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xf4\x90", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xf4\x90\x80\x80", kMalformed, "a"},
      {__LINE__, 20, 62, "a\xf5", kMalformed, "a"},
      {__LINE__, 24, 20, "\0a\xdc\0\0b"s, kMalformed, "a"},
      {__LINE__, 25, 20, "a\0\0\xd8z\0"s, kMalformed, "a"},
      {__LINE__, 25, 27, "\0\xd8\0\xd8"s, kMalformed, ""},
      {__LINE__, 26, 20, "\0\0\0a\0\0\xd8\0"s, kMalformed, "a"},
      {__LINE__, 27, 20, jxchars(U"a\xdfff"), kMalformed, "a"},
      {__LINE__, 27, 25, jxchars(U"a") + "\0\0\x11\0"s, kMalformed, "a\0"s},
      {__LINE__, 27, 62, jxchars(U"a") + "z\0\0\x80"s, kMalformed, "a"},
      {__LINE__, kAscii, 27, "a\x80", kMalformed, jxchars(U"a")},
      {__LINE__, 1252, 20, "a\x81", kMalformed, "a"},
      {__LINE__, kSjis, 20, "a\x81 ", kMalformed, "a"},
      // The first fault is reported, wherever it comes from.
      {__LINE__, 20, 62, "\xc3\xbf\xc4\x80\xff", kUnmappable, "\xff"},
      {__LINE__, 20, 62, "\xff\xc4\x80", kMalformed, ""},
      {__LINE__, 20, kSjis, "a\xc3\xbf\xff", kUnmappable, "a"},
      {__LINE__, 20, kSjis, "a\xff\xc3\xbf", kMalformed, "a"},
      // Unmappable characters; the C library drops the tag characters unless told otherwise.
      {__LINE__, 27, 62, jxchars(U"a\xff\x100"), kUnmappable, "a\xff"},
      {__LINE__, 27, kAscii, jxchars(U"a\x80"), kUnmappable, "a"},
      {__LINE__, 62, kAscii, "a\xff", kUnmappable, "a"},
      {__LINE__, 27, 1252, jxchars(U"\x20ac\x100"), kUnmappable, "\x80"},
      {__LINE__, 27, 1252, jxchars(U"\x10ffff"), kUnmappable, ""},
      {__LINE__, 27, kSjis, jxchars(U"a\xe0041z"), kUnmappable, "a"},
      {__LINE__, 27, 54936, jxchars(U"a\xe0041"), 0, "a\xd3\x36\x9c\x33"},
      // By way of JXChar, and to an encoding with shifts, which every call ends unshifted.
      {__LINE__, 1047, 437, "\x81\xc1", 0, "aA"},
      {__LINE__, 20, 50220, "a\xe6\x97\xa5", 0, "a\x1b$BF|\x1b(B"},
      {__LINE__, 50220, 20, "\x1b$BF|F|\x1b(Ba", 0, "\xe6\x97\xa5\xe6\x97\xa5\x61"},
      // A text that stays in its encoding is copied where the C library might change it.
      {__LINE__, kSjis, kSjis, "\x87\x90\x81", 0, "\x87\x90\x81"},
      {__LINE__, 1252, 1252, "\x81", 0, "\x81"},
  };
  NlsHost host;
  for (const auto &row : rows) {
    const Converter convert(host, row.from, row.to);
    const Outcome expected = {row.status, row.produced};
    EXPECT_EQ(convert(row.source), expected) << "line " << row.line;
    // Neither a fault nor an escape sequence may be remembered.
    EXPECT_EQ(convert(row.source), expected) << "again, line " << row.line;
    // The same behind and in front of a long run, which goes another way through the code.
    if (row.from == 20) {
      const std::string run(37, 'r');
      const std::string wide = Converter(host, 20, row.to)(run).bytes;
      EXPECT_EQ(convert(run + row.source + run).status, row.status) << "in runs, line " << row.line;
      EXPECT_EQ(convert(run + row.source).bytes, wide + row.produced) << "in run, " << row.line;
    }
  }
}

// Texts with characters of every length, and the encodings that have them all.
const std::u32string kMixed =
    U"aé€😀日本語文字列Ж\x7ff\x800\xffff\x10000z\x10ffff plain text, long.";
const std::u32string kJapanese = U"日本語ab文字cdカナ、かな";

TEST(Transcode, CompletesCharactersThatACallCut) {
  const struct {
    uint32_t encoding;
    const std::u32string &text;
  } rows[] = {{20, kMixed},       {24, kMixed},       {25, kMixed},       {26, kMixed},
              {27, kMixed},       {54936, kMixed},    {65000, kMixed},    {kSjis, kJapanese},
              {3001, kJapanese},  {51932, kJapanese}, {50220, kJapanese}, {3002, kJapanese},
              {50222, kJapanese}, {939, kJapanese},   {1399, kJapanese}};
  NlsHost host;
  for (const auto &row : rows) {
    const Outcome text = Converter(host, 27, row.encoding)(jxchars(row.text));
    ASSERT_EQ(text.status, 0u) << row.encoding;
    for (const uint32_t to : {27u, 20u, 25u, 54936u}) {
      const Converter convert(host, row.encoding, to);
      const std::string whole = Converter(host, 27, to)(jxchars(row.text)).bytes;
      for (size_t cut = 0; cut <= text.bytes.size(); ++cut) {
        const Outcome first = convert(std::string_view(text.bytes).substr(0, cut));
        const Outcome second = convert(std::string_view(text.bytes).substr(cut));
        EXPECT_EQ(first.status | second.status, 0u);
        EXPECT_EQ(first.bytes + second.bytes, whole) << row.encoding << " cut at " << cut;
      }
      std::string singly;
      for (const char byte : text.bytes) singly += convert(std::string(1, byte)).bytes;
      EXPECT_EQ(singly, whole) << row.encoding << " byte by byte to " << to;
    }
  }
}

TEST(Transcode, ForgetsACutCharacterAfterAFault) {
  NlsHost host;
  const Converter convert(host, 20, 27);
  EXPECT_EQ(convert("\xe2\x82"), (Outcome{0, ""}));
  EXPECT_EQ(convert("z"), (Outcome{kMalformed, ""}));
  EXPECT_EQ(convert("z"), (Outcome{0, jxchars(U"z")}));
  EXPECT_EQ(convert("\xe2\x82"), (Outcome{0, ""}));
  EXPECT_EQ(convert("\xac", 3), (Outcome{JXHOST_E_NOROOM, ""}));
  EXPECT_EQ(convert("\xac"), (Outcome{kMalformed, ""}));
}

TEST(Transcode, NeedsTheRoomOfTheResultAndNoMore) {
  NlsHost host;
  const std::u32string latin = U"abcdefghijklmnopqrstuvwxyz0123456789 äöü and then some more";
  for (const uint32_t from : {20u, 25u, 26u, 27u, 62u, 1252u}) {
    for (const uint32_t to : {20u, 24u, 25u, 26u, 27u, 62u, 1252u, 1258u, kSjis, 50220u}) {
      if (from == 62 && to == kSjis) continue;
      const bool japanese = to == kSjis || to == 50220;
      const std::u32string text = japanese && from != 62 && from != 1252 ? kJapanese + kJapanese
                                  : japanese                             ? latin.substr(0, 36)
                                                                         : latin;
      const std::string source = Converter(host, 27, from)(jxchars(text)).bytes;
      const Converter convert(host, from, to);
      const Outcome whole = convert(source);
      ASSERT_EQ(whole.status, 0u) << from << " to " << to;
      for (size_t room = 0; room < whole.bytes.size(); ++room) {
        const Outcome part = convert(source, room);
        EXPECT_EQ(part.status, JXHOST_E_NOROOM) << from << " to " << to << " in " << room;
        EXPECT_EQ(part.bytes, whole.bytes.substr(0, part.bytes.size()));
      }
      EXPECT_EQ(convert(source, whole.bytes.size()), whole) << from << " to " << to;
    }
  }
}

TEST(Transcode, EveryCharacterRoundTripsThroughEveryUnicodeForm) {
  std::u32string all;
  for (char32_t c = 0; c < 0x110000; ++c) {
    if (c < 0xd800 || c > 0xdfff) all += c;
  }
  const std::string chars = jxchars(all);
  NlsHost host;
  const std::span unicode = std::span(kDirect).first(5);
  std::vector<std::string> forms;
  for (const Direct &to : unicode) {
    const Outcome there = Converter(host, 27, to.number)(chars);
    EXPECT_EQ(there.status, 0u) << to.name;
    EXPECT_TRUE(there.bytes == by_iconv("UTF-32LE", to.name, chars).second) << to.name;
    forms.push_back(there.bytes);
  }
  for (size_t from = 0; from < unicode.size(); ++from) {
    for (size_t to = 0; to < unicode.size(); ++to) {
      const Outcome across = Converter(host, unicode[from].number, unicode[to].number)(forms[from]);
      EXPECT_EQ(across.status, 0u);
      EXPECT_TRUE(across.bytes == forms[to]) << unicode[from].name << " to " << unicode[to].name;
    }
  }
  const Converter convert(host, 27, 20);
  for (char32_t c = 0xd800; c < 0xe000; ++c) {
    ASSERT_EQ(convert(jxchars(std::u32string(4, c))).status, kMalformed);
  }
}

// Whether the bytes are one character in UTF-8, by the definition: the code point that the bits
// stand for, written in the shortest form, is these bytes.
bool is_utf8_character(const Converter &encode, const std::string &bytes) {
  const auto lead = static_cast<uint8_t>(bytes[0]);
  const auto length = static_cast<size_t>(lead < 0x80 ? 1 : std::countl_one(lead));
  if (length != bytes.size() || (lead & 0xc0) == 0x80) return false;
  char32_t c = length == 1 ? lead : lead & (0x7f >> length);
  for (size_t i = 1; i < length; ++i) c = c << 6 | (static_cast<uint8_t>(bytes[i]) & 0x3f);
  return encode(jxchars({&c, 1})) == Outcome{0, bytes};
}

TEST(Transcode, Utf8IsCheckedAtEveryLimit) {
  NlsHost host;
  const Converter encode(host, 27, 20);
  const Converter decode(host, 20, 27);
  const std::string seconds = "\x7f\x80\x8f\x90\x9f\xa0\xbf\xc0";
  const std::string later = "\x7f\x80\xbf\xc0";
  std::set<std::string> tried, valid, prefixes;
  for (int lead = 0; lead < 256; ++lead) {
    for (size_t i = 0; i < seconds.size() * later.size() * later.size(); ++i) {
      const std::string bytes = {static_cast<char>(lead), seconds[i / 16], later[i / 4 % 4],
                                 later[i % 4]};
      for (size_t length = 1; length <= 4; ++length) tried.insert(bytes.substr(0, length));
    }
  }
  for (const std::string &bytes : tried) {
    if (!is_utf8_character(encode, bytes)) continue;
    valid.insert(bytes);
    for (size_t cut = 1; cut < bytes.size(); ++cut) prefixes.insert(bytes.substr(0, cut));
  }
  EXPECT_GT(valid.size(), 500u);
  for (const std::string &bytes : tried) {
    // Whole characters, then the start of one or nothing.
    std::string rest = bytes;
    size_t characters = 0;
    for (size_t length = 1; length <= rest.size(); ++length) {
      if (valid.count(rest.substr(0, length)) == 0) continue;
      rest.erase(0, length);
      ++characters;
      length = 0;
    }
    const Outcome outcome = decode(bytes);
    const bool is_right = rest.empty() || prefixes.count(rest) != 0;
    EXPECT_EQ(outcome.status, is_right ? JX_OK : kMalformed) << hex(bytes);
    EXPECT_EQ(outcome.bytes.size(), characters * sizeof(JXChar)) << hex(bytes);
    decode("\xff");  // what was cut is not to be completed by the next row
  }
}

// Text of runs: what real text looks like to the code, with each run length and kind.
std::u32string random_text(std::mt19937 &random, char32_t end) {
  constexpr struct {
    char32_t first;
    char32_t last;
  } kKinds[] = {{0x20, 0x7e},       {0x20, 0x7e},       {0, 0x7f},        {0xa0, 0xff},
                {0x400, 0x4ff},     {0x4e00, 0x9fff},   {0xe000, 0xffff}, {0x1f300, 0x1f6ff},
                {0x10000, 0xdffff}, {0xf0000, 0x10ffff}};
  std::u32string text;
  for (size_t runs = random() % 6; runs > 0; --runs) {
    const auto kind = kKinds[random() % std::size(kKinds)];
    if (kind.last >= end) continue;
    for (size_t length = random() % 40; length > 0; --length) {
      text += static_cast<char32_t>(kind.first + random() % (kind.last - kind.first + 1));
    }
  }
  return text;
}

TEST(Transcode, AgreesWithTheCLibraryOnRandomText) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  NlsHost host;
  for (const Direct &from : kDirect) {
    const char32_t end = from.number == kAscii ? 0x80 : from.number > 27 ? 0x100 : 0x110000;
    for (const Direct &to : kDirect) {
      for (int i = 0; i < 150; ++i) {
        std::string source =
            by_iconv("UTF-32LE", from.name, jxchars(random_text(random, end))).second;
        // Texts with a wrong byte, or that end early. Not in UTF-8, in which the C library lets
        // more pass than there is, and not to a small encoding, for which it drops tag characters.
        if (i % 2 == 1 && from.number != 20 && to.number <= 27 && to.number != kAscii &&
            !source.empty()) {
          source[random() % source.size()] = static_cast<char>(random());
        }
        if (i % 4 > 1) source.resize(source.size() - source.size() % 3);
        const auto [error, bytes] = by_iconv(from.name, to.name, source);
        // A fresh transcoder, for the text may have ended inside a character.
        const Outcome outcome = Converter(host, from.number, to.number)(source);
        EXPECT_EQ(outcome.status == 0, error == 0 || error == EINVAL)
            << from.name << " to " << to.name << ": " << hex(source);
        EXPECT_EQ(hex(outcome.bytes), hex(bytes)) << from.name << " to " << to.name;
      }
    }
  }
}

TEST(Transcode, TheNativePairIsSharedByThreads) {
  NlsHost host;
  JXNls *nls = host.nls();
  JXTranscoder *decoder = nls->create_decoder(nls, JX_ENCODING_NATIVE, 0, 0);
  JXTranscoder *encoder = nls->create_encoder(nls, JX_ENCODING_NATIVE, 0, 0);
  std::string every_byte;
  for (int byte = 0; byte < 256; ++byte) every_byte += static_cast<char>(byte);
  const auto work = [&] {
    for (int i = 0; i < 500; ++i) {
      JXChar chars[256];
      char back[256];
      uint32_t produced = 0;
      decoder->transcode(decoder, every_byte.data(), 256, chars, sizeof(chars), &produced, 0);
      EXPECT_EQ(produced, sizeof(chars));
      encoder->transcode(encoder, chars, sizeof(chars), back, sizeof(back), nullptr, 0);
      EXPECT_EQ(std::string_view(back, 256), every_byte);
      // A fault of one thread is no other thread's.
      const JXChar wide = 0x100;
      EXPECT_EQ(encoder->transcode(encoder, &wide, 4, back, 1, nullptr, 0), kUnmappable);
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work);
  for (std::thread &thread : threads) thread.join();
  nls->destroy_transcoder(nls, decoder);
  nls->destroy_transcoder(nls, encoder);
}

}  // namespace
}  // namespace jx::test
