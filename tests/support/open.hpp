// Opens files in tests and reads their records.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "jx/wem.h"
#include "support/text.hpp"

namespace jx::test {

// The options most tests start from: buffered input of text lines of 80 characters, in the default
// encodings.
inline JXOpenOptions open_options(uint32_t access_mode = JX_ACCESS_INPUT, uint32_t buffered = 1,
                                  uint32_t record_format = JX_FORMAT_VARIABLE) {
  JXOpenOptions options = {};
  options.access_mode = access_mode;
  options.buffered = buffered;
  options.record_length = 80;
  options.record_format = record_format;
  return options;
}

// An open file that closes itself; empty, with the status, when the open failed.
class File {
 public:
  File(JXInstance *instance, const JXString &name, const JXOpenOptions &options,
       const char *caller_tag8 = nullptr) {
    file_ = instance->open(instance, name.data(), chars(name), &options, 0,
                           reinterpret_cast<JXOwner>(uintptr_t{9}), caller_tag8, &status);
  }
  File(JXInstance *instance, const std::string &name, const JXOpenOptions &options)
      : File(instance, jx(name), options) {}
  File(const File &) = delete;
  File &operator=(const File &) = delete;
  ~File() {
    if (file_) file_->close(file_);
  }

  JXFile *operator->() const { return file_; }
  operator JXFile *() const { return file_; }
  // Closes the file; returns the status.
  JXStatus close() {
    JXFile *file = std::exchange(file_, nullptr);
    return file->close(file);
  }

  JXStatus status = 0x12345678;  // of the open

 private:
  JXFile *file_;
};

// The answer of a read.
struct Record {
  JXStatus status;
  std::string data;
  const void *pointer;
};

// Reads a record of up to `wanted` bytes; `memory` is the caller's, for direct transfer.
inline Record read_record(JXFile *file, uint32_t wanted = 0, int64_t *offset = nullptr,
                          void *memory = nullptr) {
  void *data = memory;
  uint32_t length = wanted;
  const JXStatus status = file->read(file, &data, &length, 0, offset);
  const bool has_length = status == JX_OK || status == JXWEM_E_PARTIAL || status == JXWEM_E_EOF;
  return {status, std::string(static_cast<const char *>(data), data && has_length ? length : 0),
          data};
}

// Every record to the end: "|" after each, "~" after a partial one, "null" for a null pointer, and
// the last status unless it is the end of the file.
inline std::string read_records(JXFile *file, uint32_t wanted = 0) {
  std::string all;
  for (;;) {
    const Record record = read_record(file, wanted);
    if (record.status == JXWEM_E_EOF) return all + record.data;
    if (record.status != JX_OK && record.status != JXWEM_E_PARTIAL) {
      return all + std::to_string(record.status);
    }
    all += record.pointer ? record.data : "null";
    all += record.status == JXWEM_E_PARTIAL ? "~|" : "|";
    if (all.size() > 100'000) return all + "no end";
  }
}

inline JXStatus write_record(JXFile *file, std::string_view data, int64_t *offset = nullptr) {
  return file->write(file, data.data(), static_cast<uint32_t>(data.size()), 0, offset);
}

}  // namespace jx::test
