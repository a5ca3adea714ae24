// The records of information tables and lists, and their owners until they are handed over.
#pragma once

#include <cstdint>
#include <utility>

#include "jx/records.h"
#include "kernel/owners.hpp"

struct stat64;

namespace [[gnu::visibility("hidden")]] jx {

// Sets the results that a caller asks for to nothing, before anything can fail.
template <typename... Result>
void clear_results(Result *...results_out) {
  ((results_out ? static_cast<void>(*results_out = {}) : static_cast<void>(0)), ...);
}

// The facts about a file in information tables and directory lists.
struct FileFacts {
  uint64_t size_bytes;
  double modified;  // seconds since 1 January 1960 00:00 local time
  bool is_dir;
};

// The host's time zone in seconds to be added to UTC.
double time_zone_seconds();
FileFacts facts_of(const struct stat64 &info, double zone_seconds);

// Frees an information record: its name, its second block and itself.
void free_info_item(JXInfoItem *item);

// The records of an information table, in the order they go in: made and handed out by bk
// routines, taken over and moved into a table by jx routines. Frees what it still holds.
class InfoItems {
 public:
  explicit InfoItems(JXPool *pool) : pool_(pool) {}
  // Takes over what release handed out.
  InfoItems(JXPool *pool, JXInfoItem **items, uint32_t count)
      : pool_(pool), items_(pool, items), end_(count) {}
  InfoItems(const InfoItems &) = delete;
  InfoItems &operator=(const InfoItems &) = delete;
  ~InfoItems() {
    while (front()) free_info_item(pop_front());
  }

  // Makes the array. 0 or JX_E_NOMEM.
  JXStatus reserve(uint32_t count);
  // Appends a record; name is terminated and becomes the item's name. 0 or JX_E_NOMEM.
  JXStatus add(uint32_t type, uint32_t format, const JXChar *name, JXInfoValue value);
  JXInfoItem *front() const { return begin_ < end_ ? items_[begin_] : nullptr; }
  JXInfoItem *pop_front() { return items_[begin_++]; }
  // Hands the array with its records over.
  void release(JXInfoItem ***items_out, uint32_t *count_out) {
    *count_out = std::exchange(end_, 0);
    *items_out = items_.release();
  }

 private:
  JXPool *pool_;
  PoolBlock<JXInfoItem *> items_;
  uint32_t begin_ = 0;
  uint32_t end_ = 0;
};

// Frees a record of a list with everything it holds.
void free_record(JXMember *record);
void free_record(JXDirectoryEntry *record);

// A singly linked list of records. Frees what it still holds.
template <typename Record>
class RecordList {
 public:
  explicit RecordList(Record *first = nullptr) : first_(first) {}
  RecordList(const RecordList &) = delete;
  RecordList &operator=(const RecordList &) = delete;
  ~RecordList() {
    while (front()) free_record(pop_front());
  }

  void append(Record *record) {
    (last_ ? last_->next : first_) = record;
    last_ = record;
    ++count_;
  }
  Record *front() const { return first_; }
  Record *pop_front() { return std::exchange(first_, first_->next); }
  // Hands the list over.
  void release(Record **first_out, uint64_t *count_out) {
    *first_out = std::exchange(first_, nullptr);
    *count_out = count_;
  }

 private:
  Record *first_;
  Record *last_ = nullptr;
  uint64_t count_ = 0;
};

}  // namespace jx
