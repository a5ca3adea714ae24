// Locks: a mutex that knows its holder, so that misuse is a status instead of undefined behaviour.
#include <thread>

#include "host/host.hpp"

namespace jxhost {

namespace {

struct Lock final : JXLock, Live {
  Lock();
  std::mutex mutex;
  std::atomic<std::thread::id> holder{};  // default: not locked
};

JXStatus destroy_lock(JXLock *lock) {
  auto *self = static_cast<Lock *>(lock);
  if (self && self->holder.load() != std::thread::id{}) return JXHOST_E_LOCKSTATE;
  return end_live(self);
}

JXStatus lock_acquire(JXLock *lock, uint32_t, uint32_t) {
  if (!lock) return JXHOST_E_BADOBJECT;
  auto *self = static_cast<Lock *>(lock);
  // Not a race: only this thread can store its own id.
  if (self->holder.load() == std::this_thread::get_id()) return JXHOST_E_LOCKSTATE;
  self->mutex.lock();
  self->holder.store(std::this_thread::get_id());
  return JX_OK;
}

JXStatus lock_release(JXLock *lock) {
  if (!lock) return JXHOST_E_BADOBJECT;
  auto *self = static_cast<Lock *>(lock);
  if (self->holder.load() != std::this_thread::get_id()) return JXHOST_E_LOCKSTATE;
  self->holder.store(std::thread::id{});
  self->mutex.unlock();
  return JX_OK;
}

Lock::Lock()
    : JXLock{.destroy_lock = jxhost::destroy_lock,
             .lock_acquire = jxhost::lock_acquire,
             .lock_release = jxhost::lock_release} {}

}  // namespace

JXLock *create_lock(JXHost *host, uint8_t, uint8_t, uint32_t, const char *name8) {
  return make_live<Lock>(host, "lock", name8);
}

}  // namespace jxhost
