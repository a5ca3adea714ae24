// Reading and writing records in tests.
#pragma once

#include <string>
#include <string_view>

#include "jx/wem.h"

namespace jx::test {

// What a read answered.
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

// Every record to the end: "~" after a partial one, "|" after each, "null" for one without a
// pointer, and the status that ended it unless that is the end of the file.
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
