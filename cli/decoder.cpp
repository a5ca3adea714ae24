// Decoding many bytes at once, and byte by byte around a fault: the host's transcoders do not tell
// where they stopped.
#include "cli/decoder.hpp"

#include <algorithm>
#include <array>
#include <span>

namespace cli {
namespace {

constexpr size_t kSmallBytes = 64;        // looked through byte by byte for a fault
constexpr size_t kLongestReplay = 16384;  // of a line in an encoding that may shift

std::u32string escape_of(std::string_view bytes) {
  const std::string hex = "\\x{" + to_hex(bytes, "}\\x{") + "}";
  return {hex.begin(), hex.end()};
}

}  // namespace

Decoder::Decoder(Session &session, uint32_t from, uint64_t offset, OnFault on_fault,
                 std::u32string substitute, OffsetMap map, FaultTally &tally)
    : on_fault_(on_fault),
      substitute_(std::move(substitute)),
      map_(std::move(map)),
      tally_(tally),
      line_end_(session.encode(U"\n", from)),
      is_unicode_(from >= JX_ENCODING_UTF8 && from <= JX_ENCODING_UTF32LE),
      room_(std::make_unique_for_overwrite<char32_t[]>(kSliceBytes * kCharsPerByte)),
      offset_(offset) {
  JXEncodingInfo info = {};
  require(wem::Status(session.nls()->encoding_info(session.nls(), from, &info)), "");
  longest_ = static_cast<size_t>(info.max_bytes_per_char);
  transcoder_.emplace(session.nls(), from, JX_ENCODING_UTF32LE);
}

bool Decoder::convert(std::string_view bytes) {
  size_t produced = 0;
  const std::span<char> room(reinterpret_cast<char *>(room_.get()),
                             kSliceBytes * kCharsPerByte * sizeof(char32_t));
  status_ = (*transcoder_)(bytes, room, &produced);
  produced_chars_ = produced / sizeof(char32_t);
  return status_.ok();
}

// Decodes bytes, of which the last are taken one by one to see where a character ends. False when
// there is a fault in them; nothing is changed then but the transcoder.
bool Decoder::accept(std::string_view bytes, std::u32string &text) {
  const size_t before = text.size();
  const size_t held_before = held_bytes_;
  const bool is_multibyte = longest_ > 1;
  const size_t bulk = is_multibyte ? bytes.size() - std::min(bytes.size(), longest_) : bytes.size();
  bool is_good = true;
  const auto take = [&](std::string_view part) {
    is_good = convert(part);
    if (!is_good) return false;
    text.append(room_.get(), produced_chars_);
    held_bytes_ = produced_chars_ > 0 ? 0 : held_bytes_ + part.size();
    return true;
  };
  is_bulk_ = bulk > 0;
  if (is_bulk_ && take(bytes.substr(0, bulk))) {
    held_bytes_ = 0;
    is_bulk_ = false;
  }
  for (size_t at = bulk; is_good && at < bytes.size(); ++at) take(bytes.substr(at, 1));
  if (!is_good) {
    text.resize(before);
    held_bytes_ = held_before;
    return false;
  }
  replay_ += bytes;
  keep_replay();
  note_text(bytes.size(), before, text);
  return true;
}

// Takes note of characters, from start on in text, that so many bytes were.
void Decoder::note_text(size_t bytes, size_t start, std::u32string &text) {
  offset_ += bytes;
  lines_ += static_cast<uint64_t>(
      std::count(text.begin() + static_cast<ptrdiff_t>(start), text.end(), U'\n'));
  if (on_fault_ == OnFault::kEscape) protect(start, text);
}

void Decoder::keep_replay() {
  size_t start = replay_.size() - held_bytes_;
  const bool may_shift = !is_unicode_ && longest_ > 1;
  if (may_shift && replay_.size() < kLongestReplay) {
    start = replay_.rfind(line_end_, start);
    start = start == replay_.npos ? 0 : start + line_end_.size();
    start = std::min(start, replay_.size() - held_bytes_);
  }
  replay_.erase(0, start);
}

// Escapes the braces that would make text look like an escape.
void Decoder::protect(size_t start, std::u32string &text) {
  constexpr std::u32string_view kBrace = U"\\u{7b}";
  for (size_t at = text.find(U'{', start); at != text.npos; at = text.find(U'{', at + 1)) {
    const size_t own = std::min<size_t>(at - start, 2);
    const std::u32string two = last_ + text.substr(at - own, own);
    if (!two.ends_with(U"\\x") && !two.ends_with(U"\\u")) continue;
    text.replace(at, 1, kBrace);
    at += kBrace.size() - 1;
  }
  last_ += text.substr(std::max(start, text.size() - std::min<size_t>(text.size(), 2)));
  last_.erase(0, last_.size() - std::min<size_t>(last_.size(), 2));
}

// A failed conversion leaves the transcoder as it was at first: brings it back where it was before.
void Decoder::recover() {
  if (!replay_.empty()) convert(replay_);
}

void Decoder::refuse_bytes(const std::string &bad, uint64_t offset, std::u32string &text) {
  tally_.add(lines_ + 1, [&] {
    return "byte offset " + std::to_string(offset) + ", bytes " + to_hex(bad, " ");
  });
  if (on_fault_ == OnFault::kReplace) text += substitute_;
  if (on_fault_ == OnFault::kEscape) text += escape_of(bad);
  last_.clear();
}

// Takes a byte, after the start of a character that is held, for a fault. Returns how many bytes of
// it are used up: a byte that may begin another character is not.
size_t Decoder::refuse(char byte, std::u32string &text) {
  std::string bad = replay_.substr(replay_.size() - held_bytes_);
  const uint64_t offset = offset_ - held_bytes_;
  const size_t unit = line_end_.size();
  std::string rest;
  bool is_used = bad.size() < unit;
  if (unit == 1)
    is_used = bad.empty() || (!is_unicode_ && static_cast<unsigned char>(byte) >= 0x80);
  if (is_used) {
    bad += byte;
    ++offset_;
  } else if (unit > 1) {
    rest = bad.substr(unit);
    bad.resize(unit);
  }
  put_fault(bad, offset, text);
  replay_.resize(replay_.size() - held_bytes_);
  replay_ += rest;
  held_bytes_ = rest.size();
  recover();
  return is_used ? 1 : 0;
}

// After a failed conversion of bytes: takes the characters before the one at fault, where their
// size in the encoding is known. Returns how many bytes they were; the transcoder is ready for the
// next.
size_t Decoder::take_good(std::u32string &text) {
  const bool is_known = is_unicode_ || longest_ == 1;
  const std::u32string_view good(room_.get(), is_known ? produced_chars_ : 0);
  const size_t unit = line_end_.size();
  size_t size = 0;
  for (const char32_t c : good) {
    const size_t units =
        unit == 1 ? 1u + (c > 0x7f) + (c > 0x7ff) + (c > 0xffff) : 1u + (unit == 2 && c > 0xffff);
    size += longest_ == 1 ? 1 : unit * units;
  }
  if (size == 0) {
    recover();
    return 0;
  }
  const size_t before = text.size();
  const size_t taken = size - held_bytes_;
  text += good;
  replay_.clear();
  held_bytes_ = 0;
  note_text(taken, before, text);
  return taken;
}

wem::Status Decoder::feed(std::string_view bytes, std::u32string &text) {
  size_t step = kSliceBytes;
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, step);
    if (on_fault_ == OnFault::kStop) {
      if (!convert(part)) return status_;
      text.append(room_.get(), produced_chars_);
      bytes.remove_prefix(part.size());
    } else if (accept(part, text)) {
      bytes.remove_prefix(part.size());
      if (step > 1) step = std::min(step * 4, kSliceBytes);
    } else if (part.size() == 1) {
      bytes.remove_prefix(refuse(part[0], text));
      step = is_unicode_ || longest_ == 1 ? kSliceBytes : kSmallBytes;
    } else {
      const size_t taken = is_bulk_ ? take_good(text) : 0;
      if (!is_bulk_) recover();
      bytes.remove_prefix(taken);
      const bool is_near = taken > 0 || part.size() <= kSmallBytes;
      step = is_near ? 1 : kSmallBytes;
    }
  }
  return wem::Status();
}

// Only after a whole character, or a return to the initial state, is a line end still a line end.
wem::Status Decoder::finish(std::u32string &text) {
  const bool is_whole = convert(line_end_) && produced_chars_ == 1 && room_[0] == U'\n';
  if (is_whole) return wem::Status();
  if (on_fault_ == OnFault::kStop) return wem::Status(JXHOST_E_MALFORMED);
  put_fault(replay_.substr(replay_.size() - held_bytes_), offset_ - held_bytes_, text);
  return wem::Status();
}

}  // namespace cli
