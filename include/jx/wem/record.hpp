// Records in a file's buffer, and reading them and whole lines from a handle.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "jx/wem.h"
#include "jx/wem/handle.hpp"
#include "jx/wem/status.hpp"
#include "jx/wem/text.hpp"

namespace wem {

// A record in a file's buffer: valid until the next call on the file.
struct Record {
  std::span<const std::byte> bytes;  // the record in its record encoding
  bool partial = false;              // a text record whose line end was not seen
  uint32_t encoding = 0;             // record encoding; 0 for binary records

  // Whether the record is in JXChars, the default of text and stream records.
  bool is_text() const { return encoding == JX_ENCODING_UTF32LE; }
  // The record as text. Stops the program if the record is not in JXChars, like taking the value of
  // a failed Result.
  std::u32string_view text() const {
    if (!is_text()) detail::stop(Status(JXWEM_E_NOTSUPPORTED));
    return as_view(static_cast<const JXChar *>(static_cast<const void *>(bytes.data())),
                   bytes.size() / sizeof(JXChar));
  }
  // A copy in UTF-8 of a record in JXChars or UTF-8. JXWEM_E_NOTSUPPORTED for another encoding,
  // JXHOST_E_MALFORMED for invalid text, such as UTF-8 that the record length cuts.
  Result<std::string> utf8() const {
    if (is_text()) return to_utf8(text());
    if (encoding != JX_ENCODING_UTF8) return Failed(JXWEM_E_NOTSUPPORTED);
    std::string copy(raw_text());
    if (!is_utf8(copy)) return Failed(JXHOST_E_MALFORMED);
    return Result<std::string>(std::move(copy));
  }
  // The bytes as characters of eight bits.
  std::string_view raw_text() const {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
  }
};

namespace detail {

inline bool is_lines(const JXFile *file) {
  const uint32_t format = file->attributes.record_format;
  return format == JX_FORMAT_VARIABLE || format == JX_FORMAT_VARIABLE_3;
}

// Reads a record of up to count bytes into the caller's memory or the file's buffer, and stores it;
// false when there is none. Bytes that come with the end of the file are a record; the next read
// reports the end.
inline bool take_record(JXFile *file, uint32_t encoding, void *data, uint32_t count,
                        int64_t *offset, Record *record, Status *status) {
  uint32_t length = count;
  *status = call(file, &JXFile::read, &data, &length, 0u, offset);
  const bool is_last = *status == JXWEM_E_EOF && length > 0 && data;
  if (!status->ok() && *status != JXWEM_E_PARTIAL && !is_last) return false;
  *record = {{static_cast<const std::byte *>(data), length}, *status == JXWEM_E_PARTIAL, encoding};
  return true;
}

// The same as a result.
inline Result<Record> read_record(JXFile *file, uint32_t encoding, void *data, uint32_t count,
                                  int64_t *offset) {
  Record record;
  Status status;
  if (!take_record(file, encoding, data, count, offset, &record, &status)) return Failed(status);
  return Result<Record>(record);
}

// Reads the next record, up to the record length.
inline Result<Record> read_record(JXFile *file, uint32_t encoding) {
  const uint32_t length = file ? file->attributes.record_length : 0;
  return read_record(file, encoding, nullptr, length, nullptr);
}

// Appends a record to a line in UTF-8. A record in UTF-8 may begin or end inside a character.
inline Status append_record(const Record &record, std::string &line) {
  if (!record.is_text()) {
    line += record.raw_text();
    return Status();
  }
  const auto part = record.utf8();
  if (part) line += *part;
  return part.status();
}

// Whether lines in UTF-8 can be read: 0, JXWEM_E_NOHANDLE or JXWEM_E_NOTSUPPORTED.
inline Status check_lines(const JXFile *file, uint32_t encoding) {
  if (!file) return Status(JXWEM_E_NOHANDLE);
  const bool is_known = encoding == JX_ENCODING_UTF32LE || encoding == JX_ENCODING_UTF8;
  return is_lines(file) && is_known ? Status() : Status(JXWEM_E_NOTSUPPORTED);
}

// Reads a whole line in UTF-8, from as many records as it takes.
inline Result<std::string> read_line(JXFile *file, uint32_t encoding) {
  if (const Status status = check_lines(file, encoding); !status.ok()) return Failed(status);
  std::string line;
  auto record = read_record(file, encoding);
  if (!record) return Failed(record.status());
  for (;;) {
    if (const Status status = append_record(*record, line); !status.ok()) return Failed(status);
    if (!record->partial) break;
    record = read_record(file, encoding);
    if (record.status() == JXWEM_E_EOF) break;
    if (!record) return Failed(record.status());
  }
  if (encoding == JX_ENCODING_UTF8 && !is_utf8(line)) return Failed(JXHOST_E_MALFORMED);
  return Result<std::string>(std::move(line));
}

struct RecordReader {
  using Item = Record;
  Result<Record> read() { return read_record(file.get(), encoding); }
  Handle<JXFile>::Watch file;
  uint32_t encoding;
};

struct LineReader {
  using Item = std::string;
  Result<std::string> read() { return read_line(file.get(), encoding); }
  Handle<JXFile>::Watch file;
  uint32_t encoding;
};

}  // namespace detail

// The records of a file from the current one on; each is valid until the next step.
using RecordRange = ReadRange<detail::RecordReader>;
// The lines of a text file from the current one on, in UTF-8.
using LineRange = ReadRange<detail::LineReader>;

}  // namespace wem
