// Composes a text of JXChars in the caller's memory. Everything added shows as visible characters,
// on one line and in order.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

#include "jx/base.h"

namespace jxhost {

class Line {
 public:
  Line(JXChar *buffer, uint32_t capacity_chars)
      : buffer_(buffer), capacity_chars_(capacity_chars) {}

  // Adds an ASCII text.
  void add(const char *text8);
  // Adds a zero-terminated text; null adds nothing. Characters that are controls, invisible or
  // change the direction of text, and units that are no character, are written as \u{hexadecimal
  // digits}.
  void add(const JXChar *text);
  // Adds a number, padded with zeros to at least that many digits.
  void add_number(uint32_t number, uint32_t base, uint32_t digits);

  uint32_t chars() const { return chars_; }
  // Tells whether something did not fit.
  bool is_cut() const { return is_cut_; }
  // Replaces the last character by an ellipsis when something did not fit.
  void mark_cut();

 private:
  void put(JXChar c);

  JXChar *buffer_;
  uint32_t capacity_chars_;  // room of buffer_
  uint32_t chars_ = 0;       // in use
  bool is_cut_ = false;
};

// Adds the text of a status: name, code, meaning and, unless null or empty, the given text.
void compose_status(Line &line, JXStatus status, const JXChar *text);
// Adds the text of a message: the meaning of the status of that number or "message NUMBER", then
// the texts of the list.
void compose_message(Line &line, uint32_t message, uint32_t text_count, va_list args);

// Encodes text in UTF-8, at most 4 bytes a character, not terminated. Returns the size in bytes.
size_t encode_utf8(const JXChar *text, uint32_t chars, char *destination);

}  // namespace jxhost
