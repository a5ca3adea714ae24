// Encoding many characters at once, and one by one around those that cannot be.
#include "cli/encoder.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr size_t kBytesPerChar = 16;  // the most that an encoding takes, with its shifts
constexpr size_t kPartChars = 4096;   // tried in one go
constexpr size_t kSmallChars = 64;    // looked through one by one

// What messages call a character: "U+20AC".
std::string name_of(char32_t character) {
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "U+%04X", static_cast<unsigned>(character));
  return text.data();
}

void append_escape(char32_t character, std::u32string &out) {
  std::array<char, 8> digits;
  const auto end =
      std::to_chars(digits.begin(), digits.end(), static_cast<uint32_t>(character), 16).ptr;
  out += U"\\u{";
  out.append(digits.data(), end);
  out += U'}';
}

}  // namespace

Encoder::Encoder(Session &session, uint32_t to, const TextChanges &changes, std::string shown,
                 FaultTally &tally)
    : transcoder_(session.nls(), JX_ENCODING_UTF32LE, to),
      changes_(changes),
      shown_(std::move(shown)),
      tally_(tally),
      substitute_(U"\ufffd") {
  const std::string name = jxhost_encoding_name(to);
  JXEncodingInfo info = {};
  require(wem::Status(session.nls()->encoding_info(session.nls(), to, &info)), name);
  is_of_bytes_ = info.max_bytes_per_char == 1;
  if (!encode(line_end_text(changes.line_end))) {
    throw UsageError("--eol: " + name + " has no such line end");
  }
  if (!encode(substitute_)) substitute_ = U"?";
  const bool is_escaped = changes.on_fault == OnFault::kEscape;
  if (is_escaped && !encode(U"\\xu{0123456789abcdef}")) {
    throw UsageError("--on-error escape: " + name + " has no backslash or no braces");
  }
  if (changes.transliterates) transliteration_.emplace(session, to);
}

bool Encoder::encode(std::u32string_view text) {
  const size_t needed = (text.size() + 1) * kBytesPerChar;
  if (room_bytes_ < needed) {
    room_ = std::make_unique_for_overwrite<char[]>(needed);
    room_bytes_ = needed;
  }
  const std::string_view bytes(reinterpret_cast<const char *>(text.data()),
                               text.size() * sizeof(char32_t));
  status_ = transcoder_(bytes, {room_.get(), room_bytes_}, &produced_);
  return status_.ok();
}

std::u32string Encoder::replaced(std::u32string_view text, uint64_t lines) {
  std::u32string out;
  for (size_t step = kPartChars; !text.empty();) {
    const std::u32string_view part = text.substr(0, step);
    if (encode(part)) {
      out += part;
      step = std::min(step > 1 ? step * 4 : step, kPartChars);
      lines += static_cast<uint64_t>(std::ranges::count(part, U'\n'));
    } else if (is_of_bytes_ && produced_ > 0) {
      // What came out are the characters before the one at fault, a byte each.
      const std::u32string_view good = part.substr(0, produced_);
      out += good;
      lines += static_cast<uint64_t>(std::ranges::count(good, U'\n'));
      text.remove_prefix(good.size());
      step = 1;
      continue;
    } else if (part.size() > 1) {
      step = part.size() > kSmallChars ? kSmallChars : 1;
      continue;
    } else {
      replace(part[0], lines, out);
      step = is_of_bytes_ ? kPartChars : kSmallChars;
    }
    text.remove_prefix(part.size());
  }
  return out;
}

void Encoder::replace(char32_t character, uint64_t lines, std::u32string &out) {
  const bool is_line_end = character == U'\u0085' && changes_.line_end != LineEnd::kKeep;
  if (is_line_end) return out.push_back(character);  // it will be another one
  if (transliteration_) {
    const std::optional<std::u32string> &others = (*transliteration_)(character);
    if (others && encode(*others)) {
      out += *others;
      return tally_.add_transliterated();
    }
  }
  if (changes_.on_fault == OnFault::kStop) {
    throw Failure(shown_, JXHOST_E_UNMAPPABLE,
                  "record " + std::to_string(lines + 1) + ", " + name_of(character));
  }
  tally_.add(lines + 1, [character] { return name_of(character); });
  if (changes_.on_fault == OnFault::kReplace) out += substitute_;
  if (changes_.on_fault == OnFault::kEscape) append_escape(character, out);
}

}  // namespace cli
