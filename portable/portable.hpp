// The portable layer's shared machinery: copies of names, tables made through the host kernel.
#pragma once

#include <array>

#include "jx/module.h"
#include "jx/runtime.h"
#include "kernel/owners.hpp"
#include "kernel/text.hpp"

namespace [[gnu::visibility("hidden")]] jx {

// Stores a copy of a caller's 8-bit name, a block of the pool; null for null. False when memory is
// out.
inline bool copy_name8(JXPool *pool, const char *name8, char **copy_out) {
  *copy_out = nullptr;
  if (!name8) return true;
  *copy_out = PoolBlock<char>::allocate(pool, uint64_t{skStrLen(name8)} + 1).release();
  if (*copy_out) skStrCpy(name8, *copy_out);
  return *copy_out != nullptr;
}

// How a result table is made.
struct TableShape {
  std::array<uint32_t, 6> attributes;  // the host's own words
  const char *name8;                   // its name
  JXEntryDestructor destructor;        // releases the value of an entry
};

// A table without entries, with its destructor set. The owner is empty when there is no host kernel
// handle or the host refuses.
inline HostObject<JXTable> make_table(const TableShape &shape) {
  JXHost *host = Exported_JXHandle;
  if (!host || !host->create_table) return HostObject<JXTable>();
  const auto &a = shape.attributes;
  HostObject<JXTable> table(
      host->create_table(host, a[0], a[1], a[2], a[3], a[4], a[5], 0, shape.name8));
  if (table && table->table_set_entry_destructor(table.get(), 0, shape.destructor) != JX_OK) {
    table.reset();
  }
  return table;
}

// Puts a value into a table, without a key when key_chars is 0. Tells whether the table took it.
inline bool insert_value(JXTable *table, void *value, Text key = {}) {
  JXTableEntry *entry = nullptr;
  return table->table_insert(table, 0, 0, value, &entry, key.data, key.chars * kJXCharBytes, 0) !=
         0;
}

// Moves information records of the pool into a new table, each under its name, and frees their
// array. Null with JXWEM_E_NOHANDLE (no table) or JXWEM_E_FAILED (a record refused) in *status_out;
// every record is released then.
JXTable *table_of_items(const TableShape &shape, JXPool *pool, JXInfoItem **array, uint32_t count,
                        JXStatus *status_out);

// Frees the information record of an entry, if it has one.
void free_entry_item(JXTableEntry *entry);

}  // namespace jx
