// The module as a contender, loaded by the reference host.
#pragma once

#include <cstdint>
#include <string>

#include "bench/job.hpp"
#include "bench/texts.hpp"
#include "jx/jxhost.h"
#include "jx/wem.h"

namespace jx::bench {

inline const char *const kModule = "jxwem";

JXInstance *instance();

// A path, one JXChar a byte.
class Name {
 public:
  explicit Name(const std::string &path) : text_(path.begin(), path.end()) {
    for (JXChar &unit : text_) unit &= 0xFF;
  }
  const JXChar *data() const { return text_.data(); }
  uint32_t chars() const { return static_cast<uint32_t>(text_.size()); }

 private:
  std::vector<JXChar> text_;
};

inline const JXChar *chars_of(const std::u32string &text) {
  return reinterpret_cast<const JXChar *>(text.data());
}
inline uint32_t count_of(const std::u32string &text) { return static_cast<uint32_t>(text.size()); }

// How a file is opened: text lines in UTF-8 or binary records, buffered, without a lock or a mark.
JXOpenOptions text_options(uint32_t access, uint32_t record_length, uint32_t record_encoding);
JXOpenOptions binary_options(uint32_t access, uint32_t record_length);

// An open file of the module, closed at the end.
class ModuleFile {
 public:
  ModuleFile(const std::string &path, const JXOpenOptions &options);
  ModuleFile(const ModuleFile &) = delete;
  ModuleFile &operator=(const ModuleFile &) = delete;
  ~ModuleFile() { (void)file_->close(file_); }
  // One record: false at the end. `*bytes` is the wish, for binary records, and the answer.
  bool read(void **data, uint32_t *bytes, int64_t *offset = nullptr) {
    return file_->read(file_, data, bytes, 0, offset) == JX_OK;
  }
  bool write(const void *data, size_t bytes, int64_t *offset = nullptr) {
    return file_->write(file_, data, static_cast<uint32_t>(bytes), 0, offset) == JX_OK;
  }

 private:
  JXFile *file_;
};

// Reads all records; their units are JXChars when the file is transcoded.
uint64_t tally_records(const std::string &path, const JXOpenOptions &options, uint32_t wish = 0);

struct Totals {
  uint64_t members = 0, directories = 0, bytes_of_files = 0;
  uint64_t value() const { return members * 1'000'003 + directories * 101 + bytes_of_files; }
};
// Each fails the program when the module refuses.
Totals list_with_module(const std::string &path);
void copy_with_module(const std::string &from, const std::string &to);
void remove_with_module(const std::string &path);

}  // namespace jx::bench
