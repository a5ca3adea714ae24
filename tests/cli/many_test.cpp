// Conversion of many files: in place, into a folder, several at once.
#include <thread>

#include "cli/descriptor.hpp"
#include "cli/program.hpp"
#include "cli/signals.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

class Many : public ProgramTest {
 protected:
  ino_t inode(const std::string &name) const {
    struct ::stat status = {};
    EXPECT_EQ(::lstat(at(name).c_str(), &status), 0) << name;
    return status.st_ino;
  }
};

TEST_F(Many, EachFileOnItsOwn) {
  const std::string wide = "Z\xc3\xbcrich\n", narrow = "Z\xfcrich\n";
  for (const char *jobs : {"1", "3"}) {
    for (const char *name : {"a", "b", "d"}) put(name, narrow);
    put("same", "ascii\n");
    put("bad", wide + "\x81\n");
    std::filesystem::remove(at("link"));
    ASSERT_EQ(::symlink("d", at("link").c_str()), 0);
    ASSERT_EQ(::chmod(at("d").c_str(), 0640), 0);
    const ino_t same = inode("same"), old = inode("a");
    const std::string command = "convert --from windows-1252 --in-place --jobs "s + jobs;
    const std::string files = " a same bad none link d . b";
    const char *const failures[] = {
        "bad: input is not valid in its encoding: record 2, byte offset 8, bytes 81 (",
        "none: file or directory not found (", "d: it is the same file as one before it: link (",
        ".: the file-open extension refused the open (", "4 of 8 files failed\n"};
    const auto expect_failures = [&](const Outcome &outcome) {
      size_t at = 0;
      for (const char *failure : failures) {
        at = outcome.err.find("jxfile: convert: "s + failure, at);
        EXPECT_NE(at, outcome.err.npos) << failure << "\n" << outcome.err;
      }
      EXPECT_EQ(outcome.code, 1);
    };
    const Outcome trial = jxfile(command + " --dry-run" + files);
    expect_failures(trial);
    EXPECT_EQ(trial.out,
              "a: would change from 7 to 8 bytes\nlink: would change from 7 to 8 bytes\n"
              "b: would change from 7 to 8 bytes\n");
    EXPECT_EQ(get("a") + get("b") + get("d"), narrow + narrow + narrow);
    EXPECT_EQ(inode("a"), old);
    expect_failures(jxfile(command + " --backup .old" + files));
    EXPECT_EQ(get("a") + get("b") + get("link"), wide + wide + wide);
    EXPECT_EQ(get("a.old") + get("bad"), narrow + wide + "\x81\n");
    EXPECT_EQ(inode("a.old"), old);
    EXPECT_EQ(inode("same"), same);
    struct ::stat status = {};
    ASSERT_EQ(::lstat(at("d").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_EQ(names(), "a a.old b b.old bad d d.old link same ");
    // A backup is never replaced.
    put("b", narrow);
    expect_failure(jxfile(command + " --backup=.old b"), "b.old: a backup of that name is there");
    EXPECT_EQ(get("b"), narrow);
    for (const char *name : {"a.old", "b.old", "d.old"}) std::filesystem::remove(at(name));
    // What a killed run left: the backup, but not yet the new content.
    ASSERT_EQ(::link(at("b").c_str(), at("b.old").c_str()), 0);
    EXPECT_EQ(jxfile(command + " --backup=.old b").err, "");
    EXPECT_EQ(get("b.old") + get("b"), narrow + wide);
    std::filesystem::remove(at("b.old"));
  }
}

TEST_F(Many, IntoAFolder) {
  std::filesystem::create_directories(at("in/sub"));
  std::filesystem::create_directory(at("out"));
  for (const char *name : {"in/a", "in/b", "in/sub/a", "-b"}) put(name, "\xe9t\xe9 "s + name);
  put("list", "in/a\0in/b"s);
  const std::string from = "convert --from latin1 --into out ";
  EXPECT_EQ(jxfile(from + "--files0-from list").err, "");
  EXPECT_EQ(get("out/a") + get("out/b"), "été in/aété in/b");
  const ino_t before = inode("out/a");
  EXPECT_EQ(jxfile(from + "--files0-from - --dry-run", get("list") + "\0-b\0"s).out,
            "out/-b: would be new, 8 bytes\n");
  EXPECT_EQ(jxfile(from + "--files0-from - --to utf-16be", "in/b\0"s).code, 0);
  EXPECT_EQ(get("out/b").substr(0, 4), "\0\xe9\0t"s);
  expect_failure(jxfile(from + "in/a in/sub/a"), "in/sub/a: another file has the same name in the");
  expect_failure(jxfile(from + "in/a out/b"), "out/b: it is one of the files to read: out/b");
  ASSERT_EQ(::symlink("../in/b", at("out/-b").c_str()), 0);
  expect_failure(jxfile(from + "in/b -- -b"), "out/-b: it is one of the files to read: in/b");
  expect_failure(jxfile(from + "--files0-from -", "in/a\0\0"s), "a name in it is empty");
  expect_failure(jxfile("convert --into none in/a"), "none/a: a directory on the path is missing");
  EXPECT_EQ(inode("out/a"), before);
  EXPECT_EQ(get("in/b"), "\xe9t\xe9 in/b");
  check({
      {2, "convert in/a out/a in/b", "", "more than IN and OUT needs --in-place or --into"},
      {2, "convert --dry-run in/a", "", "--dry-run needs --in-place or --into"},
      {2, "convert --jobs 2 in/a", "", "--jobs needs --in-place or --into"},
      {2, "convert --in-place --into out in/a", "", "--in-place and --into cannot be given"},
      {2, "convert --into out --backup .b in/a", "", "--backup needs --in-place"},
      {2, "convert --in-place --backup a/b in/a", "", "--backup takes what is added to a name"},
      {2, "convert --in-place --append in/a", "", "--append cannot be given"},
      {2, "convert --in-place --records text in/a", "", "--records text converts one file"},
      {2, "convert --in-place --files0-from list in/a", "", "--files0-from cannot be given with"},
      {2, "convert --in-place", "", "files to convert are required"},
      {2, "convert --in-place --jobs 0 in/a", "", "'0' is not a number from 1"},
      {2, "convert --in-place --bom --to latin1 in/a", "", "has no mark"},
      {0, "convert --from latin1", "é", "", "\xe9"},
      {1, "convert --in-place -", "", "it is not a file that can be replaced"},
      {1, "convert --in-place /dev/null", "", "it is not a file that can be replaced"},
  });
}

// What is the same at the start is not converted twice, nor lost.
TEST_F(Many, WhatIsNewFromSomewhereOn) {
  const std::string same(150000, 's');
  const struct {
    std::string old, input, content;
  } rows[] = {
      {"", same + "\xe9" + same, same + "é" + same},
      {same + "é" + same, same + "\xe9", same + "é"},  // the old content goes on
      {same, same + "\xe9", same + "é"},
      {same + "\xe9", same + "\xe9", same + "é"},
      {"\xe9", "", ""},
  };
  std::filesystem::create_directory(at("out"));
  for (const auto &row : rows) {
    put("in", row.input);
    put("out/in", row.old);
    for (const char *to : {"--into out", "--in-place"}) {
      EXPECT_EQ(jxfile("convert in --from latin1 "s + to).code, 0);
      EXPECT_TRUE(get(to[4] == 't' ? "out/in" : "in") == row.content) << row.input.size() << to;
    }
  }
  // A mark is written, kept, moved to another byte order, and taken away.
  put("in", "a");
  const std::pair<const char *, std::string> marks[] = {{"--to utf-16",
                                                         "\xff\xfe"
                                                         "a\0"s},
                                                        {"--to utf-16be", "\xfe\xff\0a"s},
                                                        {"",
                                                         "\xef\xbb\xbf"
                                                         "a"},
                                                        {"--no-bom", "a"}};
  for (const auto &[options, content] : marks) {
    EXPECT_EQ(jxfile("convert --in-place in "s + options).err, "");
    EXPECT_EQ(get("in"), content) << options;
  }
}

// A signal waits for threads that have made a file and not yet named it for removal.
TEST_F(Many, SignalsCleanUpBehindThreads) {
  const pid_t child = ::fork();
  if (child == 0) {
    const int folder = ::open(at("").c_str(), O_RDONLY | O_CLOEXEC);
    const auto make_files = [folder](int number) {
      const std::string name = "file" + std::to_string(number);
      for (;;) {
        cli::RemoveOnSignal on_signal;
        {
          const cli::SignalsBlocked guard;
          const cli::Descriptor file(
              ::openat(folder, name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
          on_signal.set(folder, name);
        }
        ::unlinkat(folder, name.c_str(), 0);
      }
    };
    std::vector<std::thread> threads;
    {
      const cli::SignalsBlocked guard;
      for (int number = 0; number < 3; ++number) threads.emplace_back(make_files, number);
    }
    ::usleep(20000);
    std::raise(SIGTERM);
    ::_exit(0);
  }
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
  EXPECT_EQ(names(), "");
}

}  // namespace
}  // namespace jx::test
