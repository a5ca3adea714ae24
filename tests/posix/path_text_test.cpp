// Splitting and building paths.
#include "support/path_text.hpp"
#include "support/path_fixture.hpp"

namespace jx::test {
namespace {

using PathText = PathTest;

TEST_F(PathText, Split) {
  // Path, directory, member, base and extension; empty if absent.
  const auto check = [&](std::initializer_list<const char *> rows) {
    for (const char *row : rows) {
      const auto [path, directory, member, base, extension] = cells<5>(row);
      std::array<std::string, 4> parts;
      EXPECT_EQ(split(instance, jx(path), &parts), JX_OK) << row;
      EXPECT_EQ(parts, (std::array{directory, member, base, extension})) << row;
    }
  };
  check({"/|/", "//|/", "/a|/|a|a", "a/|a", "a//b|a/|b|b", "name||name|name", ".||.|.",
         "d/..|d|..|..", ".profile||.profile|.profile", "dir/.profile|dir|.profile|.profile"});
  check({"/usr/lib/libx.so|/usr/lib|libx.so|libx|so", "dir/.a.b|dir|.a.b|.a|b", "..x||..x|.|x",
         "a.||a.|a.", "a.b.||a.b.|a.b.", "a.b.c||a.b.c|a.b|c", "a.b/c|a.b|c|c", "a.b/|a.b",
         "\xff/\x80 . \xfe|\xff|\x80 . \xfe|\x80 | \xfe"});
}

TEST_F(PathText, SplitLeavesItsResultsAloneOnFailure) {
  JXChar mark = 0;
  JXChar *part = &mark;
  int32_t length = -7;
  const auto split_text = [&](const JXChar *path, uint32_t path_chars) {
    return bkwemsplitpath(instance, path, path_chars, &part, &length, &part, &length, &part,
                          &length, &part, &length);
  };
  EXPECT_EQ(split_text(nullptr, 4), 1u);
  EXPECT_EQ(split_text(&mark, 0), 1u);
  EXPECT_EQ(split_text(&mark, 0x40000000u), JX_E_NOMEM);  // times four, this wraps to 0
  EXPECT_EQ(part, &mark);
  EXPECT_EQ(length, -7);
}

TEST_F(PathText, Build) {
  fs::current_path(dir.path());
  setenv("HOME", "/home/u", 1);
  setenv("JX_TEST_A", "name", 1);
  // Directory, member, extension and the path, in which "@" is the current directory.
  const auto check = [&](std::initializer_list<const char *> rows) {
    for (const char *row : rows) {
      const auto [directory, member, extension, path] = cells<4>(row);
      const std::string expected = path.starts_with('@') ? dir.path() + path.substr(1) : path;
      JXStatus status = 1;
      EXPECT_EQ(build(instance, jx(directory), jx(member), jx(extension), &status), expected)
          << row;
      EXPECT_EQ(status, JX_OK) << row;
    }
  };
  check({"/tmp  |x|txt|/tmp/x.txt", "/tmp/|x||/tmp/x", "/tmp//|||/tmp", "/tmp/|/x||/tmp//x",
         "/tmp|x  |e |/tmp/x.e", "/tmp| x| e|/tmp/ x. e", "/tmp||dat|/tmp/.dat", "/tmp|  ||/tmp",
         "/tmp|x|  |/tmp/x."});
  check({"|x||@/x", "||e|@/.e", "|||@", "a|x||@/a/x", ".|x||@/x", "~|x||/home/u/x",
         "/d|$JX_TEST_A|c|/d/name.c", "/d|$JX_TEST_UNSET||/d/$JX_TEST_UNSET", "   |x||@/x",
         "   |~||/home/u", "/\xff|\x80|\xfe|/\xff/\x80.\xfe"});
}

TEST_F(PathText, BuildUpTo1024Characters) {
  const auto d = [](size_t count) { return "/" + std::string(count, 'd'); };
  const std::tuple<std::string, const char *, size_t, JXStatus> rows[] = {
      {"   ", "", 0, JXWEM_E_BADNAME},
      {d(1023), "", 0, JX_OK},
      {d(1024), "", 0, 1},
      {d(1022) + "  ", "", 0, JX_OK},
      {d(1023), "x", 0, JXWEM_E_NAMETOOLONG},
      {d(1022), "x", 0, JXWEM_E_NAMETOOLONG},
      {d(1021), "x", 0, JX_OK},
      {d(1021), "xy", 0, JXWEM_E_NAMETOOLONG},
      {d(999), "x", 20, JX_OK},
      {d(999), "x", 21, JXWEM_E_NAMETOOLONG},
      {d(1023).substr(1) + "d", "", 0, JXWEM_E_NAMETOOLONG},  // the expansion refuses
  };
  for (const auto &[directory, member, extension_chars, expected] : rows) {
    JXStatus status = 2;
    build(instance, jx(directory), jx(member), jx(std::string(extension_chars, 'e')), &status);
    EXPECT_EQ(status, expected) << directory.size() << member << extension_chars;
  }
}

TEST_F(PathText, BuildRefusesWhatCannotBe) {
  const JXChar text[] = {'/', 't', 'e', 'x', 't'};
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  for (const auto &[member_chars, extension_chars] : {std::pair(~0u, 0u), std::pair(1u, ~0u)}) {
    EXPECT_EQ(bkwembuildpath(instance, text, 5, text, member_chars, text, extension_chars, &path,
                             &path_chars),
              JXWEM_E_NAMETOOLONG);
  }
  EXPECT_EQ(bkwembuildpath(instance, text, ~0u, text, 1, text, 0, &path, &path_chars), 1u);
  fs::create_directory(dir.file("gone"));
  fs::current_path(dir.file("gone"));
  fs::remove(dir.file("gone"));
  EXPECT_EQ(bkwembuildpath(instance, nullptr, 0, text, 1, text, 0, &path, &path_chars),
            JXWEM_E_FAILED);
  // The instance is checked before other arguments; the results are cleared.
  path_chars = 7;
  EXPECT_EQ(bkwembuildpath(nullptr, text, 5, text, 1, text, 0, nullptr, &path_chars),
            JXWEM_E_NOHANDLE);
  EXPECT_EQ(path_chars, 0u);
}

}  // namespace
}  // namespace jx::test
