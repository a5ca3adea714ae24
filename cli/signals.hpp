// What a signal may do to a command: ends it, after what is unfinished was removed.
#pragma once

#include <atomic>
#include <csignal>
#include <string>

namespace cli {

// Blocks every signal in the calling thread while it lives, and keeps a signal that ends the
// program waiting in the others before it cleans up: what is made and named for removal meanwhile
// is not missed. Once that signal came, no other thread gets here. Threads that are started
// meanwhile keep signals blocked: they then reach the main thread only, and a write to a closed
// pipe is an error in the thread instead of the end of the program.
class SignalsBlocked {
 public:
  SignalsBlocked();
  SignalsBlocked(const SignalsBlocked &) = delete;
  SignalsBlocked &operator=(const SignalsBlocked &) = delete;
  ~SignalsBlocked();

 private:
  ::sigset_t old_;
};

// Something that is left when a signal ends the program, and is cleaned up before it does, by that
// signal. Signals that were ignored when the program started stay ignored. Any number may live at
// once, on any thread; all but the main thread have signals blocked.
class SignalCleanup {
 public:
  SignalCleanup(const SignalCleanup &) = delete;
  SignalCleanup &operator=(const SignalCleanup &) = delete;

 protected:
  SignalCleanup() = default;
  ~SignalCleanup() = default;
  // From here on clean_up may be called; until delist, which the destructor of the whole calls
  // first.
  void enlist();
  void delist();

 private:
  // Runs in a signal handler: async-signal-safe calls only.
  virtual void clean_up() const = 0;
  static void clean_up_all(int signal);
  static void install();
  static SignalCleanup *first;
  static std::atomic_flag is_changing;  // first, and what it leads to

  SignalCleanup *next_ = nullptr;
};

// Names a file that is removed when a signal ends the program. The destructor removes nothing.
class RemoveOnSignal final : SignalCleanup {
 public:
  // Nothing is removed until a name is set.
  RemoveOnSignal() : RemoveOnSignal(-1, {}) {}
  // dirfd: the directory that holds the name; stays the caller's and open as long as the name is
  // set. own_fd: remove the name only while it is that file; -1: in any case.
  RemoveOnSignal(int dirfd, std::string name, int own_fd = -1);
  ~RemoveOnSignal() { delist(); }

  // Another name instead.
  void set(int dirfd, std::string name, int own_fd = -1);
  // Nothing is removed from now on.
  void release() { set(-1, {}); }

 private:
  void clean_up() const override;

  int dirfd_ = -1;
  int own_fd_ = -1;
  std::string name_;
};

// Opens what cannot be read or written in the place of each standard descriptor that is closed, so
// that no file of the program gets its number and what is meant for the descriptor.
void occupy_standard_descriptors();

}  // namespace cli
