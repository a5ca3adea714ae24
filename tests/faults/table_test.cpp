// Every call of every operation fails in turn, and what follows is compared with the table. A call
// that no row lists fails the test, and so does a row that nothing meets.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <tuple>

#include "faults/operations.hpp"
#include "faults/table.hpp"
#include "support/scale.hpp"
#include "support/sweep.hpp"

namespace jx::test {
namespace {

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
    const Books books(host);
    arm_syscalls(syscalls(call), {.n = n, .error = error});
    const JXStatus status = operation.run();
    const bool was_met = disarm_syscalls().has_value();
    SCOPED_TRACE(syscall_name(call) + " " + std::to_string(n) + ", errno " + std::to_string(error));
    books.expect_balance();
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
