// The life of a file, in phases, in each way to write and read records.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/instance.hpp"
#include "support/open.hpp"
#include "support/text_model.hpp"

namespace jx::test {

// One way to write and read a file.
struct Way {
  const char *name;
  uint32_t format, buffered, flags, file_encoding, record_encoding;
};

// Most names are literal: expansion is an operation of its own.
constexpr uint32_t kLiteral = JX_OPEN_LITERAL_NAME;
inline constexpr Way kWays[] = {
    {"text buffered", 0, 1, 0, 0, 0},
    {"text buffered utf-8", 0, 1, kLiteral, 20, 27},
    {"text buffered as it is", 3, 1, kLiteral, 27, 27},
    {"text direct utf-16", 0, 0, kLiteral, 25, 27},
    {"text direct as it is", 0, 0, kLiteral, 27, 27},
    {"binary buffered", 1, 1, kLiteral, 0, 0},
    {"binary direct", 1, 0, kLiteral, 0, 0},
    {"binary direct transfer", 1, 1, kLiteral | JX_OPEN_DIRECT_TRANSFER, 0, 0},
    {"stream buffered", 4, 1, kLiteral, 20, 27},
    {"stream direct", 4, 0, kLiteral, 24, 27},
    {"stream direct transfer", 4, 1, kLiteral | JX_OPEN_DIRECT_TRANSFER, 20, 27},
};

// A file's life in one of the ways. Each phase gives the first failure and goes on only as far as a
// careful caller would; every file is closed.
class RecordLife {
 public:
  static constexpr uint32_t kRecords = 3;
  static constexpr uint32_t kRecordChars = 4000;  // three fill more than a block of the buffer

  RecordLife(JXInstance *instance, const Way &way, std::string path, JXJournal *journal)
      : instance_(instance), way_(way), path_(std::move(path)), journal_(journal) {}

  const std::string &path() const { return path_; }
  bool is_buffered() const { return way_.buffered != 0 && !(way_.flags & JX_OPEN_DIRECT_TRANSFER); }

  JXStatus write() { return write_all(JX_ACCESS_OUTPUT); }
  JXStatus append() { return write_all(JX_ACCESS_APPEND); }
  JXStatus read() { return read_all(false); }
  JXStatus read_trying_again() { return read_all(true); }

  JXStatus update() {
    return live(JX_ACCESS_UPDATE, [&](JXFile *file) {
      int64_t offset = 0;
      if (keep(file->point(file, &offset, JX_POINT_START)) && !get(file, false).empty() &&
          keep(write_record(file, records_[1])) && keep(file->note(file, &offset))) {
        keep(file->truncate(file, &offset));
      }
    });
  }

  JXStatus use_offsets() {
    return live(JX_ACCESS_UPDATE, [&](JXFile *file) {
      int64_t offset = 0;
      if (!keep(write_record(file, records_[0], &offset))) return;
      offset = 0;
      keep(read_record(file, wanted(), &offset, buffer_.data()).status);
    });
  }

 private:
  JXStatus write_all(uint32_t access_mode) {
    return live(access_mode, [&](JXFile *file) {
      keep(file->attach_journal(file, journal_));
      for (const std::string &record : records_) {
        if (first_ == JX_OK) keep(write_record(file, record));
      }
      if (first_ == JX_OK) keep(file->flush(file));
    });
  }

  // tries_again: a read that failed is repeated.
  JXStatus read_all(bool tries_again) {
    std::string content;
    const JXStatus status = live(JX_ACCESS_INPUT, [&](JXFile *file) {
      std::string next = get(file, tries_again);
      for (; !next.empty(); next = get(file, tries_again)) content += next;
    });
    const std::string whole = records_[0] + records_[1] + records_[2];
    EXPECT_TRUE(status != JX_OK || content == whole) << content.size() << " bytes";
    return status;
  }

  std::string make_record(uint32_t index) const {
    const bool has_chars = way_.record_encoding == 27 || way_.format == 0;
    return encode(has_chars ? 27 : 62, std::u32string(kRecordChars, U'a' + index));
  }

  // Bytes that a read asks for.
  uint32_t wanted() const {
    const bool transfers = (way_.flags & JX_OPEN_DIRECT_TRANSFER) != 0;
    return static_cast<uint32_t>(transfers ? buffer_.size() : kRecordChars);
  }

  // True while nothing failed.
  bool keep(JXStatus status) {
    if (first_ == JX_OK) first_ = status;
    return first_ == JX_OK;
  }

  // The next record; empty at the end of the file.
  std::string get(JXFile *file, bool tries_again) {
    Record next = read_record(file, wanted(), nullptr, buffer_.data());
    if (next.status == JXWEM_E_SYSTEM && tries_again) {
      next = read_record(file, wanted(), nullptr, buffer_.data());
    }
    return next.status != JXWEM_E_EOF && keep(next.status) ? next.data : "";
  }

  template <typename Phase>
  JXStatus live(uint32_t access_mode, Phase phase) {
    JXOpenOptions options = open_options(access_mode, way_.buffered, way_.format);
    options.record_length = 5 * kRecordChars;  // room for a byte-order mark beside a record
    options.open_flags = way_.flags;
    options.file_encoding = way_.file_encoding;
    options.record_encoding = way_.record_encoding;
    options.journal = journal_;
    first_ = JX_OK;
    File file(instance_, path_, options);
    if (!keep(file.status)) return first_;
    phase(file);
    keep(file.close());
    return first_;
  }

  JXInstance *instance_;
  const Way &way_;
  std::string path_;
  JXJournal *journal_;
  const std::string records_[kRecords] = {make_record(0), make_record(1), make_record(2)};
  std::string buffer_ = std::string(16 * kRecordChars, '\0');
  JXStatus first_ = JX_OK;
};

}  // namespace jx::test
