// jxlMessageTo* and jxlStatusTo*: forward variable arguments, as a list, to the journal's slots.
#include "jx/runtime.h"

extern "C" {

JXStatus jxlMessageToBuf(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3, uintptr_t w4,
                         uintptr_t w5, ...) {
  va_list args;
  va_start(args, w5);
  const JXStatus status = journal->message_to_buffer(journal, w1, w2, w3, w4, w5, args);
  va_end(args);
  return status;
}

JXStatus jxlMessageToJnl(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3, ...) {
  va_list args;
  va_start(args, w3);
  const JXStatus status = journal->message_to_journal(journal, w1, w2, w3, args);
  va_end(args);
  return status;
}

JXStatus jxlStatusToBuf(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3, uintptr_t w4,
                        ...) {
  va_list args;
  va_start(args, w4);
  const JXStatus status = journal->status_to_buffer(journal, w1, w2, w3, w4, args);
  va_end(args);
  return status;
}

JXStatus jxlStatusToJnl(JXJournal *journal, uintptr_t level, uintptr_t status_word, ...) {
  va_list args;
  va_start(args, status_word);
  const JXStatus status = journal->status_to_journal(journal, level, status_word, args);
  va_end(args);
  return status;
}

}  // extern "C"
