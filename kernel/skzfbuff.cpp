// jxzFormatBuff and jxzFormatBuffV: formatted text in a caller's buffer, in one pass over the
// format. The first directive with a numbered argument makes the pass look ahead to the end of the
// format, because an argument can be taken only once the types of all before it are known.
#include <algorithm>

#include "kernel/format.hpp"
#include "kernel/format_quick.hpp"
#include "vector/base.hpp"

namespace {

using jx::Arguments;
using jx::Directive;
using jx::PlainDirective;
using jx::Sink;

struct Format {
  const JXChar *text;
  const JXChar *end;
};

// The first "%" from `from` on that starts a directive, or null. A last "%" of the format is text.
inline const JXChar *find_directive(const JXChar *from, const JXChar *end) {
  if (end - from < 2) return nullptr;
  if (*from == '%') return from;
  using Ops = jx::vector::Base;
  constexpr ptrdiff_t kStep = Ops::kBytes / sizeof(JXChar);
  const auto percent = Ops::repeat(JXChar{'%'});
  for (; end - from >= kStep; from += kStep) {
    const auto mask = Ops::mask(Ops::equal<JXChar>(Ops::load(from), percent));
    if (mask == 0) continue;
    from += static_cast<size_t>(std::countr_zero(mask)) / sizeof(JXChar);
    return from + 1 < end ? from : nullptr;
  }
  for (; from + 1 < end; ++from) {
    if (*from == '%') return from;
  }
  return nullptr;
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

// One call: its format, its output, and what of both is done.
struct Call {
  Format format;
  JXChar *buffer;
  JXChar *limit;           // of the room in the buffer
  const JXChar *written;   // the first character of the format that is not yet output
  JXChar *at;              // where its output goes
  uint64_t refused_chars;  // of the pieces that did not fit
};

// The output of a call for the general path. What did not fit leaves no room for others.
Sink sink_of(const Call &call) {
  Sink sink(call.buffer, call.at, call.limit);
  sink.move_end(call.at, call.refused_chars);
  return sink;
}

// General path: appends the run of text from call->written on and the directive at `start`, and
// moves the call on. The text before the first directive is output even if that directive fails.
[[gnu::noinline]] JXStatus put_other(const JXChar *start, const JXLocale *locale,
                                     Arguments *arguments, Call *call) {
  const Format &format = call->format;
  Directive directive;
  JXStatus status = parse(format, start, &directive);
  if (status == JX_OK && directive.names_arguments() && !arguments->has_numbered()) {
    status = take_numbered(format, start, arguments);
  }
  Sink sink = sink_of(*call);
  if (status == JX_OK || call->written == format.text) append_run(call->written, start, &sink);
  call->written = start;
  if (status == JX_OK) {
    jx::put_directive(format.text, directive, locale, arguments, &sink);
    call->written = format.text + directive.end;
  }
  call->at = sink.end();
  call->limit = sink.limit();
  call->refused_chars = sink.refused_chars();
  return status;
}

// Ends a call that is not done: with the status of a directive, or with one that its last run of
// text decides.
[[gnu::noinline]] JXStatus end_other(const Call &call, JXStatus status, uint32_t *length_out) {
  Sink sink = sink_of(call);
  if (status == JX_OK) {
    append_run(call.written, call.format.end, &sink);
    if (sink.is_truncated()) status = JX_E_TRUNCATED;
  }
  if (length_out && status != JX_E_BADFORMAT) {
    *length_out = static_cast<uint32_t>(std::min<uint64_t>(sink.chars(), UINT32_MAX));
  }
  return status;
}

// The quickest path, for formats of text and "%d", "%i" and "%u", with "l" or "ll" or without:
// moves the call on for as long as there is room to spare. Returns the next directive, which is for
// the other paths, or null.
[[gnu::always_inline]] inline const JXChar *put_bare_part(Call *call, Arguments *arguments) {
  while (const JXChar *start = find_directive(call->written, call->format.end)) {
    PlainDirective plain __attribute__((uninitialized));
    const auto run = static_cast<size_t>(start - call->written);
    const auto room = static_cast<size_t>(call->limit - call->at);
    if (!jx::read_bare(start + 1, call->format.end, &plain)) return start;
    if (run + jx::kLongestInteger > room) return start;
    if (run != 0) jx::copy_chars(call->written, run, call->at);
    call->at = jx::put_plain_integer<10>(plain, plain.letter != 'u', arguments, call->at + run);
    call->written = plain.end;
  }
  return nullptr;
}

// The quick path: moves the call on over runs of text and plain directives, for as long as there is
// room to spare and each piece fits; `start` is the next directive. Returns the one after, for the
// general path, or null.
[[gnu::always_inline]] inline const JXChar *put_plain_part(Call *call, const JXChar *start,
                                                           const JXLocale *locale,
                                                           Arguments *arguments) {
  for (; start; start = find_directive(call->written, call->format.end)) {
    // Uninitialized, so that it can stay in registers.
    PlainDirective plain __attribute__((uninitialized));
    const auto run = static_cast<size_t>(start - call->written);
    const auto room = static_cast<size_t>(call->limit - call->at);
    if (call->refused_chars != 0 || !jx::read_plain(start + 1, call->format.end, &plain)) break;
    if (run + plain.width + jx::kLongestInteger > room) break;
    if (run != 0) jx::copy_chars(call->written, run, call->at);
    call->written = plain.end;
    call->at =
        jx::put_plain(plain, locale, arguments, call->at + run, call->limit, &call->refused_chars);
  }
  return start;
}

// Ends a call that fits as a whole: copies its last run of text.
[[gnu::always_inline]] inline bool end_call(const Call &call, uint32_t *length_out) {
  const auto run = static_cast<size_t>(call.format.end - call.written);
  if (run > static_cast<size_t>(call.limit - call.at)) return false;
  if (run != 0) jx::copy_chars(call.written, run, call.at);
  if (length_out) *length_out = static_cast<uint32_t>(call.at + run - call.buffer);
  return true;
}

// The rest of a call, for any format, from the directive at `start` on; null: there is none. The
// call comes by its parts, so that its creator keeps it in registers.
[[gnu::noinline]] JXStatus put_rest(const JXChar *format_text, const JXChar *format_end,
                                    JXChar *buffer, JXChar *limit, const JXChar *written,
                                    JXChar *at, uint64_t refused_chars, const JXChar *start,
                                    const JXLocale *locale, Arguments *arguments,
                                    uint32_t *length_out) {
  const Format format __attribute__((uninitialized)) = {format_text, format_end};
  Call call __attribute__((uninitialized)) = {format, buffer, limit, written, at, refused_chars};
  JXStatus status = JX_OK;
  for (;;) {
    start = put_plain_part(&call, start, locale, arguments);
    if (!start) break;
    status = put_other(start, locale, arguments, &call);
    if (status != JX_OK) break;
    start = find_directive(call.written, call.format.end);
  }
  if (status == JX_OK && call.refused_chars == 0 && end_call(call, length_out)) return JX_OK;
  return end_other(call, status, length_out);
}

// The beginning of both entries: false for a call that the status ends.
[[gnu::always_inline]] inline bool begin_call(const JXChar *format, int32_t format_chars,
                                              JXChar *buffer, int32_t capacity_chars,
                                              uint32_t *length_out, Call *call) {
  if (length_out) *length_out = 0;
  if (format_chars < 0) return false;
  if (format_chars == 0) format_chars = static_cast<int32_t>(skStrTLen(format));
  *call = {{format, format + format_chars},
           buffer,
           Sink::limit_of(buffer, capacity_chars),
           format,
           buffer,
           0};
  return true;
}

}  // namespace

extern "C" {

JXStatus jxzFormatBuffV(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                        JXChar *buffer, int32_t capacity_chars, uint32_t *length_out,
                        va_list args) {
  Call call __attribute__((uninitialized));
  if (!begin_call(format, format_chars, buffer, capacity_chars, length_out, &call)) {
    return JX_E_BADARG;
  }
  Arguments arguments __attribute__((uninitialized));
  va_copy(arguments.list, args);
  const JXStatus status =
      put_rest(format, call.format.end, buffer, call.limit, format, buffer, 0,
               find_directive(format, call.format.end), locale, &arguments, length_out);
  va_end(arguments.list);
  return status;
}

// Does not call jxzFormatBuffV: copying the list that va_start has just stored would stall on it.
// The short formats that most calls have need no frame but this one.
JXStatus jxzFormatBuff(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                       JXChar *buffer, int32_t capacity_chars, uint32_t *length_out, ...) {
  Call call __attribute__((uninitialized));
  if (!begin_call(format, format_chars, buffer, capacity_chars, length_out, &call)) {
    return JX_E_BADARG;
  }
  Arguments arguments __attribute__((uninitialized));
  va_start(arguments.list, length_out);
  const JXChar *start = put_bare_part(&call, &arguments);
  start = put_plain_part(&call, start, locale, &arguments);
  JXStatus status = JX_OK;
  if (start || call.refused_chars != 0 || !end_call(call, length_out)) {
    status = put_rest(format, call.format.end, buffer, call.limit, call.written, call.at,
                      call.refused_chars, start, locale, &arguments, length_out);
  }
  va_end(arguments.list);
  return status;
}

}  // extern "C"
