// Open options, open files and their records.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "jx/wem.h"
#include "jx/wem/status.hpp"

namespace wem {

// What to open and how. Every setter gives back a changed copy, so that options are built in one
// expression and kept as values. Start: buffered binary records of up to 8192 bytes.
class [[nodiscard]] OpenOptions {
 public:
  static OpenOptions input() { return OpenOptions(JX_ACCESS_INPUT); }
  static OpenOptions output() { return OpenOptions(JX_ACCESS_OUTPUT); }
  static OpenOptions append() { return OpenOptions(JX_ACCESS_APPEND); }
  static OpenOptions update() { return OpenOptions(JX_ACCESS_UPDATE); }

  // The record format with the longest record. The length counts bytes of the file; a direct write
  // of text lines that converts counts characters.
  OpenOptions text(uint32_t length) const { return format(JX_FORMAT_VARIABLE, length); }
  OpenOptions binary(uint32_t length) const { return format(JX_FORMAT_BINARY, length); }
  OpenOptions stream(uint32_t length) const { return format(JX_FORMAT_STREAM, length); }

  // One transfer a record instead of blocks through the record buffer.
  OpenOptions direct() const { return with(&JXOpenOptions::buffered, 0); }
  // Binary and stream reads go straight into the caller's memory.
  OpenOptions direct_transfer() const { return with_flag(JX_OPEN_DIRECT_TRANSFER); }
  // The name is used as it is, without path expansion.
  OpenOptions literal_name() const { return with_flag(JX_OPEN_LITERAL_NAME); }
  // No byte-order mark is written. Instance::open adds this by itself for append and update of a
  // file that is not empty.
  OpenOptions no_byte_order_mark() const { return with_flag(JX_OPEN_NO_BOM); }
  // Encoding numbers of the host; 0 takes the module's default.
  OpenOptions encodings(uint32_t file, uint32_t record) const {
    return with(&JXOpenOptions::file_encoding, file).with(&JXOpenOptions::record_encoding, record);
  }
  // JX_LOCK_*.
  OpenOptions lock(uint32_t mode) const { return with(&JXOpenOptions::lock_mode, mode); }
  OpenOptions reserved_switch(uint32_t value) const {
    return with(&JXOpenOptions::reserved_switch, value);
  }
  // Words that the file's attributes report back; at most 32 are kept.
  OpenOptions user_values(std::span<const uint32_t> values) const {
    OpenOptions copy = *this;
    const size_t count = std::min<size_t>(values.size(), JX_USER_VALUE_COUNT);
    std::copy_n(values.begin(), count, copy.options_.user_values);
    copy.options_.user_value_count = static_cast<int32_t>(count);
    return copy;
  }
  // Where system errors are reported; must outlive the file.
  OpenOptions journal(JXJournal *journal) const { return with(&JXOpenOptions::journal, journal); }

  // The record that the module reads.
  const JXOpenOptions &raw() const { return options_; }

 private:
  explicit OpenOptions(uint32_t access) {
    options_.access_mode = access;
    options_.buffered = 1;
    options_.record_format = JX_FORMAT_BINARY;
    options_.record_length = JX_RECORD_BLOCK_BYTES;
  }
  template <typename Field>
  OpenOptions with(Field JXOpenOptions::*field, std::type_identity_t<Field> value) const {
    OpenOptions copy = *this;
    copy.options_.*field = value;
    return copy;
  }
  OpenOptions with_flag(uint32_t flag) const {
    return with(&JXOpenOptions::open_flags, options_.open_flags | flag);
  }
  OpenOptions format(uint32_t number, uint32_t length) const {
    return with(&JXOpenOptions::record_format, number).with(&JXOpenOptions::record_length, length);
  }

  JXOpenOptions options_ = {};
};

// A record that a file lends: valid until the next call on the file.
struct Record {
  std::span<const std::byte> bytes;  // the record in its record encoding
  bool partial = false;              // a text record whose line end was not seen

  // The record as text, when its record encoding is JXChar (the default of text records).
  std::u32string_view text() const {
    return as_view(static_cast<const JXChar *>(static_cast<const void *>(bytes.data())),
                   bytes.size() / sizeof(JXChar));
  }
};

class RecordRange;

// An open file; closed by its destructor, whose status is lost: close a file that was written.
// Used by one thread at a time.
class File {
 public:
  File() = default;
  explicit File(JXFile *file) : file_(file) {}
  File(File &&other) noexcept : file_(std::exchange(other.file_, nullptr)) {}
  File &operator=(File &&other) noexcept {
    std::swap(file_, other.file_);
    return *this;
  }
  ~File() { static_cast<void>(close()); }

  explicit operator bool() const { return file_ != nullptr; }
  JXFile *raw() const { return file_; }
  // What was opened. Not for a closed file.
  const JXFileAttributes &attributes() const { return file_->attributes; }
  // The name as it was given to open.
  std::u32string_view name() const {
    return as_view(file_->attributes.name, file_->attributes.name_chars);
  }

  // Flushes and closes; the first failure of the two, 0 for a file that is closed already. The
  // file is closed whatever the status.
  Status close() {
    JXFile *file = std::exchange(file_, nullptr);
    return file ? file->close(file) : JX_OK;
  }

  // The next record: a text line, or up to the record length of a binary or stream file.
  // JXWEM_E_EOF at the end.
  Result<Record> read() { return read(file_->attributes.record_length); }
  // Up to count bytes of a binary or stream file, at the file's own offset or, for a file without
  // buffering, at *offset.
  Result<Record> read(uint32_t count, int64_t *offset = nullptr) {
    return read_at(nullptr, count, offset);
  }
  // The same into the caller's memory, for a file opened with direct transfer.
  Result<Record> read_into(std::span<std::byte> destination, int64_t *offset = nullptr) {
    return read_at(destination.data(), clamp_count(destination.size()), offset);
  }
  // Every record from here on, for a range-for.
  RecordRange records();

  // Writes a record in its record encoding; *offset as for reading.
  Status write(std::span<const std::byte> record, int64_t *offset = nullptr) {
    if (record.size() > UINT32_MAX) return JXWEM_E_TOOLONG;
    return file_->write(file_, record.data(), static_cast<uint32_t>(record.size()), 0, offset);
  }
  // Writes a record of a file whose record encoding is JXChar.
  Status write(std::u32string_view text) { return write(std::as_bytes(std::span(text))); }

  // Forces what was written to the device.
  Status flush() { return file_->flush(file_); }
  // The current offset in bytes, of a file without buffering.
  Result<int64_t> note() {
    int64_t offset = 0;
    const Status status = file_->note(file_, &offset);
    return status.ok() ? Result<int64_t>(offset) : status;
  }
  // Moves by JX_POINT_* of a file without buffering; the new offset.
  Result<int64_t> point(int64_t offset, uint32_t mode = 0) {
    const Status status = file_->point(file_, &offset, mode);
    return status.ok() ? Result<int64_t>(offset) : status;
  }
  // A position of the module is a byte offset; both ways answer the same number.
  Result<int64_t> position_to_byte(int64_t position) {
    int64_t offset = 0;
    const Status status = file_->position_to_byte(file_, &position, &offset);
    return status.ok() ? Result<int64_t>(offset) : status;
  }
  Result<int64_t> byte_to_position(int64_t offset) {
    int64_t position = 0;
    const Status status = file_->byte_to_position(file_, &offset, &position);
    return status.ok() ? Result<int64_t>(position) : status;
  }
  // Record positioning: the module answers JXWEM_E_NOTSUPPORTED.
  Status position_to_record() { return file_->position_to_record(file_); }
  Status record_to_position() { return file_->record_to_position(file_); }
  // Sets the length of the file.
  Status truncate(int64_t length_bytes) { return file_->truncate(file_, &length_bytes); }
  // Replaces the journal; null for none.
  Status attach_journal(JXJournal *journal) { return file_->attach_journal(file_, journal); }

 private:
  static uint32_t clamp_count(size_t count) {
    return static_cast<uint32_t>(std::min<size_t>(count, UINT32_MAX));
  }
  Result<Record> read_at(void *data, uint32_t count, int64_t *offset) {
    uint32_t length = count;
    const Status status = file_->read(file_, &data, &length, 0, offset);
    if (!status.ok() && status != JXWEM_E_PARTIAL) return status;
    return Record{{static_cast<const std::byte *>(data), length}, status == JXWEM_E_PARTIAL};
  }

  JXFile *file_ = nullptr;
};

// The records of a file from its current place on. Each step of the iteration is one read; status()
// tells afterwards what ended it.
class RecordRange {
 public:
  class Iterator {
   public:
    using value_type = Record;
    using difference_type = std::ptrdiff_t;
    explicit Iterator(RecordRange *range) : range_(range) {}
    const Record &operator*() const { return range_->record_; }
    Iterator &operator++() {
      range_->advance();
      return *this;
    }
    void operator++(int) { range_->advance(); }
    bool operator==(std::default_sentinel_t) const { return !range_->has_record_; }

   private:
    RecordRange *range_;
  };

  explicit RecordRange(File &file) : file_(file) {}
  Iterator begin() {
    advance();
    return Iterator(this);
  }
  std::default_sentinel_t end() const { return {}; }
  // JXWEM_E_EOF after the last record, or the failure that stopped the reading.
  Status status() const { return status_; }

 private:
  void advance() {
    Result<Record> next = file_.read();
    status_ = next.status();
    has_record_ = static_cast<bool>(next);
    if (has_record_) record_ = *next;
  }

  File &file_;
  Record record_;
  bool has_record_ = false;
  Status status_;
};

inline RecordRange File::records() { return RecordRange(*this); }

}  // namespace wem
