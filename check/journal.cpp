// The journal: texts that end at a zero, room that is kept to.
#include <stdarg.h>
#include <string.h>

#include "check/probe.hpp"

namespace jxcheck {

namespace {

constexpr uint32_t kRoomChars = 256;
constexpr uintptr_t kMessage = 12;

JXStatus status_to_journal(JXJournal *journal, uintptr_t level, uintptr_t status, ...) {
  va_list args;
  va_start(args, status);
  const JXStatus answer = journal->status_to_journal(journal, level, status, args);
  va_end(args);
  return answer;
}

JXStatus status_to_buffer(JXJournal *journal, const Room &room, uint32_t *length, ...) {
  va_list args;
  va_start(args, length);
  const JXStatus answer = journal->status_to_buffer(
      journal, reinterpret_cast<uintptr_t>(room.data), room.bytes / sizeof(JXChar),
      reinterpret_cast<uintptr_t>(length), JXWEM_E_SYSTEM, args);
  va_end(args);
  return answer;
}

JXStatus message_to_journal(JXJournal *journal, uintptr_t level, uintptr_t text_count, ...) {
  va_list args;
  va_start(args, text_count);
  const JXStatus answer = journal->message_to_journal(journal, level, kMessage, text_count, args);
  va_end(args);
  return answer;
}

JXStatus message_to_buffer(JXJournal *journal, const Room &room, uint32_t *length,
                           uintptr_t text_count, ...) {
  va_list args;
  va_start(args, text_count);
  const JXStatus answer = journal->message_to_buffer(
      journal, reinterpret_cast<uintptr_t>(room.data), room.bytes / sizeof(JXChar),
      reinterpret_cast<uintptr_t>(length), kMessage, text_count, args);
  va_end(args);
  return answer;
}

// A text of JXChars whose terminating zero is the last that can be read.
const JXChar *terminated(const Probe &probe, const char *ascii) {
  JXChar text[32] = {};
  uint32_t count = 0;
  for (; ascii[count]; ++count) text[count] = static_cast<unsigned char>(ascii[count]);
  return reinterpret_cast<const JXChar *>(probe.text(text, (count + 1) * sizeof(JXChar)));
}

void check_levels(Probe &probe) {
  const JXChar *text = terminated(probe, "jxcheck: a test line");
  for (uintptr_t level = JX_JOURNAL_TRACE; level <= JX_JOURNAL_FATAL; ++level) {
    const JXStatus status = status_to_journal(probe.journal, level, JXWEM_E_SYSTEM, text);
    if (status != JX_OK) return probe.found("status 0x%x at level %u", status, unsigned(level));
  }
}

void check_no_text(Probe &probe) {
  const JXChar *none = nullptr;
  probe.expect_status("level 4, no text",
                      status_to_journal(probe.journal, JX_JOURNAL_ERROR, JXWEM_E_SYSTEM, none),
                      JX_OK);
}

void check_message(Probe &probe) {
  const JXChar *text = terminated(probe, "jxcheck");
  probe.expect_status("two texts",
                      message_to_journal(probe.journal, JX_JOURNAL_NOTE, 2, text, text), JX_OK);
  probe.expect_status("no texts", message_to_journal(probe.journal, JX_JOURNAL_NOTE, 0), JX_OK);
}

// Tells whether the room ends in the text.
bool ends_in(const Room &room, uint32_t chars, const JXChar *text) {
  uint32_t count = 0;
  while (text[count] != 0) ++count;
  return count <= chars &&
         ::memcmp(room.data + (chars - count) * sizeof(JXChar), text, count * sizeof(JXChar)) == 0;
}

// Reports a length or bytes beyond the room.
void expect_kept(Probe &probe, const Room &room, uint32_t chars) {
  if (room.spilled_bytes() != 0) probe.found("%u bytes beyond the room", room.spilled_bytes());
  if (chars > room.bytes / sizeof(JXChar)) probe.found("a length of %u", chars);
}

void check_status_buffer(Probe &probe) {
  const JXChar *text = terminated(probe, "jxcheck");
  const Room room = probe.room(kRoomChars * sizeof(JXChar));
  uint32_t chars = 0;
  const JXStatus status = status_to_buffer(probe.journal, room, &chars, text);
  expect_kept(probe, room, chars);
  if (!probe.expect_status("room of 256", status, JX_OK) || !probe.is_clean()) return;
  if (!ends_in(room, chars, text)) return probe.found("%u JXChars without the text", chars);
  probe.expect_status("no place for the length",
                      status_to_buffer(probe.journal, room, nullptr, text), JX_OK);
}

void check_message_buffer(Probe &probe) {
  const JXChar *text = terminated(probe, "second");
  const JXChar first[] = {'f', 'i', 'r', 's', 't', 0};
  const Room room = probe.room(kRoomChars * sizeof(JXChar));
  uint32_t chars = 0;
  const JXStatus status = message_to_buffer(probe.journal, room, &chars, 2, first, text);
  expect_kept(probe, room, chars);
  if (!probe.expect_status("room of 256", status, JX_OK) || !probe.is_clean()) return;
  if (!ends_in(room, chars, text)) probe.found("%u JXChars without the texts", chars);
}

void check_little_room(Probe &probe) {
  const JXChar *text = terminated(probe, "jxcheck");
  for (const uint32_t room_chars : {0u, 1u, 5u}) {
    const Room room = probe.room(room_chars * sizeof(JXChar));
    uint32_t chars = 0;
    const JXStatus status = status_to_buffer(probe.journal, room, &chars, text);
    expect_kept(probe, room, chars);
    if (!probe.expect_status("room for a part", status, JX_E_TRUNCATED)) return;
  }
}

constexpr Check kChecks[] = {
    {Slot::status_to_journal, "a status and a text at levels 1 to 5", "status 0", guide::kJournal,
     slots(Slot::status_to_journal), check_levels},
    {Slot::status_to_journal, "a status without a text", "status 0", guide::kJournal,
     slots(Slot::status_to_journal), check_no_text},
    {Slot::message_to_journal, "a message", "status 0", guide::kJournal,
     slots(Slot::message_to_journal), check_message},
    {Slot::status_to_buffer, "a status and a text", "status 0, the length, the text at the end",
     guide::kJournal, slots(Slot::status_to_buffer), check_status_buffer},
    {Slot::status_to_buffer, "more than the buffer has room for",
     "JX_E_TRUNCATED, and nothing beyond the room", guide::kJournal, slots(Slot::status_to_buffer),
     check_little_room},
    {Slot::message_to_buffer, "a message and two texts", "status 0, the length, the texts",
     guide::kJournal, slots(Slot::message_to_buffer), check_message_buffer},
};

}  // namespace

std::span<const Check> journal_checks() { return kChecks; }

}  // namespace jxcheck
