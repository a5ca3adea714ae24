// Line ends by a second reading of the file.
#include "cli/line_ends.hpp"

#include <cstring>

namespace cli {
LineEnds::LineEnds(Session &session, Input &input, const wem::OpenOptions &options,
                   uint32_t encoding)
    : text_(input.open(options.encodings({.file = encoding, .record = encoding}))),
      bytes_(input.open(wem::OpenOptions::input().binary(2 * kLongestMark).direct())),
      line_feed_(session.encode(U"\n", encoding)),
      carriage_return_(session.encode(U"\r", encoding)),
      mark_(byte_order_mark(encoding)) {}

// Whether these bytes come next; they are passed over then.
bool LineEnds::follows(const std::string &bytes) {
  if (bytes.empty()) return false;
  const auto found = bytes_.read(static_cast<uint32_t>(bytes.size()), &offset_);
  if (!found || found->bytes.size() != bytes.size()) return false;
  if (std::memcmp(found->bytes.data(), bytes.data(), bytes.size()) != 0) return false;
  offset_ += static_cast<int64_t>(bytes.size());
  return true;
}

const char *LineEnds::next(bool is_partial) {
  follows(mark_);
  const auto record = text_.read();
  if (record) offset_ += static_cast<int64_t>(record->bytes.size());
  if (follows(line_feed_)) return "lf";
  if (follows(carriage_return_ + line_feed_)) return "crlf";
  return is_partial ? "part" : "none";
}

}  // namespace cli
