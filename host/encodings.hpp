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
  kPage,      // one byte a character, by a one-to-one table built from the C library
  kIconv,     // by the C library; characters are independent of one another
  kJoining,   // by the C library, which may join a character with the one before it
  kShifting,  // by the C library; bytes mean what the last shift or escape sequence says
};

// How the C library silently loses or misreads text; the host refuses such text.
enum class Laxity : uint8_t {
  kNone,
  kControls,     // stray bytes from 0x80 to 0x9f become control characters
  kSubstitutes,  // unmappable characters and unassigned bytes become the substitute
};

struct Encoding {
  uint32_t number;         // never changes
  const char *name;        // usual name
  const char *iconv_name;  // the C library's name
  uint8_t min_bytes;       // the shortest character, in bytes
  uint8_t max_bytes;       // the longest, with the shift sequences it may need around it
  Form form;
  Laxity laxity = Laxity::kNone;
};

// The encoding of a number, or null.
const Encoding *find_encoding(uint32_t number);

}  // namespace jxhost
