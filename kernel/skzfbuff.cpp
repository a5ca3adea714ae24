// Formatted text in a caller's buffer. The format is walked once: a run of text, then the directive
// after it. At the first directive that names an argument by number the rest of the format is read
// ahead, because the type of every argument must be known before any is taken.
#include <algorithm>

#include "kernel/format.hpp"

namespace {

using jx::Arguments;
using jx::Directive;
using jx::Sink;

struct Format {
  const JXChar *text;
  int32_t chars;
};

constexpr int32_t kNone = -1;

// The next "%" from `position` on that opens a directive: not the last character of the format.
int32_t find_directive(const Format &format, int32_t position) {
  const int32_t index = jxzspos(format.text + position, format.chars - position, '%');
  if (index < 0 || position + index == format.chars - 1) return kNone;
  return position + index;
}

// Reads every directive from `position` on, notes the numbered arguments and takes them.
JXStatus take_numbered(const Format &format, int32_t position, Arguments *arguments) {
  while (position != kNone) {
    Directive directive;
    const JXStatus status = jx::parse_directive(format.text, format.chars, position, &directive);
    if (status != JX_OK) return status;
    arguments->note(directive);
    position = find_directive(format, directive.end);
  }
  arguments->take_numbered();
  return JX_OK;
}

void put_run(const Format &format, int32_t start, int32_t end, Sink *sink) {
  sink->put_text(format.text + start, static_cast<uint32_t>(end - start));
}

JXStatus put_format(const Format &format, JXChar decimal_point, Arguments *arguments, Sink *sink) {
  int32_t start = find_directive(format, 0);
  int32_t written = start == kNone ? format.chars : start;
  // The text in front stands even when the first directive ends the call.
  put_run(format, 0, written, sink);
  while (start != kNone) {
    Directive directive;
    JXStatus status = jx::parse_directive(format.text, format.chars, start, &directive);
    if (status == JX_OK && directive.names_arguments() && !arguments->has_numbered()) {
      status = take_numbered(format, start, arguments);
    }
    if (status != JX_OK) return status;
    put_run(format, written, start, sink);
    jx::put_directive(format.text, directive, decimal_point, arguments, sink);
    written = directive.end;
    start = find_directive(format, written);
  }
  put_run(format, written, format.chars, sink);
  return sink->is_truncated() ? JX_E_TRUNCATED : JX_OK;
}

}  // namespace

extern "C" {

JXStatus jxzFormatBuffV(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                        JXChar *buffer, int32_t capacity_chars, uint32_t *length_out,
                        va_list args) {
  if (length_out) *length_out = 0;
  if (format_chars < 0) return JX_E_BADARG;
  if (format_chars == 0) format_chars = static_cast<int32_t>(skStrTLen(format));
  const JXChar decimal_point = locale ? locale->decimal_point : JXChar{'.'};
  Arguments arguments __attribute__((uninitialized)) (args);
  Sink sink(buffer, capacity_chars);
  const JXStatus status = put_format({format, format_chars}, decimal_point, &arguments, &sink);
  if (length_out && status != JX_E_BADFORMAT) {
    *length_out = static_cast<uint32_t>(std::min<uint64_t>(sink.chars(), UINT32_MAX));
  }
  return status;
}

JXStatus jxzFormatBuff(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                       JXChar *buffer, int32_t capacity_chars, uint32_t *length_out, ...) {
  va_list args;
  va_start(args, length_out);
  const JXStatus status =
      jxzFormatBuffV(locale, format, format_chars, buffer, capacity_chars, length_out, args);
  va_end(args);
  return status;
}

}  // extern "C"
