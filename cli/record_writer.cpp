// Putting records together.
#include "cli/record_writer.hpp"

#include <algorithm>
#include <cstring>

#include "cli/failure.hpp"
#include "cli/line_ends.hpp"
#include "cli/short_copy.hpp"

namespace cli {
namespace {

constexpr size_t kMostInBlock = kLongestBlock - 2 * kHeaderBytes;

// How many bytes a record can have.
size_t room_in(const RecordForm &form) {
  if (form.framing == Framing::kFixed) return form.length;
  const bool is_word = form.framing == Framing::kRdw || form.framing == Framing::kBdw;
  return is_word ? kMostInBlock : kLongestRecord;
}

}  // namespace

RecordWriter::RecordWriter(Session &session, const RecordForm &form, uint32_t encoding,
                           bool drops_returns, std::string shown, PlaceText place)
    : form_(form),
      room_(room_in(form)),
      shown_(std::move(shown)),
      place_(std::move(place)),
      line_end_(session.encode(U"\n", encoding)),
      return_(drops_returns ? session.encode(U"\r", encoding) : std::string()),
      blank_(session.encode(U" ", encoding)) {
  if (form_.length % blank_.size() != 0) {
    throw UsageError("records of " + std::to_string(form_.length) +
                     " bytes: that is no multiple of " + std::to_string(blank_.size()) +
                     ", the bytes of a character");
  }
}

void RecordWriter::feed(std::string_view text, ByteRoom &records) {
  // What is held back ends with a whole unit, so that units are where they seem in text.
  while (!text.empty()) {
    const size_t length = find_line_end(text, 0, line_end_);
    if (length == text.npos) {
      held_ += text;
      require_room(held_.size() - std::min(held_.size(), return_.size()));
      return;
    }
    if (held_.empty()) {
      end_line(text.substr(0, length), records);
    } else {
      held_ += text.substr(0, length);
      end_line(held_, records);
      held_.clear();
    }
    text.remove_prefix(length + line_end_.size());
  }
}

void RecordWriter::finish(ByteRoom &records) {
  if (!held_.empty()) put(held_, records);
  held_.clear();
  end_block(records);
}

void RecordWriter::end_line(std::string_view line, ByteRoom &records) {
  if (!return_.empty() && line.ends_with(return_)) line.remove_suffix(return_.size());
  put(line, records);
}

void RecordWriter::require_room(size_t bytes) const {
  if (bytes <= room_) return;
  throw Failure(shown_, JXWEM_E_TOOLONG, place_(count_ + 1))
      .saying("the line is longer than the " + std::to_string(room_) + " bytes of a record",
              "longer lines need a form with more room, such as be32");
}

void RecordWriter::put(std::string_view line, ByteRoom &records) {
  require_room(line.size());
  switch (form_.framing) {
    case Framing::kLines:
      break;
    case Framing::kFixed:
      put_fixed(line, records);
      break;
    case Framing::kBdw:
      if (block_.size() + line.size() > kMostInBlock) end_block(records);
      put_counted(line, block_);
      break;
    case Framing::kRdw:
    case Framing::kBig32:
    case Framing::kLittle32:
      put_counted(line, records);
      break;
  }
  ++count_;
}

void RecordWriter::put_fixed(std::string_view line, ByteRoom &records) const {
  char *const to = records.reserve(form_.length);
  copy_line(to, line);
  if (blank_.size() == 1) {
    std::memset(to + line.size(), blank_[0], form_.length - line.size());
  } else {
    for (size_t at = line.size(); at < form_.length; at += blank_.size()) {
      blank_.copy(to + at, blank_.size());
    }
  }
  records.commit(form_.length);
}

// The bytes after a length in the form that the records have.
void RecordWriter::put_counted(std::string_view line, ByteRoom &records) const {
  const bool is_word = form_.framing == Framing::kRdw || form_.framing == Framing::kBdw;
  const auto value =
      static_cast<uint32_t>(is_word ? (line.size() + kHeaderBytes) << 16 : line.size());
  char *const to = records.reserve(kHeaderBytes + line.size());
  for (unsigned i = 0; i < kHeaderBytes; ++i) {
    const unsigned shift = form_.framing == Framing::kLittle32 ? 8 * i : 24 - 8 * i;
    to[i] = static_cast<char>(value >> shift & 0xff);
  }
  copy_line(to + kHeaderBytes, line);
  records.commit(kHeaderBytes + line.size());
}

void RecordWriter::end_block(ByteRoom &records) {
  if (block_.size() == 0) return;
  put_counted(block_.bytes(), records);
  block_.clear();
}

}  // namespace cli
