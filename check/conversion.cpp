// Watched conversions.
#include "check/conversion.hpp"

#include <algorithm>

namespace jxcheck {

Converted convert(Probe &probe, JXTranscoder *transcoder, std::string_view text,
                  uint32_t room_bytes) {
  const auto text_bytes = static_cast<uint32_t>(text.size());
  const Room room = probe.room(room_bytes);
  uint32_t produced_bytes = 0;
  const JXStatus status =
      transcoder->transcode(transcoder, probe.text(text.data(), text_bytes), text_bytes, room.data,
                            room_bytes, &produced_bytes, 0);
  if (room.spilled_bytes() != 0) {
    probe.found("%u bytes beyond a room of %u", room.spilled_bytes(), room_bytes);
  }
  if (produced_bytes > room_bytes) {
    probe.found("%u bytes said to be in a room of %u", produced_bytes, room_bytes);
  }
  return {status, std::min(produced_bytes, room_bytes), room};
}

void expect_text(Probe &probe, const char *what, const Converted &came, std::string_view due) {
  if (!probe.expect_status(what, came.status, JX_OK)) return;
  const std::string_view text = came.text();
  const auto due_bytes = static_cast<unsigned>(due.size());
  if (text.size() != due.size()) {
    return probe.found("%s: %u bytes, not %u", what, came.produced_bytes, due_bytes);
  }
  const auto place = std::ranges::mismatch(text, due).in1 - text.begin();
  if (place == std::ssize(text)) return;
  const auto byte = static_cast<size_t>(place);
  probe.found("%s: byte %u is 0x%x, not 0x%x", what, static_cast<unsigned>(place),
              static_cast<uint8_t>(text[byte]), static_cast<uint8_t>(due[byte]));
}

}  // namespace jxcheck
