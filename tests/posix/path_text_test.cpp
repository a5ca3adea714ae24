// Paths taken apart and put together.
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/path_fixture.hpp"

namespace jx::test {
namespace {

using PathText = PathTest;

struct SplitRow {
  const char *path, *directory, *member, *base, *extension;  // null: absent
};

constexpr SplitRow kSplitRows[] = {
    {"/usr/lib/libx.so", "/usr/lib", "libx.so", "libx", "so"},
    {"/", "/", nullptr, nullptr, nullptr},
    {"//", "/", nullptr, nullptr, nullptr},
    {"/a", "/", "a", "a", nullptr},
    {"a/", "a", nullptr, nullptr, nullptr},
    {"a//b", "a/", "b", "b", nullptr},
    {"name", nullptr, "name", "name", nullptr},
    {".profile", nullptr, ".profile", ".profile", nullptr},
    {"dir/.profile", "dir", ".profile", ".profile", nullptr},
    {"dir/.a.b", "dir", ".a.b", ".a", "b"},
    {"..x", nullptr, "..x", ".", "x"},
    {"a.", nullptr, "a.", "a.", nullptr},
    {"a.b.", nullptr, "a.b.", "a.b.", nullptr},
    {"a.b.c", nullptr, "a.b.c", "a.b", "c"},
    {"a.b/c", "a.b", "c", "c", nullptr},
    {"a.b/", "a.b", nullptr, nullptr, nullptr},
    {".", nullptr, ".", ".", nullptr},
    {"d/..", "d", "..", "..", nullptr},
    {"a b. c", nullptr, "a b. c", "a b", " c"},
    {"\xff/\x80.\xfe", "\xff", "\x80.\xfe", "\x80", "\xfe"},
};

std::string shown(const JXChar *text, int32_t text_chars) {
  EXPECT_EQ(text == nullptr, text_chars == 0);
  return text ? narrow(text, static_cast<size_t>(text_chars)) : "(absent)";
}

std::string shown(const char *text) { return text ? text : "(absent)"; }

TEST_F(PathText, Split) {
  for (const SplitRow &row : kSplitRows) {
    JXChar *part[4];
    int32_t length[4];
    const JXString path = jx(row.path);
    ASSERT_EQ(
        instance->split_path(instance, path.data(), chars(path), &part[0], &length[0], &part[1],
                             &length[1], &part[2], &length[2], &part[3], &length[3]),
        JX_OK);
    EXPECT_EQ(shown(part[0], length[0]), shown(row.directory)) << row.path;
    EXPECT_EQ(shown(part[1], length[1]), shown(row.member)) << row.path;
    EXPECT_EQ(shown(part[2], length[2]), shown(row.base)) << row.path;
    EXPECT_EQ(shown(part[3], length[3]), shown(row.extension)) << row.path;
    EXPECT_EQ(part[1], part[2]) << row.path;
    EXPECT_EQ(instance->split_path_release(instance, part[0], part[1], part[2], part[3]), JX_OK);
  }
}

TEST_F(PathText, SplitLeavesItsResultsAloneOnFailure) {
  JXChar mark = 0;
  JXChar *part = &mark;
  int32_t length = -7;
  const auto split = [&](const JXChar *path, uint32_t path_chars) {
    return bkwemsplitpath(instance, path, path_chars, &part, &length, &part, &length, &part,
                          &length, &part, &length);
  };
  EXPECT_EQ(split(nullptr, 4), 1u);
  EXPECT_EQ(split(&mark, 0), 1u);
  EXPECT_EQ(split(&mark, 0x40000000u), JX_E_NOMEM);  // times four, this wraps to 0
  host.arm(calls(Call::pool_allocate), 0);
  EXPECT_EQ(split(&mark, 1), JX_E_NOMEM);
  EXPECT_TRUE(host.disarm());
  EXPECT_EQ(part, &mark);
  EXPECT_EQ(length, -7);
  EXPECT_EQ(bkwemsplitpathdestroy(instance, nullptr, nullptr, nullptr, nullptr), JX_OK);
}

struct BuildRow {
  std::string directory, member, extension;
  JXStatus status;
  std::string path;  // "@" stands for the current directory
};

std::string repeated(const std::string &text, size_t count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

TEST_F(PathText, Build) {
  const WorkingDirectory here(dir.path());
  setenv("HOME", "/home/u", 1);
  setenv("JX_TEST_A", "name", 1);
  const std::string long_directory = "/" + std::string(999, 'd');
  const BuildRow rows[] = {
      {"/tmp  ", "x", "txt", JX_OK, "/tmp/x.txt"},
      {"/tmp/", "x", "", JX_OK, "/tmp/x"},
      {"/tmp", "", "", JX_OK, "/tmp"},
      {"/tmp//", "", "", JX_OK, "/tmp"},
      {"/tmp/", "/x", "", JX_OK, "/tmp//x"},
      {"/tmp", "x  ", "e ", JX_OK, "/tmp/x.e"},
      {"/tmp", " x", " e", JX_OK, "/tmp/ x. e"},
      {"/tmp", "", "dat", JX_OK, "/tmp/.dat"},
      {"/tmp", "  ", "", JX_OK, "/tmp"},
      {"/tmp", "x", "  ", JX_OK, "/tmp/x."},
      {"", "x", "", JX_OK, "@/x"},
      {"", "", "e", JX_OK, "@/.e"},
      {"", "", "", JX_OK, "@"},
      {"a", "x", "", JX_OK, "@/a/x"},
      {".", "x", "", JX_OK, "@/x"},
      {"~", "x", "", JX_OK, "/home/u/x"},
      {"/d", "$JX_TEST_A", "c", JX_OK, "/d/name.c"},
      {"/d", "$JX_TEST_UNSET", "", JX_OK, "/d/$JX_TEST_UNSET"},
      {"   ", "x", "", JX_OK, "@/x"},
      {"   ", "~", "", JX_OK, "/home/u"},
      {"   ", "", "", JXWEM_E_BADNAME, ""},
      {"/\xff", "\x80", "\xfe", JX_OK, "/\xff/\x80.\xfe"},
      {"/" + repeated("d", 1023), "", "", JX_OK, "/" + repeated("d", 1023)},
      {repeated("d", 1025), "", "", 1, ""},
      {"/" + repeated("d", 1022) + " ", "", "", JX_OK, "/" + repeated("d", 1022)},
      {"/" + repeated("d", 1023), "x", "", JXWEM_E_NAMETOOLONG, ""},
      {"/" + repeated("d", 1022), "x", "", JXWEM_E_NAMETOOLONG, ""},
      {"/" + repeated("d", 1021), "x", "", JX_OK, "/" + repeated("d", 1021) + "/x"},
      {"/" + repeated("d", 1021), "xy", "", JXWEM_E_NAMETOOLONG, ""},
      {long_directory, "x", repeated("e", 21), JXWEM_E_NAMETOOLONG, ""},
      {long_directory, "x", repeated("e", 20), JX_OK, long_directory + "/x." + repeated("e", 20)},
      {repeated("d", 1024), "", "", JXWEM_E_NAMETOOLONG, ""},  // relative: the expansion refuses
  };
  for (const BuildRow &row : rows) {
    JXStatus status = 0;
    std::string expected = row.path;
    if (!expected.empty() && expected[0] == '@') expected.replace(0, 1, dir.path());
    EXPECT_EQ(build(jx(row.directory), jx(row.member), jx(row.extension), &status), expected)
        << row.directory << "|" << row.member << "|" << row.extension;
    EXPECT_EQ(status, row.status) << row.directory << "|" << row.member << "|" << row.extension;
  }
}

TEST_F(PathText, BuildRefusesWhatCannotBe) {
  const JXString text = jx("/text");
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  const auto build_huge = [&](uint32_t directory_chars, uint32_t member_chars,
                              uint32_t extension_chars) {
    return bkwembuildpath(instance, text.data(), directory_chars, text.data(), member_chars,
                          text.data(), extension_chars, &path, &path_chars);
  };
  EXPECT_EQ(build_huge(0xFFFFFFFFu, 1, 0), 1u);
  EXPECT_EQ(build_huge(5, 0xFFFFFFFFu, 0), JXWEM_E_NAMETOOLONG);
  EXPECT_EQ(build_huge(5, 1, 0xFFFFFFFFu), JXWEM_E_NAMETOOLONG);
  EXPECT_EQ(path, nullptr);
  EXPECT_EQ(bkwembuildpathdestroy(instance, nullptr), JX_OK);
}

TEST_F(PathText, BuildWithoutReadableCurrentDirectory) {
  make_folder("gone");
  JXStatus status = 0;
  {
    const WorkingDirectory here(dir.file("gone"));
    fs::remove(dir.file("gone"));
    build({}, jx("x"), {}, &status);
    EXPECT_EQ(status, JXWEM_E_FAILED);
    EXPECT_EQ(build(jx("/d"), jx("x"), {}, &status), "/d/x");
  }
  const WorkingDirectory here(dir.path());
  host.arm(calls(Call::transcode), 0);
  build({}, jx("x"), {}, &status);
  EXPECT_TRUE(host.disarm());
  EXPECT_EQ(status, 1u);  // the current directory could not be converted
}

}  // namespace
}  // namespace jx::test
