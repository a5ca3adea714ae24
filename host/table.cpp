// Tables: a list of entries in the order of insertion, and a chained hash table over those with
// keys.
#include <algorithm>
#include <cstring>
#include <utility>

#include "host/host.hpp"

namespace jxhost {

namespace {

// The link of an entry is the next entry in insertion order. A copy of the key follows the entry in
// memory.
struct Entry : JXTableEntry {
  Entry *chain;        // next entry of the same bucket
  uint32_t hash;       // of the key
  uint32_t key_bytes;  // 0: no key

  unsigned char *key() { return reinterpret_cast<unsigned char *>(this + 1); }
  const unsigned char *key() const { return reinterpret_cast<const unsigned char *>(this + 1); }
  bool has_key(const void *other, uint32_t other_bytes, uint32_t other_hash) const {
    return hash == other_hash && key_bytes == other_bytes &&
           std::memcmp(key(), other, other_bytes) == 0;
  }
};

Entry *after(const JXTableEntry *entry) {
  return static_cast<Entry *>(static_cast<JXTableEntry *>(entry->link));
}

// Memory for the entries of a table, given back with the table alone: a list of 10,000 members
// makes as many entries, and malloc and free of each cost more than all else here.
class EntryMemory {
 public:
  EntryMemory() = default;
  EntryMemory(const EntryMemory &) = delete;
  EntryMemory &operator=(const EntryMemory &) = delete;
  ~EntryMemory() {
    while (newest_) std::free(std::exchange(newest_, newest_->older));
  }

  // Memory aligned for an entry; null when out of memory.
  void *allocate(size_t bytes) {
    bytes = (bytes + alignof(Entry) - 1) & ~(alignof(Entry) - 1);
    if (bytes > room_bytes_ && !add_area(bytes)) return nullptr;
    room_bytes_ -= bytes;
    return std::exchange(next_, next_ + bytes);
  }

 private:
  struct alignas(Entry) Area {
    Area *older;
  };
  static constexpr size_t kLargestBytes = 65536;  // of an area, unless one entry needs more

  bool add_area(size_t bytes) {
    const size_t room_bytes = std::max(bytes, area_bytes_);
    void *memory = std::malloc(sizeof(Area) + room_bytes);
    if (!memory) return false;
    newest_ = new (memory) Area{newest_};
    next_ = reinterpret_cast<unsigned char *>(newest_ + 1);
    room_bytes_ = room_bytes;
    area_bytes_ = std::min(area_bytes_ * 2, kLargestBytes);
    return true;
  }

  Area *newest_ = nullptr;
  unsigned char *next_ = nullptr;
  size_t room_bytes_ = 0;    // from next_
  size_t area_bytes_ = 256;  // of the next area
};

struct Table final : JXTable, Live {
  Table();
  Entry *find(const void *key, uint32_t key_bytes, uint32_t hash) const;
  // Makes room in the buckets for one entry with a key. False when out of memory.
  bool reserve();
  void append(Entry *entry);

  EntryMemory memory;
  Entry *first = nullptr;  // in the order of insertion
  Entry *last = nullptr;
  uint32_t count = 0;                      // entries
  uint32_t keyed_count = 0;                // entries with a key
  Block<Entry *> buckets;                  // chains by hash
  size_t bucket_count = 0;                 // 0 or a power of two
  JXEntryDestructor destructor = nullptr;  // releases a value, or null
};

uint32_t hash_of(const void *key, uint32_t key_bytes) {
  uint32_t hash = 2166136261u;
  for (const auto *byte = static_cast<const unsigned char *>(key); key_bytes > 0; --key_bytes) {
    hash = (hash ^ *byte++) * 16777619u;
  }
  return hash ^ (hash >> 15);
}

Entry *Table::find(const void *key, uint32_t key_bytes, uint32_t hash) const {
  if (bucket_count == 0) return nullptr;
  Entry *entry = buckets.get()[hash & (bucket_count - 1)];
  while (entry && !entry->has_key(key, key_bytes, hash)) entry = entry->chain;
  return entry;
}

bool Table::reserve() {
  if (keyed_count < bucket_count) return true;
  const size_t new_count = bucket_count ? bucket_count * 2 : 16;
  Block<Entry *> fresh(static_cast<Entry **>(std::calloc(new_count, sizeof(void *))));
  // Out of memory is no failure here: longer chains still work, only slower.
  if (!fresh) return bucket_count != 0;
  for (Entry *entry = first; entry; entry = after(entry)) {
    if (entry->key_bytes == 0) continue;
    Entry *&head = fresh.get()[entry->hash & (new_count - 1)];
    entry->chain = std::exchange(head, entry);
  }
  buckets = std::move(fresh);
  bucket_count = new_count;
  return true;
}

void Table::append(Entry *entry) {
  if (entry->key_bytes > 0) {
    Entry *&head = buckets.get()[entry->hash & (bucket_count - 1)];
    entry->chain = std::exchange(head, entry);
    ++keyed_count;
  }
  if (last) {
    last->link = static_cast<JXTableEntry *>(entry);
  } else {
    first = entry;
  }
  last = entry;
  ++count;
}

JXStatus destroy_table(JXTable *table) {
  auto *self = static_cast<Table *>(table);
  JXStatus status = JX_OK;
  if (self && self->destructor) {
    for (Entry *entry = self->first; entry; entry = after(entry)) {
      const JXStatus entry_status = self->destructor(entry);
      if (status == JX_OK) status = entry_status;
    }
  }
  const JXStatus end_status = end_live(self);
  return status != JX_OK ? status : end_status;
}

int32_t table_insert(JXTable *table, uint32_t, uint32_t, void *value, JXTableEntry **entry_out,
                     const void *key, uint32_t key_bytes, uint32_t) {
  if (entry_out) *entry_out = nullptr;
  auto *self = static_cast<Table *>(table);
  if (!self || self->count == UINT32_MAX || (!key && key_bytes > 0)) return 0;
  if (!is_possible_size(sizeof(Entry) + uint64_t{key_bytes})) return 0;
  const uint32_t hash = hash_of(key, key_bytes);
  if (key_bytes > 0 && (self->find(key, key_bytes, hash) || !self->reserve())) return 0;
  void *memory = self->memory.allocate(sizeof(Entry) + key_bytes);
  if (!memory) return 0;
  auto *entry = new (memory) Entry{{nullptr, table, value}, nullptr, hash, key_bytes};
  if (key_bytes > 0) std::memcpy(entry->key(), key, key_bytes);
  self->append(entry);
  if (entry_out) *entry_out = entry;
  return 1;
}

JXStatus table_set_entry_destructor(JXTable *table, uint32_t, JXEntryDestructor destructor) {
  if (!table) return JXHOST_E_BADOBJECT;
  static_cast<Table *>(table)->destructor = destructor;
  return JX_OK;
}

Table::Table()
    : JXTable{.destroy_table = jxhost::destroy_table,
              .table_insert = jxhost::table_insert,
              .table_set_entry_destructor = jxhost::table_set_entry_destructor} {}

}  // namespace

JXTable *create_table(JXHost *host, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                      uint32_t, const char *name8) {
  return make_live<Table>(host, "table", name8);
}

}  // namespace jxhost

using jxhost::Entry;
using jxhost::Table;

extern "C" {

uint32_t jxhost_table_count(const JXTable *table) {
  return table ? static_cast<const Table *>(table)->count : 0;
}

const JXTableEntry *jxhost_table_first(const JXTable *table) {
  return table ? static_cast<const Table *>(table)->first : nullptr;
}

const JXTableEntry *jxhost_table_next(const JXTableEntry *entry) {
  return entry ? jxhost::after(entry) : nullptr;
}

const JXTableEntry *jxhost_table_find(const JXTable *table, const void *key, uint32_t key_bytes) {
  if (!table || !key || key_bytes == 0) return nullptr;
  return static_cast<const Table *>(table)->find(key, key_bytes, jxhost::hash_of(key, key_bytes));
}

const void *jxhost_table_key(const JXTableEntry *entry, uint32_t *key_bytes_out) {
  const auto *self = static_cast<const Entry *>(entry);
  const uint32_t key_bytes = self ? self->key_bytes : 0;
  if (key_bytes_out) *key_bytes_out = key_bytes;
  return key_bytes > 0 ? self->key() : nullptr;
}

}  // extern "C"
