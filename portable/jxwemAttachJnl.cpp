// jxwemattachjnl, the attach_journal slot: a new journal for an open file.
#include "jx/exports/portable.h"
#include "kernel/handle.hpp"

extern "C" JXStatus jxwemattachjnl(JXFile *file, JXJournal *journal) {
  if (!file) return JXWEM_E_NOHANDLE;
  jx::FileHandle *handle = jx::handle_of(file);
  JXLock *lock = handle->open_lock;
  const JXStatus status = lock->lock_acquire(lock, 1, 1);
  if (status != JX_OK) return status;
  handle->journal = journal;
  return lock->lock_release(lock);
}
