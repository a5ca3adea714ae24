// jxwemdirectoryopen, the directory_open slot: a directory handle in a pool of its own.
#include <algorithm>

#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "portable/portable.hpp"
#include "posix/directory_open.hpp"

namespace {

void fill_handle(JXInstance *instance, JXPool *pool, uint32_t options, JXDirectory *handle) {
  std::copy_n(JX_EYE_CATCHER, sizeof handle->eye_catcher, handle->eye_catcher);
  handle->close = jxwemdirectoryclose;
  handle->member_exist = jxwemdirectorymemberexist;
  handle->member_list = jxwemdirectorymemberlist;
  handle->read = bkwemreaddir;
  handle->instance = instance;
  handle->pool = pool;
  handle->working_pool = pool;
  handle->options = options;
}

}  // namespace

extern "C" JXDirectory *jxwemdirectoryopen(JXInstance *instance, const JXChar *path,
                                           uint32_t path_chars, uint32_t options, uint32_t,
                                           JXOwner owner, const char *name8, JXStatus *status_out) {
  if (!status_out) return nullptr;
  *status_out = JXWEM_E_NOHANDLE;
  if (!instance) return nullptr;
  *status_out = JXWEM_E_BADNAME;
  if (!path || path_chars == 0) return nullptr;
  *status_out = JXWEM_E_NAMETOOLONG;
  if (!jx::is_valid_size((uint64_t{path_chars} + 1) * jx::kJXCharBytes)) return nullptr;
  JXHost *host = instance->pool_host;
  // A failure gives back the path, the handle and the pool, which ends what else was made in it.
  jx::HostObject<JXPool> pool(host->create_pool(host, 0, 0, 0, owner, "jxwemd%d"));
  *status_out = JX_E_NOMEM;
  if (!pool) return nullptr;
  auto handle = jx::PoolBlock<JXDirectory>::allocate(pool.get(), 1, JX_POOL_ZERO_FILL);
  if (!handle || !jx::copy_name8(pool.get(), name8, &handle->name)) return nullptr;
  auto path_copy = jx::PoolBlock<JXChar>::allocate(pool.get(), uint64_t{path_chars} + 1);
  if (!path_copy) return nullptr;
  std::copy_n(path, path_chars, path_copy.get());
  path_copy[path_chars] = 0;
  fill_handle(instance, pool.get(), options, handle.get());
  handle->path = path_copy.get();
  handle->path_chars = path_chars;
  *status_out = jx::open_stream(handle.get(), jx::is_copy_handle(name8));
  if (*status_out != JX_OK) return nullptr;
  static_cast<void>(path_copy.release());
  static_cast<void>(pool.release());
  return handle.release();
}
