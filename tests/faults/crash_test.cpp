// A process is killed at every system call in turn. What was flushed is there, targets have their
// old content or the new one, nothing else is left but hidden files, and the next run works.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <map>
#include <sstream>

#include "faults/operations.hpp"
#include "support/scale.hpp"

namespace jx::test {
namespace {

// Follows a child, its threads included, and kills it before its n-th system call.
class Victim {
 public:
  explicit Victim(const std::function<void()> &body) : child_(fork()) {
    if (child_ == 0) {
      if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(kNotAllowed);
      std::raise(SIGSTOP);
      body();
      _exit(0);
    }
    int status = 0;
    waitpid(child_, &status, 0);
    is_traced_ = WIFSTOPPED(status);
  }
  Victim(const Victim &) = delete;
  Victim &operator=(const Victim &) = delete;

  bool is_traced() const { return is_traced_; }

  // False when the child ended by itself, with the exit code 0, in fewer calls.
  bool kill_before(uint32_t n) {
    const intptr_t options =
        PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
    ptrace(PTRACE_SETOPTIONS, child_, nullptr, options);
    pid_t thread = child_;
    intptr_t signal = 0;
    for (bool is_killed = false;;) {
      if (!is_killed) ptrace(PTRACE_SYSCALL, thread, nullptr, signal);
      int status = 0;
      thread = waitpid(-1, &status, __WALL);
      if (thread < 0 || (thread == child_ && !WIFSTOPPED(status))) {
        EXPECT_TRUE(is_killed || status == 0) << "ended by itself: " << status;
        return is_killed;
      }
      if (!is_killed && is_call(thread, status, &signal) && n-- == 0) {
        kill(child_, SIGKILL);
        is_killed = true;
      }
    }
  }

 private:
  static constexpr int kNotAllowed = 77;

  // Tells whether a thread is about to make a call; else which signal it gets.
  bool is_call(pid_t thread, int status, intptr_t *signal) {
    *signal = 0;
    if (!WIFSTOPPED(status)) return false;
    const int stop = WSTOPSIG(status);
    if (stop == (SIGTRAP | 0x80)) return is_in_call_[thread] = !is_in_call_[thread];
    if (stop != SIGTRAP && stop != SIGSTOP) *signal = stop;
    return false;
  }

  pid_t child_;
  bool is_traced_ = false;
  std::map<pid_t, bool> is_in_call_;
};

class Crash : public FaultTest {
 protected:
  // Kills the body at every call in turn; before each run comes prepare(), after it check().
  template <typename Prepare, typename Check>
  void kill_everywhere(Prepare prepare, const std::function<void()> &body, Check check) {
    const auto step =
        static_cast<uint32_t>(std::clamp<int64_t>(1000 / std::max<int64_t>(scaled(1000), 1), 1, 7));
    for (uint32_t n = 0;; n += step) {
      SCOPED_TRACE("killed before call " + std::to_string(n));
      prepare();
      Victim victim(body);
      if (!victim.is_traced()) {
        std::printf("this machine lets no process follow its child: left out\n");
        return;
      }
      const bool is_killed = victim.kill_before(n);
      check(is_killed);
      if (HasFailure() || !is_killed) return;
      RecordProperty("kills", ++kills_);
    }
  }

  int kills_ = 0;

  std::string content(const std::string &name) const {
    return exists(name) ? read_file(dir.file(name)) : "(none)";
  }
};

// Memory that a child shares with the test.
struct Progress {
  Progress() = default;
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;
  ~Progress() { munmap(flushed, sizeof *flushed); }
  uint32_t *flushed = static_cast<uint32_t *>(
      mmap(nullptr, sizeof *flushed, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
};

// Records are written, and flushed after every third: all that was flushed is in the file, and what
// is in the file begins what was written.
TEST_F(Crash, WritingAndAppending) {
  const Progress progress;
  const std::string line(1500, 'x');
  const std::string old = "old\n";
  for (const uint32_t buffered : {0u, 1u}) {
    for (const uint32_t access_mode : {JX_ACCESS_OUTPUT, JX_ACCESS_APPEND}) {
      SCOPED_TRACE(std::to_string(buffered) + " " + std::to_string(access_mode));
      const std::string start = access_mode == JX_ACCESS_APPEND ? old : "";
      std::string whole = start;
      for (int i = 0; i < 18; ++i) whole += line + "\n";
      JXOpenOptions options = open_options(access_mode, buffered);
      options.record_length = 2000;
      options.record_encoding = JX_ENCODING_NATIVE;
      const auto write_all = [&] {
        *progress.flushed = 0;
        File file(instance, dir.file("records"), options);
        for (uint32_t i = 1; file && i <= 18; ++i) {
          if (write_record(file, line) != JX_OK) _exit(1);
          if (i % 3 == 0 && file->flush(file) != JX_OK) _exit(1);
          if (i % 3 == 0) *progress.flushed = i;
        }
        if (!file || file.close() != JX_OK) _exit(1);
      };
      const auto prepare = [&] {
        *progress.flushed = 0;
        write_file(dir.file("records"), old);
      };
      kill_everywhere(prepare, write_all, [&](bool is_killed) {
        const std::string found = content("records");
        EXPECT_TRUE(whole.starts_with(found) || (found == old && *progress.flushed == 0));
        const size_t flushed_bytes = *progress.flushed * (line.size() + 1);
        EXPECT_GE(found.size(), flushed_bytes ? start.size() + flushed_bytes : 0);
        EXPECT_TRUE(is_killed || found == whole);
        JXOpenOptions again = options;
        again.access_mode = JX_ACCESS_APPEND;
        File file(instance, dir.file("records"), again);
        ASSERT_TRUE(file);
        EXPECT_EQ(write_record(file, "next"), JX_OK);
        EXPECT_EQ(file.close(), JX_OK);
        EXPECT_EQ(content("records"), found + "next\n");
      });
    }
  }
}

// Copies and removals leave a part, which can be removed; a new name or the old one is there, never
// both or none.
TEST_F(Crash, PathOperations) {
  const auto expect_part = [&](const char *name) {
    const std::string found = content(name);
    EXPECT_TRUE(found == "(none)" || std::string("content").starts_with(found)) << found;
  };
  const struct {
    const char *name, *input, *output;
    std::function<JXStatus()> run;
    std::function<void()> check;
  } rows[] = {
      {"copy a file", "file", "copy", [&] { return copy(at("file"), at("copy")); },
       [&] { expect_part("copy"); }},
      {"copy a tree", "chain", "copy", [&] { return copy(at("chain"), at("copy")); },
       [&] { expect_part("copy/sub/file"); }},
      {"remove a tree", "chain", "none", [&] { return remove(at("chain"), JX_REMOVE_CONTENTS); },
       [&] { expect_part("chain/sub/file"); }},
      {"rename", "file", "other", [&] { return rename(at("file"), at("other")); },
       [&] {
         EXPECT_NE(exists("file"), exists("other"));
         EXPECT_EQ(content(exists("file") ? "file" : "other"), "content");
       }},
      {"make", "empty", "new", [&] { return make(at("new")); }, [] {}},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    const auto body = [&] { _exit(row.run() == JX_OK ? 0 : 1); };
    kill_everywhere([&] { restore(); }, body,
                    [&](bool) {
                      row.check();
                      if (exists(row.output)) {
                        EXPECT_EQ(remove(at(row.output), JX_REMOVE_CONTENTS), JX_OK);
                      }
                      if (exists(row.input)) {
                        EXPECT_EQ(row.run(), JX_OK);
                      }
                    });
  }
}

// The program: a target keeps its old content or has the new one.
class CrashOfTheProgram : public Crash, public testing::WithParamInterface<const char *> {};

INSTANTIATE_TEST_SUITE_P(Commands, CrashOfTheProgram,
                         testing::Values("convert in out --to utf-16le",
                                         "convert in fresh --to utf-16le", "cp in fresh",
                                         "convert --in-place --eol crlf out", "write out",
                                         "write --append out"));

TEST_P(CrashOfTheProgram, TargetsAreOldOrNew) {
  const std::string command = GetParam();
  setenv("ASAN_OPTIONS", "detect_leaks=0",
         1);  // the leak sanitizer cannot run in a child that is followed
  const std::string target = command.find("out") != command.npos ? "out" : "fresh";
  const auto run_program = [&] {
    std::istringstream text(JX_BINARY_DIR "/jxfile " + command);
    std::vector<std::string> words(std::istream_iterator<std::string>(text), {});
    std::vector<char *> arguments;
    for (std::string &word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    dup2(open64("in", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(open64("err", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), STDERR_FILENO);
    execv(arguments[0], arguments.data());
    _exit(126);
  };
  const auto prepare = [&] {
    for (const auto &entry : fs::directory_iterator(dir.path())) fs::remove_all(entry);
    std::string input;
    for (int i = 0; i < 3000; ++i) input += std::to_string(i) + "\n";
    write_file(dir.file("in"), input);
    if (target == "out") write_file(dir.file("out"), "old\n");
  };
  const auto run_whole = [&] {
    const pid_t child = fork();
    if (child == 0) run_program();
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << content("err");
    return content(target);
  };
  prepare();
  const std::string old = content(target);
  const std::string whole = run_whole();
  ASSERT_NE(whole, old);
  const bool appends = command.find("--append") != command.npos;
  std::string last;
  kill_everywhere(prepare, run_program, [&](bool is_killed) {
    const std::string found = content(target);
    EXPECT_TRUE(found == old || found == whole || (appends && whole.starts_with(found)))
        << found.size() << " bytes";
    EXPECT_TRUE(is_killed || found == whole);
    std::string names;
    for (const auto &entry : fs::directory_iterator(dir.path())) {
      const std::string name = entry.path().filename();
      const bool is_hidden = name.starts_with(".jxfile-") && name.size() == 8 + 32 &&
                             name.find_first_not_of("0123456789abcdef", 8) == name.npos;
      EXPECT_TRUE(is_hidden || name == "in" || name == "err" || name == target) << name;
      names += is_hidden ? "hidden " : name + " ";
    }
    // The next run, once for each state that a kill leaves.
    if (std::exchange(last, names + found) == last) return;
    if (appends || target == "out") {
      EXPECT_EQ(run_whole(), appends ? found + whole.substr(old.size()) : whole);
    } else if (found == "(none)") {
      EXPECT_EQ(run_whole(), whole);
    }
  });
}

}  // namespace
}  // namespace jx::test
