// Locks: exclusion of threads.
#include <pthread.h>
#include <time.h>

#include <atomic>

#include "check/objects.hpp"
#include "check/threads.hpp"

namespace jxcheck {

namespace {

void check_again(Probe &probe) {
  const Lock lock = make_lock(probe);
  for (int i = 0; lock && i < 3; ++i) {
    probe.expect_status("to acquire it", lock->lock_acquire(lock.get(), 1, 1), JX_OK);
    probe.expect_status("to release it", lock->lock_release(lock.get()), JX_OK);
  }
}

struct Shared {
  JXLock *lock;
  std::atomic<int> inside;
  std::atomic<bool> met;
};

// Is alone between acquire and release, for long enough to be met.
void enter(void *argument, uint32_t) {
  auto &shared = *static_cast<Shared *>(argument);
  for (int i = 0; i < 20; ++i) {
    if (shared.lock->lock_acquire(shared.lock, 1, 1) != JX_OK) continue;
    if (shared.inside.fetch_add(1) != 0) shared.met = true;
    pause_milliseconds(i == 0 ? 2 : 0);
    shared.inside.fetch_sub(1);
    shared.lock->lock_release(shared.lock);
  }
}

void check_exclusion(Probe &probe) {
  const Lock lock = make_lock(probe);
  if (!lock) return;
  Shared shared = {lock.get(), 0, false};
  if (!run_threads(enter, &shared)) return probe.skip("no threads to be had");
  if (shared.met) probe.found("two threads held it at the same time");
}

void check_destroy(Probe &probe) {
  Lock lock = make_lock(probe);
  if (!lock) return;
  JXLock *ended = lock.release();
  probe.expect_status("to destroy it", ended->destroy_lock(ended), JX_OK);
}

constexpr Check kChecks[] = {
    {Slot::lock_acquire, "to acquire and release it three times", "status 0", guide::kKernel,
     kLockSlots, check_again},
    {Slot::lock_acquire, "eight threads at once", "one thread holds it at a time", guide::kKernel,
     kLockSlots, check_exclusion},
    {Slot::destroy_lock, "a lock that is not held", "status 0", guide::kKernel, kLockSlots,
     check_destroy},
};

}  // namespace

std::span<const Check> lock_checks() { return kChecks; }

}  // namespace jxcheck
