// Host pools and tables, and the information about files in them.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "jx/jxhost.h"
#include "jx/wem.h"
#include "jx/wem/handle.hpp"
#include "jx/wem/text.hpp"

namespace wem {

// A pool of the host, which must outlive it. The destructor destroys the pool with every block in
// it.
class Pool {
 public:
  Pool() = default;
  // name8 is copied by the host. Empty when out of memory or without a host.
  Pool(JXHost *host, const char *name8)
      : pool_(host ? host->create_pool(host, 0, 0, 0, nullptr, name8) : nullptr) {}

  // Whether there is a pool.
  explicit operator bool() const { return pool_ != nullptr; }
  // The host's pool, which stays this object's; null when there is none.
  JXPool *raw() const { return pool_.get(); }

 private:
  struct Destroy {
    void operator()(JXPool *pool) const { pool->destroy_pool(pool); }
  };
  std::unique_ptr<JXPool, Destroy> pool_;
};

// A table of records of type Value from the module, with the pool of its records if that is the
// table's own. The module stays loaded as long as the table exists. Iteration and look-up need the
// reference host.
template <typename Value>
class Table {
 public:
  // A forward iterator over the records, valid as long as the table.
  class Iterator {
   public:
    using value_type = Value;                // what it points to
    using difference_type = std::ptrdiff_t;  // required of iterators
    Iterator() = default;
    // At an entry of the table; past the last one for null.
    explicit Iterator(const JXTableEntry *entry) : entry_(entry) {}
    // The record.
    const Value &operator*() const { return *static_cast<const Value *>(entry_->value); }
    const Value *operator->() const { return &**this; }
    // Goes to the next record, in the order of insertion.
    Iterator &operator++() {
      entry_ = jxhost_table_next(entry_);
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    // Whether both are at the same entry.
    friend bool operator==(Iterator, Iterator) = default;

   private:
    const JXTableEntry *entry_ = nullptr;
  };

  // Takes ownership of a table. Null is an empty table: the module's answer for a directory without
  // members.
  explicit Table(JXTable *table = nullptr, Pool pool = {}, Keeper keeper = {})
      : keeper_(std::move(keeper)), pool_(std::move(pool)), table_(table) {}
  Table(Table &&) noexcept = default;
  // Destroys the table that was held before its pool.
  Table &operator=(Table &&other) noexcept {
    table_ = std::move(other.table_);
    pool_ = std::move(other.pool_);
    keeper_ = std::move(other.keeper_);
    return *this;
  }

  // The host's table, which stays this object's; null when it is empty.
  JXTable *raw() const { return table_.get(); }
  // The records in the order of insertion.
  Iterator begin() const & { return Iterator(table_ ? jxhost_table_first(raw()) : nullptr); }
  Iterator end() const & { return Iterator(); }
  // The number of records.
  size_t size() const { return table_ ? jxhost_table_count(raw()) : 0; }
  // Whether there are none.
  bool empty() const { return size() == 0; }
  // The record stored under a name, or null.
  const Value *find(std::u32string_view key) const & {
    const uint32_t key_bytes = char_count(key) * static_cast<uint32_t>(sizeof(JXChar));
    if (key_bytes / sizeof(JXChar) != key.size()) return nullptr;  // no key is that long
    const auto *entry = table_ ? jxhost_table_find(raw(), as_chars(key), key_bytes) : nullptr;
    return entry ? static_cast<const Value *>(entry->value) : nullptr;
  }
  // Records do not outlive their table: keep it in a variable.
  Iterator begin() && = delete;
  Iterator end() && = delete;
  const Value *find(std::u32string_view key) && = delete;

 private:
  struct Destroy {
    void operator()(JXTable *table) const { table->destroy_table(table); }
  };

  // Destroyed in reverse order: the table first, the module last.
  Keeper keeper_;
  Pool pool_;
  std::unique_ptr<JXTable, Destroy> table_;
};

// The name of a list's record or of an information item.
inline std::u32string_view name_of(const JXInfoItem &item) {
  return as_view(item.name, item.name_chars);
}
inline std::u32string_view name_of(const JXMember &member) {
  return as_view(member.name, member.name_chars);
}
inline std::u32string_view name_of(const JXDirectoryEntry &entry) {
  return as_view(entry.name, entry.name_chars);
}

// Information about a file.
struct FileInfo {
  uint64_t size_bytes = 0;                    // length of the file
  double modified = 0;                        // seconds since 1 January 1960, local time
  bool is_directory = false;                  // false for everything else that exists
  std::chrono::sys_seconds modified_at = {};  // the same in the system's clock

  // The same as a time_t; the nearest one when it does not fit 32 bits.
  std::time_t modified_time_t() const {
    using Limits = std::numeric_limits<std::time_t>;
    const int64_t seconds = modified_at.time_since_epoch().count();
    return static_cast<std::time_t>(std::clamp<int64_t>(seconds, Limits::min(), Limits::max()));
  }
};

// Converts a time of the module to the system's clock: seconds since 1 January 1960, in a zone that
// is seconds_west seconds west of UTC.
inline std::chrono::sys_seconds to_system_time(double modified, int32_t seconds_west) {
  const double seconds = std::floor(modified - JX_SECONDS_1960_TO_1970 + seconds_west);
  return std::chrono::sys_seconds(std::chrono::seconds(static_cast<int64_t>(seconds)));
}

// Information about a file system.
struct FileSystemInfo {
  uint64_t free_bytes = 0;  // what is free
  uint32_t identifier = 0;  // tells file systems apart
};

// The facts in a table of Instance::info_table; seconds_west is the time zone of the host.
inline FileInfo to_file_info(const Table<JXInfoItem> &table, int32_t seconds_west) {
  FileInfo info;
  if (const auto *item = table.find(U"FILESIZE")) info.size_bytes = item->value.bytes;
  if (const auto *item = table.find(U"MODTIME")) info.modified = item->value.time;
  if (const auto *item = table.find(U"ISDIR")) info.is_directory = (item->value.word & 1u) != 0;
  info.modified_at = to_system_time(info.modified, seconds_west);
  return info;
}

// The facts in a table of Instance::file_system_info_table.
inline FileSystemInfo to_file_system_info(const Table<JXInfoItem> &table) {
  FileSystemInfo info;
  if (const auto *item = table.find(U"FREESPACE")) info.free_bytes = item->value.bytes;
  if (const auto *item = table.find(U"FILESYSID")) info.identifier = item->value.word;
  return info;
}

}  // namespace wem
