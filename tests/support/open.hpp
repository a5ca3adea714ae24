// Opening files in tests.
#pragma once

#include <string>

#include "jx/wem.h"
#include "support/text.hpp"

namespace jx::test {

// Options with which most tests start: text lines of 80 characters for input, through the buffer,
// in the default encodings.
inline JXOpenOptions open_options(uint32_t access_mode = JX_ACCESS_INPUT, uint32_t buffered = 1,
                                  uint32_t record_format = JX_FORMAT_VARIABLE) {
  JXOpenOptions options = {};
  options.access_mode = access_mode;
  options.buffered = buffered;
  options.record_length = 80;
  options.record_format = record_format;
  return options;
}

// An open file that closes itself; empty with the status of the open when that failed.
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

  JXFile *get() const { return file_; }
  JXFile *operator->() const { return file_; }
  operator JXFile *() const { return file_; }
  // Closes the file and gives the status of that.
  JXStatus close() {
    JXFile *file = file_;
    file_ = nullptr;
    return file->close(file);
  }

  JXStatus status = 0x12345678;  // of the open

 private:
  JXFile *file_;
};

}  // namespace jx::test
