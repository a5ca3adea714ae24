// The records of information tables and of lists: made, filled and freed.
#include "posix/results.hpp"

#include <sys/stat.h>

#include "jx/runtime.h"
#include "posix/path.hpp"

namespace jx {

double time_zone_seconds() {
  double seconds = 0;
  jxzdtgmt(&seconds);
  return seconds;
}

FileFacts facts_of(const struct stat64 &info, double zone_seconds) {
  return {static_cast<uint64_t>(info.st_size),
          static_cast<double>(info.st_mtime) + JX_SECONDS_1960_TO_1970 + zone_seconds,
          S_ISDIR(info.st_mode)};
}

void free_info_item(JXInfoItem *item) {
  JXPool *pool = item->pool;
  if (item->name) pool->pool_free(pool, item->name);
  if (item->second_block) pool->pool_free(pool, item->second_block);
  pool->pool_free(pool, item);
}

JXStatus InfoItems::reserve(uint32_t count) {
  items_ = PoolBlock<JXInfoItem *>::allocate(pool_, count);
  return items_ ? JX_OK : JX_E_NOMEM;
}

JXStatus InfoItems::add(uint32_t type, uint32_t format, const JXChar *name, JXInfoValue value) {
  auto item = PoolBlock<JXInfoItem>::allocate(pool_, 1, JX_POOL_ZERO_FILL);
  if (!item) return JX_E_NOMEM;
  const uint32_t name_chars = skStrTLen(name);
  auto item_name = copy_text(pool_, {name, name_chars});
  if (!item_name) return JX_E_NOMEM;
  item->type = type;
  item->name = item_name.release();
  item->name_chars = name_chars;
  item->value = value;
  item->pool = pool_;
  item->format = format;
  items_[end_++] = item.release();
  return JX_OK;
}

void free_record(JXMember *record) {
  JXPool *pool = record->pool;
  if (record->information) end_host_object(record->information);
  if (record->name) pool->pool_free(pool, record->name);
  pool->pool_free(pool, record);
}

void free_record(JXDirectoryEntry *record) {
  JXPool *pool = record->pool;
  if (record->name) pool->pool_free(pool, record->name);
  pool->pool_free(pool, record);
}

}  // namespace jx
