// Every call of the C library fails in turn under jxfile: what is written is old or new, never in
// between, nothing is left beside it, and a failure is told.
#include <cstring>

#include "cli/program.hpp"

namespace jx::test {
namespace {

class Faults : public ProgramTest {
 protected:
  void restore() const {
    for (const auto &entry : std::filesystem::directory_iterator(at(""))) {
      std::filesystem::remove_all(entry.path());
    }
    std::filesystem::create_directories(at("tree/a"));
    put("tree/a/one", "1");
    put("in", "text\nmore\n");
    put("out", "old");
  }
  // Runs a command with one call failing; false when the command does not make that call.
  bool fail(const std::string &arguments, const char *call, int n, int error, Outcome *outcome,
            const std::string &more = "") const {
    restore();
    const std::string line =
        more +
        "ASAN_OPTIONS=verify_asan_link_order=0:$ASAN_OPTIONS FAIL_CALL=" + std::string(call) +
        " FAIL_AT=" + std::to_string(n) + " FAIL_ERRNO=" + std::to_string(error) +
        " FAIL_MARK=" + at("mark") +
        " LD_PRELOAD=" JX_FAIL_CALLS " exec '" JX_BINARY_DIR "/jxfile' ";
    *outcome = run({"/bin/sh", "-c", line + arguments}, "given\n");
    return std::filesystem::remove(at("mark"));
  }
};

#if defined(__SANITIZE_ADDRESS__)
constexpr int kErrors[] = {EIO};  // each process takes longer to start than all of its work
#elif defined(__i386__)
constexpr int kErrors[] = {EIO, EINTR};  // half of them in each ABI: the sources are the same
#else
constexpr int kErrors[] = {EINVAL, ENOENT};
#endif

// What removes the remains of a failed command: without it they stay.
bool cleans(std::string_view call) {
  return call == "unlinkat" || call == "openat64" || call == "lseek64" || call == "getdents64";
}

TEST_F(Faults, OldOrNewAndTold) {
  struct Command {
    const char *arguments, *target;
    std::string old_content, new_content;
    int syncs = 0;  // of the file and, where it gets a name, of the folder
  };
  using namespace std::string_literals;
  const Command commands[] = {
      {"convert in out --to utf-16le --no-bom", "out", "old", "t\0e\0x\0t\0\n\0m\0o\0r\0e\0\n\0"s,
       3},
      {"convert in new --no-bom", "new", "", "text\nmore\n", 3},
      {"convert --in-place --backup .b --to utf-16le in", "in", "text\nmore\n",
       "t\0e\0x\0t\0\n\0m\0o\0r\0e\0\n\0"s, 3},
      {"write out", "out", "old", "given\n", 3},
      {"cp in new", "new", "", "text\nmore\n"},
      {"cp tree x", "x/a/one", "", "1"},
      {"cp -pP tree x", "x/a/one", "", "1"},
      {"rm -r tree", "tree/a/one", "1", ""},
      {"lines in", "in", "text\nmore\n", "text\nmore\n"},
      {"ls tree/a", "in", "text\nmore\n", "text\nmore\n"},
  };
  const char *const calls[] = {"read",
                               "write",
                               "open64",
                               "openat64",
                               "fstat64",
                               "fstatat64",
                               "stat64",
                               "fcntl64",
                               "fsync",
                               "linkat",
                               "renameat",
                               "renameat2",
                               "mkdirat",
                               "unlinkat",
                               "fchmod",
                               "fchown",
                               "getrandom",
                               "fgetxattr",
                               "fsetxattr",
                               "pread64",
                               "pwrite64",
                               "lseek64",
                               "ftruncate64",
                               "fstatfs64",
                               "getdents64",
                               "fremovexattr",
                               "__fstat64_time64",
                               "__fstatat64_time64",
                               "__stat64_time64",
                               "readdir64",
                               "symlinkat",
                               "readlinkat",
                               "fchmodat",
                               "utimensat",
                               "__utimensat64"};
  for (const Command &command : commands) {
    restore();
    const Outcome good = jxfile(command.arguments, "given\n");
    ASSERT_EQ(good.code, 0) << command.arguments;
    size_t faults = 0;
    for (const char *call : calls) {
      for (const int error : kErrors) {
        Outcome outcome;
        int n = 0;
        for (; fail(command.arguments, call, n, error, &outcome); ++n) {
          SCOPED_TRACE(testing::Message() << command.arguments << ": " << call << " " << n << " "
                                          << std::strerror(error) << "\n"
                                          << outcome.err);
          ++faults;
          const std::string content = get(command.target);
          EXPECT_TRUE(outcome.code == 0 || outcome.code == 1) << outcome.code;
          EXPECT_EQ(outcome.code != 0, outcome.err.starts_with("jxfile: "));
          EXPECT_TRUE(outcome.code != 0 || outcome.out == good.out) << outcome.out;
          EXPECT_TRUE(content == command.new_content ||
                      (outcome.code != 0 && content == command.old_content))
              << content;
          const bool has_backup = names().find(".b ") != std::string::npos;
          EXPECT_TRUE(cleans(call) || !has_backup || get("in.b") != content) << names();
          EXPECT_TRUE(cleans(call) || names().find(".jxfile") == std::string::npos) << names();
        }
        EXPECT_TRUE(call != "fsync"s || n == command.syncs) << command.arguments << n;
        if (n == 0) break;  // a call that the command does not make
      }
    }
    EXPECT_GT(faults, 5 * std::size(kErrors)) << command.arguments;
  }
}

// Whoever shares a descriptor may have made it one that does not wait; some file systems cannot
// rename without replacing; a file that has no access list needs none removed.
TEST_F(Faults, GoesOn) {
  struct Harmless {
    const char *arguments, *call;
    int errors[2];
  };
  for (const auto &[arguments, call, errors] :
       {Harmless{"ls tree/a", "write", {EINTR, EAGAIN}},
        {"lines in", "pread64", {EINTR, EAGAIN}},
        {"write out", "read", {EINTR, EAGAIN}},
        {"cp in new", "renameat2", {EINVAL, ENOSYS}},
        {"cp tree new", "renameat2", {EINVAL, ENOSYS}},
        {"convert in out", "fremovexattr", {ENODATA, EOPNOTSUPP}}}) {
    for (const int error : errors) {
      Outcome outcome;
      int n = 0;
      for (; fail(arguments, call, n, error, &outcome); ++n) {
        EXPECT_EQ(outcome.code, 0) << call << n;
        EXPECT_EQ(std::filesystem::status(at("out")).permissions(),
                  std::filesystem::status(at("in")).permissions());
      }
      EXPECT_GT(n, 0) << arguments;
    }
  }
}

// Somebody else takes a new name just before the program does: what is theirs stays, also where the
// system has no unnamed files.
TEST_F(Faults, ARivalKeepsTheName) {
  constexpr const char *kRows[][2] = {
      {"convert in new", "linkat"}, {"convert in new", "renameat2"}, {"cp in new", "renameat2"}};
  for (const auto &[arguments, call] : kRows) {
    SCOPED_TRACE(arguments + std::string(" ") + call);
    const std::string race = "RACE_CALL=" + std::string(call) + " RACE_NAME=" + at("new") + " ";
    int lost = 0;
    Outcome outcome;
    bool has_failed = true;  // the last run is one in which nothing else goes wrong
    for (int n = 0; has_failed; ++n) {
      has_failed = fail(arguments, "openat64", n, EOPNOTSUPP, &outcome, race);
      const bool is_told = outcome.code == 1 && outcome.err.starts_with("jxfile: ");
      const bool has_lost = is_told && std::filesystem::exists(at("new"));
      EXPECT_TRUE(outcome.code == 0 || is_told) << outcome.err;
      lost += has_lost;
      EXPECT_TRUE(!has_lost || get("new").empty()) << get("new");
      EXPECT_TRUE(outcome.code != 0 || get("new") == get("in"));
    }
    EXPECT_GT(lost, 0);
  }
  Outcome outcome;
  EXPECT_TRUE(fail("convert in new", "linkat", 0, ENOENT, &outcome));
  expect_failure(outcome, "it became another file meanwhile");
  // Nor is a copy made in a directory that somebody else put in the place of its own.
  ASSERT_EQ(::chmod(at("").c_str(), 01777), 0);
  fail("cp in new", "none", 0, EIO, &outcome, "LOOSE_CALL=mkdirat ");
  expect_failure(outcome, "access denied");
  EXPECT_EQ(names(), "in out tree ");
}

}  // namespace
}  // namespace jx::test
