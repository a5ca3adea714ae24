// bkwem_open: opens the system's file through the extension "jxelm".
#include <fcntl.h>
#include <unistd.h>

#include "jx/exports/posix.h"
#include "kernel/handle.hpp"
#include "posix/path.hpp"

namespace {

using jx::FileHandle;

constexpr uint32_t kPermissions = 0777;  // reduced by the umask

// The open flags of an access mode, and the lock mode that needs both reading and writing: a shared
// lock needs a descriptor that reads, an exclusive one a descriptor that writes.
struct AccessRow {
  uint32_t flags;
  uint32_t both_lock_mode;
  uint32_t both_flags;
};

constexpr AccessRow kAccess[] = {
    {O_WRONLY | O_CREAT, JX_LOCK_SHARED, O_RDWR | O_CREAT},                      // append
    {O_RDONLY, JX_LOCK_EXCLUSIVE, O_RDWR},                                       // input
    {O_WRONLY | O_CREAT | O_TRUNC, JX_LOCK_SHARED, O_RDWR | O_CREAT | O_TRUNC},  // output
    {O_RDWR | O_CREAT, JX_LOCK_DEFAULT, O_RDWR | O_CREAT},                       // update
};
static_assert(O_RDONLY == 0 && O_WRONLY == 1 && O_RDWR == 2 && O_CREAT == 0x40 && O_TRUNC == 0x200,
              "the flags handed to the host are those of its platform");

uint32_t open_flags_of(const FileHandle *handle) {
  const AccessRow &row = kAccess[handle->access.mode];
  return handle->lock_mode == row.both_lock_mode ? row.both_flags : row.flags;
}

uint32_t lock_word_of(const FileHandle *handle) {
  const uint32_t default_word =
      handle->access.mode == JX_ACCESS_INPUT ? JXELM_LOCK_SHARED : JXELM_LOCK_EXCLUSIVE;
  switch (handle->lock_mode) {
    case JX_LOCK_NONE:
      return JXELM_LOCK_NONE;
    case JX_LOCK_SHARED:
      return JXELM_LOCK_SHARED;
    case JX_LOCK_EXCLUSIVE:
      return JXELM_LOCK_EXCLUSIVE;
    case JX_LOCK_WAIT:
      return default_word | JXELM_LOCK_WAIT;
    default:
      return default_word;
  }
}

// From the extension's codes to ours; every other code is a system error.
struct ElmRow {
  JXStatus from;
  JXStatus to;
};

constexpr ElmRow kElmStatuses[] = {
    {JXELM_E_NOMEM, JX_E_NOMEM},
    {JXELM_E_NOTFOUND, JXWEM_E_NOTFOUND},
    {JXELM_E_NOPATH, JXWEM_E_NOPATH},
    {JXELM_E_ACCESS, JXWEM_E_ACCESS},
    {JXELM_E_REFUSED, JXWEM_E_OPENREFUSED},
    {JXELM_E_LOCKED, JXWEM_E_INUSE},
    {JXELM_E_BUSY1, JXWEM_E_INUSE},
    {JXELM_E_BUSY2, JXWEM_E_INUSE},
    {JXELM_E_BUSY3, JXWEM_E_INUSE},
    {JXELM_E_BUSY4, JXWEM_E_INUSE},
    {JXELM_E_BUSY5, JXWEM_E_INUSE},
};

JXStatus status_of_elm(JXStatus status) {
  for (const ElmRow &row : kElmStatuses) {
    if (row.from == status) return row.to;
  }
  return JXWEM_E_SYSTEM;
}

JXStatus open_host_file(const FileHandle *handle, jx::HostFile *host_file) {
  JXElm *elm = handle->instance->elm;
  if (!elm) return JXWEM_E_SYSTEM;
  jx::Text path = {handle->name, handle->name_chars};
  jx::OwnedPath expansion;
  JXStatus status = JX_OK;
  if (!handle->flags.has(JX_OPEN_LITERAL_NAME)) {
    status = jx::expand_path(handle->instance, path, &expansion);
    if (status != JX_OK) return status;
    path = expansion.text();
  }
  const JXOpenRequest request = {
      path.data, path.chars, kPermissions, open_flags_of(handle), {0, 0, 0, 0}};
  JXOpenFile *open_file =
      elm->open_file(elm, &request, 1, lock_word_of(handle), handle->journal, &status);
  if (status != JX_OK || !open_file) return status_of_elm(status);
  host_file->descriptor = *open_file->descriptor;
  host_file->open_file = open_file;
  if (handle->access.mode == JX_ACCESS_APPEND) lseek64(host_file->descriptor, 0, SEEK_END);
  return JX_OK;
}

}  // namespace

extern "C" JXStatus bkwem_open(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  FileHandle *handle = jx::handle_of(file);
  auto host_file = jx::PoolBlock<jx::HostFile>::allocate(handle->pool, 1, JX_POOL_ZERO_FILL);
  if (!host_file) return JX_E_NOMEM;
  const JXStatus status = open_host_file(handle, host_file.get());
  if (status != JX_OK) return status;
  handle->host_file = host_file.release();
  return JX_OK;
}
