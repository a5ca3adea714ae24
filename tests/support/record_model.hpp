// A model of a file handle, over a file that is one string: no buffer, no descriptor, records cut
// out of the string. The random tests compare the record layer with it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "jx/wem.h"
#include "support/text_model.hpp"

namespace jx::test {

// The answer of a read. The caller's pointer stays, becomes null or points to the record.
struct ModelRead {
  enum Pointer { stays, null, leads };
  JXStatus status;
  Pointer pointer = stays;
  uint32_t length = 0;
  std::string record = {};
};

// One handle. Opened once; the file outlives it, null while it does not exist.
class RecordModel {
 public:
  explicit RecordModel(std::optional<std::string> &file) : file_(file) {}

  JXStatus open(const JXOpenOptions &options);
  JXStatus close() { return writes() ? flush() : JX_OK; }
  ModelRead read(uint32_t wanted, const int64_t *offset);
  JXStatus write(std::string_view data, int64_t *offset);
  JXStatus note(int64_t *offset_out) const;
  JXStatus point(int64_t *offset, uint32_t mode);
  JXStatus truncate(int64_t length);
  JXStatus flush();

  bool reads() const { return options_.access_mode % 2 != 0; }
  bool writes() const { return options_.access_mode != JX_ACCESS_INPUT; }
  // Whether the handle reads into the caller's memory.
  bool transfers() const { return (options_.open_flags & JX_OPEN_DIRECT_TRANSFER) != 0; }
  uint32_t unit_bytes() const { return unit_bytes_of(file_encoding_); }
  uint32_t record_length() const { return options_.record_length; }
  bool is_text() const { return options_.record_format % 3 == 0; }
  bool is_buffered() const { return options_.buffered != 0; }

 private:
  bool is_binary() const { return options_.record_format == JX_FORMAT_BINARY; }
  // The access that lock modes 2 and 3 add.
  bool can_read() const { return reads() || options_.lock_mode == 2; }
  bool can_write() const { return writes() || options_.lock_mode == 3; }
  // Unconverted direct transfer, which only the descriptor can refuse.
  bool is_plain() const {
    return !is_text() && (!is_buffered() || transfers()) && file_encoding_ == record_encoding_;
  }
  bool may_write_bom() const { return !(options_.open_flags & JX_OPEN_NO_BOM); }
  void set_up_text();
  // The file from an offset on; empty beyond its end.
  std::string_view rest(int64_t offset) const;
  bool begins_with_bom(std::string_view bytes) const;

  ModelRead read_lines();
  ModelRead read_line_directly();
  ModelRead read_buffered(uint32_t wanted);
  ModelRead read_directly(uint32_t wanted, const int64_t *offset);
  // The record for bytes of the file; a line that has ended ends its text.
  ModelRead deliver(std::string_view bytes, JXStatus status, size_t capacity, bool is_ended);
  JXStatus fetch(uint32_t count, const int64_t *offset, std::string *bytes_out);

  JXStatus write_anywhere(std::string_view data, int64_t *offset);
  JXStatus write_line_directly(std::string_view data);
  // Transcodes data to be written.
  JXStatus prepare(std::string *data, size_t capacity);
  // Through the buffer, or at the descriptor's offset.
  void put(std::string_view bytes);
  JXStatus store(std::string_view bytes, int64_t offset);

  std::optional<std::string> &file_;
  JXOpenOptions options_{};
  uint32_t file_encoding_ = 0, record_encoding_ = 0;
  std::string bom_, line_feed_, carriage_return_;
  uint32_t extra_bytes_ = 0;     // room beside a record
  size_t transcode_bytes_ = 0;   // size of the transcode buffer
  std::optional<TextModel> in_;  // file to record encoding
  std::optional<TextModel> out_;
  bool bom_pending_ = false;
  int64_t offset_ = 0;    // of the descriptor; of the first unread byte when buffered
  int64_t hand_end_ = 0;  // buffered binary and stream: end of the blocks read so far
  bool end_seen_ = false;
  std::string pending_;  // in the buffer, not written yet
};

}  // namespace jx::test
