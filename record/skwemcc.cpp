// setupCCTable: a handle's control strings in the encoding of its file.
#include <algorithm>
#include <cstring>
#include <span>

#include "jx/exports/record.h"
#include "record/record.hpp"

namespace {

using jx::ControlCopy;
using jx::FileHandle;
using jx::kInbound;
using jx::kOutbound;

constexpr uint32_t kGroups = 2;

// The control strings of one direction and group, and their copies in the handle.
struct Direction {
  std::span<const JXControlString> entries;
  std::span<ControlCopy> copies;
};

uint32_t chars_of(const JXControlString &entry) { return entry.bytes / jx::kJXCharBytes; }

// The size of the longest copy: room that readers and writers need beside a record.
uint32_t longest(std::span<const ControlCopy> copies) {
  return std::ranges::max_element(copies, {}, &ControlCopy::bytes)->bytes;
}

void release(const FileHandle *handle, std::span<ControlCopy> copies) {
  for (ControlCopy &copy : copies) {
    const jx::PoolBlock<uint8_t> owner(handle->pool, std::exchange(copy.text, nullptr));
    copy.bytes = 0;
  }
}

// Copies strings that are in the file's encoding already.
JXStatus copy_entries(const FileHandle *handle, const Direction &direction) {
  for (size_t i = 0; i < direction.entries.size(); ++i) {
    const JXControlString &entry = direction.entries[i];
    auto block = jx::PoolBlock<uint8_t>::allocate(handle->pool, entry.bytes);
    if (!block) return JX_E_NOMEM;
    if (entry.bytes != 0) std::memcpy(block.get(), entry.text, entry.bytes);
    direction.copies[i] = {block.release(), entry.bytes};
  }
  return JX_OK;
}

// Converts strings; char_bytes is the size of one control character in the file's encoding.
JXStatus encode_entries(const FileHandle *handle, const Direction &direction,
                        JXTranscoder *transcoder, uint32_t char_bytes) {
  for (size_t i = 0; i < direction.entries.size(); ++i) {
    const JXControlString &entry = direction.entries[i];
    const uint64_t room = uint64_t{char_bytes} * chars_of(entry);
    auto block = jx::PoolBlock<uint8_t>::allocate(handle->pool, room);
    if (!block) return JX_E_NOMEM;
    uint32_t produced_bytes = 0;
    JXStatus status = transcoder->transcode(transcoder, entry.text, entry.bytes, block.get(),
                                            static_cast<uint32_t>(room), &produced_bytes, 0);
    if (produced_bytes > room) status = jx::refuse_claim(handle, status);
    if (status != JX_OK) return status;
    direction.copies[i] = {block.release(), produced_bytes};
  }
  return JX_OK;
}

// Makes the copies. Stores the size of a converted line feed, 0 when nothing is converted.
JXStatus make_copies(FileHandle *handle, const Direction &direction, uint32_t *char_bytes_out) {
  JXNls *nls = handle->nls;
  if (!nls->needs_conversion(nls, JX_ENCODING_UTF32LE, handle->encodings.file)) {
    *char_bytes_out = 0;
    return copy_entries(handle, direction);
  }
  jx::Transcoder transcoder(
      nls, nls->create_transcoder(nls, JX_ENCODING_UTF32LE, handle->encodings.file, 0, nullptr));
  if (!transcoder) return JXWEM_E_FAILED;
  const JXControlString &line_feed = sk_inbound_cc[jx::kLineFeed];
  JXStatus status =
      nls->measure_conversion(nls, JX_ENCODING_UTF32LE, line_feed.text, line_feed.bytes,
                              handle->encodings.file, char_bytes_out);
  if (status != JX_OK) return status;
  status = encode_entries(handle, direction, transcoder.get(), *char_bytes_out);
  if (status != JX_OK) return status;
  return transcoder.reset();
}

Direction direction_of(FileHandle *handle, uint32_t direction, uint32_t group) {
  if (direction == kInbound) {
    return {{sk_inbound_cc + group * jx::kInboundCount, jx::kInboundCount},
            handle->controls.inbound};
  }
  return {{sk_outbound_cc + group * jx::kOutboundCount, jx::kOutboundCount},
          handle->controls.outbound};
}

}  // namespace

extern "C" JXStatus setupCCTable(JXFile *file, uint32_t direction, uint32_t group) {
  if (!file) return JXWEM_E_NOHANDLE;
  if (direction > kOutbound || group - 1 >= kGroups) return JXWEM_E_FAILED;
  FileHandle *handle = jx::handle_of(file);
  const Direction strings = direction_of(handle, direction, group - 1);
  uint32_t char_bytes = 0;
  JXStatus status = make_copies(handle, strings, &char_bytes);
  // A line feed of no bytes would end every record before it began.
  if (status == JX_OK && direction == kInbound && strings.copies[jx::kLineFeed].bytes == 0) {
    status = JXWEM_E_FAILED;
  }
  if (status != JX_OK) {
    release(handle, strings.copies);
    return status;
  }
  if (direction == kInbound) {
    handle->line_feeds.forget();
    // Readers look for a line end as long as the one that is written.
    const JXControlString &line_end =
        sk_outbound_cc[(group - 1) * jx::kOutboundCount + jx::kLineEnd];
    const uint32_t line_feed_bytes = char_bytes ? char_bytes : strings.copies[jx::kLineFeed].bytes;
    handle->control_extra_bytes = line_feed_bytes * chars_of(line_end);
  } else {
    handle->control_extra_bytes = std::max(char_bytes, longest(strings.copies));
  }
  return JX_OK;
}
