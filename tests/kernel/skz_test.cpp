// Memory and string primitives: edge cases. Their lengths and bodies are in runs_test.cpp.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "jx/runtime.h"
#include "support/text.hpp"

namespace {

using jx::test::JXString;

TEST(Strings, LengthsCopiesAndCase) {
  const JXChar wide[] = {'a', 0x10FFFF, 0, 'z'};
  EXPECT_EQ(skStrLen(nullptr), 0u);
  EXPECT_EQ(skStrLen("abc"), 3u);
  EXPECT_EQ(skStrTLen(nullptr), 0u);
  EXPECT_EQ(skStrTLen(wide), 2u);

  std::string bytes = "????";
  skStrCpy(nullptr, bytes.data());
  EXPECT_EQ(bytes, std::string("\0???", 4));
  skStrCpy("ab", bytes.data());
  EXPECT_EQ(bytes, std::string("ab\0?", 4));
  skStrCpy("ab", nullptr);

  JXString units(4, 7);
  skStrTCpy(nullptr, units.data());
  EXPECT_EQ(units, (JXString{0, 7, 7, 7}));
  skStrTCpy(wide, units.data());
  EXPECT_EQ(units, (JXString{'a', 0x10FFFF, 0, 7}));
  skStrTCpy(wide, nullptr);

  // Only ASCII letters become upper case, also after a zero.
  std::string text("\x61\x7b\x7a\x60\xe4\x80\0qr", 9);
  skStrUp(text.data(), 8);
  EXPECT_EQ(text, std::string("\x41\x7b\x5a\x60\xe4\x80\0Qr", 9));
}

TEST(Compare, OrderAndNothingToScan) {
  EXPECT_EQ(skMemCmp("\x80", "\x7f", 1), 1);
  EXPECT_EQ(skMemCmp("abc", "abd", 2), 0);
  EXPECT_EQ(skMemCmp("abc", "abd", 3), -1);
  EXPECT_EQ(skMemCmp("x", "y", 0), 0);
  EXPECT_EQ(skMemCmp("b\0", "b\1", 2), -1);
  const auto compare = [](uint32_t first, uint32_t second) {
    return skWMemCmp(&first, &second, 1);
  };
  EXPECT_EQ(compare(0x80000000u, 0), -1);
  EXPECT_EQ(compare(1, 0xFFFFFFFFu), 1);
  EXPECT_EQ(compare(0x10FFFF, 'a'), 1);
  EXPECT_EQ(skWMemCmp(nullptr, nullptr, 0), 0);
  JXString first(1000, 7), second = first;
  EXPECT_EQ(skWMemCmp(first.data(), second.data(), 1000), 0);
  second.back() = 6;
  EXPECT_EQ(skWMemCmp(first.data(), second.data(), 1000), 1);

  const uint32_t unit = 1;
  EXPECT_EQ(skMemScan(nullptr, 4, 1), -1);
  EXPECT_EQ(skMemNScan(nullptr, 4, 1), -1);
  EXPECT_EQ(skMemTNScan(nullptr, 4, 1), -1);
  EXPECT_EQ(jxzspos(nullptr, 4, 1), -1);
  EXPECT_EQ(jxzspos(&unit, -1, 1), -1);
}

TEST(Copy, OverlapEitherWayAtEveryDistance) {
  for (const uint32_t bytes : {60u, 500u}) {
    for (size_t to = 10; to <= 130; ++to) {
      std::string block(700, 0);
      for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 7 / 3);
      std::string expected = block;
      expected.replace(to, bytes, block.substr(70, bytes));
      EXPECT_EQ(skMemSCpy(block.data() + 70, block.data() + to, bytes), block.data() + to);
      ASSERT_EQ(block, expected) << to;
    }
  }
  std::string three = "123";
  skMemCpy("abc", three.data(), 2);
  EXPECT_EQ(three, "ab3");
}

// A pool of one block.
bool is_empty = false;
uint32_t asked_bytes = 0;
uint8_t block[16];

void *allocate(JXPool *, uint32_t bytes, uint32_t flags) {
  asked_bytes = bytes;
  return is_empty || flags != 0 ? nullptr : block;
}

TEST(Duplicate, CopiesOrYieldsNull) {
  JXPool pool = {nullptr, allocate, nullptr};
  EXPECT_EQ(skMemDup("abc", 0, &pool), nullptr);
  EXPECT_EQ(skMemDup(nullptr, 3, &pool), nullptr);
  EXPECT_EQ(skMemDup("abc", 3, nullptr), nullptr);
  EXPECT_EQ(asked_bytes, 0u);
  EXPECT_EQ(skMemDup("abc", 3, &pool), block);
  EXPECT_EQ(std::memcmp(block, "abc", 4), 0);
  is_empty = true;
  EXPECT_EQ(skMemDup("abc", 3, &pool), nullptr);
}

// Text that is missing is empty, and a count that nobody wants is not stored.
TEST(Text, MissingArguments) {
  uint32_t count = 7;
  JXChar room[8] = {};
  const JXString text = jx::test::jx("ab");
  EXPECT_EQ(skzfJXString(nullptr, 9, room, 0, &count), JX_OK);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(skzfJXString(text.data(), 2, room, 2, nullptr), JX_OK);
  EXPECT_EQ(jx::test::narrow(room, 3), std::string("ab\0", 3));
  EXPECT_EQ(skzfString(nullptr, 9, room, 0, &count), JX_OK);
  EXPECT_EQ(skzfString("ab", 2, room, 1, nullptr), JX_E_TRUNCATED);
  EXPECT_EQ(skzfIMax(255, 16, 0, room, 8, nullptr), JX_OK);
  EXPECT_EQ(jx::test::narrow(room, 2), "ff");
  EXPECT_EQ(skzfDouble(7, 'f', '.', 0, 0, 0, room, 8, nullptr), JX_OK);
  EXPECT_EQ(skzfDouble(7, 'f', '.', 0, 0, 0, room, -1, &count), JX_E_TRUNCATED);
  const JXString format = jx::test::jx("%d%");
  EXPECT_EQ(jxzFormatBuff(nullptr, format.data(), -1, room, 8, &count), JX_E_BADARG);
  EXPECT_EQ(jxzFormatBuff(nullptr, format.data(), 3, room, 8, nullptr, 5), JX_OK);
  const auto listed = [&](int32_t chars, ...) {
    va_list args;
    va_start(args, chars);
    const JXStatus status = jxzFormatBuffV(nullptr, format.data(), chars, room, 8, nullptr, args);
    va_end(args);
    return status;
  };
  EXPECT_EQ(listed(-1, 5), JX_E_BADARG);
  EXPECT_EQ(listed(2, 5), JX_OK);
  EXPECT_EQ(room[0], '5');
}

TEST(Missing, TopSixteenBitsAndUnsupported) {
  const uint64_t elements[] = {0, 0xFEFF000000000000, 0xFFFEFFFFFFFFFFFF, 0xFFFF000000000000};
  EXPECT_EQ(skMissArray(elements, 3), 0);
  EXPECT_EQ(skMissArray(elements, 4), 1);
  EXPECT_EQ(skUnsup(), JX_E_UNSUPPORTED);
}

}  // namespace
