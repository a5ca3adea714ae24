// Removal of unfinished files by a signal.
#include "cli/signals.hpp"

#include "cli/descriptor.hpp"
#include "cli/program.hpp"

namespace jx::test {
namespace {

class Signals : public ProgramTest {
 protected:
  // Runs a child that registers two files for removal, replaces the one it holds by descriptor, and
  // raises the signals. Returns the signal that ended it.
  int ended_by(std::initializer_list<int> signals) const {
    const pid_t child = ::fork();
    if (child == 0) {
      const int folder = ::open(at(".").c_str(), O_RDONLY | O_CLOEXEC);
      const cli::RemoveOnSignal first(folder, "first");
      cli::RemoveOnSignal second(folder, "gone");
      const cli::RemoveOnSignal kept(folder, "kept", ::open(at("kept").c_str(), O_RDONLY));
      std::filesystem::rename(at("other"), at("kept"));
      second.set(folder, "second", ::open(at("second").c_str(), O_RDONLY));
      for (const int signal : signals) std::raise(signal);
      ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }
};

TEST_F(Signals, RemoveWhatIsUnfinishedUnlessIgnored) {
  for (const bool is_ignored : {false, true}) {
    for (const char *name : {"first", "second", "kept", "other"}) put(name, "");
    std::signal(SIGHUP, is_ignored ? SIG_IGN : SIG_DFL);
    if (is_ignored) {
      EXPECT_EQ(ended_by({SIGHUP}), 0);
      EXPECT_EQ(names(), "first kept second ");
      put("other", "");
    }
    EXPECT_EQ(ended_by({SIGHUP, SIGTERM}), is_ignored ? SIGTERM : SIGHUP);
    EXPECT_EQ(names(), "kept ");
  }
  std::signal(SIGHUP, SIG_DFL);
}

}  // namespace
}  // namespace jx::test
