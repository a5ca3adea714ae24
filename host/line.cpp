// Lines of text: how statuses and messages are worded.
#include "host/line.hpp"

#include "jx/jxhost.h"

namespace jxhost {

namespace {

constexpr JXChar kEllipsis = 0x2026;

constexpr bool is_shown(JXChar c) {
  const bool is_control = c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
  const bool is_surrogate = c >= 0xD800 && c <= 0xDFFF;
  return !is_control && !is_surrogate && c <= 0x10FFFF;
}

}  // namespace

void Line::put(JXChar c) {
  if (chars_ < capacity_chars_) {
    buffer_[chars_++] = c;
  } else {
    is_cut_ = true;
  }
}

void Line::add(const char *text8) {
  while (*text8) put(static_cast<unsigned char>(*text8++));
}

void Line::add(const JXChar *text) {
  // Nothing is read beyond what fits: a text without its zero does the least harm.
  while (text && *text && !is_cut_) {
    const JXChar c = *text++;
    if (is_shown(c)) {
      put(c);
    } else {
      add("\\u{");
      add_number(c, 16, 1);
      put('}');
    }
  }
}

void Line::add_number(uint32_t number, uint32_t base, uint32_t digits) {
  char text[33];
  char *first = text + sizeof text;
  *--first = 0;
  for (const char *end = first; number != 0 || end - first < static_cast<ptrdiff_t>(digits);) {
    *--first = "0123456789abcdef"[number % base];
    number /= base;
  }
  add(first);
}

void Line::mark_cut() {
  if (is_cut_ && chars_ > 0) buffer_[chars_ - 1] = kEllipsis;
}

void compose_status(Line &line, JXStatus status, const JXChar *text) {
  const char *name = jxhost_status_name(status);
  line.add(name ? name : "status");
  line.add(" 0x");
  line.add_number(status, 16, 8);
  if (const char *meaning = jxhost_status_text(status)) {
    line.add(": ");
    line.add(meaning);
  }
  if (text && *text) line.add(": ");
  line.add(text);
}

void compose_message(Line &line, uint32_t message, uint32_t text_count, va_list args) {
  if (const char *meaning = jxhost_status_text(message)) {
    line.add(meaning);
  } else {
    line.add("message ");
    line.add_number(message, 10, 1);
  }
  for (uint32_t i = 0; i < text_count; ++i) {
    line.add(i == 0 ? ": " : ", ");
    line.add(va_arg(args, const JXChar *));
  }
}

size_t encode_utf8(const JXChar *text, uint32_t chars, char *destination) {
  char *out = destination;
  for (const JXChar *end = text + chars; text != end; ++text) {
    const JXChar c = *text;
    const int tail_count = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr JXChar kLead[] = {0x00, 0xC0, 0xE0, 0xF0};
    *out++ = static_cast<char>(kLead[tail_count] | (c >> (6 * tail_count)));
    for (int shift = 6 * (tail_count - 1); shift >= 0; shift -= 6) {
      *out++ = static_cast<char>(0x80 | ((c >> shift) & 0x3F));
    }
  }
  return static_cast<size_t>(out - destination);
}

}  // namespace jxhost
