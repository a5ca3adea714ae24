// Runs the built jxfile as a child process in a folder of the test's own.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <regex.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support/files.hpp"

namespace jx::test {

struct Outcome {
  int code = -1;  // exit code; 128 + the signal that ended the program; 126 not executable
  std::string out;
  std::string err;
};

// Empty when there is no such file.
inline std::string read_all(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A command line and its outcome.
struct Row {
  int code;
  const char *arguments;
  const char *out = "";  // the whole output; after "~" a pattern to find in it
  const char *err = "";  // a part of the messages; "" for none at all
  std::string_view input = {};
};

inline bool matches(const std::string &text, const char *expected) {
  if (expected[0] != '~') return text == expected;
  regex_t pattern;
  if (::regcomp(&pattern, expected + 1, REG_EXTENDED | REG_NOSUB) != 0) return false;
  const bool is_found = ::regexec(&pattern, text.c_str(), 0, nullptr, 0) == 0;
  ::regfree(&pattern);
  return is_found;
}

// A folder of the test's own and the programs run in it. Output goes through files, so that nothing
// can block.
class ProgramTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(::chmod(dir_.path().c_str(), 0777), 0); }

  std::string at(const std::string &name) const { return dir_.file(name); }
  void put(const std::string &name, std::string_view bytes) const {
    jx::test::write_file(at(name), bytes);
  }
  std::string get(const std::string &name) const { return read_all(at(name)); }
  // Names in the folder, in order, with a blank after each.
  std::string names() const {
    std::set<std::string> found;
    for (const auto &entry : std::filesystem::directory_iterator(dir_.path())) {
      found.insert(entry.path().filename().string() + " ");
    }
    return std::accumulate(found.begin(), found.end(), std::string());
  }

  static void expect_failure(const Outcome &outcome, const std::string &message) {
    EXPECT_EQ(outcome.code, 1) << outcome.err;
    EXPECT_NE(outcome.err.find(message), outcome.err.npos) << outcome.err;
  }
  // Changes the working directory of later runs to a folder in the test's folder.
  void enter(const std::string &folder) { folder_ = folder; }

  // Runs jxfile with arguments as typed to a shell. as_nobody: without the superuser's rights.
  // stdout_path: where its standard output goes.
  Outcome jxfile(const std::string &arguments, std::string_view input = {}, bool as_nobody = false,
                 const char *stdout_path = nullptr) const {
    const std::string command = "exec '" JX_BINARY_DIR "/jxfile' " + arguments;
    return run({"/bin/sh", "-c", command}, input, as_nobody, stdout_path);
  }

  // Runs each row and compares.
  void check(const std::vector<Row> &rows, bool as_nobody = false) const {
    for (const Row &row : rows) {
      const Outcome outcome = jxfile(row.arguments, row.input, as_nobody);
      EXPECT_EQ(outcome.code, row.code) << row.arguments << "\n" << outcome.err;
      EXPECT_TRUE(matches(outcome.out, row.out)) << row.arguments << "\n" << outcome.out;
      const bool is_expected =
          *row.err ? outcome.err.find(row.err) != outcome.err.npos : outcome.err.empty();
      EXPECT_TRUE(is_expected) << row.arguments << "\n" << outcome.err;
    }
  }

  Outcome run(const std::vector<std::string> &arguments, std::string_view input = {},
              bool as_nobody = false, const char *stdout_path = nullptr) const {
    const std::string io = dir_.path() + ".io";
    std::array<int, 2> feed;
    EXPECT_EQ(::pipe2(feed.data(), O_CLOEXEC), 0);
    const pid_t child = ::fork();
    if (child == 0) execute(arguments, feed[0], io, as_nobody, stdout_path);
    ::close(feed[0]);
    std::signal(SIGPIPE, SIG_IGN);
    for (size_t sent = 0; sent < input.size();) {
      const ssize_t count = ::write(feed[1], input.data() + sent, input.size() - sent);
      if (count <= 0) break;
      sent += static_cast<size_t>(count);
    }
    ::close(feed[1]);
    int status = 0;
    ::waitpid(child, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    Outcome outcome{code, read_all(io + "_out"), read_all(io + "_err")};
    for (const char *end : {"_out", "_err"}) ::unlink((io + end).c_str());
    return outcome;
  }

 private:
  [[noreturn]] void execute(const std::vector<std::string> &arguments, int input_fd,
                            const std::string &io, bool as_nobody, const char *stdout_path) const {
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    std::signal(SIGPIPE, SIG_DFL);
    ::dup2(input_fd, STDIN_FILENO);
    ::dup2(::open(stdout_path ? stdout_path : (io + "_out").c_str(), flags, 0600), STDOUT_FILENO);
    ::dup2(::open((io + "_err").c_str(), flags, 0600), STDERR_FILENO);
    constexpr uid_t kNobody = 65534;
    const bool is_ready =
        ::chdir(at(folder_).c_str()) == 0 && (!as_nobody || ::setuid(kNobody) == 0);
    std::vector<char *> words;
    for (const std::string &word : arguments) words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    if (is_ready) ::execv(words[0], words.data());
    ::_exit(126);
  }

  jx::test::TempDir dir_;
  std::string folder_;
};

}  // namespace jx::test
