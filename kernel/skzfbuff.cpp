// jxzFormatBuff and jxzFormatBuffV: formatted text in a caller's buffer, in one pass over the
// format. The first directive with a numbered argument makes the pass look ahead to the end of the
// format, because an argument can be taken only once the types of all before it are known.
#include <algorithm>

#include "kernel/format.hpp"
#include "kernel/format_quick.hpp"
#include "kernel/scan.hpp"

namespace {

using jx::Arguments;
using jx::Directive;
using jx::PlainDirective;
using jx::PlainKind;
using jx::Sink;

struct Format {
  const JXChar *text;
  const JXChar *end;
};

// The first "%" from `from` on that starts a directive, or null. A last "%" of the format is text.
inline const JXChar *find_directive(const JXChar *from, const JXChar *end) {
  if (end - from < 2) return nullptr;
  if (*from == '%') return from;
  const auto rest = static_cast<size_t>(end - from);
  const size_t index = jx::scan_units<JXChar>(from, rest, '%');
  return index + 1 >= rest ? nullptr : from + index;
}

JXStatus parse(const Format &format, const JXChar *start, Directive *directive) {
  return jx::parse_directive(format.text, static_cast<int32_t>(format.end - format.text),
                             static_cast<int32_t>(start - format.text), directive);
}

// Parses every directive from `start` on, then takes the numbered arguments.
JXStatus take_numbered(const Format &format, const JXChar *start, Arguments *arguments) {
  while (start) {
    Directive directive;
    const JXStatus status = parse(format, start, &directive);
    if (status != JX_OK) return status;
    arguments->note(directive);
    start = find_directive(format.text + directive.end, format.end);
  }
  arguments->take_numbered();
  return JX_OK;
}

inline void append_run(const JXChar *start, const JXChar *end, Sink *sink) {
  if (start != end) sink->append_text(start, static_cast<uint32_t>(end - start));
}

// General path: appends the run of text from *written on and the directive at `start`, and moves
// *written after it. The text before the first directive is output even if that directive fails.
JXStatus put_other(const Format &format, const JXChar *start, JXChar decimal_point,
                   Arguments *arguments, const JXChar **written, Sink *sink) {
  Directive directive;
  JXStatus status = parse(format, start, &directive);
  if (status == JX_OK && directive.names_arguments() && !arguments->has_numbered()) {
    status = take_numbered(format, start, arguments);
  }
  if (status == JX_OK || *written == format.text) append_run(*written, start, sink);
  if (status != JX_OK) return status;
  jx::put_directive(format.text, directive, decimal_point, arguments, sink);
  *written = format.text + directive.end;
  return JX_OK;
}

JXStatus put_format(const Format &format, JXChar decimal_point, Arguments *arguments, Sink *sink) {
  const JXChar *written = format.text;
  while (const JXChar *start = find_directive(written, format.end)) {
    // Uninitialized, so that it can stay in registers.
    PlainDirective plain __attribute__((uninitialized));
    jx::read_plain(start + 1, format.end, &plain);
    const PlainKind kind = jx::kind_of(plain, sink->room_chars() - (start - written));
    if (kind == PlainKind::kOther) {
      const JXStatus status = put_other(format, start, decimal_point, arguments, &written, sink);
      if (status != JX_OK) return status;
      continue;
    }
    append_run(written, start, sink);
    written = plain.end;
    jx::put_plain(kind, plain, decimal_point, arguments, sink);
  }
  append_run(written, format.end, sink);
  return sink->is_truncated() ? JX_E_TRUNCATED : JX_OK;
}

// The body of both entries.
JXStatus format_text(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                     JXChar *buffer, int32_t capacity_chars, uint32_t *length_out,
                     Arguments *arguments) {
  if (length_out) *length_out = 0;
  if (format_chars < 0) return JX_E_BADARG;
  if (format_chars == 0) format_chars = static_cast<int32_t>(skStrTLen(format));
  Sink sink(buffer, capacity_chars);
  const JXChar decimal_point = locale ? locale->decimal_point : JXChar{'.'};
  const JXStatus status =
      put_format({format, format + format_chars}, decimal_point, arguments, &sink);
  if (length_out && status != JX_E_BADFORMAT) {
    *length_out = static_cast<uint32_t>(std::min<uint64_t>(sink.chars(), UINT32_MAX));
  }
  return status;
}

}  // namespace

extern "C" {

JXStatus jxzFormatBuffV(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                        JXChar *buffer, int32_t capacity_chars, uint32_t *length_out,
                        va_list args) {
  Arguments arguments __attribute__((uninitialized));
  va_copy(arguments.list, args);
  const JXStatus status =
      format_text(locale, format, format_chars, buffer, capacity_chars, length_out, &arguments);
  va_end(arguments.list);
  return status;
}

// Does not call jxzFormatBuffV: copying the list that va_start has just stored would stall on it.
JXStatus jxzFormatBuff(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                       JXChar *buffer, int32_t capacity_chars, uint32_t *length_out, ...) {
  Arguments arguments __attribute__((uninitialized));
  va_start(arguments.list, length_out);
  const JXStatus status =
      format_text(locale, format, format_chars, buffer, capacity_chars, length_out, &arguments);
  va_end(arguments.list);
  return status;
}

}  // extern "C"
