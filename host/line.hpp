// A text of JXChars put together in memory of the caller. What goes in comes out as characters that
// can be seen, on one line and in their order.
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
  // Adds a zero-terminated text; null adds nothing. A control character, one that is invisible or
  // changes the direction of others, and a unit that is no character are written as
  // \u{hexadecimal digits}.
  void add(const JXChar *text);
  // Adds a number, padded with zeros to the given digits.
  void add_number(uint32_t number, uint32_t base, uint32_t digits);

  uint32_t chars() const { return chars_; }
  // Tells whether something did not fit.
  bool is_cut() const { return is_cut_; }
  // Makes the last character an ellipsis when something did not fit.
  void mark_cut();

 private:
  void put(JXChar c);

  JXChar *buffer_;
  uint32_t capacity_chars_;  // room of buffer_
  uint32_t chars_ = 0;       // in use
  bool is_cut_ = false;
};

// The text of a status in the journal: name, code, meaning and, unless null or empty, the
// explaining text.
void compose_status(Line &line, JXStatus status, const JXChar *text);
// The text of a message: the meaning of the status of that number or "message NUMBER", then the
// texts of the list.
void compose_message(Line &line, uint32_t message, uint32_t text_count, va_list args);

// Writes the line in UTF-8, at most 4 bytes a character and no zero; returns the size in bytes.
size_t encode_utf8(const JXChar *text, uint32_t chars, char *destination);

}  // namespace jxhost
