// The direct conversion between two encodings: one function a pair.
#pragma once

#include "host/transcode_groups.hpp"
#include "host/transcode_page.hpp"
#include "host/transcode_runs.hpp"
#include "jx/jxhost.h"

namespace jxhost {

// Converts one character. The input is not empty.
template <typename Source, typename Target>
[[gnu::always_inline]] inline JXStatus convert_one(const Source &source, const Target &target,
                                                   Cursor &at, bool &is_cut) {
  JXChar c = 0;
  const int read = source.decode(at.in, at.in_bytes(), c);
  if (read <= 0) {
    is_cut = read == kCut;
    return is_cut ? JX_OK : JXHOST_E_MALFORMED;
  }
  const int written = target.encode(c, at.out, at.out_bytes());
  if (written <= 0) return written == kNoRoom ? JXHOST_E_NOROOM : JXHOST_E_UNMAPPABLE;
  at.in += read;
  at.out += written;
  return JX_OK;
}

// How many characters of a run are converted one by one before the rest is tried as a run again.
template <typename Source, typename Target>
constexpr size_t plain_max() {
  if constexpr (kHasGroups<Source, Target>) return Lanes<Source>::kMixed ? 1 : 8;
  return 8;
}

// Converts in blocks, and one by one the characters that a block does not take.
template <typename Blocks, typename Source, typename Target>
[[gnu::always_inline]] inline JXStatus convert_in_blocks(const Blocks &convert_blocks,
                                                         const Source &source, const Target &target,
                                                         Cursor &cursor) {
  constexpr size_t kOneByOne = 16;
  for (;;) {
    convert_blocks(cursor);
    for (size_t i = 0; i < kOneByOne; ++i) {
      if (cursor.in == cursor.in_end) return JX_OK;
      bool is_cut = false;
      const JXStatus status = convert_one(source, target, cursor, is_cut);
      if (status != JX_OK || is_cut) return status;
    }
  }
}

// A Convert: in blocks where the processor's level has them; else runs in blocks, the characters
// between them singly and in groups.
template <typename Source, typename Target>
JXStatus convert_pair(const Step &step, Cursor &cursor) {
  const Source source(step);
  const Target target(step);
  if constexpr (kHasPage<Source, Target>) {
    const auto blocks = [&page = *step.page](Cursor &at) {
      convert_page_blocks<Source, Target>(page, at);
    };
    return convert_in_blocks(blocks, source, target, cursor);
  }
  if (step.wide) return convert_in_blocks(step.wide, source, target, cursor);
  Cursor at = {cursor.in, cursor.in_end, cursor.out, cursor.out_end};
  JXStatus status = JX_OK;
  bool is_cut = false;
  while (at.in != at.in_end) {
    if constexpr (kHasRuns<Source, Target>) copy_run<Source, Target>(at);
    if (at.in == at.in_end) break;
    for (size_t plain = 0; plain < plain_max<Source, Target>() && at.in != at.in_end;) {
      const bool is_plain = starts_run<Source, Target>(at);
      status = convert_one(source, target, at, is_cut);
      if (status != JX_OK || is_cut) {
        cursor = at;
        return status;
      }
      plain = is_plain ? plain + 1 : 0;
      if constexpr (kHasGroups<Source, Target>) {
        if (!is_plain) convert_groups<Source, Target>(at);
      }
    }
  }
  cursor = at;
  return status;
}

// The transcode slot of a pair.
template <typename Source, typename Target>
JXStatus transcode_pair(JXTranscoder *object, const void *source, uint32_t source_bytes,
                        void *destination, uint32_t capacity_bytes, uint32_t *produced_bytes_out,
                        uint32_t /*zero*/) {
  auto &transcoder = static_cast<Transcoder &>(*object);
  Cursor cursor = cursor_of(source, source_bytes, destination, capacity_bytes);
  JXStatus status = JX_OK;
  if constexpr (Source::kHolds) {
    if (transcoder.held_bytes != 0) status = resume(transcoder, cursor);
  }
  // A call on a line that is valid as a whole needs no more than this.
  if (status == JX_OK && transcoder.step.wide) transcoder.step.wide(cursor);
  if (status == JX_OK && cursor.in != cursor.in_end) {
    status = convert_pair<Source, Target>(transcoder.step, cursor);
  }
  if constexpr (Source::kHolds) {
    if (status == JX_OK && cursor.in != cursor.in_end) status = hold(transcoder, cursor);
  }
  if (produced_bytes_out) {
    *produced_bytes_out = static_cast<uint32_t>(cursor.out - static_cast<uint8_t *>(destination));
  }
  return status;
}

template <typename Source, typename Target>
Pair pair_of() {
  return {transcode_pair<Source, Target>, convert_pair<Source, Target>};
}

// The direct conversion from one encoding to a form.
template <typename Source>
Pair pair_to(Form to) {
  switch (to) {
    case Form::kByte:
      return pair_of<Source, Latin1>();
    case Form::kAscii:
      return pair_of<Source, Ascii>();
    case Form::kUtf8:
      return pair_of<Source, Utf8Codec>();
    case Form::kUtf16Be:
      return pair_of<Source, Utf16Be>();
    case Form::kUtf16Le:
      return pair_of<Source, Utf16Le>();
    case Form::kUtf32Be:
      return pair_of<Source, Utf32Be>();
    case Form::kUtf32Le:
      return pair_of<Source, Utf32Le>();
    default:
      return {};
  }
}

}  // namespace jxhost
