// Conversions there and back, and what a failed one leaves behind.
#include <sys/stat.h>

#include <csignal>

#include "cli/program.hpp"

namespace {

using jx_test::Outcome;
using jx_test::ProgramTest;
using namespace std::string_literals;

class Text : public ProgramTest {
 protected:
  void expect_failure(const Outcome &outcome, const std::string &message) {
    EXPECT_EQ(outcome.code, 1) << outcome.err;
    EXPECT_NE(outcome.err.find(message), outcome.err.npos) << outcome.err;
  }
};

TEST_F(Text, ThereAndBackGivesTheSameBytes) {
  std::string lines;
  for (int i = 0; i < 3000; ++i)
    lines += "äöü 漢字 \U0001f600 " + std::string(static_cast<size_t>(i) % 97, 'x') + "\n";
  const std::string mark = "\xef\xbb\xbf";
  const std::vector<std::string> texts = {"",
                                          "\n",
                                          "no line end",
                                          "a\nb\n",
                                          "a\r\nb\r\n",
                                          "mixed\r\nand\nlast",
                                          mark + "marked\n",
                                          mark,
                                          "inside\n" + mark + "mark\n",
                                          "nul\0inside\n"s,
                                          lines,
                                          lines + "\xe6\xbc\xa2"};
  for (size_t i = 0; i < texts.size(); ++i) {
    const std::string chunk =
        texts[i].size() > 1000 ? " --record-length 4096" : " --record-length 7";
    for (const std::string encoding : {"utf-16le", "utf-16be", "utf-32le", "utf-32be", "utf-8"}) {
      put("in", texts[i]);
      const Outcome there = jxfile("convert in there --to " + encoding + chunk);
      const Outcome back = jxfile("convert there back --to utf-8 --from " + encoding + chunk);
      EXPECT_EQ(there.code + back.code, 0) << there.err << back.err;
      EXPECT_EQ(get("back"), texts[i]) << "text " << i << " through " << encoding;
    }
  }
}

TEST_F(Text, MarksLineEndsAndPipes) {
  put("in", "a\r\nb");
  EXPECT_EQ(jxfile("convert in out --to utf-16be --bom").code, 0);
  EXPECT_EQ(get("out"), "\xfe\xff\0a\0\r\0\n\0b"s);
  EXPECT_EQ(jxfile("lines out").out, "a\nb");
  EXPECT_EQ(jxfile("convert out plain --no-bom --records text").code, 0);
  EXPECT_EQ(get("plain"), "a\nb\n");
  EXPECT_EQ(jxfile("convert - out --to latin1", "ä").code, 0);
  EXPECT_EQ(get("out"), "\xe4");
  EXPECT_EQ(jxfile("lines --from latin1 out").out, "ä");
  EXPECT_EQ(jxfile("lines -",
                   "\xff\xfe"
                   "a\0\n\0"s)
                .out,
            "a\n");
  // An addition puts no second mark into the file.
  EXPECT_EQ(jxfile("convert in sum --bom").code, 0);
  EXPECT_EQ(jxfile("convert in sum --bom --append").code, 0);
  EXPECT_EQ(get("sum"),
            "\xef\xbb\xbf"
            "a\r\nba\r\nb");
}

struct FaultRow {
  std::string_view bytes;
  const char *from;
  const char *to;
  const char *place;
};

TEST_F(Text, FaultsAreNamedAndLeaveTheTarget) {
  std::string shifted = "\n\x1b$B";  // a line that is checked in parts
  while (shifted.size() < 200000) shifted += "04";
  shifted += '0';
  const FaultRow rows[] = {
      {"ok\nx\xc3(\n", "utf-8", "utf-16le", "record 2, byte offset 4, bytes c3 28 "},
      {"ok\nx\xc3(\n", "utf-8", "utf-8", "record 2, byte offset 4, bytes c3 28 "},
      {"ok\nx\xe6\xbc", "utf-8", "utf-16le", "bytes e6 bc, cut off by the end of the file"},
      {"\xef\xbb\xbf\n\xff", "utf-8", "utf-16le", "record 2, byte offset 4, bytes ff "},
      {"a\n\n\xe6\xbc\xa2", "utf-8", "latin1",
       "record 3, byte offset 3, bytes e6 bc a2 (JXHOST_E_UNMAPPABLE"},
      {{"a\0\n\0\0", 5}, "utf-16le", "utf-8", "record 2, byte offset 4, bytes 00, cut off"},
      {{"a\0\0\0\n\0\0\0\0\0\x11\0", 12},
       "utf-32le",
       "utf-8",
       "record 2, byte offset 8, bytes 00 00 11"},
      {shifted, "iso-2022-jp", "utf-8", "record 2, byte offset 200000, bytes 30, cut off"},
      {{"\0a\xd8\x00\0b", 6}, "utf-16be", "utf-8", "record 1, byte offset 2, bytes d8 00 "},
  };
  for (const FaultRow &row : rows) {
    put("in", row.bytes);
    put("out", "old");
    const std::string from = " --from "s + row.from;
    const std::string from_to = from + " --to " + row.to;
    expect_failure(jxfile("convert in out" + from_to), row.place);
    expect_failure(jxfile("convert - out" + from_to, row.bytes), row.place);
    expect_failure(jxfile("convert in out --records text" + from_to), row.place);
    EXPECT_EQ(get("out"), "old") << row.place;
    if (row.to != "latin1"s) {
      expect_failure(jxfile("lines in" + from), row.place);
      expect_failure(jxfile("lines -" + from, row.bytes), row.place);
    }
  }
  EXPECT_EQ(names(), "in out ");
  // What was added before the fault stays.
  put("in", "one\ntwo\n\xff\nthree\n");
  expect_failure(jxfile("convert in out --append"), "record 3, byte offset 8, bytes ff");
  EXPECT_EQ(get("out"), "oldone\ntwo\n");
  expect_failure(jxfile("write --append out", "1\n\xff\n"), "record 2, byte offset 2");
  EXPECT_EQ(get("out"), "oldone\ntwo\n1\n");
}

TEST_F(Text, TargetsThatCannotBeWritten) {
  put("in", "text\n");
  put("locked", "old");
  const int fd = ::open(at("locked").c_str(), O_RDWR | O_CLOEXEC);
  struct ::flock lock = {};
  lock.l_type = F_WRLCK;
  ASSERT_EQ(::fcntl(fd, F_OFD_SETLK, &lock), 0);
  const std::string busy = "locked: file busy or locked (JXWEM_E_INUSE 0x80bfe807)\nhint: ";
  for (const char *arguments :
       {"lines locked", "convert locked out", "convert in locked", "convert in locked --append"}) {
    expect_failure(jxfile(arguments), busy);
  }
  ::close(fd);
  ASSERT_EQ(::link(at("in").c_str(), at("same").c_str()), 0);
  ASSERT_EQ(::symlink("in", at("alias").c_str()), 0);
  for (const char *target : {"in", "same", "alias", "alias --append"}) {
    expect_failure(jxfile("convert in "s + target), "same file");
  }
  expect_failure(jxfile("convert in none/out"), "a directory on the path is missing");
  expect_failure(jxfile("convert in ."), "jxfile: convert: .: ");
  expect_failure(jxfile("convert in /dev/full"), "no space left on the device");
  expect_failure(jxfile("lines in", {}, false, "/dev/full"), "standard output: no space left");
  EXPECT_EQ(jxfile("convert in /dev/null").code, 0);
  EXPECT_EQ(get("in"), "text\n");
  EXPECT_EQ(names(), "alias in locked same ");
}

TEST_F(Text, PermissionsStayAndCount) {
  put("in", "text\n");
  put("out", "old");
  ASSERT_EQ(::chmod(at("out").c_str(), 0640), 0);
  ASSERT_EQ(::symlink("out", at("alias").c_str()), 0);
  EXPECT_EQ(jxfile("convert in alias --to utf-16le").code, 0);
  struct ::stat status = {};
  ASSERT_EQ(::lstat(at("out").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0640));
  ASSERT_EQ(::lstat(at("alias").c_str(), &status), 0);
  EXPECT_TRUE(S_ISLNK(status.st_mode));
  EXPECT_EQ(jxfile("write --append fresh", "x").code, 0);
  ASSERT_EQ(::stat(at("fresh").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0111, 0u);
  EXPECT_EQ(jxfile("cp out copy").code, 0);
  ASSERT_EQ(::stat(at("copy").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);

  const bool as_nobody = ::geteuid() == 0;
  if (jxfile("status", {}, as_nobody).code == 126) GTEST_SKIP() << "others cannot run the build";
  ASSERT_EQ(::chmod(at("in").c_str(), 0), 0);
  ASSERT_EQ(::chmod(at("out").c_str(), 0444), 0);
  put("other", "text");
  for (const char *arguments : {"lines in", "convert in new", "convert other out"}) {
    expect_failure(jxfile(arguments, {}, as_nobody), "access denied (JXWEM_E_ACCESS 0x80bfe803)");
  }
}

// A reader that goes away ends the program by the usual signal and without a message; where the
// signal is ignored, the error has its name, whoever wrote.
TEST_F(Text, ClosedPipes) {
  put("in", std::string(1 << 20, '\n'));
  for (const std::string arguments : {"lines in"}) {
    const auto piped = [&](const std::string &before) {
      const std::string script = before + "{ " JX_BINARY_DIR "/jxfile " + arguments +
                                 "; echo $? >&2; } | head -c 1 > /dev/null";
      return run({"/bin/sh", "-c", script}).err;
    };
    EXPECT_EQ(piped(""), "141\n") << arguments;
    EXPECT_NE(piped("trap '' PIPE; ").find("standard output: system error: Broken pipe (JXWEM_E_"),
              std::string::npos)
        << piped("trap '' PIPE; ") << arguments;
  }
}

// A size limit leaves no file behind; a link to an open file that has no name stays a link.
TEST_F(Text, NothingIsLeftOrTakenAway) {
  put("in", std::string(9000, 'x'));
  const std::string convert = JX_BINARY_DIR "/jxfile convert in ";
  expect_failure(run({"/bin/sh", "-c", "ulimit -f 1; exec " + convert + "out"}), "out: ");
  ASSERT_EQ(::symlink("/proc/self/fd/1", at("link").c_str()), 0);
  EXPECT_EQ(run({"/bin/sh", "-c", "(rm out; " + convert + "link) > out"}).code, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(at("link")));
  EXPECT_EQ(names(), "in link ");
}

TEST_F(Text, ExamplesRun) {
  const char *const lines = "1: first line\n2: zweite Zeile: äöü\n3: 第三行\n3 records\n";
  for (const char *example : {"example_c", "example_cpp"}) {
    const Outcome outcome = run({JX_BINARY_DIR "/examples/"s + example, JXWEM_PATH, at("text")});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_TRUE(outcome.out.starts_with(lines)) << outcome.out;
    EXPECT_EQ(get("text").substr(0, 4),
              "\xff\xfe"
              "f\0"s);
  }
}

}  // namespace
