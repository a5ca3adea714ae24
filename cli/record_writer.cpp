// Putting records together.
#include "cli/record_writer.hpp"

#include "cli/failure.hpp"

namespace cli {

RecordWriter::RecordWriter(Session &session, const RecordForm &form, uint32_t encoding,
                           std::string shown)
    : form_(form),
      shown_(std::move(shown)),
      line_end_(session.encode(U"\n", encoding)),
      blank_(session.encode(U" ", encoding)) {
  if (form_.length % blank_.size() != 0) {
    throw UsageError("--to-records fixed: the length is no multiple of " +
                     std::to_string(blank_.size()) + ", the bytes of a character");
  }
}

void RecordWriter::feed(std::string_view text, std::string &records) {
  while (!text.empty()) {
    const size_t length = find_line_end(text, line_end_);
    if (length == text.npos) {
      held_ += text;
      return;
    }
    if (held_.empty()) {
      put(text.substr(0, length), records);
    } else {
      held_ += text.substr(0, length);
      put(held_, records);
      held_.clear();
    }
    text.remove_prefix(length + line_end_.size());
  }
}

void RecordWriter::finish(std::string &records) {
  if (!held_.empty()) put(held_, records);
  held_.clear();
  end_block(records);
}

void RecordWriter::require_room(size_t bytes, size_t most) const {
  if (bytes <= most) return;
  throw Failure(shown_, JXWEM_E_TOOLONG, "record " + std::to_string(count_ + 1))
      .saying("the line has " + std::to_string(bytes) + " bytes, and a record room for " +
              std::to_string(most));
}

void RecordWriter::put(std::string_view line, std::string &records) {
  constexpr size_t kMost = kLongestBlock - 2 * kHeaderBytes;
  switch (form_.framing) {
    case Framing::kLines:
      break;
    case Framing::kFixed:
      put_fixed(line, records);
      break;
    case Framing::kBdw:
      require_room(line.size(), kMost);
      if (block_.size() + 2 * kHeaderBytes + line.size() > kLongestBlock) end_block(records);
      put_length(line.size(), block_);
      block_ += line;
      break;
    case Framing::kRdw:
      require_room(line.size(), kMost);
      [[fallthrough]];
    case Framing::kBig32:
    case Framing::kLittle32:
      put_length(line.size(), records);
      records += line;
      break;
  }
  ++count_;
}

void RecordWriter::put_fixed(std::string_view line, std::string &records) const {
  require_room(line.size(), form_.length);
  records += line;
  if (blank_.size() == 1) {
    records.append(form_.length - line.size(), blank_[0]);
    return;
  }
  for (size_t bytes = line.size(); bytes < form_.length; bytes += blank_.size()) records += blank_;
}

void RecordWriter::put_length(size_t bytes, std::string &records) const {
  const bool is_short = form_.framing == Framing::kRdw || form_.framing == Framing::kBdw;
  const auto value = static_cast<uint32_t>(is_short ? (bytes + kHeaderBytes) << 16 : bytes);
  for (unsigned i = 0; i < kHeaderBytes; ++i) {
    const unsigned shift = form_.framing == Framing::kLittle32 ? 8 * i : 24 - 8 * i;
    records += static_cast<char>(value >> shift & 0xff);
  }
}

void RecordWriter::end_block(std::string &records) {
  if (block_.empty()) return;
  put_length(block_.size(), records);
  records += block_;
  block_.clear();
}

}  // namespace cli
