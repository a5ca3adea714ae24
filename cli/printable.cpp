// What a terminal may be given.
#include "cli/printable.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace cli {
namespace {

struct CharacterRange {
  char32_t first;
  char32_t last;
};

// Controls, formats without a width of their own, and what is no character.
constexpr auto kUnseen = std::to_array<CharacterRange>({
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

static_assert(std::ranges::is_sorted(kUnseen, {}, &CharacterRange::first));

bool is_seen(char32_t character) {
  const bool is_noncharacter = (character & 0xfffe) == 0xfffe;
  const auto next = std::ranges::upper_bound(kUnseen, character, {}, &CharacterRange::first);
  return !is_noncharacter && (next == kUnseen.begin() || character > next[-1].last);
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

// What a string of JSON has in place of a character; nothing for most.
std::string json_escape(char32_t character) {
  constexpr std::string_view kNamed = "\b\t\n\f\r\"\\";
  constexpr std::string_view kNames = "btnfr\"\\";
  const size_t name = character < 0x80 ? kNamed.find(static_cast<char>(character)) : kNamed.npos;
  if (name != kNamed.npos) return {'\\', kNames[name]};
  if (is_seen(character)) return {};
  if (character < 0x10000) return format_number("\\u%04x", character);
  const char32_t offset = character - 0x10000;
  return format_number("\\u%04x", 0xd800 + (offset >> 10)) +
         format_number("\\u%04x", 0xdc00 + (offset & 0x3ff));
}

// The bytes that a string of JSON has as they are: characters of one byte without an escape.
constexpr auto kPlainInJson = [] {
  std::array<bool, 256> plain = {};
  for (size_t byte = ' '; byte <= '~'; ++byte) plain[byte] = byte != '"' && byte != '\\';
  return plain;
}();

// The size of the run of such bytes that the text begins with.
size_t plain_run(std::string_view text) {
  const auto end = std::ranges::find_if_not(
      text, [](char byte) { return kPlainInJson[static_cast<unsigned char>(byte)]; });
  return static_cast<size_t>(end - text.begin());
}

}  // namespace

std::string to_printable(std::string_view bytes) {
  std::string doubled;
  for (const char byte : bytes) doubled.append(byte == '\\' ? 2 : 1, byte);
  std::string escaped;
  for (std::string_view text = doubled; !text.empty();) {
    const Decoded decoded = decode(text);
    const std::string_view character = text.substr(0, std::max<size_t>(decoded.bytes, 1));
    text.remove_prefix(character.size());
    if (decoded.bytes > 0 && is_seen(decoded.character)) {
      escaped += character;
      continue;
    }
    for (const char byte : character) {
      escaped += format_number("\\x%02x", static_cast<unsigned char>(byte));
    }
  }
  return escaped;
}

// Copies runs of characters that need no escape.
bool append_json_string(std::string &json, std::string_view text) {
  json += '"';
  size_t start = 0;  // of the run
  size_t at = 0;
  for (;;) {
    at += plain_run(text.substr(at));
    if (at == text.size()) break;
    const Decoded decoded = decode(text.substr(at));
    if (decoded.bytes == 0) return false;
    const std::string escape = json_escape(decoded.character);
    if (!escape.empty()) {
      json.append(text, start, at - start);
      json += escape;
      start = at + decoded.bytes;
    }
    at += decoded.bytes;
  }
  json.append(text, start);
  json += '"';
  return true;
}

}  // namespace cli
