// Taking records apart.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "cli/record_form.hpp"

namespace cli {

// Takes the bytes of a file of records, in chunks that may end anywhere, and hands each record on.
class RecordSplitter {
 public:
  // form: not lines. shown: what messages call the file. offset: of the first byte, which is that
  // of a record.
  RecordSplitter(const RecordForm &form, std::string shown, uint64_t offset);

  // Calls take(record, offset) for each record that the next bytes complete: its bytes, valid in
  // the call, and the offset of the first. A Failure with record and byte offset for bytes that are
  // no records.
  template <typename Take>
  void feed(std::string_view bytes, Take take) {
    while (!held_.empty() && !bytes.empty()) {
      const std::string_view part = bytes.substr(0, needed(held_) - held_.size());
      held_ += part;
      bytes.remove_prefix(part.size());
      if (held_.size() < needed(held_)) continue;
      pass(held_, take);
      held_.clear();
    }
    while (!bytes.empty()) {
      const size_t size = needed(bytes);
      if (size > bytes.size()) {
        held_ = bytes;
        return;
      }
      pass(bytes.substr(0, size), take);
      bytes.remove_prefix(size);
    }
  }
  // The same at the end of the file: for a last record of a fixed length that is shorter, unless it
  // is to be refused.
  template <typename Take>
  void finish(ShortRecord short_last, Take take) {
    require_end(short_last);
    if (!held_.empty()) pass(held_, take);
    held_.clear();
  }

  // Throws the Failure of the record that is being taken or comes next, at an offset in it.
  // hint: what to do about it.
  [[noreturn]] void fail(uint64_t offset, const std::string &why,
                         const char *hint = kFormHint) const;
  // How many records were taken.
  uint64_t count() const { return count_; }
  // The offset of the next record, with what is before it.
  uint64_t offset() const { return offset_; }

 private:
  static constexpr const char *kFormHint = "name the form of the records with --records";

  // How many bytes the record at the start of text takes, or its header where that is not there in
  // full, or the header of a block.
  size_t needed(std::string_view text) const {
    return form_.framing == Framing::kFixed ? form_.length : needed_by_header(text);
  }
  size_t needed_by_header(std::string_view text) const;
  size_t needed_in_words(std::string_view text) const;
  void require_end(ShortRecord short_last) const;

  template <typename Take>
  void pass(std::string_view record, Take &take) {
    if (form_.framing == Framing::kBdw && block_left_ == 0) {
      open_block(record);
    } else {
      const size_t head = form_.framing == Framing::kFixed ? 0 : kHeaderBytes;
      take(record.substr(head), offset_ + head);
      ++count_;
      if (form_.framing == Framing::kBdw) block_left_ -= record.size();
    }
    offset_ += record.size();
  }
  void open_block(std::string_view header);

  RecordForm form_;
  std::string shown_;
  std::string held_;       // the start of a record
  uint64_t offset_;        // of the next byte to take, that of held_ first
  size_t block_left_ = 0;  // bytes of the block
  uint64_t count_ = 0;     // of records
};

}  // namespace cli
