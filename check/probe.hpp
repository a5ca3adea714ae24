// A check, and what it works with: the host, memory with fences, the outcome.
#pragma once

#include <cstdint>
#include <span>

#include "check/slots.hpp"
#include "jx/jxcheck.h"

namespace jxcheck {

// Headings of the host guide.
namespace guide {
inline constexpr char kKernel[] = "What a kernel of your own must do";
inline constexpr char kConversions[] = "Conversions that the module needs";
inline constexpr char kMarks[] = "Byte-order marks";
inline constexpr char kThreads[] = "Threads";
inline constexpr char kSecurity[] = "Security";
inline constexpr char kElm[] = "Opening files: \"jxelm\"";
inline constexpr char kLockWords[] = "Lock words";
inline constexpr char kStatuses[] = "Statuses";
inline constexpr char kJournal[] = "The journal";
}  // namespace guide

class Probe;

// One check.
struct Check {
  Slot slot;             // the slot that it is about
  const char *asked;     // of the slot
  const char *promised;  // by the host
  const char *guide;     // heading under which the promise is
  Slots needs;           // slots without which it cannot run
  void (*run)(Probe &);  // reports through the probe; nothing reported: passed
};

// The outcome of the check that runs, in memory that a child process shares.
struct Outcome {
  bool is_done;      // the check returned
  uint32_t outcome;  // JXCHECK_*
  Slots present;     // slots seen so far that are not null
  char came[256];    // what came, or why the check was skipped
};

// Bytes that a host may write to, and a margin after them that it may not.
struct Room {
  uint8_t *data;
  uint32_t bytes;
  // How many bytes of the margin were written.
  uint32_t spilled_bytes() const;
  static constexpr uint32_t kMarginBytes = 64;
  static constexpr uint8_t kFill = 0xA5;  // of fresh room and the margin
};

// Memory of a run: an outcome, and areas of which each ends at a page that cannot be touched.
class Memory {
 public:
  Memory() = default;
  Memory(const Memory &) = delete;
  Memory &operator=(const Memory &) = delete;
  ~Memory();
  // False when the system has no memory.
  bool allocate();

  Outcome *outcome() const { return reinterpret_cast<Outcome *>(base_); }
  enum Area : uint32_t { kText, kName, kOutput, kAreaCount };
  // The end of an area; kAreaBytes before it are its own.
  uint8_t *end_of(Area area) const;
  static constexpr uint32_t kAreaBytes = 65536;

 private:
  uint8_t *base_ = nullptr;
};

// What a check sees.
class Probe {
 public:
  static constexpr uint32_t kDefaultSeconds = 10;

  Probe(JXHost *host_handle, const JXCheckConfig &config, const Memory &memory)
      : host(host_handle),
        nls(host_handle->nls),
        journal(config.journal),
        is_alone((config.flags & JXCHECK_SAME_PROCESS) == 0),
        seconds(config.seconds ? config.seconds : kDefaultSeconds),
        memory_(memory) {}

  JXHost *const host;
  JXNls *const nls;          // may be null
  JXJournal *const journal;  // may be null
  const bool is_alone;       // in a process of its own
  const uint32_t seconds;    // for a check; what threads only sometimes show is tried in proportion
  int folder_fd = -1;        // a folder for files, empty before each check, or -1

  // Reports what came instead of what is promised; the first report counts.
  __attribute__((format(printf, 2, 3))) void found(const char *format, ...);
  // Reports that the check cannot be run here.
  __attribute__((format(printf, 2, 3))) void skip(const char *format, ...);
  // Reports a status where another was due. True when it was the right one.
  bool expect_status(const char *what, JXStatus came, JXStatus due);
  // Reports success where a failure was due.
  bool expect_failure(const char *what, JXStatus came);
  bool is_clean() const { return memory_.outcome()->outcome == JXCHECK_PASSED; }
  void note_present(Slots present) { memory_.outcome()->present |= present; }

  // A copy whose end is the end of the memory, until the next text. At most kAreaBytes.
  const uint8_t *text(const void *bytes, uint32_t count) const;
  // The same for a name of ASCII, in JXChars without a terminator, until the next name.
  struct Name {
    const JXChar *chars;
    uint32_t count;
  };
  Name name(const char *ascii) const;
  // Fresh room, until the next. At most kAreaBytes less the margin.
  Room room(uint32_t bytes) const;

 private:
  void report(uint32_t outcome, const char *format, __builtin_va_list args);

  const Memory &memory_;
};

// The checks of each subject.
std::span<const Check> handle_checks();
std::span<const Check> pool_checks();
std::span<const Check> lock_checks();
std::span<const Check> table_checks();
std::span<const Check> service_checks();
std::span<const Check> transcoder_checks();
std::span<const Check> native_checks();
std::span<const Check> file_checks();
std::span<const Check> descriptor_checks();
std::span<const Check> lock_word_checks();
std::span<const Check> open_status_checks();
std::span<const Check> journal_checks();
std::span<const Check> thread_checks();

}  // namespace jxcheck
