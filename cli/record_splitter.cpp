// Lengths before records and blocks.
#include "cli/record_splitter.hpp"

#include "cli/failure.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr uint32_t kSegmentBits = 3;  // in the third byte of a header
constexpr uint32_t kLargeBlock = 0x8000;

uint32_t byte_at(std::string_view text, size_t at) { return static_cast<unsigned char>(text[at]); }

uint32_t big16(std::string_view text) { return byte_at(text, 0) << 8 | byte_at(text, 1); }

uint32_t length32(Framing framing, std::string_view header) {
  if (framing == Framing::kBig32) return big16(header) << 16 | big16(header.substr(2));
  return byte_at(header, 3) << 24 | byte_at(header, 2) << 16 | byte_at(header, 1) << 8 |
         byte_at(header, 0);
}

}  // namespace

RecordSplitter::RecordSplitter(const RecordForm &form, std::string shown, uint64_t offset)
    : form_(form),
      shown_(std::move(shown)),
      offset_(offset),
      count_(form.framing == Framing::kFixed ? offset / form.length : 0) {}

void RecordSplitter::fail(uint64_t offset, const std::string &why, const char *hint) const {
  throw Failure(shown_, JXHOST_E_MALFORMED,
                "record " + std::to_string(count_ + 1) + ", byte offset " + std::to_string(offset))
      .saying(why, hint);
}

size_t RecordSplitter::needed_by_header(std::string_view text) const {
  if (text.size() < kHeaderBytes) return kHeaderBytes;
  if (form_.framing == Framing::kRdw || form_.framing == Framing::kBdw) {
    return needed_in_words(text);
  }
  const uint32_t length = length32(form_.framing, text);
  if (length > kLongestRecord) fail(offset_, "this is no length of a record");
  return kHeaderBytes + length;
}

size_t RecordSplitter::needed_in_words(std::string_view text) const {
  const uint32_t length = big16(text);
  const uint32_t rest = big16(text.substr(2));
  if (form_.framing == Framing::kBdw && block_left_ == 0) {
    const bool is_good = rest == 0 && length >= 2 * kHeaderBytes && (length & kLargeBlock) == 0;
    if (!is_good) fail(offset_, "this is no length of a block");
    return kHeaderBytes;
  }
  if (length < kHeaderBytes || (rest & ~(kSegmentBits << 8)) != 0) {
    fail(offset_, "this is no length of a record");
  }
  if (rest != 0) fail(offset_, "this is a segment of a record, and segments are not joined");
  if (form_.framing == Framing::kBdw && length > block_left_) {
    fail(offset_, "the record is longer than its block");
  }
  return length;
}

void RecordSplitter::open_block(std::string_view header) {
  block_left_ = big16(header) - kHeaderBytes;
}

void RecordSplitter::require_end(ShortRecord short_last) const {
  if (held_.empty()) {
    if (block_left_ != 0) fail(offset_, "the file ends in a block");
    return;
  }
  if (form_.framing != Framing::kFixed) fail(offset_, "the file ends in a record");
  if (short_last != ShortRecord::kRefuse) return;
  fail(offset_,
       "the last record has " + std::to_string(held_.size()) + " of " +
           std::to_string(form_.length) + " bytes",
       "take it with --short-last keep or --short-last pad");
}

}  // namespace cli
