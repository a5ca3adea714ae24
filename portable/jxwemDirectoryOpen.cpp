// A directory handle, made in a pool of its own.
#include <algorithm>

#include "portable/portable.hpp"

namespace {

// The handle with its copies of the caller's texts. 0 or JX_E_NOMEM; what was made stays in the
// pool, which the caller ends.
JXStatus make_handle(JXPool *pool, jx::Text path, const char *name8, JXDirectory **handle_out) {
  auto *handle = jx::PoolBlock<JXDirectory>::allocate(pool, 1, JX_POOL_ZERO_FILL).release();
  if (!handle) return JX_E_NOMEM;
  std::copy_n(JX_EYE_CATCHER, sizeof handle->eye_catcher, handle->eye_catcher);
  if (name8) {
    const uint64_t bytes = uint64_t{skStrLen(name8)} + 1;
    handle->name = jx::PoolBlock<char>::allocate(pool, bytes).release();
    if (!handle->name) return JX_E_NOMEM;
    skStrCpy(name8, handle->name);
  }
  handle->path = jx::PoolBlock<JXChar>::allocate(pool, uint64_t{path.chars} + 1).release();
  if (!handle->path) return JX_E_NOMEM;
  std::copy_n(path.data, path.chars, handle->path);
  handle->path[path.chars] = 0;
  handle->path_chars = path.chars;
  handle->pool = pool;
  handle->working_pool = pool;
  *handle_out = handle;
  return JX_OK;
}

void fill_slots(JXDirectory *handle) {
  handle->close = jxwemdirectoryclose;
  handle->member_exist = jxwemdirectorymemberexist;
  handle->member_list = jxwemdirectorymemberlist;
  handle->read = bkwemreaddir;
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
  // Ending the pool ends the handle and everything made for it.
  jx::HostObject<JXPool> pool(host->create_pool(host, 0, 0, 0, owner, "jxwemd%d"));
  *status_out = JX_E_NOMEM;
  if (!pool) return nullptr;
  JXDirectory *handle = nullptr;
  *status_out = make_handle(pool.get(), {path, path_chars}, name8, &handle);
  if (*status_out != JX_OK) return nullptr;
  fill_slots(handle);
  handle->instance = instance;
  handle->options = options;
  *status_out = bkwemopendir(handle);
  if (*status_out != JX_OK) return nullptr;
  static_cast<void>(pool.release());
  return handle;
}
