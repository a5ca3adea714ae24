// The C++ wrapper on files: records, lines, marks, names and times.
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <set>

#include "sdk/wrapper_support.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

using wem::OpenOptions;
using wem::Status;
using WrapperFiles = WrapperTest;

TEST_F(WrapperFiles, EveryFileSlot) {
  constexpr std::array<uint32_t, 2> kValues = {7, 9};
  const auto options = OpenOptions::update().binary(16).user_values(kValues).reserved_switch(1);
  wem::File file = *instance().open(at("data"), options, "tag");
  EXPECT_EQ(wem::Name(file.name()), wem::Name(at("data")));
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
  EXPECT_EQ(file.record_to_position(), JXWEM_E_NOTSUPPORTED);
  EXPECT_TRUE(file.truncate(3).ok());
  EXPECT_TRUE(file.attach_journal(nullptr).ok());
  EXPECT_TRUE(file.flush().ok());
  EXPECT_TRUE(file.close().ok());
  EXPECT_TRUE(file.close().ok());
  EXPECT_EQ(get("data"), "012");

  std::array<std::byte, 8> memory;
  wem::File direct = *instance().open(at("data"), OpenOptions::input().binary(1).direct_transfer());
  EXPECT_EQ(direct.read_into(memory)->bytes.data(), memory.data());
}

TEST_F(WrapperFiles, NoMarkInTheMiddleOfAFile) {
  const auto append = OpenOptions::append().text(10);
  struct Case {
    OpenOptions options;
    std::string_view expected;
  };
  const Case cases[] = {
      {append, "x\nx\n"},
      {append.byte_order_mark(), "\xef\xbb\xbfx\nx\n"},
      {append.file_encoding(JX_ENCODING_UTF16BE), {"\xfe\xff\0x\0\n\0x\0\n", 10}},
      {append.file_encoding(JX_ENCODING_UTF16BE).no_byte_order_mark(), {"\0x\0\n\0x\0\n", 8}},
  };
  for (const bool is_literal : {false, true}) {
    for (const Case &row : cases) {
      const auto options = is_literal ? row.options.literal_name() : row.options;
      for (int i = 0; i < 2; ++i) {
        wem::File file = *instance().open(at("file"), options);
        EXPECT_TRUE(file.write(U"x").ok());
        EXPECT_TRUE(file.close().ok());
      }
      EXPECT_EQ(get("file"), row.expected);
      EXPECT_TRUE(instance().remove(at("file")).ok());
    }
  }
}

TEST_F(WrapperFiles, RefusedOpenMakesAndEmptiesNothing) {
  const auto text = OpenOptions::append().text(10);
  const std::pair<OpenOptions, JXStatus> cases[] = {
      {text.text(0), JXWEM_E_BADOPTIONS},
      {text.binary(0), JXWEM_E_BADOPTIONS},
      {text.record_encoding(9999), JXWEM_E_FAILED},
      {text.byte_order_mark().record_encoding(9999), JXWEM_E_FAILED},
      {text.byte_order_mark().direct_transfer(), JXWEM_E_BADOPTIONS},
      {text.file_encoding(JX_ENCODING_UTF16LE).lock(9), JXWEM_E_BADLOCKMODE},
      {text.text(UINT32_MAX), JX_E_NOMEM},
      {OpenOptions::output().text().record_encoding(9999), JXWEM_E_FAILED},
  };
  put("full", "content");
  for (const auto &[options, status] : cases) {
    for (const auto &asked : {options, options.literal_name()}) {
      EXPECT_EQ(instance().open(at("new"), asked).status(), status);
      EXPECT_EQ(instance().open(at("full"), asked).status(), status);
    }
  }
  EXPECT_FALSE(is_there("new"));
  EXPECT_EQ(get("full"), "content");
}

TEST_F(WrapperFiles, NothingReadIsLost) {
  // The read that replaces the mark's bytes meets the end of the file.
  put("marked", "\xef\xbb\xbfhello");
  const auto stream = OpenOptions::input().stream(100).direct().encodings(
      {.file = JX_ENCODING_UTF8, .record = JX_ENCODING_UTF8});
  wem::File file = *instance().open(at("marked"), stream);
  EXPECT_EQ(*file.read()->utf8(), "hello");
  EXPECT_EQ(file.read().status(), JXWEM_E_EOF);

  put("broken", "one\n\xff\ntwo\n");
  wem::File broken = *instance().open(at("broken"), OpenOptions::input().text());
  int seen = 0;
  EXPECT_EQ(broken.for_each_record([&seen](const wem::Record &) { ++seen; }), JXHOST_E_MALFORMED);
  EXPECT_EQ(broken.for_each_record([](const wem::Record &) { return Status(JX_E_BADARG); }),
            JX_E_BADARG);
  EXPECT_EQ(seen, 1);
  EXPECT_EQ(instance().read_lines(at("broken")).status(), JXHOST_E_MALFORMED);
}

TEST_F(WrapperFiles, TextCallsNeedText) {
  const auto output = OpenOptions::output();
  for (const auto &options : {output.text(9).record_encoding(JX_ENCODING_UTF16LE),
                              output.stream(9).record_encoding(0), output.binary(9)}) {
    wem::File file = *instance().open(at("out"), options);
    EXPECT_EQ(file.write(U"x"), JXWEM_E_NOTSUPPORTED);
    EXPECT_EQ(file.write_line("x"), JXWEM_E_NOTSUPPORTED);
    EXPECT_EQ(file.read_line().status(), JXWEM_E_NOTSUPPORTED);
  }
  put("in", "line\n");
  wem::File file =
      *instance().open(at("in"), OpenOptions::input().text().record_encoding(JX_ENCODING_NATIVE));
  const auto record = file.read();
  EXPECT_DEATH(static_cast<void>(record->text()), "JXWEM_E_NOTSUPPORTED");
  EXPECT_EQ(record->utf8().status(), JXWEM_E_NOTSUPPORTED);
}

TEST_F(WrapperFiles, LinesAreWholeAndInUtf8) {
  const std::vector<std::string> lines = {"", "Zürich", "東京とオスロ", "\U0001f600", "last"};
  wem::File out = *instance().open(at("lines"), OpenOptions::output().text(7));
  for (const std::string &line : lines) EXPECT_TRUE(out.write_line(line).ok());
  EXPECT_EQ(out.write_line("\xff"), JXHOST_E_MALFORMED);
  EXPECT_EQ(out.write_line("too long"), JXWEM_E_TOOLONG);
  EXPECT_TRUE(out.close().ok());
  EXPECT_EQ(get("lines"), "\nZürich\n東京とオスロ\n\U0001f600\nlast\n");
  EXPECT_EQ(*instance().read_lines(at("lines")), lines);
  EXPECT_EQ(*instance().read_text(at("lines")), get("lines"));
  EXPECT_EQ(instance().read_bytes(at("lines"))->size(), get("lines").size());
  for (const uint32_t encoding : {JX_ENCODING_UTF32LE, JX_ENCODING_UTF8}) {
    for (const auto &options : {OpenOptions::input(), OpenOptions::input().direct()}) {
      wem::File in = *instance().open(at("lines"), options.text(4).record_encoding(encoding));
      EXPECT_EQ(*in.read_lines(), lines);
      EXPECT_EQ(in.read_line().status(), JXWEM_E_EOF);
    }
  }
  for (const char *bad : {"\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe6\x9d", "\x80"}) {
    EXPECT_EQ(wem::from_utf8(bad).status(), JXHOST_E_MALFORMED);
  }
  EXPECT_EQ(wem::to_utf8(U"\xd800").status(), JXHOST_E_MALFORMED);
}

TEST_F(WrapperFiles, TreesAreWalkedCopiedAndRemoved) {
  namespace fs = std::filesystem;
  fs::create_directories(at("tree/.hidden/deep"));
  fs::create_directory(at("tree/empty"));
  put("tree/.hidden/file", "12345");
  put("tree/two words", "1");
  fs::create_symlink("two words", at("tree/link"));
  const auto walk = [this](const char *root) {
    std::set<std::string> found;
    const wem::TreeRange members = wem::walk_tree(instance(), at(root));
    for (const wem::TreeMember &member : members) {
      const std::string path = member.path.utf8().substr(at(root).size());
      found.insert(path + "=" + std::to_string(static_cast<int>(member.kind)) +
                   std::to_string(member.depth) + std::to_string(member.size_bytes));
    }
    EXPECT_TRUE(members.error().ok()) << members.error().name();
    return found;
  };
  const std::set<std::string> all = {
      "=100",       "/.hidden=110", "/.hidden/deep=120", "/.hidden/file=025",
      "/empty=110", "/link=210",    "/two words=011"};
  EXPECT_EQ(walk("tree"), all);

  std::set<std::string> copied = all, steps;
  copied.extract("/link=210").value() = "/link=011";
  copied.insert("/link=011");
  uint32_t left = 3;
  const auto stop = [&left](const wem::TreeMember &) {
    return left-- == 0 ? Status(JXWEM_E_INUSE) : Status();
  };
  const auto note = [&steps](const wem::TreeMember &member) {
    steps.insert(member.path.utf8());
    return Status();
  };
  EXPECT_EQ(wem::copy_tree(instance(), at("tree"), at("part"), stop), JXWEM_E_INUSE);
  EXPECT_EQ(walk("part").size(), 3u);
  EXPECT_TRUE(wem::copy_tree(instance(), at("tree"), at("copy"), note).ok());
  EXPECT_EQ(walk("copy"), copied);
  EXPECT_EQ(steps.size(), all.size());
  EXPECT_EQ(wem::copy_tree(instance(), at("tree"), at("copy"), note), JXWEM_E_EXISTS);
  // A directory that cannot be read to its end is not taken for a short one.
  arm_syscalls(syscalls(Syscall::readdir64_r), {.n = 1, .error = EIO});
  EXPECT_FALSE(wem::copy_tree(instance(), at("tree"), at("short"), note).ok());
  EXPECT_TRUE(disarm_syscalls());
  std::filesystem::create_symlink(at("tree"), at("alias"));
  for (const char *inside : {"tree/empty/in", "alias/empty/in", "copy/../tree/empty/in"}) {
    EXPECT_EQ(wem::copy_tree(instance(), at("tree"), at(inside), note), JXWEM_E_BADNAME) << inside;
  }
  left = 2;
  EXPECT_EQ(wem::remove_tree(instance(), at("part"), stop), JXWEM_E_INUSE);
  EXPECT_TRUE(is_there("part"));
  for (const char *root : {"part", "tree", "copy/two words"}) {
    EXPECT_TRUE(wem::remove_tree(instance(), at(root), note).ok()) << root;
    EXPECT_FALSE(is_there(root));
  }
  EXPECT_EQ(wem::remove_tree(instance(), at("tree"), note), JXWEM_E_NOTFOUND);
  // What would reach another file is left alone, and a link to a directory is not followed.
  put("copy/$HOME", "");
  EXPECT_EQ(wem::remove_tree(instance(), at("copy"), note), JXWEM_E_BADNAME);
  fs::create_directory_symlink("empty", at("copy/loop"));
  fs::remove(at("copy/$HOME"));
  EXPECT_EQ(wem::remove_tree(instance(), at("copy"), note), JXWEM_E_NOTFOUND);
  EXPECT_TRUE(is_there("copy"));
}

TEST_F(WrapperFiles, NamesAreTheirBytes) {
  const std::filesystem::path path = at("Zürich \U0001f600 \xff.txt");
  put(path.filename(), "x");
  wem::Directory folder = *instance().open_directory(at(""));
  const wem::Name found = *folder.read();
  EXPECT_EQ(found.path(), path.filename());
  EXPECT_TRUE(folder.contains(path.filename()).ok());
  EXPECT_EQ(wem::Name(u8"é"), wem::Name("é"));
  EXPECT_EQ(wem::Name(U"ascii").utf8(), "ascii");
  EXPECT_EQ(instance().exist(std::getenv("NO_SUCH_VARIABLE")), instance().exist(""));
  const auto parts = *instance().split_path("/tmp/ä.ö");
  EXPECT_EQ(wem::Name(*parts.extension).utf8(), "ö");
}

TEST_F(WrapperFiles, TimesAreThoseOfTheSystem) {
  put("file", "x");
  struct ::stat status = {};
  ASSERT_EQ(::stat(at("file").c_str(), &status), 0);
  module_.host()->time_zone = -7200;
  const wem::FileInfo info = *instance().info(at("file"));
  EXPECT_EQ(info.modified_time_t(), status.st_mtime);
  const auto list =
      *instance().directory_list(at("file"), JX_DIRECTORY_PARENT, JX_LIST_INFORMATION);
  const auto listed = instance().info_of(*std::next(list.begin()));
  EXPECT_EQ(listed->modified_at, info.modified_at);
  const auto bare = *instance().directory_list(at(""));
  EXPECT_EQ(instance().info_of(*bare.begin()), std::nullopt);
}

TEST_F(WrapperFiles, RecordsEntriesAndTables) {
  put("text", "one\ntwo");
  wem::File file = *instance().open(at("text"), OpenOptions::input().text(2));
  std::u32string seen;
  wem::RecordRange records = file.records();
  for (const wem::Record &record : wem::RecordRange(records)) {  // a copy is the same range
    seen += std::u32string(record.text()) + (record.partial ? U"+" : U"|");
  }
  EXPECT_EQ(seen, U"on+e|tw+o|");
  EXPECT_EQ(records.status(), JXWEM_E_EOF);

  wem::Directory directory = *instance().open_directory(at(""));
  EXPECT_EQ(directory.contains("other"), JXWEM_E_NOTFOUND);
  wem::EntryRange entries = directory.entries();
  for (const std::u32string &entry : entries) EXPECT_EQ(entry, U"text");
  EXPECT_TRUE(entries.error().ok());
  EXPECT_TRUE((*directory.members()).empty());

  wem::Directory again = *instance().open_directory(at(""));
  const auto members = again.members(JX_LIST_INFORMATION);
  ASSERT_EQ(members->size(), 1u);
  EXPECT_EQ(wem::Name(wem::name_of(*members->begin())), at("text"));
  EXPECT_NE(members->begin()->information, nullptr);
  EXPECT_EQ(instance().info(at("none")).status(), JXWEM_E_NOTFOUND);
  EXPECT_EQ(instance().open(U"", OpenOptions::input()).status(), JXWEM_E_BADNAME);
}

}  // namespace
}  // namespace jx::test
