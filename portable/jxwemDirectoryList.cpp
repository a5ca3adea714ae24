// jxwemdirectorylist, the directory_list slot: a directory and its members as a table.
#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "portable/portable.hpp"
#include "posix/results.hpp"

namespace {

constexpr jx::TableShape kShape = {
    {2, 0, 1, 0, 0, 0}, "JXWEM DirectoryList", jxwemDirectoryListDestroy};

// Moves the records into a table; releases them all when there is none.
JXTable *table_of_entries(JXDirectoryEntry *first, JXStatus *status_out) {
  jx::HostObject<JXTable> table = jx::make_table(kShape);
  // Declared after the table: leftover records are freed first.
  jx::RecordList<JXDirectoryEntry> records(first);
  if (!table) {
    *status_out = JXWEM_E_NOHANDLE;
    return nullptr;
  }
  while (JXDirectoryEntry *record = records.front()) {
    if (!jx::insert_value(table.get(), record)) {
      *status_out = JXWEM_E_FAILED;
      return nullptr;
    }
    records.pop_front();
  }
  return table.release();
}

}  // namespace

extern "C" {

JXTable *jxwemdirectorylist(JXInstance *instance, const JXChar *path, uint32_t path_chars,
                            uint32_t kind, uint32_t flags, uint64_t *count_out,
                            JXStatus *status_out) {
  JXStatus ignored_status = JX_OK;
  uint64_t ignored_count = 0;
  JXStatus *status = status_out ? status_out : &ignored_status;
  uint64_t *count = count_out ? count_out : &ignored_count;
  JXDirectoryEntry *first = nullptr;
  *status = bkwemdirectorylist(instance, path, path_chars, kind, flags, &first, count);
  if (*status != JX_OK) return nullptr;
  JXTable *table = table_of_entries(first, status);
  if (!table) *count = 0;
  return table;
}

JXStatus jxwemDirectoryListDestroy(JXTableEntry *entry) {
  if (!entry || !entry->value) return JX_OK;
  jx::free_record(static_cast<JXDirectoryEntry *>(std::exchange(entry->value, nullptr)));
  return JX_OK;
}

}  // extern "C"
