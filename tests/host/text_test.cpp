// Names and texts between UTF-8 and JXChars, in the caller's memory.
#include <string>

#include "host/test_host.hpp"

namespace jx::test {
namespace {

constexpr uint32_t kRoom = 8;

JXStatus name_of(const char *utf8, uint32_t, JXChar *name, uint32_t *chars) {
  return jxhost_utf8_to_name(utf8, name, chars);
}

TEST(Text, GoesToCharsAndBackWithinItsRoom) {
  const struct {
    decltype(&jxhost_utf8_to_text) to_chars;
    decltype(&jxhost_text_to_utf8) to_utf8;
    std::string utf8;
    JXString chars;
  } rows[] = {
      {name_of, jxhost_name_to_utf8, "Z\xc3\xbc\xff", jx("Z\xc3\xbc\xff")},
      {name_of, jxhost_name_to_utf8, "", {}},
      {jxhost_utf8_to_text, jxhost_text_to_utf8, "Z\xc3\xbc\xf0\x9f\x98\x80", jx(U"Z\xfc\x1f600")},
      {jxhost_utf8_to_text, jxhost_text_to_utf8, std::string("a\0b", 3), {'a', 0, 'b'}},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.utf8));
    const auto utf8_bytes = static_cast<uint32_t>(row.utf8.size());
    const bool is_name = row.to_chars == name_of;
    for (uint32_t room = 0; room <= kRoom; ++room) {
      JXChar chars[kRoom + 1];
      std::fill_n(chars, kRoom + 1, 'C');
      uint32_t count = room;
      const bool fits = row.chars.size() <= room;
      EXPECT_EQ(row.to_chars(row.utf8.data(), utf8_bytes, chars, &count), fits ? JX_OK
                                                                          : is_name
                                                                              ? JXWEM_E_NAMETOOLONG
                                                                              : JXHOST_E_NOROOM);
      EXPECT_EQ(JXString(chars, count), fits ? row.chars : JXString());
      EXPECT_EQ(chars[room], static_cast<JXChar>('C')) << room;

      char bytes[kRoom + 1] = "CCCCCCCC";
      count = room;
      const bool fits_back = row.utf8.size() < room;
      EXPECT_EQ(
          row.to_utf8(row.chars.data(), static_cast<uint32_t>(row.chars.size()), bytes, &count),
          fits_back ? JX_OK : JXHOST_E_NOROOM);
      EXPECT_EQ(std::string(bytes, count), fits_back ? row.utf8 : "");
      EXPECT_EQ(room == 0 ? 0 : bytes[count], 0) << room;
    }
  }
}

TEST(Text, RefusesWhatIsNoText) {
  JXChar chars[kRoom];
  char bytes[kRoom] = "before";
  uint32_t count = kRoom;
  EXPECT_EQ(jxhost_utf8_to_text("a\xc3", 2, chars, &count), JXHOST_E_MALFORMED) << "cut";
  EXPECT_EQ(count, 0u);
  for (const JXChar bad : {0u, 0x100u, UINT32_MAX}) {
    count = kRoom;
    EXPECT_EQ(jxhost_name_to_utf8(&bad, 1, bytes, &count), JXHOST_E_UNMAPPABLE) << bad;
    EXPECT_EQ(std::string(bytes), "") << count;
  }
  EXPECT_EQ(jxhost_utf8_to_name(nullptr, chars, &count), JX_E_BADARG);
}

}  // namespace
}  // namespace jx::test
