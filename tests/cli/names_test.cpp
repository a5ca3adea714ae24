// Names: what they reach, what is refused, how they are shown.
#include <stdlib.h>

#include "cli/program.hpp"

namespace jx::test {
namespace {

class Names : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    std::filesystem::create_directories(at("home/keep"));
    std::filesystem::create_directories(at("desk/dir "));
    ASSERT_EQ(::setenv("HOME", at("home").c_str(), 1), 0);
    for (const char *name : {"$HOME", "~", "dir /in", "blank"})
      put(std::string("desk/") + name, "");
    put("desk/blank ", "12345");
  }
  void TearDown() override { ::unsetenv("JXWEM_MODULE"); }
};

TEST_F(Names, AreLiteral) {
  const std::string tail(127, 'x');
  put("desk/$" + tail, "");
  const std::string too_long = "rm -r 'desk/$" + tail + "'";
  check({
      {1, too_long.c_str(), "", "127 bytes or more after a $ (JXWEM_E_NAMETOOLONG"},
      {0, "cp 'desk/$HOME' '~'", ""},
      {0, "mv '~' './$X'", ""},
      {0, "convert './$X' '$HOME'", ""},
      {0, "lines '$HOME'", ""},
      {0, "mkdir '~/' '~/$HOME/'", ""},
      {0, "ls '~'", "$HOME\n"},
      {0, "exists --expand '~/keep' '$HOME/keep'", ""},
      {1, "rm --expand '~/x'", "", "/home/x: file or directory not found"},
      {0, "ls --home", "keep\n"},
      {0, "ls --parent desk/..", "~^.*\n$"},
      {0, "exists ../../../../../../../../../../etc", ""},
      {0, "build --directory '/$HOME ' --member '$X'", "/$HOME /./$X\n"},
      {0, "build --expand --directory '~' --member x", "~/home/x\n"},
      {1, "build --member 'x '", "", "a blank at the end of --member"},
      {0, "newname '$HOME '", "~/\\$HOME /\\./tmp"},
      {0, "newname --expand '~'", "~/home/tmp"},
      {1, "exists desk/blank/", "", "desk/blank/: "},
      {1, "write new/", "", "new/: "},
  });
  enter("desk");
  check({
      {0, "ls --json --long",
       "~HOME\",\"size\":0(.|\n)*\"blank\",\"size\":0(.|\n)*\"blank \",\"size\":5(.|\n)*"
       "\"dir \",\"size\":[0-9]+,.*true\\}\n.*\"~\",\"size\":0"},
      {0, "ls 'dir '", "in\n"},
      {0, "ls --full --all 'dir '", "~^/.*/desk/dir /\\.\n(.|\n)*/desk/dir /in\n"},
      {0, "info --json 'blank '", "~\"size\":5,"},
      {0, "write '$HOME'", "", "", "one"},
      {0, "lines '$HOME' ./~", "one\n"},
      {0, "truncate '$HOME' 1", ""},
      {0, "bytes --raw '$HOME'", "o"},
      {0, "rm -r '$HOME' '~' 'blank '", ""},
  });
  EXPECT_EQ(names(), "$HOME $X desk home ~ ");
  EXPECT_TRUE(std::filesystem::exists(at("home/keep")));
  EXPECT_TRUE(std::filesystem::exists(at("desk/blank")));

  // A folder deeper than any path can name, and one that is gone.
  std::string deep = "desk";
  for (int i = 0; i < 6; ++i) deep += "/" + std::string(200, 'd');
  std::filesystem::create_directories(at(deep));
  enter(deep);
  check({{0, "write f", "", "", "x"}, {0, "info --json f", "~\"size\":2,"}, {0, "ls", "f\n"}});
}

TEST_F(Names, AreRefusedByRm) {
  std::filesystem::create_symlink("/", at("root"));
  std::filesystem::create_directories(at("tree/open/shut/in"));
  std::filesystem::create_directories(at("tree2/unread/in"));
  std::filesystem::create_directories(at("links/a"));
  for (const char *link : {"links/a/link", "links/up"}) {
    std::filesystem::create_symlink(link[6] == 'a' ? "nowhere" : "../tree", at(link));
  }
  put("file", "");
  check({
      {1, "rm -r . desk/.. desk/. ./ desk/../ file", "",
       "jxfile: rm: .: '.' and '..' are not removed"},
      // Not with -r: without the guard the system refuses too.
      {1, "rm / //", "", "rm: //: the root directory is not removed"},
      {1, "rm root/", "", "rm: root/: the root directory is not removed"},
      {1, "rm links/up/", "", "rm: links/up/: "},
      {0, "rm root", ""},
      {0, "rm -r links", ""},
  });
  EXPECT_EQ(names(), "desk home tree tree2 ");
  for (const char *path : {"tree", "tree/open", "tree/open/shut/in", "tree2", "tree2/unread"}) {
    if (::geteuid() == 0) {
      ASSERT_EQ(::chown(at(path).c_str(), 65534, 65534), 0);
    }
  }
  ASSERT_EQ(::chmod(at("tree/open/shut").c_str(), 0555), 0);
  ASSERT_EQ(::chmod(at("tree2/unread").c_str(), 0), 0);
  check(
      {
          {1, "rm -r tree", "",
           "rm: tree/open/shut/in: access denied (JXWEM_E_ACCESS 0x80bfe803)\n"
           "hint: the directory that holds it may not be changed"},
          {1, "rm -r tree2", "",
           "rm: tree2/unread: access denied (JXWEM_E_ACCESS 0x80bfe803)\n"
           "hint: the directory may not be read"},
      },
      true);
  for (const char *path : {"tree/open/shut", "tree2/unread"}) ::chmod(at(path).c_str(), 0755);
}

// Names as bytes, in messages and on a terminal.
TEST_F(Names, AreShownSafely) {
  const std::string name =
      "ok\xc3\xa4\xe6\x9d\xb1 "
      "\x1b[2J\n\xff\xe2\x80\xae\xc2\x9b\xef\xbb\xbf\xf3\xa0\x81\x81\xed\xa0\x80\\";
  const std::string shown =
      "ok\xc3\xa4\xe6\x9d\xb1 \\x1b[2J\\x0a\\xff\\xe2\\x80\\xae\\xc2\\x9b\\xef\\xbb\\xbf"
      "\\xf3\\xa0\\x81\\x81\\xed\\xa0\\x80\\\\";
  const std::string missing = "info '" + name + "'", wrong = "'" + name + "'";
  const std::string text = shown + ": file or directory not found",
                    no_command = "'" + shown + "' is";
  check({{1, missing.c_str(), "", text.c_str()}, {2, wrong.c_str(), "", no_command.c_str()}});
  std::filesystem::create_directory(at("list"));
  put("list/" + name, "");
  EXPECT_EQ(jxfile("ls list").out, name + "\n");
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_TRUE(::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
  const std::string path = ::ptsname(terminal);
  const int held = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_EQ(jxfile("ls list", {}, false, path.c_str()).code, 0);
  std::array<char, 1024> seen;
  const ssize_t count = ::read(terminal, seen.data(), seen.size());
  EXPECT_EQ(std::string(seen.data(), static_cast<size_t>(std::max<ssize_t>(count, 0))),
            shown + "\r\n");
  ::close(held);
  ::close(terminal);
}

TEST_F(Names, OfTheModuleAreAbsolute) {
  std::filesystem::copy(JXWEM_PATH, at("jxwem.so"));
  for (const char *relative : {"./jxwem.so", "jxwem.so"}) {
    ::setenv("JXWEM_MODULE", relative, 1);
    check({{1, "version", "", "jxwem.so: JXWEM_MODULE is not an absolute path"}});
  }
  ::setenv("JXWEM_MODULE", at("jxwem.so").c_str(), 1);
  const std::string own = "~\nmodule +" + at("jxwem.so");
  check({{0, "version", own.c_str()}, {0, "version --module ./jxwem.so", own.c_str()}});
}

}  // namespace
}  // namespace jx::test
