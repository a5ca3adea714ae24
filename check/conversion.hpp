// Text for the character-set checks, and conversions that are watched.
#pragma once

#include <string_view>

#include "check/objects.hpp"

namespace jxcheck {

// A part of a text that is inside it; substr would need the C++ run-time library.
constexpr std::string_view part_of(std::string_view text, size_t start, size_t bytes) {
  return {text.data() + start, bytes};
}

// A piece of text in the encodings that the host guide names: characters of one to four bytes of
// UTF-8, and bytes that are no text.
struct Sample {
  uint32_t encoding;
  std::string_view text;       // kSampleText
  std::string_view malformed;  // no character, though as long as one
  std::string_view cut;        // the start of one
};

inline constexpr std::string_view bytes_of(const auto &literal) {
  return {literal, sizeof literal - 1};
}

// a, U+E9, U+20AC, U+1F600, line feed: 5 JXChars.
inline constexpr Sample kSamples[] = {
    {JX_ENCODING_UTF8, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\n", "\xC3(", "\xE2\x82"},
    {JX_ENCODING_UTF16BE, bytes_of("\0a\0\xE9\x20\xAC\xD8\x3D\xDE\x00\0\n"), bytes_of("\xDC\0\0a"),
     "\xD8\x3D"},
    {JX_ENCODING_UTF16LE, bytes_of("a\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE\n\0"),
     bytes_of("\0\xDC\x61\0"), "\x3D\xD8"},
    {JX_ENCODING_UTF32BE, bytes_of("\0\0\0a\0\0\0\xE9\0\0\x20\xAC\0\x01\xF6\x00\0\0\0\n"),
     bytes_of("\x01\0\0\0"), bytes_of("\0\0")},
    {JX_ENCODING_UTF32LE, bytes_of("a\0\0\0\xE9\0\0\0\xAC\x20\0\0\x00\xF6\x01\0\n\0\0\0"),
     bytes_of("\0\0\0\x01"), bytes_of("a\0")},
};
inline constexpr std::string_view kSampleText = kSamples[4].text;  // in JXChars

// The outcome of one call.
struct Converted {
  JXStatus status;
  uint32_t produced_bytes;
  Room room;

  std::string_view text() const {
    return {reinterpret_cast<const char *>(room.data), produced_bytes};
  }
};

// Converts text that ends where memory ends. Reports what was written beyond the room, and more
// bytes than the room has.
Converted convert(Probe &probe, JXTranscoder *transcoder, std::string_view text,
                  uint32_t room_bytes);

// Reports a conversion that does not give the bytes that are due, with status 0.
void expect_text(Probe &probe, const char *what, const Converted &came, std::string_view due);

}  // namespace jxcheck
