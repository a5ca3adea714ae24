// Finding text lines among bytes in hand.
#pragma once

#include <algorithm>

#include "kernel/scan.hpp"
#include "record/record.hpp"

namespace [[gnu::visibility("hidden")]] jx {

// A line that was found, from its first byte.
struct Line {
  uint32_t record_bytes;    // without its line end
  uint32_t consumed_bytes;  // with it
};

// Fast path of find_line(): one scan, for line ends of one byte, a whole line in hand and no
// byte-order mark before it. Any other line: 0 consumed bytes.
inline Line line_in_hand(const FileHandle *handle) {
  const ControlCopy &line_feed = handle->controls.line_feed();
  const ControlCopy &carriage_return = handle->controls.carriage_return();
  const uint32_t window = std::min(handle->buffer.unread_bytes, handle->record_length);
  if (window == 0 || line_feed.bytes != 1 || carriage_return.bytes != 1) return {};
  const uint8_t *data = handle->buffer.unread();
  if (handle->mark.size != 0 && *data == handle->mark.bytes[0]) return {};
  const auto position = static_cast<uint32_t>(scan_units(data, window, *line_feed.text));
  if (position == window) return {};
  const bool is_returned = position != 0 && data[position - 1] == *carriage_return.text;
  return {position - is_returned, position + 1};
}

// Finds the next record among the unread bytes, reading on while they do not decide it. 0,
// JXWEM_E_PARTIAL, or the failure of a host read.
JXStatus find_line(FileHandle *handle, Line *line);

// A direct read: the bytes in the record buffer, and how many the mark and the record take.
struct DirectRead {
  uint32_t read_bytes;
  uint32_t mark_bytes;
  Line line;
};

// Finds the record in the bytes of a direct read, which alone decide it. 0 or JXWEM_E_PARTIAL.
JXStatus find_direct_line(const FileHandle *handle, DirectRead *read);

}  // namespace jx
