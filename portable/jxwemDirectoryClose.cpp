// jxwemdirectoryclose, the close slot of a directory handle: ends it with all of its pool.
#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "portable/portable.hpp"

extern "C" JXStatus jxwemdirectoryclose(JXDirectory *directory) {
  if (!directory) return JXWEM_E_NOHANDLE;
  bkwemclosedir(directory);
  JXPool *pool = directory->pool;
  JXPool *working_pool = directory->working_pool;
  working_pool->pool_free(working_pool, directory->path);
  pool->pool_free(pool, directory);
  if (working_pool != pool) working_pool->destroy_pool(working_pool);
  pool->destroy_pool(pool);
  return JX_OK;
}
