// Faults in the life of a file: every host call and every system call fails in turn, in every
// format; and partial transfers.
#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <set>

#include "support/instance.hpp"
#include "support/journal.hpp"
#include "support/open.hpp"
#include "support/sweep.hpp"
#include "support/text_model.hpp"

namespace jx::test {
namespace {

// One way to read and write a file.
struct Way {
  const char *name;
  uint32_t format, buffered, flags, file_encoding, record_encoding;
  friend void PrintTo(const Way &way, std::ostream *out) { *out << way.name; }
};

// Most names are literal: expansion has sweeps of its own.
constexpr uint32_t kLiteral = JX_OPEN_LITERAL_NAME;
constexpr Way kWays[] = {
    {"text_buffered", 0, 1, 0, 0, 0},
    {"text_buffered_utf8", 0, 1, kLiteral, 20, 27},
    {"text_buffered_no_transcoder", 3, 1, kLiteral, 27, 27},
    {"text_direct_utf16", 0, 0, kLiteral, 25, 27},
    {"text_direct_no_transcoder", 0, 0, kLiteral, 27, 27},
    {"binary_buffered", 1, 1, kLiteral, 0, 0},
    {"binary_direct", 1, 0, kLiteral, 0, 0},
    {"binary_direct_transfer", 1, 1, kLiteral | JX_OPEN_DIRECT_TRANSFER, 0, 0},
    {"stream_buffered", 4, 1, kLiteral, 20, 27},
    {"stream_direct", 4, 0, kLiteral, 24, 27},
    {"stream_direct_transfer", 4, 1, kLiteral | JX_OPEN_DIRECT_TRANSFER, 20, 27},
};

constexpr uint32_t kRecords = 3;
constexpr uint32_t kRecordChars = 4000;  // three fill more than a block of the buffer

// A file's life in one of the ways. Keeps the first failure and goes on only as far as a careful
// caller would; every file is closed.
class Life {
 public:
  Life(JXInstance *instance, const Way &way, std::string path, bool tries_again)
      : instance_(instance), way_(way), path_(std::move(path)), tries_again_(tries_again) {}

  JXStatus run(bool with_update = true) {
    std::string whole;
    for (uint32_t i = 0; i < kRecords; ++i) whole += record(i);
    write();
    if (first_ == JX_OK) {
      const std::string content = read();
      EXPECT_TRUE(first_ != JX_OK || content == whole) << content.size() << " bytes";
    }
    if (first_ == JX_OK && with_update) update();
    return first_;
  }

 private:
  std::string record(uint32_t index) const {
    const bool has_chars = way_.record_encoding == 27 || way_.format == 0;
    return encode(has_chars ? 27 : 62, std::u32string(kRecordChars, U'a' + index));
  }

  JXOpenOptions options(uint32_t access_mode) {
    JXOpenOptions options = open_options(access_mode, way_.buffered, way_.format);
    options.record_length = 5 * kRecordChars;  // room for a byte-order mark beside a record
    options.open_flags = way_.flags;
    options.file_encoding = way_.file_encoding;
    options.record_encoding = way_.record_encoding;
    options.journal = journal_.journal();
    return options;
  }

  // True while nothing failed.
  bool keep(JXStatus status) {
    if (first_ == JX_OK) first_ = status;
    return first_ == JX_OK;
  }

  // The next record; empty at the end of the file.
  std::string get(JXFile *file) {
    const bool transfers = (way_.flags & JX_OPEN_DIRECT_TRANSFER) != 0;
    const auto wanted = static_cast<uint32_t>(transfers ? buffer_.size() : kRecordChars);
    Record next = read_record(file, wanted, nullptr, buffer_.data());
    if (next.status == JXWEM_E_SYSTEM && tries_again_) {
      next = read_record(file, wanted, nullptr, buffer_.data());
    }
    return next.status != JXWEM_E_EOF && keep(next.status) ? next.data : "";
  }

  void write() {
    File file(instance_, path_, options(JX_ACCESS_OUTPUT));
    if (!keep(file.status)) return;
    keep(file->attach_journal(file, journal_.journal()));
    for (uint32_t i = 0; i < kRecords && first_ == JX_OK; ++i) keep(write_record(file, record(i)));
    if (first_ == JX_OK) keep(file->flush(file));
    keep(file.close());
  }

  std::string read() {
    File file(instance_, path_, options(JX_ACCESS_INPUT));
    std::string whole;
    if (!keep(file.status)) return whole;
    for (std::string next = get(file); !next.empty(); next = get(file)) whole += next;
    keep(file.close());
    return first_ == JX_OK ? whole : "";
  }

  void update() {
    File file(instance_, path_, options(JX_ACCESS_UPDATE));
    if (!keep(file.status)) return;
    int64_t offset = 0;
    if (keep(file->point(file, &offset, JX_POINT_START)) && !get(file).empty() &&
        keep(write_record(file, record(1))) && keep(file->note(file, &offset))) {
      keep(file->truncate(file, &offset));
    }
    keep(file.close());
  }

  JXInstance *instance_;
  const Way &way_;
  std::string path_;
  bool tries_again_;  // a read that failed
  std::string buffer_ = std::string(16 * kRecordChars, '\0');
  RecordingJournal journal_;
  JXStatus first_ = JX_OK;
};

using Answers = std::map<std::string, std::set<JXStatus>>;

class Fault : public InstanceTest, public testing::WithParamInterface<Way> {
 protected:
  JXStatus live_once(bool with_update = true, bool tries_again = false) {
    return Life(instance, GetParam(), dir.file("file"), tries_again).run(with_update);
  }

  // Checks each run's status against the answers that its failed call may have.
  static void check(const std::vector<SweepRun> &runs, const Answers &answers) {
    EXPECT_FALSE(runs.empty());
    for (const SweepRun &run : runs) {
      const auto allowed = answers.find(run.failed);
      EXPECT_TRUE(allowed != answers.end() && allowed->second.contains(run.status))
          << run.failed << " failing as call " << run.n << ": " << std::hex << run.status;
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Ways, Fault, testing::ValuesIn(kWays),
                         [](const auto &way) { return std::string(way.param.name); });

TEST_P(Fault, HostCalls) {
  Answers answers = {
      {"create_pool", {JX_E_NOMEM}},
      {"pool_allocate", {JX_E_NOMEM}},
      {"create_lock", {JXWEM_E_FAILED}},
      {"create_transcoder", {JXWEM_E_FAILED}},
      {"measure_conversion", {kFaultStatus}},
      {"encoding_info", {kFaultStatus}},
      {"transcode", {kFaultStatus}},
      // While the control strings are made it is a failure; at close it is ignored.
      {"destroy_transcoder", {kFaultStatus, JX_OK}},
      {"lock_acquire", {kFaultStatus}},
      {"lock_release", {kFaultStatus}},
      {"open_file", {JXWEM_E_SYSTEM}},
      {"close_file", {JX_OK}},
  };
  if (!(GetParam().flags & kLiteral)) answers["transcode"].insert(JXWEM_E_FAILED);
  check(sweep(host, kAllFailing, [this] { return live_once(); }), answers);
}

TEST_P(Fault, SystemCalls) {
  Answers answers = {{"read", {JXWEM_E_SYSTEM}},
                     {"write", {JXWEM_E_SYSTEM}},
                     {"fsync", {JXWEM_E_SYSTEM}},
                     {"lseek64", {JXWEM_E_FAILED}},
                     {"ftruncate64", {JXWEM_E_SYSTEM}}};
  // When the read that replaces a byte-order mark's bytes fails, the chunk before it is delivered
  // and the next call reads them again.
  if (GetParam().format == JX_FORMAT_STREAM) answers["read"].insert(JX_OK);
  check(sweep_syscalls(host, kAllSyscalls, EIO, [this] { return live_once(); }), answers);
  check(sweep_syscalls(host, syscalls(Syscall::write, Syscall::sync), ENOSPC,
                       [this] { return live_once(); }),
        {{"write", {JXWEM_E_DISKFULL}}, {"fsync", {JXWEM_E_DISKFULL}}});
}

// A failed read loses nothing: repeated, it gives the record.
TEST_P(Fault, ReadsCanBeTriedAgain) {
  const auto runs =
      sweep_syscalls(host, syscalls(Syscall::read), EIO, [this] { return live_once(true, true); });
  check(runs, {{"read", {JX_OK}}});
}

// Partial transfers change only the number of calls.
TEST_P(Fault, ShortTransfers) {
  const bool is_buffered =
      GetParam().buffered != 0 && !(GetParam().flags & JX_OPEN_DIRECT_TRANSFER);
  for (const uint32_t most_bytes : {1u, 5u, 4096u}) {
    // A direct read is one transfer, of the length that the system gives.
    const Syscalls reads = is_buffered ? syscalls(Syscall::read) : 0;
    arm_syscalls(reads | syscalls(Syscall::write), {.most_bytes = most_bytes, .to_the_end = true});
    EXPECT_EQ(live_once(!is_buffered), JX_OK) << most_bytes;
    EXPECT_TRUE(disarm_syscalls());
  }
}

using FlushFault = InstanceTest;

// Statuses of a failed flush by errno, and whether the journal gets a line.
TEST_F(FlushFault, ByNumber) {
  struct Row {
    int error;
    JXStatus status;
    size_t journal_lines;
  };
  for (const Row &row : {Row{EBADF, JXWEM_E_NOHANDLE, 0}, Row{EIO, JXWEM_E_SYSTEM, 0},
                         Row{ENOSPC, JXWEM_E_DISKFULL, 0}, Row{EROFS, JXWEM_E_FAILED, 1}}) {
    RecordingJournal journal;
    JXOpenOptions options = open_options(JX_ACCESS_OUTPUT, 0);
    options.journal = journal.journal();
    File file(instance, dir.file("file"), options);
    ASSERT_TRUE(file);
    arm_syscalls(syscalls(Syscall::sync), {.error = row.error});
    EXPECT_EQ(file->flush(file), row.status) << row.error;
    EXPECT_EQ(journal.take_lines().size(), row.journal_lines) << row.error;
    // The flush of a close fails: the file is closed anyway.
    arm_syscalls(syscalls(Syscall::sync), {.error = row.error});
    EXPECT_EQ(file.close(), row.status) << row.error;
    EXPECT_TRUE(disarm_syscalls());
  }
}

}  // namespace
}  // namespace jx::test
