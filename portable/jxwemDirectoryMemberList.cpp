// jxwemdirectorymemberlist, the member_list slot: the members of an open directory as a table.
#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "portable/portable.hpp"
#include "posix/results.hpp"

namespace {

constexpr jx::TableShape kShape = {
    {2, 0, 1, 0, 0, 0}, "JXWEM MemberList", jxwemDirectoryMemberListDestroy};

// Moves the records into a table. A record that the table refuses is left out; that is no failure.
JXTable *table_of_members(jx::RecordList<JXMember> *records, JXStatus *status_out) {
  jx::HostObject<JXTable> table = jx::make_table(kShape);
  if (!table) {
    *status_out = JXWEM_E_NOHANDLE;
    return nullptr;
  }
  while (JXMember *record = records->front()) {
    records->pop_front();
    if (!jx::insert_value(table.get(), record)) jx::free_record(record);
  }
  return table.release();
}

}  // namespace

extern "C" {

JXTable *jxwemdirectorymemberlist(JXDirectory *directory, JXPool *pool, uint32_t flags,
                                  uint64_t *count_out, JXStatus *status_out) {
  JXStatus ignored_status = JX_OK;
  uint64_t ignored_count = 0;
  JXStatus *status = status_out ? status_out : &ignored_status;
  uint64_t *count = count_out ? count_out : &ignored_count;
  *count = 0;
  *status = JXWEM_E_FAILED;
  if (!pool || !directory) return nullptr;
  JXMember *first = nullptr;
  *status = bkwemdirectorymemberlist(directory->instance, directory, pool, flags, &first, count);
  if (*status != JX_OK || *count == 0) return nullptr;
  jx::RecordList<JXMember> records(first);
  JXTable *table = table_of_members(&records, status);
  if (!table) *count = 0;
  return table;
}

JXStatus jxwemDirectoryMemberListDestroy(JXTableEntry *entry) {
  if (!entry || !entry->value) return JX_OK;
  auto *record = static_cast<JXMember *>(entry->value);
  if (JXChar *name = std::exchange(record->name, nullptr)) {
    record->pool->pool_free(record->pool, name);
  }
  // The record itself stays in the caller's pool.
  if (JXTable *information = std::exchange(record->information, nullptr)) {
    jx::end_host_object(information);
  }
  return JX_OK;
}

}  // extern "C"
