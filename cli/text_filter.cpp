// Conversion by the host's transcoders.
#include "cli/text_filter.hpp"

#include <algorithm>

namespace cli {
namespace {

constexpr size_t kBytesPerByte = 12;   // the most that a conversion makes of one byte
constexpr size_t kSliceBytes = 65536;  // converted in one go

bool is_unicode(uint32_t encoding) {
  return encoding >= JX_ENCODING_UTF8 && encoding <= JX_ENCODING_UTF32LE;
}

}  // namespace

TextFilter::TextFilter(Session &session, uint32_t from, uint32_t to)
    : session_(session),
      from_(from),
      to_(to),
      line_end_(session.encode(U"\n", from)),
      line_end_out_(session.encode(U"\n", to)),
      may_shift_(!is_unicode(from) || !is_unicode(to)) {
  transcoder_.emplace(session.nls(), from, to);
}

void TextFilter::restart() {
  if (may_shift_) transcoder_.emplace(session_.nls(), from_, to_);
}

wem::Status TextFilter::convert(std::string_view bytes) {
  const size_t needed = bytes.size() * kBytesPerByte;
  if (room_bytes_ < needed) {
    room_ = std::make_unique_for_overwrite<char[]>(needed);
    room_bytes_ = needed;
  }
  return (*transcoder_)(bytes, {room_.get(), room_bytes_}, &produced_);
}

wem::Status TextFilter::feed(std::string_view bytes, const Sink &sink) {
  while (!bytes.empty()) {
    const std::string_view slice = bytes.substr(0, kSliceBytes);
    const wem::Status status = convert(slice);
    if (!status.ok()) return status;
    sink({room_.get(), produced_});
    bytes.remove_prefix(slice.size());
  }
  return wem::Status();
}

// Only after a whole character is a line end still a line end.
wem::Status TextFilter::finish(const Sink &) {
  const wem::Status status = convert(line_end_);
  const bool is_whole = status.ok() && std::string_view(room_.get(), produced_) == line_end_out_;
  return is_whole ? wem::Status() : wem::Status(JXHOST_E_MALFORMED);
}

}  // namespace cli
