// bkwemerror: writes the text of a system error to the journal.
#include <algorithm>
#include <cstring>

#include "jx/exports/posix.h"
#include "jx/runtime.h"
#include "kernel/text.hpp"

namespace {

constexpr uint32_t kTextChars = 1000;  // room for a message
constexpr uintptr_t kErrorLevel = 4;   // journal level of an error

}  // namespace

extern "C" JXStatus bkwemerror(JXInstance *instance, int system_error, JXJournal *journal) {
  if (!journal || !instance) return JX_OK;
  const char *message = std::strerror(system_error);
  if (!message) return JX_OK;
  const uint32_t bytes = skStrLen(message);
  // One character more than the decoder may fill, so that the journal finds an end.
  JXChar text[kTextChars + 1];
  const uint32_t capacity_chars = std::min(bytes, kTextChars);
  uint32_t produced_bytes = 0;
  JXTranscoder *decoder = instance->native_decoder;
  if (decoder->transcode(decoder, message, bytes, text, capacity_chars * jx::kJXCharBytes,
                         &produced_bytes, 0) != JX_OK) {
    return JX_OK;
  }
  text[std::min(produced_bytes / jx::kJXCharBytes, kTextChars)] = 0;
  jxlStatusToJnl(journal, kErrorLevel, JXWEM_E_SYSTEM, text);
  return JX_OK;
}
