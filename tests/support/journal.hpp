// A journal that keeps what it is told.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "jx/host.h"

namespace jx::test {

// One call of a journal: the operation's name, its fixed words and, for status_to_journal, the
// text that came with it.
struct JournalLine {
  std::string operation;
  std::vector<uintptr_t> words;
  std::string text;
};

// Thread-safe. Every operation answers with `answer`.
class RecordingJournal {
 public:
  RecordingJournal();
  RecordingJournal(const RecordingJournal &) = delete;
  RecordingJournal &operator=(const RecordingJournal &) = delete;

  JXJournal *journal() { return &shell_.operations; }
  // The lines so far, now forgotten.
  std::vector<JournalLine> take_lines();

  JXStatus answer = JX_OK;

 private:
  friend struct JournalCalls;
  struct Shell {
    JXJournal operations;  // first: its address is the shell's
    RecordingJournal *owner;
  };

  Shell shell_;
  std::mutex mutex_;
  std::vector<JournalLine> lines_;
};

}  // namespace jx::test
