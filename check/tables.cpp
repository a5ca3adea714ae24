// Tables: order, keys, and what becomes of the entries.
#include <stdio.h>
#include <string.h>

#include "check/objects.hpp"

namespace jxcheck {

namespace {

constexpr uint32_t kMany = 2000;

// What the destructor saw; it gets no argument but the entry.
struct Seen {
  uint32_t count;
  uint32_t first_wrong;  // place in the order of the first value that was not due, or kMany
  JXStatus answer;       // of the destructor
};
constinit Seen seen = {};
constinit uint32_t values[kMany] = {};

JXStatus see(JXTableEntry *entry) {
  const uint32_t place = seen.count++;
  if ((place >= kMany || entry->value != &values[place]) && seen.first_wrong == kMany) {
    seen.first_wrong = place;
  }
  return seen.answer;
}

void start(JXStatus answer) { seen = {0, kMany, answer}; }

int32_t insert(const Table &table, uint32_t value, const void *key, uint32_t key_bytes) {
  JXTableEntry *entry = nullptr;
  return table->table_insert(table.get(), 0, 0, &values[value], &entry, key, key_bytes, 0);
}

// Destroys the table; its entries are the values 0 to count - 1, in this order.
void expect_released(Probe &probe, Table &table, uint32_t count) {
  JXTable *ended = table.release();
  probe.expect_status("to destroy it", ended->destroy_table(ended), seen.answer);
  if (seen.count != count) probe.found("%u calls for %u entries", seen.count, count);
  if (seen.first_wrong != kMany) probe.found("another value at place %u", seen.first_wrong);
}

Table make_watched(Probe &probe) {
  Table table = make_table(probe);
  start(JX_OK);
  if (table) {
    probe.expect_status("to set the destructor",
                        table->table_set_entry_destructor(table.get(), 0, see), JX_OK);
  }
  return table;
}

void check_order(Probe &probe) {
  Table table = make_watched(probe);
  for (uint32_t i = 0; table && i < kMany; ++i) {
    // Keys whose order is another than that of insertion; every tenth entry has none.
    const uint32_t key = i * 2654435761u;
    const bool has_key = i % 10 != 0;
    if (!insert(table, i, has_key ? &key : nullptr, has_key ? sizeof key : 0)) {
      return probe.found("entry %u was not stored", i);
    }
  }
  if (table) expect_released(probe, table, kMany);
}

void check_entry(Probe &probe) {
  const Table table = make_table(probe);
  if (!table) return;
  JXTableEntry *entry = nullptr;
  if (!table->table_insert(table.get(), 0, 0, &values[0], &entry, "k", 1, 0)) {
    return probe.found("0");
  }
  if (!entry) return probe.found("no entry");
  if (entry->value != &values[0]) return probe.found("another value in the third word");
  if (entry->table != table.get()) probe.found("another table in the second word");
}

void check_duplicate(Probe &probe) {
  Table table = make_watched(probe);
  if (!table) return;
  char key[4] = "abc";
  if (!insert(table, 0, key, 3)) return probe.found("the first was not stored");
  key[2] = 'd';  // the table has a copy
  if (!insert(table, 1, key, 3)) return probe.found("a key of the same memory was not stored");
  for (const char *again : {"abc", "abd"}) {
    if (insert(table, 2, again, 3)) return probe.found("stored");
  }
  expect_released(probe, table, 2);
}

void check_keys(Probe &probe) {
  Table table = make_watched(probe);
  if (!table) return;
  // All different: by length, by a zero inside, by no key at all.
  if (!insert(table, 0, "ab", 2) || !insert(table, 1, "a", 1) || !insert(table, 2, "a\0b", 3) ||
      !insert(table, 3, "a\0c", 3) || !insert(table, 4, nullptr, 0) ||
      !insert(table, 5, nullptr, 0)) {
    return probe.found("one was not stored");
  }
  expect_released(probe, table, 6);
}

void check_status(Probe &probe) {
  Table table = make_watched(probe);
  for (uint32_t i = 0; table && i < 3; ++i) {
    if (!insert(table, i, nullptr, 0)) return probe.found("entry %u was not stored", i);
  }
  seen.answer = 7;
  if (table) expect_released(probe, table, 3);
}

void check_no_destructor(Probe &probe) {
  Table table = make_watched(probe);
  if (!table || !insert(table, 0, "k", 1)) return;
  probe.expect_status("to set it to null",
                      table->table_set_entry_destructor(table.get(), 0, nullptr), JX_OK);
  expect_released(probe, table, 0);
}

constexpr Check kChecks[] = {
    {Slot::table_insert, "2000 values", "destroyed in the order of insertion, once each",
     guide::kKernel, kTableSlots, check_order},
    {Slot::table_insert, "the entry of a value", "the table and the value in its words",
     guide::kKernel, kTableSlots, check_entry},
    {Slot::table_insert, "a key that is there already", "0, and the table is unchanged",
     guide::kKernel, kTableSlots, check_duplicate},
    {Slot::table_insert, "six keys that are similar", "all are stored", guide::kKernel, kTableSlots,
     check_keys},
    {Slot::destroy_table, "entries whose destructor answers 7", "every one is called; 7",
     guide::kKernel, kTableSlots, check_status},
    {Slot::set_destructor, "null", "the values are left alone", guide::kKernel, kTableSlots,
     check_no_destructor},
};

}  // namespace

std::span<const Check> table_checks() { return kChecks; }

}  // namespace jxcheck
