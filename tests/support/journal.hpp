// A journal that records its calls.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "jx/host.h"
#include "support/text.hpp"

namespace jx::test {

// One call of a journal: the operation's name, its fixed arguments and the text.
struct JournalLine {
  std::string operation;
  std::vector<uintptr_t> words;
  std::string text;
};

// Thread-safe. Has status_to_journal only: the module calls no other slot by itself.
class RecordingJournal : private JXJournal {
 public:
  RecordingJournal() : JXJournal{} { status_to_journal = keep; }
  RecordingJournal(const RecordingJournal &) = delete;
  RecordingJournal &operator=(const RecordingJournal &) = delete;

  JXJournal *journal() { return this; }
  // Takes the lines so far.
  std::vector<JournalLine> take_lines() {
    const std::lock_guard guard(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  static JXStatus keep(JXJournal *journal, uintptr_t level, uintptr_t status, va_list args) {
    auto &self = static_cast<RecordingJournal &>(*journal);
    const std::lock_guard guard(self.mutex_);
    const std::string text = narrow(JXString(va_arg(args, const JXChar *)));
    self.lines_.push_back({"status_to_journal", {level, status}, text});
    return JX_OK;
  }

  std::mutex mutex_;
  std::vector<JournalLine> lines_;
};

}  // namespace jx::test
