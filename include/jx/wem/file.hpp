// An open file.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "jx/wem.h"
#include "jx/wem/handle.hpp"
#include "jx/wem/options.hpp"
#include "jx/wem/record.hpp"
#include "jx/wem/status.hpp"
#include "jx/wem/text.hpp"

namespace wem {

// An open file. The destructor closes it, but loses the status: call close() on a file that was
// written. Used by one thread at a time. On a file that is closed, moved from or was never opened
// every operation answers JXWEM_E_NOHANDLE. The module stays loaded as long as a file is open.
class File {
 public:
  File() = default;
  // Takes ownership of a file that was opened with these options.
  File(JXFile *file, const OpenOptions &options, Keeper keeper = {})
      : handle_(file, std::move(keeper)), encoding_(options.used_encodings().record) {}

  // Whether it is open.
  explicit operator bool() const { return raw() != nullptr; }
  // The module's handle, which stays this object's; null when it is not open.
  JXFile *raw() const { return handle_.get(); }
  // The attributes of the open file; all zero for a file that is not open. Valid until the file is
  // closed.
  const JXFileAttributes &attributes() const & {
    static constexpr JXFileAttributes kNone = {};
    return raw() ? raw()->attributes : kNone;
  }
  const JXFileAttributes &attributes() && = delete;
  // The name passed to open; empty for a file that is not open.
  std::u32string_view name() const & { return as_view(attributes().name, attributes().name_chars); }
  std::u32string_view name() && = delete;

  // Flushes and closes, and answers the first failure of the two; 0 for a file that is closed
  // already. The file is closed even on failure.
  Status close() { return handle_.close(); }

  // The next record: a text line, or up to the record length of a binary or stream file.
  // JXWEM_E_EOF at the end.
  Result<Record> read() & { return detail::read_record(raw(), encoding_); }
  // Up to count bytes of a binary or stream file, at the file's own offset or, for a file without
  // buffering, at *offset.
  Result<Record> read(uint32_t count, int64_t *offset = nullptr) & {
    return detail::read_record(raw(), encoding_, nullptr, count, offset);
  }
  // A record does not outlive its file: keep the file in a variable.
  Result<Record> read() && = delete;
  Result<Record> read(uint32_t count, int64_t *offset = nullptr) && = delete;
  // The same into the caller's memory, for a file opened with direct transfer.
  Result<Record> read_into(std::span<std::byte> destination, int64_t *offset = nullptr) {
    const auto count = static_cast<uint32_t>(std::min<size_t>(destination.size(), UINT32_MAX));
    return detail::read_record(raw(), encoding_, destination.data(), count, offset);
  }
  // Calls use with every record from here on. 0 at the end of the file, or the failure that came
  // before. If use returns a Status, one that is not 0 ends the loop and is the answer.
  template <std::invocable<const Record &> Use>
  Status for_each_record(Use use) {
    Record record;
    Status end;
    while (detail::take_record(raw(), encoding_, nullptr, attributes().record_length, nullptr,
                               &record, &end)) {
      if constexpr (std::same_as<std::invoke_result_t<Use, const Record &>, Status>) {
        if (const Status status = use(std::as_const(record)); !status.ok()) return status;
      } else {
        use(std::as_const(record));
      }
    }
    return end == JXWEM_E_EOF ? Status() : end;
  }
  // Every record from here on, for a range-for; check error() after the loop.
  RecordRange records() & { return RecordRange({handle_.watch(), encoding_}); }
  RecordRange records() && = delete;

  // The next line of a text file in UTF-8, of any length. JXWEM_E_EOF at the end,
  // JXWEM_E_NOTSUPPORTED for other files and for records neither in JXChars nor in UTF-8,
  // JXHOST_E_MALFORMED for invalid text.
  Result<std::string> read_line() { return detail::read_line(raw(), encoding_); }
  // Every line from here on, for a range-for; check error() after the loop.
  LineRange lines() & { return LineRange({handle_.watch(), encoding_}); }
  LineRange lines() && = delete;
  // All lines from here on, or a failure of read_line().
  Result<std::vector<std::string>> read_lines() {
    std::vector<std::string> all;
    const LineRange range = lines();
    for (const std::string &line : range) all.push_back(line);
    if (!range.error().ok()) return Failed(range.error());
    return Result<std::vector<std::string>>(std::move(all));
  }
  // All lines from here on in one text, each with a line feed after it, or a failure of
  // read_line().
  Result<std::string> read_text() {
    if (const Status status = detail::check_lines(raw(), encoding_); !status.ok()) {
      return Failed(status);
    }
    std::string all;
    const Status status = for_each_record([&all](const Record &record) {
      const Status appended = detail::append_record(record, all);
      if (!record.partial) all += '\n';
      return appended;
    });
    if (!status.ok()) return Failed(status);
    if (encoding_ == JX_ENCODING_UTF8 && !is_utf8(all)) return Failed(JXHOST_E_MALFORMED);
    return Result<std::string>(std::move(all));
  }
  // All bytes from here on of a binary or stream file without direct transfer, or the failure that
  // came before the end. JXWEM_E_NOTSUPPORTED for text lines.
  Result<std::vector<std::byte>> read_bytes() {
    if (raw() && detail::is_lines(raw())) return Failed(JXWEM_E_NOTSUPPORTED);
    std::vector<std::byte> all;
    const Status status = for_each_record([&all](const Record &record) {
      all.insert(all.end(), record.bytes.begin(), record.bytes.end());
    });
    if (!status.ok()) return Failed(status);
    return Result<std::vector<std::byte>>(std::move(all));
  }

  // Writes a record, given in the record encoding; *offset as for reading. JXWEM_E_TOOLONG when it
  // has 2^32 bytes or more.
  Status write(std::span<const std::byte> record, int64_t *offset = nullptr) {
    if (record.size() > UINT32_MAX) return Status(JXWEM_E_TOOLONG);
    const auto length = static_cast<uint32_t>(record.size());
    return detail::call(raw(), &JXFile::write, record.data(), length, 0u, offset);
  }
  // Writes a record of a text or stream file whose record encoding is JXChar;
  // JXWEM_E_NOTSUPPORTED for other files.
  Status write(std::u32string_view text) {
    if (raw() && encoding_ != JX_ENCODING_UTF32LE) return Status(JXWEM_E_NOTSUPPORTED);
    return write(std::as_bytes(std::span(text)));
  }
  // Writes a line of a text file, given in UTF-8, as one record. JXHOST_E_MALFORMED when it is not
  // UTF-8, JXWEM_E_TOOLONG when it is longer than a record, JXWEM_E_NOTSUPPORTED for other files
  // and for records neither in JXChars nor in UTF-8. Nothing is written then.
  Status write_line(std::string_view utf8) {
    if (!raw()) return Status(JXWEM_E_NOHANDLE);
    const auto text = from_utf8(utf8);
    if (!text) return text.status();
    if (!detail::is_lines(raw())) return Status(JXWEM_E_NOTSUPPORTED);
    if (text->size() > attributes().record_length) return Status(JXWEM_E_TOOLONG);
    return encoding_ == JX_ENCODING_UTF8 ? write(std::as_bytes(std::span(utf8))) : write(*text);
  }

  // Flushes all written data to the device.
  Status flush() { return detail::call(raw(), &JXFile::flush); }
  // The current offset in bytes of an unbuffered file.
  Result<int64_t> note() {
    int64_t offset = 0;
    return result(detail::call(raw(), &JXFile::note, &offset), offset);
  }
  // Moves the offset of an unbuffered file by JX_POINT_*; answers the new one.
  Result<int64_t> point(int64_t offset, uint32_t mode = 0) {
    return result(detail::call(raw(), &JXFile::point, &offset, mode), offset);
  }
  // Positions of the module are byte offsets: both conversions answer the number they are given.
  Result<int64_t> position_to_byte(int64_t position) {
    int64_t offset = 0;
    return result(detail::call(raw(), &JXFile::position_to_byte, &position, &offset), offset);
  }
  Result<int64_t> byte_to_position(int64_t offset) {
    int64_t position = 0;
    return result(detail::call(raw(), &JXFile::byte_to_position, &offset, &position), position);
  }
  // Record positioning: the module answers JXWEM_E_NOTSUPPORTED.
  Status position_to_record() { return detail::call(raw(), &JXFile::position_to_record); }
  Status record_to_position() { return detail::call(raw(), &JXFile::record_to_position); }
  // Sets the length of the file.
  Status truncate(int64_t length_bytes) {
    return detail::call(raw(), &JXFile::truncate, &length_bytes);
  }
  // Replaces the journal; null for none.
  Status attach_journal(JXJournal *journal) {
    return detail::call(raw(), &JXFile::attach_journal, journal);
  }

 private:
  // By reference: the argument that makes the status also sets the value.
  static Result<int64_t> result(Status status, const int64_t &value) {
    if (!status.ok()) return Failed(status);
    return Result<int64_t>(value);
  }

  detail::Handle<JXFile> handle_;
  uint32_t encoding_ = 0;  // of records; 0 for binary ones
};

}  // namespace wem
