// jxweminfo, the info slot: information about a file as a table. Also what both information tables
// share.
#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "portable/portable.hpp"
#include "posix/results.hpp"

namespace {

constexpr jx::TableShape kShape = {{0, 0, 1, 0x20000000, 0, 0}, "JXWEM Info", jxwemInfoDestroy};

}  // namespace

namespace jx {

JXTable *table_of_items(const TableShape &shape, JXPool *pool, JXInfoItem **array, uint32_t count,
                        JXStatus *status_out) {
  HostObject<JXTable> table = make_table(shape);
  // Declared after the table: leftover records are freed first.
  InfoItems items(pool, array, count);
  if (!table) {
    *status_out = JXWEM_E_NOHANDLE;
    return nullptr;
  }
  while (JXInfoItem *item = items.front()) {
    if (!insert_value(table.get(), item, {item->name, item->name_chars})) {
      *status_out = JXWEM_E_FAILED;
      return nullptr;
    }
    items.pop_front();
  }
  *status_out = JX_OK;
  return table.release();
}

void free_entry_item(JXTableEntry *entry) {
  if (!entry || !entry->value) return;
  free_info_item(static_cast<JXInfoItem *>(std::exchange(entry->value, nullptr)));
}

}  // namespace jx

extern "C" {

JXTable *jxweminfo(JXInstance *instance, JXPool *pool, const JXChar *name, uint32_t name_chars,
                   JXStatus *status_out) {
  JXStatus ignored = JX_OK;
  JXStatus *status = status_out ? status_out : &ignored;
  JXInfoItem **array = nullptr;
  uint32_t count = 0;
  *status = bkweminfo(instance, pool, name, name_chars, &array, &count);
  if (*status != JX_OK) return nullptr;
  return jx::table_of_items(kShape, pool, array, count, status);
}

JXStatus jxwemInfoDestroy(JXTableEntry *entry) {
  jx::free_entry_item(entry);
  return JX_OK;
}

}  // extern "C"
