// The operations with short transfers, with no memory from some request on, with few descriptors
// and on a small stack.
#include <sys/resource.h>

#include <algorithm>

#include "faults/operations.hpp"
#include "support/small_stack.hpp"
#include "support/sweep.hpp"

namespace jx::test {
namespace {

using Limits = FaultTest;

// Short transfers change only the number of calls, also when a signal ends the call after each. A
// direct read is one transfer, of the length that the system gives.
TEST_F(Limits, ShortTransfers) {
  for (const Way &way : kWays) {
    SCOPED_TRACE(way.name);
    RecordLife life(instance, way, dir.file("records"), journal.journal());
    const auto live = [&](uint32_t most_bytes) {
      const auto shorten = [&](Syscalls shortened, bool interrupts) {
        if (most_bytes == 0) return;
        arm_syscalls(shortened,
                     {.most_bytes = most_bytes, .to_the_end = true, .interrupts = interrupts});
      };
      const Syscalls writes = syscalls(Syscall::write, Syscall::pwrite64);
      shorten(writes, true);
      EXPECT_EQ(life.write(), JX_OK);
      disarm_syscalls();
      if (life.is_buffered()) shorten(syscalls(Syscall::read), false);
      EXPECT_EQ(life.read(), JX_OK);
      disarm_syscalls();
      shorten(writes, true);
      EXPECT_EQ(life.use_offsets(), JX_OK);
      EXPECT_EQ(life.update(), JX_OK);
      EXPECT_EQ(life.append(), JX_OK);
      disarm_syscalls();
      return read_file(life.path());
    };
    const std::string whole = live(0);
    for (const uint32_t most_bytes : {1u, 5u, 4096u}) EXPECT_EQ(live(most_bytes), whole);
  }
  restore();
  arm_syscalls(syscalls(Syscall::read, Syscall::write), {.to_the_end = true});
  EXPECT_EQ(copy(at("file"), at("copy")), JX_OK);
  EXPECT_TRUE(disarm_syscalls());
  EXPECT_EQ(read_file(dir.file("copy")), "content");
}

// A failed read loses nothing: repeated, it gives the record.
TEST_F(Limits, ReadsCanBeTriedAgain) {
  for (const Way &way : kWays) {
    SCOPED_TRACE(way.name);
    RecordLife life(instance, way, dir.file("records"), journal.journal());
    ASSERT_EQ(life.write(), JX_OK);
    for (uint32_t n = 0;; ++n) {
      arm_syscalls(syscalls(Syscall::read), {.n = n, .error = EIO});
      EXPECT_EQ(life.read_trying_again(), JX_OK) << n;
      if (disarm_syscalls()) continue;
      EXPECT_GT(n, 1u);
      break;
    }
  }
}

// Every request for memory fails from the n-th on; then every call of the host does.
TEST_F(Limits, NothingFromTheNthRequestOn) {
  const Calls memory = calls(Call::pool_allocate, Call::create_pool);
  for (const Operation &operation : operations) {
    SCOPED_TRACE(std::string(operation.name) + ", " + operation.way);
    for (const Calls failing : {memory, kAllFailing}) {
      for (const SweepRun &each : sweep(host, failing, operation.prepare, operation.run, true)) {
        EXPECT_TRUE(failing != memory || each.status == JX_E_NOMEM) << each.n;
      }
    }
  }
}

#ifndef __SANITIZE_ADDRESS__  // the sanitizers check the type of an object through a pipe

// Sets the limit of descriptors while it lives.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(uint32_t count) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit few = {count, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
  }
  DescriptorLimit(const DescriptorLimit &) = delete;
  DescriptorLimit &operator=(const DescriptorLimit &) = delete;
  ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_ = {};
};

// With fewer than it needs each operation fails, leaves nothing and says why in the journal; with
// sixteen every one succeeds.
TEST_F(Limits, FewDescriptors) {
  const uint32_t in_use = open_descriptors() - 1;  // without that of the count itself
  for (const Operation &operation : operations) {
    SCOPED_TRACE(std::string(operation.name) + ", " + operation.way);
    for (uint32_t free_count = 0;; ++free_count) {
      operation.prepare();
      ASSERT_LE(in_use + free_count, 16u);
      const Books books(host);
      const JXStatus status = [&] {
        const DescriptorLimit limit(in_use + free_count);
        return operation.run();
      }();
      books.expect_balance();
      const bool is_reported = status == JXWEM_E_SYSTEM || status == JXWEM_E_FAILED;
      // Without a descriptor to ask with, nobody is a user.
      const bool is_unknown =
          status == JXWEM_E_NOTFOUND && std::string_view(operation.name).starts_with("expand");
      EXPECT_TRUE(status == JX_OK || is_reported || is_unknown) << std::hex << status;
      EXPECT_EQ(journal.take_lines().size(), is_reported ? 1u : 0u) << free_count;
      if (status == JX_OK) break;
    }
  }
}
#endif

TEST_F(Limits, LittleStack) {
  for (const Operation &operation : operations) {
    operation.prepare();
    JXStatus status = JXWEM_E_FAILED;
    run_on_small_stack([&] { status = operation.run(); });
    EXPECT_EQ(status, JX_OK) << operation.name << ", " << operation.way;
  }
}

}  // namespace
}  // namespace jx::test
