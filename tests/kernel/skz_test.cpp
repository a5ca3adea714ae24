// Memory and string primitives: tables of edges, and every length and alignment against plain
// loops.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "jx/runtime.h"

namespace {

TEST(Strings, LengthsAndCopies) {
  const JXChar wide[] = {'a', 0x10FFFF, 0, 'z'};
  EXPECT_EQ(skStrLen(nullptr), 0u);
  EXPECT_EQ(skStrLen("abc"), 3u);
  EXPECT_EQ(skStrTLen(nullptr), 0u);
  EXPECT_EQ(skStrTLen(wide), 2u);

  char bytes[] = "????";
  skStrCpy(nullptr, bytes);
  EXPECT_EQ(std::memcmp(bytes, "\0???", 5), 0);
  skStrCpy("ab", bytes);
  EXPECT_EQ(std::memcmp(bytes, "ab\0?", 5), 0);
  skStrCpy("ab", nullptr);

  JXChar units[] = {7, 7, 7, 7};
  skStrTCpy(nullptr, units);
  EXPECT_EQ((std::vector<JXChar>(units, units + 4)), (std::vector<JXChar>{0, 7, 7, 7}));
  skStrTCpy(wide, units);
  EXPECT_EQ((std::vector<JXChar>(units, units + 4)), (std::vector<JXChar>{'a', 0x10FFFF, 0, 7}));
  skStrTCpy(wide, nullptr);
}

TEST(Strings, UpperCaseIsAsciiOnlyAndPassesZeros) {
  std::string text = "\x61\x7b\x7a\x60\xe4\x80";
  text += std::string("\0q", 2);
  skStrUp(text.data(), static_cast<uint32_t>(text.size()));
  EXPECT_EQ(text, std::string("\x41\x7b\x5a\x60\xe4\x80", 6) + std::string("\0Q", 2));
}

TEST(Compare, OrderAndEdges) {
  const struct {
    int line;
    const char *first, *second;
    uint32_t count;
    int32_t expected;
  } bytes[] = {
      {__LINE__, "\x80", "\x7f", 1, 1}, {__LINE__, "\x7f", "\x80", 1, -1},
      {__LINE__, "abc", "abd", 2, 0},   {__LINE__, "abc", "abd", 3, -1},
      {__LINE__, "x", "y", 0, 0},       {__LINE__, "b\0", "b\1", 2, -1},
  };
  for (const auto &row : bytes) {
    EXPECT_EQ(skMemCmp(row.first, row.second, row.count), row.expected) << "row " << row.line;
  }
  const struct {
    int line;
    uint32_t first, second;
    int32_t expected;
  } units[] = {
      {__LINE__, 0x80000000u, 0, -1}, {__LINE__, 0, 0x80000000u, -1}, {__LINE__, 1, 0xFFFFFFFFu, 1},
      {__LINE__, 0x10FFFF, 'a', 1},   {__LINE__, 'a', 0x10FFFF, -1},  {__LINE__, 5, 5, 0},
  };
  for (const auto &row : units) {
    EXPECT_EQ(skWMemCmp(&row.first, &row.second, 1), row.expected) << "row " << row.line;
  }
  EXPECT_EQ(skWMemCmp(nullptr, nullptr, 0), 0);
}

TEST(Scan, NothingToScan) {
  const uint32_t unit = 1;
  EXPECT_EQ(skMemNot(1, nullptr, 0), 1);
  EXPECT_EQ(skMemTNot(1, nullptr, 0), 1);
  EXPECT_EQ(skMemScan(&unit, 0, 1), -1);
  EXPECT_EQ(skMemScan(nullptr, 4, 1), -1);
  EXPECT_EQ(skMemNScan(&unit, 0, 2), -1);
  EXPECT_EQ(skMemNScan(nullptr, 4, 1), -1);
  EXPECT_EQ(skMemTNScan(&unit, 0, 2), -1);
  EXPECT_EQ(skMemTNScan(nullptr, 4, 1), -1);
  EXPECT_EQ(jxzspos(&unit, 0, 1), -1);
  EXPECT_EQ(jxzspos(nullptr, 4, 1), -1);
  EXPECT_EQ(jxzspos(&unit, -1, 1), -1);
}

// Every count up to a few vectors, every place of the odd unit, every alignment: the index must be
// that of the first match, and nothing outside the range may be looked at (the neighbours match).
TEST(Scan, EveryLengthAndPlace) {
  constexpr uint32_t kMost = 70;
  for (uint32_t shift = 0; shift < 5; ++shift) {
    for (uint32_t count = 0; count <= kMost; ++count) {
      for (uint32_t place = 0; place <= count; ++place) {
        std::vector<uint8_t> bytes(kMost + 16, 1);
        std::vector<uint32_t> units(kMost + 16, 1);
        uint8_t *b = bytes.data() + shift;
        uint32_t *u = units.data() + shift;
        std::fill_n(b, count, uint8_t{2});
        std::fill_n(u, count, 2u);
        if (place < count) b[place] = 1;
        if (place < count) u[place] = 1;
        const int32_t expected = place < count ? static_cast<int32_t>(place) : -1;
        ASSERT_EQ(skMemScan(b, count, 1), expected) << shift << ' ' << count << ' ' << place;
        ASSERT_EQ(skMemNScan(b, count, 2), expected) << shift << ' ' << count << ' ' << place;
        ASSERT_EQ(jxzspos(u, static_cast<int32_t>(count), 1), expected)
            << shift << ' ' << count << ' ' << place;
        ASSERT_EQ(skMemTNScan(u, count, 2), expected) << shift << ' ' << count << ' ' << place;
        ASSERT_EQ(skMemNot(2, b, count), expected < 0);
        ASSERT_EQ(skMemTNot(2, u, count), expected < 0);
      }
    }
  }
}

TEST(Fill, WritesExactlyTheRange) {
  for (uint32_t count = 0; count <= 40; ++count) {
    std::vector<uint8_t> bytes(60, 9);
    std::vector<uint32_t> units(60, 9);
    skMemSet(bytes.data() + 5, 3, count);
    skMemTSet(units.data() + 5, 0xA0000003u, count);
    for (uint32_t i = 0; i < 60; ++i) {
      const bool inside = i >= 5 && i < 5 + count;
      ASSERT_EQ(bytes[i], inside ? 3 : 9) << count << ' ' << i;
      ASSERT_EQ(units[i], inside ? 0xA0000003u : 9u) << count << ' ' << i;
    }
  }
}

TEST(Copy, OverlapEitherWayAtEveryDistance) {
  constexpr int kBytes = 200;
  for (int distance = -60; distance <= 60; ++distance) {
    std::vector<uint8_t> block(kBytes);
    for (int i = 0; i < kBytes; ++i) block[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
    std::vector<uint8_t> expected = block;
    const std::vector<uint8_t> source(block.begin() + 70, block.begin() + 130);
    std::copy(source.begin(), source.end(), expected.begin() + 70 + distance);
    uint8_t *to = block.data() + 70 + distance;
    EXPECT_EQ(skMemSCpy(block.data() + 70, to, 60), to);
    ASSERT_EQ(block, expected) << distance;
  }
  uint8_t from[] = {1, 2, 3}, to[] = {0, 0, 0};
  skMemCpy(from, to, 2);
  EXPECT_EQ((std::vector<int>{to[0], to[1], to[2]}), (std::vector<int>{1, 2, 0}));
}

// A pool of one block, enough for the duplicate.
struct OneBlockPool {
  JXPool operations;
  bool is_empty;
  uint32_t asked_bytes;
  uint8_t block[16];
};

void *allocate(JXPool *pool, uint32_t bytes, uint32_t flags) {
  auto *self = reinterpret_cast<OneBlockPool *>(pool);
  self->asked_bytes = bytes;
  return self->is_empty || flags != 0 ? nullptr : self->block;
}

TEST(Duplicate, CopiesOrYieldsNull) {
  OneBlockPool pool = {{nullptr, allocate, nullptr}, false, 0, {}};
  EXPECT_EQ(skMemDup("abc", 3, &pool.operations), pool.block);
  EXPECT_EQ(std::memcmp(pool.block, "abc", 3), 0);
  pool.asked_bytes = 0;
  EXPECT_EQ(skMemDup("abc", 0, &pool.operations), nullptr);
  EXPECT_EQ(skMemDup(nullptr, 3, &pool.operations), nullptr);
  EXPECT_EQ(skMemDup("abc", 3, nullptr), nullptr);
  EXPECT_EQ(pool.asked_bytes, 0u);
  pool.is_empty = true;
  EXPECT_EQ(skMemDup("abc", 3, &pool.operations), nullptr);
}

TEST(Missing, TopSixteenBitsOfAnyElement) {
  const uint8_t elements[] = {0,    0,    0,    0,    0, 0, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF,
                              0xFF, 0xFF, 0xFE, 0xFF, 0, 0, 0,    0,    0,    0,    0xFF, 0xFF};
  EXPECT_EQ(skMissArray(elements, 0), 0);
  EXPECT_EQ(skMissArray(elements, 1), 0);
  EXPECT_EQ(skMissArray(elements, 2), 0);
  EXPECT_EQ(skMissArray(elements, 3), 1);
}

TEST(Unsupported, Answers) { EXPECT_EQ(skUnsup(), JX_E_UNSUPPORTED); }

}  // namespace
