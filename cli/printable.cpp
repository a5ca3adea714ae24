// What a terminal may be given.
#include "cli/printable.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace cli {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Controls, formats without a width of their own, and what is no character.
constexpr auto kUnseen = std::to_array<Range>({
    {0x00, 0x1f},
    {0x7f, 0x9f},
    {0xad, 0xad},
    {0x34f, 0x34f},
    {0x61c, 0x61c},
    {0x115f, 0x1160},
    {0x17b4, 0x17b5},
    {0x180b, 0x180f},
    {0x200b, 0x200f},
    {0x2028, 0x202e},
    {0x2060, 0x206f},
    {0x3164, 0x3164},
    {0xfdd0, 0xfdef},
    {0xfe00, 0xfe0e},
    {0xfeff, 0xfeff},
    {0xffa0, 0xffa0},
    {0xfff0, 0xfffb},
    {0xe0000, 0xe0fff},
});

bool is_seen(char32_t character) {
  const bool is_noncharacter = (character & 0xfffe) == 0xfffe;
  return !is_noncharacter && std::ranges::none_of(kUnseen, [character](const Range &range) {
    return character >= range.first && character <= range.last;
  });
}

struct Decoded {
  char32_t character;
  size_t bytes;  // 0: no UTF-8
};

// The character that the text begins with; the text is not empty.
Decoded decode(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return {lead, 1};
  const size_t bytes = lead < 0xc2 ? 0 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : lead < 0xf5 ? 4 : 0;
  if (bytes == 0 || bytes > text.size()) return {0, 0};
  char32_t character = lead & (0x7fu >> bytes);
  for (const char byte : text.substr(1, bytes - 1)) {
    const auto bits = static_cast<unsigned char>(byte);
    if ((bits & 0xc0) != 0x80) return {0, 0};
    character = character << 6 | (bits & 0x3fu);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool is_surrogate = character >= 0xd800 && character <= 0xdfff;
  const bool is_good = character >= kSmallest[bytes] && character <= 0x10ffff && !is_surrogate;
  return {character, is_good ? bytes : 0};
}

template <typename Number>
std::string format_number(const char *format, Number number) {
  char text[16];
  std::snprintf(text, sizeof text, format, static_cast<unsigned>(number));
  return text;
}

std::string json_escape(char32_t character) {
  if (character < 0x10000) return format_number("\\u%04x", character);
  const char32_t offset = character - 0x10000;
  return format_number("\\u%04x", 0xd800 + (offset >> 10)) +
         format_number("\\u%04x", 0xdc00 + (offset & 0x3ff));
}

// Calls escape(character, bytes) for what is not to be seen and copies the rest.
template <typename Escape>
std::string escape_unseen(std::string_view text, Escape escape) {
  std::string escaped;
  while (!text.empty()) {
    const Decoded decoded = decode(text);
    const std::string_view bytes = text.substr(0, std::max<size_t>(decoded.bytes, 1));
    const bool is_good = decoded.bytes > 0 && is_seen(decoded.character);
    escaped += is_good ? std::string(bytes) : escape(decoded.character, bytes);
    text.remove_prefix(bytes.size());
  }
  return escaped;
}

}  // namespace

std::string to_printable(std::string_view bytes) {
  std::string doubled;
  for (const char byte : bytes) doubled.append(byte == '\\' ? 2 : 1, byte);
  return escape_unseen(doubled, [](char32_t, std::string_view unseen) {
    std::string text;
    for (const char byte : unseen) {
      text += format_number("\\x%02x", static_cast<unsigned char>(byte));
    }
    return text;
  });
}

std::string to_printable_json(std::string_view json) {
  return escape_unseen(json,
                       [](char32_t character, std::string_view) { return json_escape(character); });
}

}  // namespace cli
