// One random script run on the module and on the model: statuses, records, positions and the file
// itself must agree.
#pragma once

#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "support/record_model.hpp"
#include "support/record_script.hpp"
#include "support/text.hpp"

namespace jx::test {

// Runs one script on both sides and keeps the first difference. Host reads of buffered text bring
// most_bytes, if not 0: how a pipe cuts them makes no difference.
class RecordComparison {
 public:
  RecordComparison(JXInstance *instance, std::string path, uint32_t most_bytes)
      : instance_(instance),
        path_(std::move(path)),
        name_(jx::test::jx(path_)),
        most_bytes_(most_bytes) {}
  RecordComparison(const RecordComparison &) = delete;
  RecordComparison &operator=(const RecordComparison &) = delete;
  ~RecordComparison() {
    if (file_) file_->close(file_);
  }

  // The step that differs and how; empty when none does.
  std::string run(const Script &script);

 private:
  template <typename T>
  void compare(const char *what, const T &actual, const T &expected) {
    if (actual != expected) {
      differ() << ", " << what << ": " << actual << ", expected " << expected;
    }
  }
  std::ostream &differ() {
    differs_ = true;
    return difference_;
  }
  void compare_status(JXStatus actual, JXStatus expected);
  void compare_tracked();
  void compare_files();

  void open(const JXOpenOptions &options);
  void operate(const Step &step);
  // Returns true when there may be more to read.
  bool read(const Step &step);
  bool write(const void *data, const std::string &bytes, std::optional<int64_t> offset);
  void position(const Step &step);
  int64_t *offset_of(const Step &step) {
    offset_ = step.offset.value_or(0);
    return step.offset ? &offset_ : nullptr;
  }

  JXInstance *instance_;
  std::string path_;
  JXString name_;
  uint32_t most_bytes_;
  std::optional<std::string> content_;  // of the model's file
  std::unique_ptr<RecordModel> model_;
  JXFile *file_ = nullptr;
  std::unique_ptr<char[]> memory_;  // the caller's, exactly of the size requested
  int64_t offset_ = 0;
  bool is_lost_ = false;  // the last point failed
  void *last_ = nullptr;  // what the last step read, and where
  std::string last_record_;
  bool differs_ = false;
  std::ostringstream difference_;
};

}  // namespace jx::test
