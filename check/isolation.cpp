// A child process for each check: it inherits the host, and what goes wrong in it stays there.
#include "check/isolation.hpp"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" __attribute__((weak)) void __asan_init();

namespace jxcheck {

bool is_sanitized() { return __asan_init; }

namespace {

constexpr int kEnding[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGALRM, SIGTRAP};

// In the child: a fault ends it, without the program's handlers and without a core file.
void become_breakable(uint32_t seconds) {
  for (const int number : kEnding) ::signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  const struct rlimit no_core = {0, 0};
  ::setrlimit(RLIMIT_CORE, &no_core);
  ::alarm(seconds);
}

// Says how a child ended that did not finish its check.
void describe_end(Probe &probe, bool is_known, int end) {
  if (!is_known) return probe.found("the process ended");
  if (WIFEXITED(end)) return probe.found("the process ended with exit status %d", WEXITSTATUS(end));
  const int number = WTERMSIG(end);
  if (number == SIGALRM) return probe.found("no answer within %u seconds", probe.seconds);
  const char *name = ::sigabbrev_np(number);
  probe.found("the process was ended by signal %d (SIG%s)", number, name ? name : "?");
}

}  // namespace

bool run_isolated(void (*function)(Probe &), Probe &probe, Outcome *outcome) {
  outcome->is_done = false;
  outcome->outcome = JXCHECK_PASSED;
  outcome->came[0] = 0;
  if (!probe.is_alone) {
    function(probe);
    return true;
  }
  ::fflush(nullptr);  // else a child that calls exit prints it once more
  const pid_t child = ::fork();
  if (child < 0) return false;
  if (child == 0) {
    become_breakable(probe.seconds);
    function(probe);
    outcome->is_done = true;
    ::_exit(0);
  }
  int end = 0;
  pid_t ended;
  do {
    ended = ::waitpid(child, &end, 0);
  } while (ended < 0 && errno == EINTR);
  // A program that ignores SIGCHLD cannot be told how the child ended.
  if (!outcome->is_done) describe_end(probe, ended == child, end);
  return true;
}

}  // namespace jxcheck
