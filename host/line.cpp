// Composes journal lines: the wording of statuses and messages.
#include "host/line.hpp"

#include <algorithm>

#include "jx/jxhost.h"

namespace jxhost {

namespace {

constexpr JXChar kEllipsis = 0x2026;

struct Range {
  JXChar first, last;
};

// Characters that would break a line, be invisible or change its direction: controls, line and
// paragraph separators, everything Unicode marks as ignorable for display, and units that are no
// character.
constexpr Range kHidden[] = {
    {0, 0x1F},          {0x7F, 0x9F},       {0xAD, 0xAD},
    {0x34F, 0x34F},     {0x61C, 0x61C},     {0x115F, 0x1160},
    {0x17B4, 0x17B5},   {0x180B, 0x180F},   {0x200B, 0x200F},
    {0x2028, 0x202E},   {0x2060, 0x206F},   {0x3164, 0x3164},
    {0xD800, 0xDFFF},   {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},
    {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},   {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF}, {0x110000, UINT32_MAX},
};

bool is_shown(JXChar c) {
  return std::ranges::none_of(
      kHidden, [c](const Range &range) { return c >= range.first && c <= range.last; });
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
  // Stops reading when the line is full: a text that is not terminated does little harm.
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
