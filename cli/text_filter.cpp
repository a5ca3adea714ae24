// Conversion by the host's transcoders.
#include "cli/text_filter.hpp"

#include <algorithm>

#include "cli/line_ends.hpp"

namespace cli {
namespace {

constexpr size_t kConvertedBytes = 65536;  // converted in one go
constexpr size_t kPartBytes = 16384;  // the same through characters, which then stay in the caches
constexpr size_t kCheckedBytes = 4096;  // with what comes out in the fast caches

bool is_unicode(uint32_t encoding) {
  return encoding >= JX_ENCODING_UTF8 && encoding <= JX_ENCODING_UTF32LE;
}

}  // namespace

TextFilter::TextFilter(Session &session, uint32_t from, uint32_t to, const TextChanges &changes)
    : session_(session),
      from_(from),
      to_(to),
      changes_(changes),
      is_same_(from == JX_ENCODING_UTF8 && to == from),
      line_end_(session.encode(U"\n", from)),
      line_end_out_(session.encode(U"\n", to)),
      may_shift_(!is_unicode(from) || !is_unicode(to)) {}

// Of encodings without shifts, controls of one byte are in no other character. A NEL that the
// target does not have has to become another line end first.
bool TextFilter::is_through_characters() const {
  JXEncodingInfo info = {};
  const wem::Status status(session_.nls()->encoding_info(session_.nls(), to_, &info));
  const bool is_of_bytes = status.ok() && (to_ == JX_ENCODING_UTF8 || info.max_bytes_per_char == 1);
  const bool is_nel_lost =
      changes_.line_end != LineEnd::kKeep && lacks_nel_of(session_, from_, to_);
  return changes_.is_lenient() || (changes_.changes_line_ends() && !is_of_bytes) || is_nel_lost;
}

void TextFilter::begin(const std::string &shown, uint64_t offset, Decoder::OffsetMap map) {
  tally_ = {};
  if (is_through_characters()) {
    characters_.emplace(session_, *this, shown, offset, std::move(map), tally_);
    return;
  }
  if (may_shift_ || !transcoder_) {
    transcoder_.emplace(session_.nls(), from_, to_);
  }
  if (!changes_.changes_line_ends()) return;
  Encoder encoder(session_, to_, changes_, shown, tally_);
  const std::string nel(encoder.encode(U"\u0085") ? encoder.bytes() : std::string_view());
  const std::string controls = session_.encode(U"\n\r", to_);
  line_ends_.emplace(changes_, controls[0], controls[1], nel);
}

wem::Status TextFilter::convert(std::string_view bytes) {
  const size_t needed = bytes.size() * Transcoder::kBytesPerByte;
  if (room_bytes_ < needed) {
    room_ = std::make_unique_for_overwrite<char[]>(needed);
    room_bytes_ = needed;
  }
  return (*transcoder_)(bytes, {room_.get(), room_bytes_}, &produced_);
}

// What comes out is what went in.
wem::Status TextFilter::check(std::string_view bytes) {
  wem::Status status;
  while (status.ok() && !bytes.empty()) {
    const std::string_view slice = bytes.substr(0, kCheckedBytes);
    status = convert(slice);
    bytes.remove_prefix(slice.size());
  }
  return status;
}

void TextFilter::put_bytes(std::string_view bytes, const Sink &sink) {
  if (!line_ends_) return sink(bytes);
  changed_bytes_.clear();
  line_ends_->feed(bytes, changed_bytes_);
  sink(changed_bytes_);
}

bool TextFilter::encode(std::u32string_view text, bool is_last) {
  if (!changes_.changes_line_ends()) return characters_->encoder.encode(text);
  changed_.clear();
  LineEndFilter<char32_t> line_ends = characters_->line_ends;
  line_ends.feed(text, changed_);
  if (is_last) line_ends.finish(changed_);
  const bool is_good = characters_->encoder.encode(changed_);
  if (is_good) characters_->line_ends = line_ends;
  return is_good;
}

// Characters are replaced before the line ends change: they are named by the line of the input.
wem::Status TextFilter::put(std::u32string_view text, bool is_last, const Sink &sink) {
  bool is_good = encode(text, is_last);
  const bool is_unmappable = characters_->encoder.status() == JXHOST_E_UNMAPPABLE;
  if (!is_good && is_unmappable && changes_.is_lenient()) {
    is_good = encode(characters_->encoder.replaced(text, characters_->lines), is_last);
  }
  if (!is_good) return characters_->encoder.status();
  characters_->lines += static_cast<uint64_t>(std::ranges::count(text, U'\n'));
  sink(characters_->encoder.bytes());
  return wem::Status();
}

wem::Status TextFilter::feed(std::string_view bytes, const Sink &sink) {
  wem::Status status;
  while (status.ok() && !bytes.empty()) {
    const std::string_view slice = bytes.substr(0, characters_ ? kPartBytes : kConvertedBytes);
    bytes.remove_prefix(slice.size());
    if (characters_) {
      text_.clear();
      status = characters_->decoder.feed(slice, text_);
      if (status.ok()) status = put(text_, false, sink);
    } else {
      status = is_same_ ? check(slice) : convert(slice);
      if (status.ok()) put_bytes(is_same_ ? slice : std::string_view(room_.get(), produced_), sink);
    }
  }
  return status;
}

wem::Status TextFilter::refuse(const std::string &bad, uint64_t offset, const Sink &sink) {
  text_.clear();
  characters_->decoder.refuse_bytes(bad, offset, text_);
  return put(text_, false, sink);
}

// Only after a whole character is a line end still a line end.
wem::Status TextFilter::finish(const Sink &sink) {
  if (!characters_) {
    const wem::Status status = convert(line_end_);
    const bool is_whole = status.ok() && std::string_view(room_.get(), produced_) == line_end_out_;
    if (!is_whole) return wem::Status(JXHOST_E_MALFORMED);
    changed_bytes_.clear();
    if (line_ends_) line_ends_->finish(changed_bytes_);
    sink(changed_bytes_);
    return wem::Status();
  }
  text_.clear();
  const wem::Status status = characters_->decoder.finish(text_);
  return status.ok() ? put(text_, true, sink) : status;
}

}  // namespace cli
