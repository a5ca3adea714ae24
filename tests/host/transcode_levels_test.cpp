// The bodies of the transcoders for every level of the processor, against a model: hostile text at
// every place of a block, every room, and pages around both texts that must not be touched.
#include <sys/mman.h>
#include <unistd.h>

#include <random>

#include "host/nls_support.hpp"
#include "host/transcode.hpp"
#include "support/scale.hpp"
#include "support/text_model.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;
using vector::Level;

constexpr uint32_t kEncodings[] = {20, 24, 25, 26, 27, 62};

// Bytes that end or begin at a page that cannot be touched.
class GuardedText {
 public:
  GuardedText() : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))), size_(4 * page_) {
    map_ = static_cast<uint8_t *>(
        mmap(nullptr, size_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    EXPECT_EQ(mprotect(map_ + page_, size_, PROT_READ | PROT_WRITE), 0);
  }
  GuardedText(const GuardedText &) = delete;
  GuardedText &operator=(const GuardedText &) = delete;
  ~GuardedText() { munmap(map_, size_ + 2 * page_); }

  // Room for some bytes at the guarded end, or at an offset from the guarded begin.
  uint8_t *at_end(size_t bytes) const { return map_ + page_ + size_ - bytes; }
  uint8_t *at_begin(size_t offset) const { return map_ + page_ + offset; }

 private:
  size_t page_, size_;
  uint8_t *map_;
};

// A transcoder of one level, and the same conversion by the model.
class LevelConverter {
 public:
  LevelConverter(uint32_t from, uint32_t to, Level level) : from_(from), to_(to) {
    const bool made = jxhost::set_up(transcoder_, *jxhost::find_encoding(from),
                                     *jxhost::find_encoding(to), level);
    EXPECT_TRUE(made);
  }

  // Compares one call, with `offset` bytes between the text and the page before it, or with the
  // text at the page after it.
  void check(const std::string &source, size_t room, int offset = -1) {
    std::string expected;
    const JXStatus status = TextModel(from_, to_).convert(source, room, &expected);
    const bool ends = offset < 0;
    const auto start = static_cast<size_t>(offset);
    uint8_t *const in = ends ? in_.at_end(source.size()) : in_.at_begin(start);
    uint8_t *const out = ends ? out_.at_end(room) : out_.at_begin(start);
    uint8_t *const after = out + room;
    constexpr size_t kCanary = 8;
    std::ranges::copy(source, in);
    if (!ends) std::fill_n(after, kCanary, uint8_t{0x5a});
    transcoder_.held_bytes = 0;
    uint32_t produced = 0;
    const JXStatus got =
        transcoder_.transcode(&transcoder_, in, static_cast<uint32_t>(source.size()), out,
                              static_cast<uint32_t>(room), &produced, 0);
    const bool same = got == status && expected == std::string(out, out + produced);
    const bool kept = ends || std::count(after, after + kCanary, 0x5a) == kCanary;
    EXPECT_TRUE(same && kept) << from_ << " to " << to_ << ", room " << room << ", offset "
                              << offset << ": " << testing::PrintToString(source);
    if (got != JX_OK) transcoder_.held_bytes = 0;
  }
  void check(const std::string &source) { check(source, source.size() * 4 + 64); }

 private:
  uint32_t from_, to_;
  jxhost::Transcoder transcoder_;
  GuardedText in_, out_;
};

class TranscodeLevels : public testing::TestWithParam<Level> {
 public:
  void SetUp() override {
    if (GetParam() > jxhost::best_level()) GTEST_SKIP() << "not on this processor";
  }
};
INSTANTIATE_TEST_SUITE_P(Each, TranscodeLevels,
                         testing::Values(Level::base, Level::avx2, Level::avx512));

// Bytes that are no UTF-8, or its limits.
constexpr const char *kWrongUtf8[] = {"\x80",
                                      "\xbf",
                                      "\xc0\x80",
                                      "\xc1\xbf",
                                      "\xc3",
                                      "\xc3\x41",
                                      "\xc3\xc3\xa9",
                                      "\xc3\xa9\xa9",
                                      "\xe0\x80\x80",
                                      "\xe0\x9f\xbf",
                                      "\xed\xa0\x80",
                                      "\xed\xbf\xbf",
                                      "\xe2",
                                      "\xe2\x82",
                                      "\xe2\x28\xa1",
                                      "\xe2\x82\x41",
                                      "\xe2\x82\xe2\x82\xac",
                                      "\xe2\x82\xac\xac",
                                      "\xf0\x80\x80\x80",
                                      "\xf0\x8f\xbf\xbf",
                                      "\xf4\x90\x80\x80",
                                      "\xf5\x80\x80\x80",
                                      "\xf0",
                                      "\xf0\x9f",
                                      "\xf0\x9f\x98",
                                      "\xf0\x9f\x98\x41",
                                      "\xf0\x9f\x41\x80",
                                      "\xf0\x41",
                                      "\xf0\x9f\x98\x80\x80",
                                      "\xf8\x88\x80\x80\x80",
                                      "\xfc\x84\x80\x80\x80\x80",
                                      "\xfe",
                                      "\xff",
                                      "\xed\x9f\xbf",
                                      "\xee\x80\x80",
                                      "\xf4\x8f\xbf\xbf",
                                      "\xe0\xa0\x80",
                                      "\xc2\x80"};

// Units that no character has, or that are cut off, in an encoding.
std::vector<std::string> wrong_pieces(uint32_t encoding) {
  if (encoding == 20) {
    return {std::begin(kWrongUtf8), std::end(kWrongUtf8)};
  }
  std::vector<std::string> pieces;
  const auto add = [&](std::initializer_list<uint32_t> units) {
    std::string piece;
    for (const uint32_t unit : units) {
      std::string bytes;
      for (uint32_t i = 0; i < unit_bytes_of(encoding); ++i)
        bytes += static_cast<char>(unit >> 8 * i);
      if (encoding == 24 || encoding == 26) std::ranges::reverse(bytes);
      piece += bytes;
    }
    pieces.push_back(piece);
  };
  if (unit_bytes_of(encoding) == 2) {
    for (const uint32_t unit : {0xd800u, 0xdbffu, 0xdc00u, 0xdfffu}) add({unit}), add({unit, 0x41});
    add({0xd83d, 0xde00}), add({0xde00, 0xd83d}), add({0xd83d, 0xd83d}), pieces.push_back("\x41");
  } else if (unit_bytes_of(encoding) == 4) {
    for (const uint32_t unit :
         {0xd800u, 0xdfffu, 0x110000u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
      add({unit});
    }
    add({0xd7ff, 0xe000, 0xffff, 0x10000, 0x10ffff}), pieces.push_back("\x41"),
        pieces.push_back("\x41\0\0"s);
  }
  return pieces;
}

TEST_P(TranscodeLevels, FindWhatIsWrongAtEveryPlaceOfABlock) {
  for (const uint32_t from : kEncodings) {
    for (const uint32_t to : {20u, 25u, 27u}) {
      LevelConverter convert(from, to, GetParam());
      for (const std::string &piece : wrong_pieces(from)) {
        for (const char32_t filler : {U'a', U'é', U'\u0800', U'日', U'😀'}) {
          const std::optional<std::string> one = encode(from, filler);
          if (!one) continue;
          // The fillers and the piece around a block of either size, with text after them or not.
          for (size_t before = 0; before <= 66; ++before) {
            std::string text;
            for (size_t i = 0; i < before % 4; ++i) text += *encode(from, U'r');
            while (text.size() / unit_bytes_of(from) < before) text += *one;
            text += piece;
            convert.check(text);
            for (size_t i = 0; i < 5 + before % 37; ++i) text += *one;
            convert.check(text);
          }
        }
      }
    }
  }
}

// Text made of runs of every kind and length.
std::u32string runs_of_text(std::mt19937 &random, char32_t end) {
  constexpr std::pair<char32_t, char32_t> kKinds[] = {
      {0x20, 0x7e},     {0, 0x7f},        {0x80, 0x7ff},       {0xa0, 0xff},
      {0x4e00, 0x9fff}, {0xe000, 0xffff}, {0x10000, 0x10ffff}, {0xd000, 0xd7ff}};
  std::u32string text;
  for (size_t runs = random() % 5; runs > 0; --runs) {
    const auto [first, last] = kKinds[random() % std::size(kKinds)];
    for (size_t length = random() % (random() % 4 ? 5 : 90); length > 0 && last < end; --length) {
      text += static_cast<char32_t>(first + random() % (last - first + 1));
    }
  }
  return text;
}

TEST_P(TranscodeLevels, AgreeOnRandomAndDamagedText) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (const uint32_t from : kEncodings) {
    for (const uint32_t to : kEncodings) {
      LevelConverter convert(from, to, GetParam());
      for (int64_t i = scaled(300); i > 0; --i) {
        const uint32_t least = from < to ? to : from;
        std::string text = encode(from, runs_of_text(random, least == 62 ? 0x100 : 0x110000));
        if (random() % 3 == 0 && !text.empty()) {
          text[random() % text.size()] = static_cast<char>(random());
        }
        if (random() % 4 == 0) text.resize(text.size() - random() % (text.size() + 1));
        convert.check(text);
        convert.check(text, random() % (text.size() * 2 + 1), static_cast<int>(random() % 130));
      }
    }
  }
}

TEST_P(TranscodeLevels, StopAtEveryCutAndUseEveryRoom) {
  const std::u32string texts[] = {
      std::u32string(70, U'a') + U"é日本語",
      U"aé€😀日本語文字列Ж\x7ff\x800\xffff\x10000z\x10ffff plain 日本語文字列日本語文字列",
      U"日本語文字列日本語文字列日本語文字列日本語文字列 und einfach weiter äöü"};
  for (const uint32_t from : kEncodings) {
    for (const uint32_t to : kEncodings) {
      LevelConverter convert(from, to, GetParam());
      for (const std::u32string &chars : texts) {
        if (from == 62) continue;
        const std::string text = encode(from, chars);
        for (size_t cut = 0; cut <= text.size(); ++cut) convert.check(text.substr(0, cut));
        for (size_t room = 0; room <= chars.size() * 4 + 8; ++room) convert.check(text, room);
      }
    }
  }
}

TEST(TranscodePages, StopBeforeWhatTheyLackAndFillEveryRoom) {
  TestHost host;
  const Converter decode(host, 1253, 27), encode(host, 27, 1253);
  for (const char letter : {'a', '\xe1'}) {
    const char32_t character = letter == 'a' ? U'a' : U'\x3b1';
    for (size_t before = 0; before < 45; ++before) {
      for (const size_t after : {0u, 1u, 7u, 30u}) {
        const std::string bytes = std::string(before, letter) + '\xaa' + std::string(after, 'z');
        EXPECT_EQ(decode(bytes), Outcome(kMalformed, jxchars(std::u32string(before, character))));
        // A character that differs from one of the page only above its lower 16 bits.
        const std::u32string text = std::u32string(before, character) +
                                    static_cast<char32_t>(character | 0x10000) +
                                    std::u32string(after, U'z');
        EXPECT_EQ(encode(jxchars(text)), Outcome(kUnmappable, std::string(before, letter)));
      }
      const std::string whole(44, letter);
      const std::string chars = jxchars(std::u32string(44, character));
      const JXStatus status = before == 44 ? JX_OK : JXHOST_E_NOROOM;
      EXPECT_EQ(encode(chars, before), Outcome(status, whole.substr(0, before)));
      EXPECT_EQ(decode(whole, before * 4), Outcome(status, chars.substr(0, before * 4)));
    }
  }
}

}  // namespace
}  // namespace jx::test
