// jxwemfsinfo, the file_system_info slot: information about a file system as a table.
#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "portable/portable.hpp"

namespace {

constexpr jx::TableShape kShape = {{0, 0, 1, 0x20000000, 0, 0}, "JXWEM FSInfo", jxwemFSInfoDestroy};

}  // namespace

extern "C" {

JXTable *jxwemfsinfo(JXInstance *instance, const JXChar *name, uint32_t name_chars,
                     JXStatus *status_out) {
  JXStatus ignored = JX_OK;
  JXStatus *status = status_out ? status_out : &ignored;
  *status = JXWEM_E_NOHANDLE;
  if (!instance) return nullptr;
  JXInfoItem **array = nullptr;
  uint32_t count = 0;
  *status = bkwemfsinfo(instance, name, name_chars, &array, &count);
  if (*status != JX_OK) return nullptr;
  return jx::table_of_items(kShape, instance->pool, array, count, status);
}

JXStatus jxwemFSInfoDestroy(JXTableEntry *entry) {
  jx::free_entry_item(entry);
  return JX_OK;
}

}  // extern "C"
