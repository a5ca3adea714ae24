// Finding text lines: the line feed by vector scan, the carriage return before it, the line end
// right after a record of full length.
#include "record/line.hpp"

#include <algorithm>
#include <cstring>

#include "kernel/scan.hpp"

namespace jx {

namespace {

template <typename T>
uint32_t find_unit(const uint8_t *data, uint32_t unit_count, const uint8_t *pattern) {
  T unit;
  std::memcpy(&unit, pattern, sizeof unit);
  return static_cast<uint32_t>(scan_units<T>(data, unit_count, unit));
}

// Index of the first of unit_count units that is a line feed; unit_count when none is.
uint32_t find_line_feed(const ControlCopy &line_feed, const uint8_t *data, uint32_t unit_count) {
  switch (line_feed.bytes) {
    case 1:
      return find_unit<uint8_t>(data, unit_count, line_feed.text);
    case 2:
      return find_unit<uint16_t>(data, unit_count, line_feed.text);
    case 4:
      return find_unit<uint32_t>(data, unit_count, line_feed.text);
    default:
      break;
  }
  for (uint32_t i = 0; i < unit_count; ++i) {
    const uint8_t *unit = data + size_t{i} * line_feed.bytes;
    if (std::memcmp(unit, line_feed.text, line_feed.bytes) == 0) return i;
  }
  return unit_count;
}

bool is_at(const ControlCopy &control, const uint8_t *data) {
  if (*data != *control.text) return false;
  return control.bytes == 1 || std::memcmp(data, control.text, control.bytes) == 0;
}

// The record before a line feed at `position`, less the carriage return before it.
Line trim_line_end(const FileHandle *handle, const uint8_t *data, uint32_t position) {
  const ControlCopy &line_feed = handle->controls.line_feed();
  const ControlCopy &carriage_return = handle->controls.carriage_return();
  Line line = {position, position + line_feed.bytes};
  if (position >= line_feed.bytes && position >= carriage_return.bytes &&
      is_at(carriage_return, data + position - line_feed.bytes)) {
    line.record_bytes = position - carriage_return.bytes;
  }
  return line;
}

// A search for the line feed that resumes when more bytes are in hand. Counts in its units.
class LineSearch {
 public:
  explicit LineSearch(const FileHandle *handle) : line_feed_(handle->controls.line_feed()) {}

  // Searches the units that begin in the first window_bytes and are in hand whole.
  bool finds_in(const uint8_t *data, uint32_t window_bytes, uint32_t bytes_in_hand) {
    const uint32_t unit_bytes = line_feed_.bytes;
    const uint32_t units = unit_bytes == 1
                               ? window_bytes
                               : std::min(units_over(window_bytes), bytes_in_hand / unit_bytes);
    searched_units_ += find_line_feed(line_feed_, data + size_t{searched_units_} * unit_bytes,
                                      units - searched_units_);
    return searched_units_ < units;
  }
  // The offset of the line feed in bytes.
  uint32_t position() const { return searched_units_ * line_feed_.bytes; }
  // The offset where a search of window_bytes that finds nothing ends: at a whole unit.
  uint32_t end_of(uint32_t window_bytes) const {
    return units_over(window_bytes) * line_feed_.bytes;
  }

 private:
  uint32_t units_over(uint32_t bytes) const {
    return bytes / line_feed_.bytes + (bytes % line_feed_.bytes != 0);
  }

  const ControlCopy &line_feed_;
  uint32_t searched_units_ = 0;
};

// What follows a record as long as the record length.
enum class Next { line_end, text, undecided };

// Compares bytes with a control string: line_end for the string itself, text for bytes that do not
// begin it, undecided for too few to tell.
Next compare(const ControlCopy &control, const uint8_t *data, uint32_t bytes) {
  const uint32_t common = std::min(control.bytes, bytes);
  if (common != 0 && std::memcmp(data, control.text, common) != 0) return Next::text;
  return common == control.bytes ? Next::line_end : Next::undecided;
}

// Looks for a line end right after a record of full length: a line feed, or a carriage return and a
// line feed. Stores the line if there is one.
Next look_past_limit(const FileHandle *handle, Line *line) {
  const ControlCopy &carriage_return = handle->controls.carriage_return();
  const ControlCopy &line_feed = handle->controls.line_feed();
  const uint32_t limit = handle->record_length;
  const uint32_t bytes_past = handle->buffer.unread_bytes - limit;
  const uint8_t *data = handle->buffer.unread();
  uint32_t end = limit;
  Next next = compare(line_feed, data + limit, bytes_past);
  if (next == Next::text) {
    next = compare(carriage_return, data + limit, bytes_past);
    if (next != Next::line_end) return next;
    end += carriage_return.bytes;
    next = compare(line_feed, data + end, bytes_past - carriage_return.bytes);
  }
  if (next == Next::line_end) *line = trim_line_end(handle, data, end);
  return next;
}

// A line with no line feed among its first record-length bytes, which are in hand or all there is.
JXStatus take_long_or_last_line(FileHandle *handle, const LineSearch &search, Line *line) {
  const uint32_t limit = handle->record_length;
  for (;;) {
    const uint32_t count = handle->buffer.unread_bytes;
    const uint32_t end = search.end_of(std::min(count, limit));
    // A search that ends past the limit has no line end to look for, only the end of the file.
    Next next = count > end ? Next::text : Next::undecided;
    if (end == limit && count > limit) next = look_past_limit(handle, line);
    if (next == Next::line_end) return JX_OK;
    if (next == Next::text || handle->end_seen != 0) {
      // A character that the end of the file cuts off is part of the record.
      const uint32_t bytes = std::min(end, count);
      *line = {bytes, bytes};
      return end == count && handle->end_seen != 0 ? JX_OK : JXWEM_E_PARTIAL;
    }
    const JXStatus status = read_block(handle);
    if (status != JX_OK) return status;
  }
}

}  // namespace

bool note_line_feeds(FileHandle *handle) {
  const RecordBuffer &buffer = handle->buffer;
  const ControlCopy &line_feed = handle->controls.line_feed();
  const ControlCopy &carriage_return = handle->controls.carriage_return();
  LineFeeds &line_feeds = handle->line_feeds;
  if (line_feed.bytes != 1 || carriage_return.bytes != 1) return false;
  if (line_feeds.unread_offset != buffer.unread_offset) {
    line_feeds.forget();
    line_feeds.unread_offset = buffer.unread_offset;
  }
  if (line_feeds.next != line_feeds.count) return false;
  const uint32_t end = buffer.unread_offset + buffer.unread_bytes;
  line_feeds.mark_byte = handle->mark.size != 0 ? handle->mark.bytes[0] : 0x100;
  line_feeds.carriage_return = *carriage_return.text;
  line_feeds.searched_end = std::max(line_feeds.searched_end, buffer.unread_offset);
  line_feeds.next = 0;
  line_feeds.count = kLongRuns.note_bytes(buffer.data, &line_feeds.searched_end, end,
                                          *line_feed.text, line_feeds.offsets);
  return line_feeds.count != 0;
}

void consume_line(FileHandle *handle, Line line) {
  RecordBuffer &buffer = handle->buffer;
  LineFeeds &line_feeds = handle->line_feeds;
  if (line_feeds.unread_offset != buffer.unread_offset) line_feeds.forget();
  buffer.consume(line.consumed_bytes);
  line_feeds.unread_offset = buffer.unread_offset;
  while (line_feeds.next != line_feeds.count &&
         line_feeds.offsets[line_feeds.next] < buffer.unread_offset) {
    ++line_feeds.next;
  }
}

JXStatus find_line(FileHandle *handle, Line *line) {
  LineSearch search(handle);
  for (;;) {
    const uint32_t count = handle->buffer.unread_bytes;
    const uint32_t window_bytes = std::min(count, handle->record_length);
    const uint8_t *data = handle->buffer.unread();
    if (search.finds_in(data, window_bytes, count)) {
      *line = trim_line_end(handle, data, search.position());
      return JX_OK;
    }
    // The last unit that begins within the record length must be in hand whole.
    const uint32_t limit = handle->record_length;
    if ((count >= limit && count >= search.end_of(limit)) || handle->end_seen != 0) {
      return take_long_or_last_line(handle, search, line);
    }
    const JXStatus status = read_block(handle);
    if (status != JX_OK) return status;
  }
}

JXStatus find_direct_line(const FileHandle *handle, DirectRead *read) {
  const uint8_t *data = handle->buffer.data;
  if (handle->mark.begins(data, read->read_bytes)) read->mark_bytes = handle->mark.size;
  data += read->mark_bytes;
  const uint32_t span = read->read_bytes - read->mark_bytes;
  LineSearch search(handle);
  if (search.finds_in(data, span, span)) {
    read->line = trim_line_end(handle, data, search.position());
    return JX_OK;
  }
  // A read that filled the buffer may cut a character, which then begins the next record. One that
  // the end of the file cuts is part of this record.
  const bool is_full = read->read_bytes == handle->record_length + handle->control_extra_bytes;
  const uint32_t bytes = is_full && search.position() != 0 ? search.position() : span;
  read->line = {bytes, bytes};
  return JXWEM_E_PARTIAL;
}

}  // namespace jx
