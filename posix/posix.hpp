// The POSIX layer's contract with its neighbours: how errno becomes a status and a journal line,
// paths made ready for the system, owners of descriptors and streams, and the records that
// information tables and lists are made of.
#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "jx/wem.h"
#include "kernel/kernel.hpp"

namespace jx {

// One row of a call's error table: what an errno means there.
struct ErrnoRow {
  int error;        // errno value
  JXStatus status;  // what the operation answers
};

// The error table of one system call in one use. An errno without a row gives `other`, which is
// reported to a journal first when `reports_other` is set.
struct ErrnoMap {
  std::span<const ErrnoRow> rows;
  JXStatus other = JXWEM_E_SYSTEM;
  bool reports_other = true;
};

// Tells at compile time that the rows are in ascending order of errno, each errno once.
constexpr bool is_ordered(std::span<const ErrnoRow> rows) {
  for (size_t i = 1; i < rows.size(); ++i) {
    if (rows[i - 1].error >= rows[i].error) return false;
  }
  return true;
}

// Sets the results that a caller asks for to nothing, before anything can fail.
template <typename... Result>
void clear_results(Result *...results_out) {
  ((results_out ? static_cast<void>(*results_out = {}) : static_cast<void>(0)), ...);
}

// Turns the errno of a failed call into the operation's status by the call's table and, where the
// table says so, writes the system's text to the journal (which may be null).
JXStatus status_of_errno(const ErrnoMap &map, int error, JXInstance *instance, JXJournal *journal);

// ---- Tables that several calls share

inline constexpr ErrnoRow kStatRows[] = {{ENOENT, JXWEM_E_NOTFOUND}, {EACCES, JXWEM_E_ACCESS}};
inline constexpr ErrnoRow kOpenDirectoryRows[] = {{ENOENT, JXWEM_E_NOTFOUND},
                                                  {EACCES, JXWEM_E_ACCESS},
                                                  {ENOTDIR, JXWEM_E_NOTFOUND},
                                                  {ENAMETOOLONG, JXWEM_E_NAMETOOLONG}};
static_assert(is_ordered(kStatRows) && is_ordered(kOpenDirectoryRows));

inline constexpr ErrnoMap kStatErrors = {kStatRows};                    // information, existence
inline constexpr ErrnoMap kOpenDirectoryErrors = {kOpenDirectoryRows};  // opendir in every use

// ---- Paths

// A path in a block of its own.
struct OwnedPath {
  PoolBlock<JXChar> block;
  uint32_t chars = 0;

  Text text() const { return {block.get(), chars}; }
};

// Expands a path into a block of the instance's pool. The statuses of bkwemexpand_path.
JXStatus expand_path(JXInstance *instance, Text path, OwnedPath *path_out);
// Joins a directory and a member into a block of the instance's pool. The statuses of
// bkwembuildpath.
JXStatus build_path(JXInstance *instance, Text directory, Text member, OwnedPath *path_out);

// A component without its trailing blanks; empty when it is null. A length that no memory holds is
// left as it is, for the test of its size to refuse.
Text trimmed(Text component);

// Converts text to the platform encoding, one byte a character, and terminates it; destination
// holds text.chars + 1 bytes. The text is one that memory holds. 0, or JXWEM_E_FAILED.
JXStatus encode_native(JXInstance *instance, Text text, char *destination);
// The same into a block of the pool, for any length. 0, JXWEM_E_NAMETOOLONG (no memory holds such
// a text), JX_E_NOMEM or JXWEM_E_FAILED.
JXStatus encode_native(JXInstance *instance, Text text, JXPool *pool, PoolBlock<char> *native_out);

// Converts a name of the platform into JXChars; destination holds one a byte. *chars_out receives
// the length. 0, or the transcoder's status.
JXStatus decode_native(JXInstance *instance, const char *name, uint32_t bytes, JXChar *destination,
                       uint32_t *chars_out);

// A path made ready for the system. Ends with everything it holds.
class SystemPath {
 public:
  // Expands a path and converts the expansion; the platform form is a block of the pool. 0, a
  // status of the expansion, JX_E_NOMEM, JXWEM_E_FAILED (not convertible) or JXWEM_E_BADNAME (a
  // length without text).
  JXStatus prepare(JXInstance *instance, Text path, JXPool *pool);
  JXStatus prepare(JXInstance *instance, const JXChar *path, uint32_t path_chars) {
    return prepare(instance, {path, path_chars}, instance->pool);
  }
  // Converts a path that is used as it is. 0, JXWEM_E_NAMETOOLONG, JX_E_NOMEM or JXWEM_E_FAILED.
  JXStatus convert(JXInstance *instance, Text path, JXPool *pool) {
    return encode_native(instance, path, pool, &native_);
  }

  const char *native() const { return native_.get(); }  // terminated
  Text expanded() const { return expansion_.text(); }   // after prepare

 private:
  OwnedPath expansion_;
  PoolBlock<char> native_;
};

// Tells whether a path names anything. 0, or a status of kStatErrors.
JXStatus test_exists(JXInstance *instance, const char *path);
// Tells what a name, relative to a directory's descriptor or AT_FDCWD, is: 0 for a
// directory, 1 for anything else that exists, JXWEM_E_NOPATH when missing, JXWEM_E_ACCESS,
// JXWEM_E_SYSTEM.
JXStatus test_directory(JXInstance *instance, int directory_fd, const char *name);
// Makes one directory; an existing one is success. The statuses of bkwemmakedirectory.
JXStatus make_directory(JXInstance *instance, const char *path);

// ---- Descriptors and directory streams

// Owns a descriptor.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  [[nodiscard]] int release() { return std::exchange(fd_, -1); }
  // Closes and tells how that went, in errno. Never repeated: the descriptor is gone either way.
  int close() { return ::close(release()); }

 private:
  int fd_;
};

// Owns a directory stream.
class DirectoryStream {
 public:
  explicit DirectoryStream(DIR *stream) : stream_(stream) {}
  DirectoryStream(const DirectoryStream &) = delete;
  DirectoryStream &operator=(const DirectoryStream &) = delete;
  ~DirectoryStream() {
    if (stream_) closedir(stream_);
  }

  DIR *get() const { return stream_; }
  explicit operator bool() const { return stream_ != nullptr; }
  [[nodiscard]] DIR *release() { return std::exchange(stream_, nullptr); }

 private:
  DIR *stream_;
};

// Reads the next entry of a stream. 0, JXWEM_E_EOF when there is none, or JXWEM_E_SYSTEM after the
// system's text went to the journal (which may be null).
JXStatus read_entry(DIR *stream, dirent64 *entry, JXInstance *instance, JXJournal *journal);

// Tells whether a name, in characters of either kind, is "." or "..".
template <typename Char>
constexpr bool is_dot_name(const Char *name, uint32_t length) {
  return length >= 1 && length <= 2 && name[0] == '.' && name[length - 1] == '.';
}

// The stream of a directory handle; null once it is closed.
inline DIR *stream_of(const JXDirectory *directory) {
  void **holder = directory->stream_holder;
  return holder ? static_cast<DIR *>(*holder) : nullptr;
}

// The name that the copy of a tree gives its directory handles. Handles opened with this very
// pointer, which no host has, use their path as it is: the names in it are those of the tree.
inline constexpr char kCopyHandleName[] = "BKWEMCOPY";

// Opens the stream of a directory handle, by its path as it is or expanded. The statuses of
// bkwemopendir.
JXStatus open_stream(JXDirectory *directory, bool is_literal);

// ---- Information

// What information tables and directory lists tell of a file.
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

// ---- Lists

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

// A block of the pool with a copy of text; empty when memory is out.
PoolBlock<JXChar> copy_text(JXPool *pool, Text text);

}  // namespace jx
