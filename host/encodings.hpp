// The encodings that the host knows, one table row each.
#pragma once

#include <cstdint>

namespace jxhost {

// How an encoding is converted.
enum class Form : uint8_t {
  kByte,   // byte n is character n
  kAscii,  // byte n is character n, below 128
  kUtf8,
  kUtf16Be,
  kUtf16Le,
  kUtf32Be,
  kUtf32Le,   // JXChar
  kPage,      // one byte a character, no two the same, by the C library's table
  kIconv,     // by the C library; characters are independent of one another
  kJoining,   // by the C library, which may join a character with the one before it
  kShifting,  // by the C library; bytes mean what the last shift or escape sequence says
};

// Where the C library loses or misreads text without a word, which the host refuses.
enum class Laxity : uint8_t {
  kNone,
  kControls,     // stray bytes from 0x80 to 0x9f become control characters
  kSubstitutes,  // unmappable characters and unassigned bytes become the substitute
};

// One encoding.
struct Encoding {
  uint32_t number;         // its number, for ever
  const char *name;        // its usual name
  const char *aliases;     // further names, reduced to small letters and digits, by blanks
  const char *iconv_name;  // the C library's name
  uint8_t min_bytes;       // the shortest character, in bytes
  uint8_t max_bytes;       // the longest, with the shifts that it may need before and after
  Form form;
  Laxity laxity = Laxity::kNone;
};

// The encoding of a number, or null.
const Encoding *find_encoding(uint32_t number);

}  // namespace jxhost
