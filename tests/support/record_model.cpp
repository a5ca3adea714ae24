#include "support/record_model.hpp"

#include <algorithm>

namespace jx::test {

namespace {

constexpr ModelRead failed(JXStatus status) { return {status, ModelRead::null}; }

// A record found among bytes.
struct Cut {
  bool found;
  size_t end;       // of the record, or where the search stopped
  size_t consumed;  // with the line end
};

Cut end_line(std::string_view bytes, size_t end, std::string_view lf, std::string_view cr) {
  const bool is_returned = end >= lf.size() && bytes.substr(end - lf.size()).starts_with(cr);
  return {true, is_returned ? end - cr.size() : end, end + lf.size()};
}

JXStatus end_text(std::optional<TextModel> &text) { return text ? text->end() : JX_OK; }

// The first line feed that begins below `window`.
Cut find_line(std::string_view bytes, size_t window, std::string_view lf, std::string_view cr) {
  size_t end = 0;
  for (; end < window; end += lf.size()) {
    if (bytes.substr(end).starts_with(lf)) return end_line(bytes, end, lf, cr);
  }
  return {false, end, end};
}

}  // namespace

JXStatus RecordModel::open(const JXOpenOptions &options) {
  options_ = options;
  if (options.access_mode == JX_ACCESS_UPDATE) options_.buffered = 0;
  if (is_text() && transfers()) return JXWEM_E_BADOPTIONS;
  if (options.access_mode == JX_ACCESS_INPUT && !file_) return JXWEM_E_NOTFOUND;
  if (!file_ || options.access_mode == JX_ACCESS_OUTPUT) file_ = "";
  if (options.access_mode == JX_ACCESS_APPEND) offset_ = static_cast<int64_t>(file_->size());
  if (!is_binary()) set_up_text();
  return JX_OK;
}

void RecordModel::set_up_text() {
  const uint32_t default_record = is_text() ? JX_ENCODING_UTF32LE : JX_ENCODING_NATIVE;
  file_encoding_ = options_.file_encoding ? options_.file_encoding : JX_ENCODING_NATIVE;
  record_encoding_ = options_.record_encoding ? options_.record_encoding : default_record;
  bom_ = bom_of(file_encoding_);
  bom_pending_ = true;
  if (is_text()) {
    line_feed_ = encode(file_encoding_, U"\n");
    carriage_return_ = encode(file_encoding_, U"\r");
    extra_bytes_ = unit_bytes() * (writes() ? 3 : 1);
  }
  if (file_encoding_ == record_encoding_) return;
  const size_t chars = size_t{record_length()} + extra_bytes_;
  if (reads()) {
    in_.emplace(file_encoding_, record_encoding_);
    transcode_bytes_ = chars * max_bytes_of(record_encoding_);
  }
  if (writes()) out_.emplace(record_encoding_, file_encoding_);
  if (writes() || transfers()) {
    transcode_bytes_ = std::max(transcode_bytes_, chars * max_bytes_of(file_encoding_));
  }
}

std::string_view RecordModel::rest(int64_t offset) const {
  const auto size = static_cast<int64_t>(file_->size());
  return std::string_view(*file_).substr(static_cast<size_t>(std::min(offset, size)));
}

bool RecordModel::begins_with_bom(std::string_view bytes) const {
  return !bom_.empty() && bytes.starts_with(bom_);
}

// ---- Reading -----------------------------------------------------------------------------------

ModelRead RecordModel::read(uint32_t wanted, const int64_t *offset) {
  if (!reads() && !is_plain()) return {JXWEM_E_NOTSUPPORTED, ModelRead::stays, wanted};
  if (is_text()) return is_buffered() ? read_lines() : read_line_directly();
  if (!transfers() && wanted > record_length()) return {JXWEM_E_TOOLONG, ModelRead::stays, wanted};
  return is_buffered() && !transfers() ? read_buffered(wanted) : read_directly(wanted, offset);
}

ModelRead RecordModel::read_lines() {
  std::string_view bytes = rest(offset_);
  if (bytes.empty()) return failed(JXWEM_E_EOF);
  if (begins_with_bom(bytes)) {
    offset_ += static_cast<int64_t>(bom_.size());
    bytes.remove_prefix(bom_.size());
  }
  const size_t limit = record_length();
  Cut cut = find_line(bytes, std::min(bytes.size(), limit), line_feed_, carriage_return_);
  if (!cut.found && cut.end == limit && bytes.size() > limit) {
    const std::string_view rest = bytes.substr(limit);
    if (rest.starts_with(line_feed_)) {
      cut = end_line(bytes, limit, line_feed_, carriage_return_);
    } else if (rest.starts_with(carriage_return_ + line_feed_)) {
      cut = {true, limit, limit + carriage_return_.size() + line_feed_.size()};
    }
  }
  JXStatus status = JX_OK;
  if (!cut.found) {
    status = cut.end == bytes.size() ? JX_OK : JXWEM_E_PARTIAL;
    cut.end = cut.consumed = std::min(cut.end, bytes.size());
  }
  offset_ += static_cast<int64_t>(cut.consumed);
  const bool is_ended = cut.found || rest(offset_).empty();
  if (cut.end != 0) return deliver(bytes.substr(0, cut.end), status, transcode_bytes_, is_ended);
  return failed(is_ended && end_text(in_) != JX_OK ? JXHOST_E_MALFORMED : status);
}

ModelRead RecordModel::read_line_directly() {
  const size_t most = size_t{record_length()} + extra_bytes_;
  const std::string_view read = rest(offset_).substr(0, most);
  if (read.empty()) return failed(end_text(in_) != JX_OK ? JXHOST_E_MALFORMED : JXWEM_E_EOF);
  const std::string_view bytes = read.substr(begins_with_bom(read) ? bom_.size() : 0);
  Cut cut = find_line(bytes, bytes.size(), line_feed_, carriage_return_);
  if (!cut.found) {
    const size_t whole = bytes.size() - bytes.size() % line_feed_.size();
    cut.end = cut.consumed = read.size() == most && whole != 0 ? whole : bytes.size();
  }
  const size_t consumed = read.size() - bytes.size() + cut.consumed;
  offset_ += static_cast<int64_t>(consumed);
  if (consumed != read.size()) bom_pending_ = offset_ == 0 && may_write_bom();
  return deliver(bytes.substr(0, cut.end), cut.found ? JX_OK : JXWEM_E_PARTIAL, transcode_bytes_,
                 cut.found || read.size() < most);
}

ModelRead RecordModel::deliver(std::string_view bytes, JXStatus status, size_t capacity,
                               bool is_ended) {
  std::string record(bytes);
  if (in_) {
    JXStatus transcode_status = in_->convert(bytes, capacity, &record);
    if (transcode_status == JX_OK && is_ended) transcode_status = in_->end();
    if (transcode_status != JX_OK) return failed(transcode_status);
  }
  return {status, ModelRead::leads, static_cast<uint32_t>(record.size()), record};
}

ModelRead RecordModel::read_buffered(uint32_t wanted) {
  while (hand_end_ - offset_ < wanted && !end_seen_) {
    const size_t block = std::min<size_t>(rest(hand_end_).size(), JX_RECORD_BLOCK_BYTES);
    end_seen_ = block == 0;
    hand_end_ += static_cast<int64_t>(block);
  }
  if (end_seen_ && hand_end_ == offset_) return failed(JXWEM_E_EOF);
  std::string_view hand = rest(offset_).substr(0, static_cast<size_t>(hand_end_ - offset_));
  if (begins_with_bom(hand)) {
    offset_ += static_cast<int64_t>(bom_.size());
    hand.remove_prefix(bom_.size());
  }
  const std::string_view chunk = hand.substr(0, wanted);
  offset_ += static_cast<int64_t>(chunk.size());
  return deliver(chunk, JX_OK, transcode_bytes_, false);
}

// A host read.
JXStatus RecordModel::fetch(uint32_t count, const int64_t *offset, std::string *bytes_out) {
  bytes_out->clear();
  if (!can_read() || (offset && *offset < 0)) return JXWEM_E_SYSTEM;
  *bytes_out = rest(offset ? *offset : offset_).substr(0, count);
  if (!offset) offset_ += static_cast<int64_t>(bytes_out->size());
  return bytes_out->empty() && count != 0 ? JXWEM_E_EOF : JX_OK;
}

ModelRead RecordModel::read_directly(uint32_t wanted, const int64_t *offset) {
  // A chunk at an explicit offset neither completes a character nor leaves one to be completed.
  if (offset) (void)end_text(in_);
  std::string bytes;
  JXStatus status = fetch(transfers() && in_ ? record_length() : wanted, offset, &bytes);
  if (status != JX_OK) return {status, ModelRead::stays};
  if (begins_with_bom(bytes)) {
    const int64_t next = offset ? *offset + static_cast<int64_t>(bytes.size()) : 0;
    std::string more;
    status = fetch(static_cast<uint32_t>(bom_.size()), offset ? &next : nullptr, &more);
    bytes = bytes.substr(bom_.size()) + more;
  }
  ModelRead read =
      deliver(bytes, in_ ? JX_OK : status, transfers() ? wanted : transcode_bytes_, false);
  if (offset) (void)end_text(in_);
  if (read.pointer == ModelRead::null) read.pointer = ModelRead::stays;
  return read;
}

// ---- Writing -----------------------------------------------------------------------------------

JXStatus RecordModel::write(std::string_view data, int64_t *offset) {
  if (!writes() && !is_plain()) return JXWEM_E_READONLY;
  if (!can_write()) return JXWEM_E_SYSTEM;
  if (is_text() && !is_buffered()) return write_line_directly(data);
  const bool is_direct = !is_buffered() || transfers();
  if (!is_direct) offset = nullptr;
  if (offset) (void)end_text(out_);
  const JXStatus status = write_anywhere(data, offset);
  if (offset || status != JX_OK) (void)end_text(out_);
  return status;
}

JXStatus RecordModel::write_anywhere(std::string_view data, int64_t *offset) {
  const bool owes_bom = may_write_bom() && (offset ? *offset == 0 : bom_pending_);
  const auto put_bom = [&] {
    if (!owes_bom || bom_.empty()) return;
    bom_pending_ = false;
    if (!offset) return put(bom_);
    *offset = static_cast<int64_t>(bom_.size());
    file_->replace(0, bom_.size(), bom_);
  };
  // The mark is written before the text is converted.
  if (is_text()) put_bom();
  std::string bytes(data);
  const JXStatus status = prepare(&bytes, transcode_bytes_);
  if (status != JX_OK) return status;
  if (!is_text()) put_bom();
  if (offset) return store(bytes, *offset);
  put(bytes + line_feed_);
  return JX_OK;
}

JXStatus RecordModel::write_line_directly(std::string_view data) {
  const uint32_t length =
      out_ ? count_characters(record_encoding_, data) : static_cast<uint32_t>(data.size());
  if (length > record_length()) return JXWEM_E_TOOLONG;
  std::string bytes(data);
  const JXStatus status = prepare(&bytes, transcode_bytes_ - line_feed_.size());
  if (status != JX_OK) return status;
  if (may_write_bom() && bom_pending_ && !bom_.empty()) {
    put(bom_);
    bom_pending_ = false;
  }
  put(bytes + line_feed_);
  return JX_OK;
}

JXStatus RecordModel::prepare(std::string *data, size_t capacity) {
  const JXStatus status = out_ ? out_->convert(std::string(*data), capacity, data) : JX_OK;
  return status == JX_OK && is_text() ? end_text(out_) : status;
}

void RecordModel::put(std::string_view bytes) {
  pending_ += bytes;
  const bool is_gathered = is_buffered() && !transfers();
  const size_t due =
      is_gathered ? pending_.size() - pending_.size() % JX_RECORD_BLOCK_BYTES : pending_.size();
  (void)store(pending_.substr(0, due), offset_);
  offset_ += static_cast<int64_t>(due);
  pending_.erase(0, due);
}

JXStatus RecordModel::store(std::string_view bytes, int64_t offset) {
  if (offset < 0) return JXWEM_E_SYSTEM;
  const auto place = static_cast<size_t>(offset);
  if (bytes.empty()) return JX_OK;
  file_->resize(std::max(file_->size(), place + bytes.size()));
  file_->replace(place, bytes.size(), bytes);
  return JX_OK;
}

JXStatus RecordModel::flush() {
  (void)store(pending_, offset_);
  offset_ += static_cast<int64_t>(pending_.size());
  pending_.clear();
  return JX_OK;
}

// ---- Positions ---------------------------------------------------------------------------------

JXStatus RecordModel::note(int64_t *offset_out) const {
  if (is_buffered()) return JXWEM_E_NOTSUPPORTED;
  *offset_out = offset_;
  return JX_OK;
}

JXStatus RecordModel::point(int64_t *offset, uint32_t mode) {
  if (is_buffered()) return JXWEM_E_NOTSUPPORTED;
  int64_t target = *offset;
  if ((mode & JX_POINT_RELATIVE) != 0) target += offset_;
  if ((mode & JX_POINT_END) != 0) target = static_cast<int64_t>(file_->size());
  if ((mode & JX_POINT_START) != 0) target = 0;
  const bool is_possible = target >= 0;
  if (is_possible) offset_ = target;
  *offset = is_possible ? target : -1;
  bom_pending_ = *offset == 0 && may_write_bom();
  for (auto *text : {&in_, &out_}) (void)end_text(*text);
  return is_possible ? JX_OK : JXWEM_E_FAILED;
}

JXStatus RecordModel::truncate(int64_t length) {
  if (!writes()) return JXWEM_E_READONLY;
  if (length < 0) return JXWEM_E_SYSTEM;
  file_->resize(static_cast<size_t>(length));
  return JX_OK;
}

}  // namespace jx::test
