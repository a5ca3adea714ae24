// Host pools and tables, information about files, and open directories.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "jx/jxhost.h"
#include "jx/wem.h"
#include "jx/wem/status.hpp"

namespace wem {

// A pool of the host; destroyed, with every block in it, by its destructor.
class Pool {
 public:
  Pool() = default;
  // name8 is copied by the host. Empty when memory is out.
  Pool(JXHost *host, const char *name8) : pool_(host->create_pool(host, 0, 0, 0, nullptr, name8)) {}
  Pool(Pool &&other) noexcept : pool_(std::exchange(other.pool_, nullptr)) {}
  Pool &operator=(Pool &&other) noexcept {
    std::swap(pool_, other.pool_);
    return *this;
  }
  ~Pool() {
    if (pool_) pool_->destroy_pool(pool_);
  }

  explicit operator bool() const { return pool_ != nullptr; }
  JXPool *raw() const { return pool_; }

 private:
  JXPool *pool_ = nullptr;
};

// A table of records of type Value that the module handed out, with the pool its records need when
// that is the table's own. The walk and the look-up are the reference host's.
template <typename Value>
class Table {
 public:
  class Iterator {
   public:
    using value_type = Value;
    using difference_type = std::ptrdiff_t;
    Iterator() = default;
    explicit Iterator(const JXTableEntry *entry) : entry_(entry) {}
    const Value &operator*() const { return *static_cast<const Value *>(entry_->value); }
    const Value *operator->() const { return &**this; }
    Iterator &operator++() {
      entry_ = jxhost_table_next(entry_);
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(Iterator, Iterator) = default;

   private:
    const JXTableEntry *entry_ = nullptr;
  };

  // A null table is empty: the module's answer for a directory without members.
  explicit Table(JXTable *table = nullptr, Pool pool = {})
      : pool_(std::move(pool)), table_(table) {}
  Table(Table &&other) noexcept
      : pool_(std::move(other.pool_)), table_(std::exchange(other.table_, nullptr)) {}
  Table &operator=(Table &&other) noexcept {
    std::swap(pool_, other.pool_);
    std::swap(table_, other.table_);
    return *this;
  }
  ~Table() {
    if (table_) table_->destroy_table(table_);
  }

  JXTable *raw() const { return table_; }
  Iterator begin() const { return Iterator(table_ ? jxhost_table_first(table_) : nullptr); }
  Iterator end() const { return Iterator(); }
  size_t size() const { return table_ ? jxhost_table_count(table_) : 0; }
  bool empty() const { return size() == 0; }
  // The record stored under a name, or null.
  const Value *find(std::u32string_view key) const {
    const uint32_t key_bytes = char_count(key) * static_cast<uint32_t>(sizeof(JXChar));
    if (key_bytes / sizeof(JXChar) != key.size()) return nullptr;  // no key is that long
    const auto *entry = table_ ? jxhost_table_find(table_, as_chars(key), key_bytes) : nullptr;
    return entry ? static_cast<const Value *>(entry->value) : nullptr;
  }

 private:
  Pool pool_;  // before the table: it must outlive it
  JXTable *table_ = nullptr;
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

// What an information table says about a file.
struct FileInfo {
  uint64_t size_bytes = 0;
  double modified = 0;  // seconds since 1 January 1960, local time
  bool is_directory = false;
};

// What an information table says about the file system that holds a file.
struct FileSystemInfo {
  uint64_t free_bytes = 0;
  uint32_t identifier = 0;
};

inline FileInfo to_file_info(const Table<JXInfoItem> &table) {
  FileInfo info;
  if (const auto *item = table.find(U"FILESIZE")) info.size_bytes = item->value.bytes;
  if (const auto *item = table.find(U"MODTIME")) info.modified = item->value.time;
  if (const auto *item = table.find(U"ISDIR")) info.is_directory = (item->value.word & 1u) != 0;
  return info;
}

inline FileSystemInfo to_file_system_info(const Table<JXInfoItem> &table) {
  FileSystemInfo info;
  if (const auto *item = table.find(U"FREESPACE")) info.free_bytes = item->value.bytes;
  if (const auto *item = table.find(U"FILESYSID")) info.identifier = item->value.word;
  return info;
}

class EntryRange;

// An open directory; closed by its destructor. Used by one thread at a time.
class Directory {
 public:
  Directory() = default;
  explicit Directory(JXDirectory *directory) : directory_(directory) {}
  Directory(Directory &&other) noexcept : directory_(std::exchange(other.directory_, nullptr)) {}
  Directory &operator=(Directory &&other) noexcept {
    std::swap(directory_, other.directory_);
    return *this;
  }
  ~Directory() { static_cast<void>(close()); }

  explicit operator bool() const { return directory_ != nullptr; }
  JXDirectory *raw() const { return directory_; }
  Status close() {
    JXDirectory *directory = std::exchange(directory_, nullptr);
    return directory ? directory->close(directory) : JX_OK;
  }

  // The next name, in the system's order. JXWEM_E_EOF after the last one.
  Result<std::u32string> read() {
    std::array<JXChar, JX_NAME_MAX_CHARS> buffer;
    uint32_t chars = JX_NAME_MAX_CHARS;
    const Status status = directory_->read(directory_, buffer.data(), &chars);
    if (!status.ok()) return status;
    return std::u32string(as_view(buffer.data(), chars));
  }
  // Every name not read yet, for a range-for.
  EntryRange entries();
  // 0 when the directory holds a member of that name; JXWEM_E_NOTFOUND.
  Status contains(std::u32string_view name) {
    return directory_->member_exist(directory_, as_chars(name), char_count(name));
  }
  // The members not read yet as a table, by JX_LIST_* flags.
  Result<Table<JXMember>> members(uint32_t flags = 0) {
    Pool pool(directory_->instance->host, "jxwem members");
    if (!pool) return Status(JX_E_NOMEM);
    uint64_t count = 0;
    JXStatus status = JX_OK;
    JXTable *table = directory_->member_list(directory_, pool.raw(), flags, &count, &status);
    if (!table && status != JX_OK) return Status(status);
    return Table<JXMember>(table, std::move(pool));
  }

 private:
  JXDirectory *directory_ = nullptr;
};

// The names of a directory from its current place on; status() tells what ended the iteration.
class EntryRange {
 public:
  class Iterator {
   public:
    using value_type = std::u32string;
    using difference_type = std::ptrdiff_t;
    explicit Iterator(EntryRange *range) : range_(range) {}
    const std::u32string &operator*() const { return *range_->next_; }
    Iterator &operator++() {
      range_->next_ = range_->directory_.read();
      return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(std::default_sentinel_t) const { return !range_->next_; }

   private:
    EntryRange *range_;
  };

  explicit EntryRange(Directory &directory) : directory_(directory) {}
  Iterator begin() {
    next_ = directory_.read();
    return Iterator(this);
  }
  std::default_sentinel_t end() const { return {}; }
  // JXWEM_E_EOF after the last name, or the failure that stopped the reading.
  Status status() const { return next_.status(); }

 private:
  Directory &directory_;
  Result<std::u32string> next_ = Status(JX_OK);
};

inline EntryRange Directory::entries() { return EntryRange(*this); }

}  // namespace wem
