// A journal that keeps what it is told.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "jx/host.h"
#include "support/text.hpp"

namespace jx::test {

// One call of a journal: the operation's name, its fixed words and the text that came with it.
struct JournalLine {
  std::string operation;
  std::vector<uintptr_t> words;
  std::string text;
};

// Thread-safe. Knows status_to_journal only; nothing else is called by the module on its own.
class RecordingJournal {
 public:
  RecordingJournal() : shell_{{}, this} { shell_.operations.status_to_journal = keep; }
  RecordingJournal(const RecordingJournal &) = delete;
  RecordingJournal &operator=(const RecordingJournal &) = delete;

  JXJournal *journal() { return &shell_.operations; }
  // The lines so far, now forgotten.
  std::vector<JournalLine> take_lines() {
    const std::lock_guard guard(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  struct Shell {
    JXJournal operations;  // first: its address is the shell's
    RecordingJournal *owner;
  };

  static JXStatus keep(JXJournal *journal, uintptr_t level, uintptr_t status, va_list args) {
    RecordingJournal &self = *reinterpret_cast<Shell *>(journal)->owner;
    const std::lock_guard guard(self.mutex_);
    const std::string text = narrow(JXString(va_arg(args, const JXChar *)));
    self.lines_.push_back({"status_to_journal", {level, status}, text});
    return JX_OK;
  }

  Shell shell_;
  std::mutex mutex_;
  std::vector<JournalLine> lines_;
};

}  // namespace jx::test
