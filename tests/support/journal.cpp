#include "support/journal.hpp"

#include <utility>

#include "support/text.hpp"

namespace jx::test {

struct JournalCalls {
  static JXStatus keep(JXJournal *journal, JournalLine line) {
    RecordingJournal &self = *reinterpret_cast<RecordingJournal::Shell *>(journal)->owner;
    const std::lock_guard guard(self.mutex_);
    self.lines_.push_back(std::move(line));
    return self.answer;
  }

  static JXStatus message_to_buffer(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                                    uintptr_t w4, uintptr_t w5, va_list) {
    return keep(journal, {"message_to_buffer", {w1, w2, w3, w4, w5}, ""});
  }

  static JXStatus message_to_journal(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                                     va_list) {
    return keep(journal, {"message_to_journal", {w1, w2, w3}, ""});
  }

  static JXStatus status_to_buffer(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                                   uintptr_t w4, va_list) {
    return keep(journal, {"status_to_buffer", {w1, w2, w3, w4}, ""});
  }

  static JXStatus status_to_journal(JXJournal *journal, uintptr_t level, uintptr_t status,
                                    va_list args) {
    const JXChar *text = va_arg(args, const JXChar *);
    return keep(journal, {"status_to_journal", {level, status}, narrow(JXString(text))});
  }
};

RecordingJournal::RecordingJournal()
    : shell_{{JournalCalls::message_to_buffer, JournalCalls::message_to_journal,
              JournalCalls::status_to_buffer, JournalCalls::status_to_journal},
             this} {}

std::vector<JournalLine> RecordingJournal::take_lines() {
  const std::lock_guard guard(mutex_);
  return std::exchange(lines_, {});
}

}  // namespace jx::test
