// How a file is opened.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "jx/wem.h"

namespace wem {

// Encoding numbers of the host; 0 is the module's default.
struct Encodings {
  uint32_t file = JX_ENCODING_UTF8;       // of the bytes in the file
  uint32_t record = JX_ENCODING_UTF32LE;  // of the records that are read and written
};

// How to open a file. Every setter returns a changed copy, so options are built in one expression
// and kept as values. Defaults: buffered binary records of up to 8192 bytes; with text(), UTF-8 in
// the file and JXChars in the records.
class [[nodiscard]] OpenOptions {
 public:
  // The default length of a text record, in bytes of the file.
  static constexpr uint32_t kTextBytes = 65536;

  // Read an existing file; create or empty a file and write it; create a file or append to it;
  // create a file or read and write it.
  static OpenOptions input() { return OpenOptions(JX_ACCESS_INPUT); }
  static OpenOptions output() { return OpenOptions(JX_ACCESS_OUTPUT); }
  static OpenOptions append() { return OpenOptions(JX_ACCESS_APPEND); }
  static OpenOptions update() { return OpenOptions(JX_ACCESS_UPDATE); }

  // The record format with the longest record. The length counts bytes of the file; a direct write
  // of text lines that converts counts characters. Instance::open refuses 0.
  OpenOptions text(uint32_t length = kTextBytes) const {
    return format(JX_FORMAT_VARIABLE, length);
  }
  OpenOptions binary(uint32_t length) const { return format(JX_FORMAT_BINARY, length); }
  OpenOptions stream(uint32_t length) const { return format(JX_FORMAT_STREAM, length); }

  // One transfer a record instead of blocks through the record buffer.
  OpenOptions direct() const { return with(&JXOpenOptions::buffered, 0); }
  // Binary and stream reads go straight into the caller's memory.
  OpenOptions direct_transfer() const { return with_flag(JX_OPEN_DIRECT_TRANSFER); }
  // The name is not expanded.
  OpenOptions literal_name() const { return with_flag(JX_OPEN_LITERAL_NAME); }

  // The encodings of text: .encodings({.file = JX_ENCODING_UTF16LE, .record = JX_ENCODING_UTF8}).
  OpenOptions encodings(const Encodings &both) const {
    return file_encoding(both.file).record_encoding(both.record);
  }
  // One of them alone.
  OpenOptions file_encoding(uint32_t encoding) const {
    return with(&JXOpenOptions::file_encoding, encoding);
  }
  OpenOptions record_encoding(uint32_t encoding) const {
    return with(&JXOpenOptions::record_encoding, encoding);
  }
  // Whether output begins with a byte-order mark. By default that of UTF-16 and UTF-32 does and
  // that of UTF-8 does not. Instance::open never puts one into the middle of a file.
  OpenOptions byte_order_mark() const { return with_mark(Mark::kAlways); }
  OpenOptions no_byte_order_mark() const { return with_mark(Mark::kNever); }

  // JX_LOCK_*.
  OpenOptions lock(uint32_t mode) const { return with(&JXOpenOptions::lock_mode, mode); }
  // 0 or 1, reported back by the file's attributes.
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
  // The journal for system errors, instead of the instance's; must outlive the file.
  OpenOptions journal(JXJournal *journal) const { return with(&JXOpenOptions::journal, journal); }

  // The encodings that the module uses: its defaults for 0, and none for binary records.
  Encodings used_encodings() const {
    if (options_.record_format == JX_FORMAT_BINARY) return {0, 0};
    const bool is_stream = options_.record_format == JX_FORMAT_STREAM;
    const uint32_t record = is_stream ? JX_ENCODING_NATIVE : JX_ENCODING_UTF32LE;
    return {options_.file_encoding ? options_.file_encoding : JX_ENCODING_NATIVE,
            options_.record_encoding ? options_.record_encoding : record};
  }
  // Whether output begins with a byte-order mark.
  bool writes_mark() const {
    const uint32_t encoding = used_encodings().file;
    if (mark_ == Mark::kNever || !has_mark(encoding)) return false;
    return mark_ == Mark::kAlways || encoding != JX_ENCODING_UTF8;
  }
  // The record that the module reads.
  JXOpenOptions raw() const {
    JXOpenOptions options = options_;
    if (!writes_mark()) options.open_flags |= JX_OPEN_NO_BOM;
    return options;
  }

 private:
  enum class Mark { kByEncoding, kAlways, kNever };

  // Whether an encoding has a byte-order mark.
  static constexpr bool has_mark(uint32_t number) {
#define JX_IS_ENCODING(encoding, size, bytes) number == (encoding) ||
    return JX_BYTE_ORDER_MARKS(JX_IS_ENCODING) false;
#undef JX_IS_ENCODING
  }

  explicit OpenOptions(uint32_t access) {
    options_.access_mode = access;
    options_.buffered = 1;
    options_.record_format = JX_FORMAT_BINARY;
    options_.record_length = JX_RECORD_BLOCK_BYTES;
    options_.file_encoding = Encodings().file;
    options_.record_encoding = Encodings().record;
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
  OpenOptions with_mark(Mark mark) const {
    OpenOptions copy = *this;
    copy.mark_ = mark;
    return copy;
  }
  OpenOptions format(uint32_t number, uint32_t length) const {
    return with(&JXOpenOptions::record_format, number).with(&JXOpenOptions::record_length, length);
  }

  JXOpenOptions options_ = {};
  Mark mark_ = Mark::kByEncoding;
};

}  // namespace wem
