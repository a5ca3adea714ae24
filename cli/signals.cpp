// Removing what is unfinished from a signal handler.
#include "cli/signals.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <unistd.h>

#include <utility>

#include "cli/descriptor.hpp"

namespace cli {
namespace {

// Those that end a program by default and that it may outlive for a moment.
constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU};

constexpr int kLongestWait = 2000;  // milliseconds

// Threads with signals blocked that are about to change what is cleaned up, and whether a signal
// has come that waits for them.
constinit std::atomic<int> busy_count = 0;
constinit std::atomic<bool> is_ending = false;
constinit thread_local int depth = 0;  // of SignalsBlocked

void pause_a_moment() { ::poll(nullptr, 0, 1); }

void become_busy() {
  ++busy_count;
  if (!is_ending) return;
  --busy_count;
  for (;;) pause_a_moment();
}

}  // namespace

SignalsBlocked::SignalsBlocked() {
  if (depth++ > 0) return;
  ::sigset_t all;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &old_);
  become_busy();
}

SignalsBlocked::~SignalsBlocked() {
  if (--depth > 0) return;
  --busy_count;
  ::pthread_sigmask(SIG_SETMASK, &old_, nullptr);
}

constinit SignalCleanup *SignalCleanup::first = nullptr;
constinit std::atomic_flag SignalCleanup::is_changing;

void SignalCleanup::enlist() {
  const SignalsBlocked guard;
  while (is_changing.test_and_set()) ::sched_yield();
  install();
  next_ = std::exchange(first, this);
  is_changing.clear();
}

void SignalCleanup::delist() {
  const SignalsBlocked guard;
  while (is_changing.test_and_set()) ::sched_yield();
  SignalCleanup **link = &first;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
  is_changing.clear();
}

// Runs with every signal blocked, on data that changes under blocked signals only and that no other
// thread changes any more. SA_RESETHAND has put the default action back: the raised signal ends the
// program as soon as this returns.
void SignalCleanup::clean_up_all(int signal) {
  is_ending = true;
  // A thread that is kept for longer may itself wait for this one, such as for memory.
  for (int left = kLongestWait; left > 0 && busy_count > 0; --left) pause_a_moment();
  for (const SignalCleanup *item = first; item; item = item->next_) item->clean_up();
  std::raise(signal);
}

void SignalCleanup::install() {
  static bool is_installed = false;
  if (std::exchange(is_installed, true)) return;
  struct ::sigaction action = {};
  action.sa_handler = clean_up_all;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  ::sigfillset(&action.sa_mask);
  for (const int signal : kEndingSignals) {
    struct ::sigaction old = {};
    if (::sigaction(signal, nullptr, &old) != 0 || old.sa_handler != SIG_DFL) continue;
    ::sigaction(signal, &action, nullptr);
  }
}

RemoveOnSignal::RemoveOnSignal(int dirfd, std::string name, int own_fd)
    : dirfd_(dirfd), own_fd_(own_fd), name_(std::move(name)) {
  enlist();
}

void RemoveOnSignal::set(int dirfd, std::string name, int own_fd) {
  const SignalsBlocked guard;
  dirfd_ = dirfd;
  own_fd_ = own_fd;
  name_ = std::move(name);
}

void RemoveOnSignal::clean_up() const {
  if (name_.empty()) return;
  if (own_fd_ < 0) {
    ::unlinkat(dirfd_, name_.c_str(), 0);
  } else {
    unlink_own(dirfd_, name_.c_str(), own_fd_);
  }
}

void occupy_standard_descriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (::fcntl(fd, F_GETFD) >= 0) continue;
    // The lowest free number is this one.
    const int access = fd == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    static_cast<void>(::open("/dev/null", access | O_CLOEXEC));
  }
}

}  // namespace cli
