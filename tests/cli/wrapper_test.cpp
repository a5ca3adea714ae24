// The C++ wrapper where neither jxfile nor the examples go.
#include <array>

#include "cli/program.hpp"
#include "jx/wem.hpp"

namespace {

using jx_test::ProgramTest;

static_assert(wem::Status(JXWEM_E_EOF).name() == std::string_view("JXWEM_E_EOF"));
static_assert(wem::Status(JX_OK).ok() && wem::Status(1).name() == std::string_view("unknown"));
static_assert(wem::Status(JXHOST_E_MALFORMED).text() ==
              std::string_view("input is not valid in its encoding"));

class Wrapper : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    std::string error;
    module_ = wem::Module::load(JXWEM_PATH, nullptr, &error);
    ASSERT_TRUE(module_) << error;
  }
  std::u32string name(const std::string &member) const {
    const std::string path = at(member);
    return {path.begin(), path.end()};
  }
  const wem::Instance &instance() const { return module_.instance(); }

  wem::Module module_;
};

TEST_F(Wrapper, EveryFileSlot) {
  constexpr std::array<uint32_t, 2> kValues = {7, 9};
  const auto options =
      wem::OpenOptions::update().binary(16).user_values(kValues).reserved_switch(1);
  wem::File file = *instance().open(name("data"), options, "tag");
  EXPECT_EQ(file.name(), name("data"));
  EXPECT_EQ(file.attributes().user_values[1], 9u);
  EXPECT_STREQ(file.raw()->caller_tag, "tag");
  const std::string bytes = "0123456789";
  EXPECT_TRUE(file.write(std::as_bytes(std::span(bytes))).ok());
  EXPECT_EQ(*file.note(), 10);
  EXPECT_EQ(*file.point(-4, JX_POINT_RELATIVE), 6);
  EXPECT_EQ(file.read()->bytes.size(), 4u);
  EXPECT_EQ(file.read().status(), JXWEM_E_EOF);
  int64_t offset = 2;
  EXPECT_EQ(static_cast<char>(file.read(1, &offset)->bytes[0]), '2');
  EXPECT_EQ(file.read(17).status(), JXWEM_E_TOOLONG);
  EXPECT_EQ(*file.position_to_byte(5), 5);
  EXPECT_EQ(*file.byte_to_position(5), 5);
  EXPECT_EQ(file.position_to_record(), JXWEM_E_NOTSUPPORTED);
  EXPECT_EQ(file.record_to_position(), JXWEM_E_NOTSUPPORTED);
  EXPECT_TRUE(file.truncate(3).ok());
  EXPECT_TRUE(file.attach_journal(nullptr).ok());
  EXPECT_TRUE(file.flush().ok());
  EXPECT_TRUE(file.close().ok());
  EXPECT_TRUE(file.close().ok());
  EXPECT_EQ(get("data"), "012");

  std::array<std::byte, 8> memory;
  wem::File direct =
      *instance().open(name("data"), wem::OpenOptions::input().binary(1).direct_transfer());
  EXPECT_EQ(direct.read_into(memory)->bytes.data(), memory.data());
}

TEST_F(Wrapper, NoMarkInTheMiddleOfAFile) {
  for (const bool is_literal : {false, true}) {
    const auto with_name = [is_literal](const wem::OpenOptions &options) {
      return is_literal ? options.literal_name() : options;
    };
    const std::string member = is_literal ? "literal" : "expanded";  // new files both
    for (int i = 0; i < 2; ++i) {
      const auto options = with_name(
          wem::OpenOptions::append().text(10).encodings(JX_ENCODING_UTF8, JX_ENCODING_UTF32LE));
      wem::File file = *instance().open(name(member), options);
      EXPECT_TRUE(file.write(U"x").ok());
      EXPECT_TRUE(file.close().ok());
    }
    EXPECT_EQ(get(member), "\xef\xbb\xbfx\nx\n");
  }
}

TEST_F(Wrapper, RecordsEntriesAndTables) {
  put("text", "one\ntwo");
  wem::File file = *instance().open(name("text"), wem::OpenOptions::input().text(2));
  std::u32string seen;
  wem::RecordRange records = file.records();
  for (const wem::Record &record : records) {
    seen += std::u32string(record.text()) + (record.partial ? U"+" : U"|");
  }
  EXPECT_EQ(seen, U"on+e|tw+o|");
  EXPECT_EQ(records.status(), JXWEM_E_EOF);

  wem::Directory directory = *instance().open_directory(name(""));
  EXPECT_TRUE(directory.contains(U"text").ok());
  EXPECT_EQ(directory.contains(U"other"), JXWEM_E_NOTFOUND);
  wem::EntryRange entries = directory.entries();
  for (const std::u32string &entry : entries) EXPECT_EQ(entry, U"text");
  EXPECT_EQ(entries.status(), JXWEM_E_EOF);
  EXPECT_TRUE(directory.members()->empty());

  const auto members = instance().open_directory(name(""))->members(JX_LIST_INFORMATION);
  ASSERT_EQ(members->size(), 1u);
  EXPECT_EQ(wem::name_of(*members->begin()), name("text"));
  EXPECT_NE(members->begin()->information, nullptr);
  EXPECT_EQ(instance().directory_list(name(""))->size(), 2u);
  EXPECT_EQ(instance().info_table(name("text"))->find(U"NONE"), nullptr);
  EXPECT_EQ(instance().info(name("none")).status(), JXWEM_E_NOTFOUND);
  EXPECT_EQ(instance().file_system_info(name("none")).status(), JXWEM_E_NOTFOUND);
  EXPECT_EQ(instance().open(U"", wem::OpenOptions::input()).status(), JXWEM_E_BADNAME);
}

}  // namespace
