// The table of faults: what every operation answers when one of its calls fails, and what the
// journal gets. A call that no row lists fails the test, and so does a row that nothing meets.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <tuple>

#include "faults/operations.hpp"
#include "support/scale.hpp"
#include "support/sweep.hpp"

namespace jx::test {
namespace {

// ---- Answers by errno

constexpr JXStatus kSystem = JXWEM_E_SYSTEM;
constexpr JXStatus kFailed = JXWEM_E_FAILED;
constexpr JXStatus kMissing = JXWEM_E_NOTFOUND;
constexpr JXStatus kAccess = JXWEM_E_ACCESS;
constexpr JXStatus kNoPath = JXWEM_E_NOPATH;
constexpr JXStatus kTooLong = JXWEM_E_NAMETOOLONG;
constexpr JXStatus kInUse = JXWEM_E_INUSE;
constexpr JXStatus kFull = JXWEM_E_DISKFULL;

enum class Journal { stays_empty, gets_errno, gets_host_text };
using enum Journal;

// What one call of an operation leads to: the status by errno; every other errno gives `other` and,
// in the journal, the system's text for it or the host's.
struct Answers {
  std::map<JXStatus, std::set<int>> rows;
  JXStatus other = kSystem;
  Journal journal = gets_errno;
};

const Answers kGoesOn = {{}, JX_OK, stays_empty};
const Answers kOnlyReported = {{{JX_OK, {ENOENT, EACCES}}}, JX_OK};
const Answers kSilent = {{}, kSystem, stays_empty};
const Answers kSilentFailure = {{}, kFailed, stays_empty};
const Answers kNothingFound = {{}, kMissing, stays_empty};
const Answers kReported = {};
const Answers kReportedFailure = {{}, kFailed};

const Answers kStat = {{{kMissing, {ENOENT}}, {kAccess, {EACCES}}}};
const Answers kStatDirectory = {{{kNoPath, {ENOENT}}, {kAccess, {EACCES}}}};
const Answers kStatTarget = {{{JX_OK, {ENOENT}}, {kAccess, {EACCES}}}};
const Answers kStatMember = {{{kMissing, {ENOENT, EACCES}}}, kMissing};
const Answers kStatSpace = {
    {{kMissing, {ENOENT, ENOTDIR, ENOLINK}}, {kAccess, {EACCES}}, {kTooLong, {ENAMETOOLONG}}}};
const Answers kOpenDirectory = {
    {{kMissing, {ENOENT, ENOTDIR}}, {kAccess, {EACCES}}, {kTooLong, {ENAMETOOLONG}}}};
const Answers kRemove = {{{kAccess, {EPERM, EACCES, EROFS}},
                          {kMissing, {ENOENT, ENOTDIR}},
                          {kInUse, {ETXTBSY}},
                          {JXWEM_E_NOTEMPTY, {ENOTEMPTY}}}};
// A directory that is not empty is emptied.
const Answers kRemoveFull = {{{kAccess, {EPERM, EACCES, EROFS}},
                              {kMissing, {ENOENT, ENOTDIR}},
                              {kInUse, {ETXTBSY}},
                              {JX_OK, {ENOTEMPTY}}}};
const Answers kRename = {
    {{kAccess, {EPERM, EACCES, EROFS}}, {JX_E_NOMEM, {ENOMEM}}, {kFull, {ENOSPC}}}};
const Answers kMake = {{{kAccess, {EPERM, EACCES, EROFS}},
                        {kNoPath, {ENOENT, ENOTDIR}},
                        {JXWEM_E_EXISTS, {EEXIST}},
                        {kInUse, {ETXTBSY}},
                        {kFull, {ENOSPC}}}};
const Answers kCopyOpen = {{{kAccess, {EACCES, EROFS}}, {kNoPath, {ENOTDIR}}, {kInUse, {ETXTBSY}}},
                           kFailed};
const Answers kCopyRead = {{{JX_OK, {EINTR}}}, kFailed};
const Answers kCopyWrite = {{{JXWEM_E_NOTSUPPORTED, {ENXIO}}, {kFull, {ENOSPC}}}, kFailed};
const Answers kCopyClose = {{{JX_OK, {EINTR}}, {JXWEM_E_NOTSUPPORTED, {ENXIO}}, {kFull, {ENOSPC}}},
                            kFailed};
const Answers kWrite = {{{kFull, {EFBIG, ENOSPC, EDQUOT}}}, kSystem, stays_empty};
const Answers kFlush = {
    {{kSystem, {EIO}}, {JXWEM_E_NOHANDLE, {EBADF}}, {kFull, {ENOSPC}}}, kFailed, gets_errno};

// The host opens and closes files, and has a journal line for what the module calls a system error.
// A call that a signal interrupts is repeated, or has been done.
const Answers kHostStat = {{{JX_E_NOMEM, {ENOMEM}},
                            {kMissing, {ENOENT}},
                            {kAccess, {EPERM, EACCES, EROFS}},
                            {kNoPath, {ENOTDIR}},
                            {JXWEM_E_OPENREFUSED, {EISDIR}},
                            {kInUse, {EAGAIN, EBUSY, ETXTBSY, EDEADLK}}},
                           kSystem,
                           gets_host_text};
const Answers kHostOpen = [] {
  Answers answers = kHostStat;
  answers.rows[JX_OK] = {EINTR};
  return answers;
}();
const Answers kHostClose = [] {
  Answers answers = {{}, JX_OK, gets_host_text};
  for (const auto &[status, errors] : kHostOpen.rows)
    answers.rows[JX_OK].insert(errors.begin(), errors.end());
  return answers;
}();

// ---- The table

#define WRITES "write|append|update|update a stream|use offsets"
#define RECORDS WRITES "|read|read a stream directly|use offsets of a stream"
#define REMOVALS "remove a tree|remove a link in a tree"
#define LISTS "member list|directory list|list with attributes"

// The answers to a call of some operations (a list in bars): of its first calls in turn; the last
// is that of all later ones.
struct Row {
  const char *operations;
  Syscall call;
  std::vector<Answers> answers;
};

const Row kSystemCalls[] = {
    {"exist|information|member list", Syscall::stat64, {kStat}},
    {"is directory", Syscall::stat64, {kStatDirectory}},
    {"remove a file|remove a directory|" REMOVALS, Syscall::stat64, {kStatMember}},
    {"copy a file", Syscall::stat64, {kOnlyReported, kStat}},
    {"copy a tree",
     Syscall::stat64,
     {kStatTarget, kStat, kGoesOn, kStatTarget, kStat, kOnlyReported, kStat}},
    {"list with attributes", Syscall::stat64, {kOnlyReported}},
    {"list with attributes", Syscall::fstatat64, {kOnlyReported}},
    {"remove a link in a tree", Syscall::fstatat64, {kStatMember}},
    {REMOVALS, Syscall::fstat64, {kOpenDirectory}},
    {RECORDS, Syscall::fstat64, {kHostStat}},
    {"file system", Syscall::statvfs64, {kStatSpace}},
    {"make|copy a tree", Syscall::mkdir, {kMake}},
    {"rename", Syscall::rename, {kRename}},
    {"remove a file", Syscall::unlink, {kRemove}},
    {"remove a directory", Syscall::rmdir, {kRemove}},
    {REMOVALS, Syscall::rmdir, {kRemoveFull, kRemove}},
    {"remove a tree", Syscall::unlinkat, {kRemoveFull, kRemove}},
    {"remove a link in a tree", Syscall::unlinkat, {kRemove}},
    {REMOVALS, Syscall::openat64, {kOpenDirectory}},
    {REMOVALS, Syscall::fdopendir, {kOpenDirectory}},
    {"copy a tree|read a directory|" LISTS, Syscall::opendir, {kOpenDirectory}},
    {REMOVALS "|" LISTS, Syscall::readdir64_r, {kReported}},
    {"read a directory", Syscall::readdir64_r, {kSilent}},
    {"copy a tree", Syscall::readdir64_r, {kGoesOn}},
    {"copy a tree|read a directory|" REMOVALS "|" LISTS, Syscall::closedir, {kGoesOn}},
    {"copy a file|copy a tree", Syscall::open64, {kCopyOpen}},
    {"copy a file|copy a tree", Syscall::read, {kCopyRead}},
    {"copy a file|copy a tree", Syscall::write, {kCopyWrite}},
    {"copy a file|copy a tree", Syscall::close, {kCopyClose, kGoesOn}},
    {RECORDS, Syscall::open64, {kHostOpen}},
    {RECORDS, Syscall::close, {kHostClose}},
    {WRITES, Syscall::write, {kWrite}},
    {WRITES "|use offsets of a stream", Syscall::fsync, {kFlush}},
    {"use offsets|use offsets of a stream", Syscall::pwrite64, {kWrite}},
    {"use offsets", Syscall::pread64, {kSilent}},
    {"read|update|use offsets", Syscall::read, {kSilent}},
    // When the read that replaces a byte-order mark's bytes fails, the bytes before it are
    // delivered; the next call reads them again.
    {"read a stream directly", Syscall::read, {kSilent, kGoesOn, kSilent}},
    {"update a stream", Syscall::read, {kSilent, kGoesOn}},
    {"use offsets of a stream", Syscall::pread64, {kSilent, kGoesOn}},
    {"append", Syscall::lseek64, {kGoesOn}},
    {"read|update|update a stream|use offsets", Syscall::lseek64, {kReportedFailure}},
    {"update|update a stream", Syscall::ftruncate64, {kReported}},
    {"write", Syscall::ftruncate64, {kHostOpen}},
    {"build|expand a relative path|create a name", Syscall::getcwd, {kSilentFailure}},
    {"expand a user", Syscall::getpwnam_r, {kNothingFound}},
    {"expand without HOME", Syscall::getpwuid_r, {kNothingFound}},
    {"time of day", Syscall::localtime_r, {kGoesOn}},
};

// The statuses that a failing call of the host may lead to. The first row that fits counts; no
// operations: all others.
struct HostRow {
  const char *operations;
  Calls calls;
  std::set<JXStatus> statuses;
};

const HostRow kHostCalls[] = {
    // A host without these extensions, or whose name service fails, still gets an instance.
    {"start",
     calls(Call::load_extension, Call::get_host_name, Call::destroy_transcoder),
     {JX_OK, JX_E_NOMEM}},
    {"start", kAllFailing, {JX_E_NOMEM}},
    // A member whose information fails stays in the list.
    {"list with attributes", calls(Call::pool_allocate), {JX_E_NOMEM, JX_OK}},
    {"list with attributes", calls(Call::transcode), {kFailed, kFaultStatus, JX_OK}},
    {"", calls(Call::create_pool, Call::pool_allocate), {JX_E_NOMEM}},
    {"", calls(Call::create_table, Call::table_set_entry_destructor), {JXWEM_E_NOHANDLE}},
    // A member that its list refuses is left out.
    {"member list", calls(Call::table_insert), {kFailed, JX_OK}},
    {"", calls(Call::table_insert), {kFailed}},
    {"build|create a name", calls(Call::transcode), {JXStatus{1}, kFailed}},
    // The walk of a copy ends with the first entry that cannot be read, as at the end.
    {"copy a tree", calls(Call::transcode), {kFailed, JX_OK}},
    {"start|expand a relative path|expand a user|expand without HOME|exist|is "
     "directory|information|"
     "file system|make|rename|remove a file|remove a directory|copy a file",
     calls(Call::transcode),
     {kFailed}},
    // A name expanded, or a record or an entry converted.
    {"", calls(Call::transcode), {kFailed, kFaultStatus}},
    {"", calls(Call::create_lock, Call::create_transcoder), {kFailed}},
    {"",
     calls(Call::measure_conversion, Call::encoding_info, Call::lock_acquire, Call::lock_release,
           Call::get_option),
     {kFaultStatus}},
    // While the control strings are made it is a failure; at close it is ignored.
    {"", calls(Call::destroy_transcoder), {kFaultStatus, JX_OK}},
    {"", calls(Call::open_file), {kSystem}},
    {"", calls(Call::close_file), {JX_OK}},
};

// What the module imports and cannot fail: given what it passes, or at all.
constexpr std::string_view kCannotFail[] = {
    "memchr",           "memcmp",           "memcpy",       "__memcpy_chk",    "memmove",
    "memset",           "strchrnul",        "strlen",       "strnlen",         "wcslen",
    "wcsnlen",          "strerror",         "getenv",       "getuid",          "dirfd",
    "__errno_location", "__stack_chk_fail", "gettimeofday", "__gettimeofday64"};

// ---- The sweeps

bool lists(std::string_view operations, std::string_view name) {
  const std::string list = "|" + std::string(operations) + "|";
  return list.find("|" + std::string(name) + "|") != list.npos;
}

// All that the manual pages of the calls name; on the ABI of the contract, every number there is.
std::vector<int> errnos() {
  if (sizeof(void *) == 4) {
    std::vector<int> all(133);
    std::generate(all.begin(), all.end(), [last = 0]() mutable { return ++last; });
    return all;
  }
  return {EPERM,        ENOENT,    EINTR,     EIO,     ENXIO,      EBADF,        EAGAIN,  ENOMEM,
          EACCES,       EFAULT,    EBUSY,     EEXIST,  EXDEV,      ENODEV,       ENOTDIR, EISDIR,
          EINVAL,       ENFILE,    EMFILE,    ETXTBSY, EFBIG,      ENOSPC,       ESPIPE,  EROFS,
          EMLINK,       EPIPE,     EDOM,      ERANGE,  EDEADLK,    ENOLCK,       ENOSYS,  ELOOP,
          ENAMETOOLONG, ENOTEMPTY, EOVERFLOW, EDQUOT,  EOPNOTSUPP, EDESTADDRREQ, ENOLINK};
}

class FaultTable : public FaultTest {
 protected:
  // Makes the n-th call of an operation fail and checks what follows; false when there is no such
  // call.
  bool meets(const Operation &operation, Syscall call, uint32_t n, int error,
             const Answers *answers) {
    operation.prepare();
    const LiveCounts before = host.live();
    const uint32_t descriptors = open_descriptors();
    arm_syscalls(syscalls(call), {.n = n, .error = error});
    const JXStatus status = operation.run();
    const bool was_met = disarm_syscalls().has_value();
    SCOPED_TRACE(std::string(syscall_name(call)) + " " + std::to_string(n) + ", errno " +
                 std::to_string(error));
    EXPECT_EQ(host.take_misuse(), "");
    EXPECT_TRUE(host.live() == before) << host.list_live();
    EXPECT_EQ(open_descriptors(), descriptors);
    if (was_met && answers) expect_answer(*answers, error, status);
    EXPECT_TRUE(was_met || status == JX_OK) << "without a fault: " << std::hex << status;
    faults_ += was_met;
    return was_met;
  }

  void expect_answer(const Answers &answers, int error, JXStatus status) {
    const auto row = std::ranges::find_if(
        answers.rows, [error](const auto &each) { return each.second.contains(error); });
    const bool is_other = row == answers.rows.end();
    EXPECT_EQ(status, is_other ? answers.other : row->first);
    if (is_other && answers.journal == gets_host_text) {
      EXPECT_EQ(journal.take_lines().size(), 1u);
    } else {
      const bool is_reported = is_other && answers.journal == gets_errno;
      expect_journal(is_reported ? std::vector{error} : std::vector<int>{});
    }
  }

  // Every call of one kind in an operation, until one run meets none. Each answer of the table is
  // checked for every errno once; where it comes again, the errnos take turns.
  void sweep_call(const Operation &operation, Syscall call) {
    const auto row = std::ranges::find_if(kSystemCalls, [&](const Row &each) {
      return each.call == call && lists(each.operations, operation.name);
    });
    const bool has_row = row != std::end(kSystemCalls);
    for (uint32_t n = 0; n < kSweepLimit; ++n) {
      const size_t position = has_row ? std::min<size_t>(n, row->answers.size() - 1) : 0;
      const Answers *answers = has_row ? &row->answers[position] : nullptr;
      const bool is_new = !done_.contains({operation.name, call, position});
      const size_t rounds = is_new ? static_cast<size_t>(scaled(std::ssize(all_))) : 0;
      for (size_t i = 0; i < std::max(rounds, kTurns); ++i) {
        if (!meets(operation, call, n, all_[turn_++ % all_.size()], answers)) return;
        ASSERT_TRUE(has_row) << "no row for " << syscall_name(call);
      }
      done_.insert({operation.name, call, position});
    }
    ADD_FAILURE() << "the sweep found no end";
  }

  static constexpr size_t kTurns = 3;
  const std::vector<int> all_ = errnos();
  std::set<std::tuple<std::string, Syscall, size_t>> done_;
  size_t turn_ = 0;
  int faults_ = 0;
};

TEST_F(FaultTable, SystemCalls) {
  for (const Operation &operation : operations) {
    SCOPED_TRACE(std::string(operation.name) + ", " + operation.way);
    for (uint32_t call = 0; call < kSyscallCount; ++call) sweep_call(operation, Syscall{call});
  }
  for (const Row &row : kSystemCalls) {
    for (const Operation &operation : operations) {
      if (!lists(row.operations, operation.name)) continue;
      EXPECT_TRUE(done_.contains({operation.name, row.call, row.answers.size() - 1}))
          << operation.name << " does not make all the calls of " << syscall_name(row.call);
    }
  }
  RecordProperty("faults", faults_);
}

TEST_F(FaultTable, HostCalls) {
  int faults = 0;
  std::set<std::string> met;
  for (const Operation &operation : operations) {
    SCOPED_TRACE(std::string(operation.name) + ", " + operation.way);
    for (const SweepRun &each : sweep(host, kAllFailing, operation.prepare, operation.run)) {
      const auto row = std::ranges::find_if(kHostCalls, [&](const HostRow &one) {
        return (one.calls & each.call) != 0 &&
               (!*one.operations || lists(one.operations, operation.name));
      });
      const bool is_listed = row != std::end(kHostCalls) && row->statuses.contains(each.status);
      EXPECT_TRUE(is_listed) << each.failed << " as call " << each.n << ": " << std::hex
                             << each.status;
      met.insert(each.failed);
      ++faults;
    }
    expect_journal();
  }
  for (uint32_t call = 0; Call{call} < Call::needs_conversion; ++call) {
    EXPECT_TRUE(met.contains(call_name(Call{call}))) << call_name(Call{call}) << " is never called";
  }
  RecordProperty("faults", faults);
}

// Whoever adds a call learns here that it has no row.
TEST(FaultTableImports, EveryImportHasARow) {
#ifndef JX_MODULE_IS_PLAIN
  GTEST_SKIP() << "this build's module imports what watches it";
#endif
  const std::unique_ptr<FILE, int (*)(FILE *)> names(
      popen("nm -D --undefined-only --format=posix " JXWEM_PATH, "r"), pclose);
  ASSERT_TRUE(names);
  char line[256];
  int count = 0;
  for (; std::fgets(line, sizeof line, names.get()); ++count) {
    const std::string name(line, std::strcspn(line, "@ \n"));
    const bool is_row = std::ranges::any_of(kSystemCalls, [&](const Row &row) {
      const std::string call = syscall_name(row.call);
      return name == call || name == "__" + call + "_time64" ||
             (name == "__localtime64_r" && call == "localtime_r");
    });
    EXPECT_TRUE(is_row || std::ranges::count(kCannotFail, name) == 1) << name;
  }
  EXPECT_GT(count, 20);
}

}  // namespace
}  // namespace jx::test
