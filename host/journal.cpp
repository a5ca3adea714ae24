// The journal: each line is one write to a descriptor or one call of the embedding program.
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <iterator>

#include "host/host.hpp"
#include "host/line.hpp"

namespace jxhost {

namespace {

// Keeps a line in UTF-8 below 4096 bytes, the size of an atomic write to a pipe.
constexpr uint32_t kLineChars = 1020;
constexpr size_t kLineBytes = kLineChars * 4 + 2;

constexpr uint32_t kTextCountMax = 16;  // a wrong count must not read past the arguments

constexpr const char *kLevels[] = {"level 0", "trace", "note", "warning", "error", "fatal"};

void add_level(Line &line, uint32_t level) {
  if (level < std::size(kLevels)) {
    line.add(kLevels[level]);
  } else {
    line.add("level ");
    line.add_number(level, 10, 1);
  }
  line.add(": ");
}

JXStatus write_all(int fd, const char *text, size_t bytes) {
  while (bytes > 0) {
    const ssize_t written = ::write(fd, text, bytes);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return JXHOST_E_OUTPUT;
    text += written;
    bytes -= static_cast<size_t>(written);
  }
  return JX_OK;
}

// A line on its way to the sink or the descriptor. For a descriptor the line begins with the level.
class Output {
 public:
  Output(Journal *journal, uint32_t level) : journal_(journal), level_(level) {
    if (!journal->sink) add_level(line, level);
  }

  JXStatus write(JXStatus status) {
    line.mark_cut();
    char text[kLineBytes];
    size_t bytes = encode_utf8(chars_, line.chars(), text);
    const std::lock_guard guard(journal_->mutex);
    if (journal_->sink) {
      text[bytes] = 0;
      journal_->sink(journal_->context, level_, status, text);
      return JX_OK;
    }
    text[bytes++] = '\n';
    return write_all(journal_->fd, text, bytes);
  }

 private:
  JXChar chars_[kLineChars];
  Journal *journal_;
  uint32_t level_;

 public:
  Line line{chars_, kLineChars};  // the text so far
};

// A line in the caller's buffer.
struct Buffer {
  Buffer(uintptr_t buffer, uintptr_t capacity_chars, uintptr_t chars_out)
      : line(std::bit_cast<JXChar *>(buffer), static_cast<uint32_t>(capacity_chars)),
        length_out(std::bit_cast<uint32_t *>(chars_out)),
        is_valid(buffer != 0 || capacity_chars == 0) {}

  JXStatus finish() {
    if (length_out) *length_out = line.chars();
    return line.is_cut() ? JX_E_TRUNCATED : JX_OK;
  }

  Line line;
  uint32_t *length_out;
  bool is_valid;
};

bool is_silent(const Journal *journal) { return !journal->sink && journal->fd < 0; }

JXStatus message_to_buffer(JXJournal *, uintptr_t buffer_word, uintptr_t capacity_chars,
                           uintptr_t length_out, uintptr_t message, uintptr_t text_count,
                           va_list args) {
  Buffer buffer(buffer_word, capacity_chars, length_out);
  if (!buffer.is_valid || text_count > kTextCountMax) return JX_E_BADARG;
  compose_message(buffer.line, static_cast<uint32_t>(message), static_cast<uint32_t>(text_count),
                  args);
  return buffer.finish();
}

JXStatus message_to_journal(JXJournal *journal, uintptr_t level, uintptr_t message,
                            uintptr_t text_count, va_list args) {
  auto *self = static_cast<Journal *>(journal);
  if (!self || text_count > kTextCountMax) return JX_E_BADARG;
  if (is_silent(self)) return JX_OK;
  Output output(self, static_cast<uint32_t>(level));
  compose_message(output.line, static_cast<uint32_t>(message), static_cast<uint32_t>(text_count),
                  args);
  return output.write(static_cast<JXStatus>(message));
}

JXStatus status_to_buffer(JXJournal *, uintptr_t buffer_word, uintptr_t capacity_chars,
                          uintptr_t length_out, uintptr_t status, va_list args) {
  Buffer buffer(buffer_word, capacity_chars, length_out);
  if (!buffer.is_valid) return JX_E_BADARG;
  compose_status(buffer.line, static_cast<JXStatus>(status), va_arg(args, const JXChar *));
  return buffer.finish();
}

JXStatus status_to_journal(JXJournal *journal, uintptr_t level, uintptr_t status_word,
                           va_list args) {
  auto *self = static_cast<Journal *>(journal);
  if (!self) return JX_E_BADARG;
  if (is_silent(self)) return JX_OK;
  const auto status = static_cast<JXStatus>(status_word);
  const JXChar *text = va_arg(args, const JXChar *);
  Output output(self, static_cast<uint32_t>(level));
  if (!self->sink) {
    compose_status(output.line, status, text);
  } else if (text && *text) {
    output.line.add(text);
  } else {
    // The sink gets level and status as arguments.
    const char *meaning = jxhost_status_text(status);
    output.line.add(meaning ? meaning : "");
  }
  return output.write(status);
}

// Calls the slot, which takes its texts as a va_list.
JXStatus call_status_to_journal(JXJournal *journal, uintptr_t level, uintptr_t status, ...) {
  va_list args;
  va_start(args, status);
  const JXStatus result = journal->status_to_journal(journal, level, status, args);
  va_end(args);
  return result;
}

}  // namespace

Journal::Journal()
    : JXJournal{.message_to_buffer = jxhost::message_to_buffer,
                .message_to_journal = jxhost::message_to_journal,
                .status_to_buffer = jxhost::status_to_buffer,
                .status_to_journal = jxhost::status_to_journal} {}

void report(JXJournal *journal, uint32_t level, JXStatus status, const char *text8) {
  if (!journal) return;
  JXChar text[256];
  const size_t chars = std::min(std::strlen(text8), std::size(text) - 1);
  std::transform(text8, text8 + chars, text,
                 [](char c) -> JXChar { return static_cast<unsigned char>(c); });
  text[chars] = 0;
  call_status_to_journal(journal, level, status, text);
}

}  // namespace jxhost
