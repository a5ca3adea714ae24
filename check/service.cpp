// What the character-set service says about encodings and conversions.
#include <array>

#include "check/conversion.hpp"

namespace jxcheck {

namespace {

constexpr uint32_t kNoEncoding = 0xFFFFFFF0;

// The minimum is 27 and 62; a host answers for the others if it has them.
constexpr uint32_t kEncodings[] = {JX_ENCODING_DEFAULT, JX_ENCODING_UTF8,    JX_ENCODING_UTF16BE,
                                   JX_ENCODING_UTF16LE, JX_ENCODING_UTF32BE, JX_ENCODING_UTF32LE,
                                   JX_ENCODING_NATIVE};

void check_needs(Probe &probe) {
  for (const uint32_t from : kEncodings) {
    for (const uint32_t to : kEncodings) {
      // The same bytes mean the same text in one encoding with itself only.
      const bool may_copy = from == to && from != JX_ENCODING_DEFAULT;
      if (!may_copy && probe.nls->needs_conversion(probe.nls, from, to) == 0) {
        return probe.found("0 from %u to %u", from, to);
      }
    }
  }
}

JXStatus describe(Probe &probe, uint32_t encoding, int8_t *max_bytes_out) {
  const Room room = probe.room(sizeof(JXEncodingInfo));
  auto *info = reinterpret_cast<JXEncodingInfo *>(room.data);
  const JXStatus status = probe.nls->encoding_info(probe.nls, encoding, info);
  if (room.spilled_bytes() != 0) probe.found("%u bytes beyond 32", room.spilled_bytes());
  *max_bytes_out = info->max_bytes_per_char;
  return status;
}

void check_info(Probe &probe) {
  for (const auto &[encoding, least, most] :
       {std::array<uint32_t, 3>{JX_ENCODING_NATIVE, 1, 1}, {JX_ENCODING_UTF32LE, 4, 4}}) {
    int8_t max_bytes = 0;
    if (!probe.expect_status("to describe it", describe(probe, encoding, &max_bytes), JX_OK))
      return;
    if (max_bytes < int(least) || max_bytes > int(most)) {
      return probe.found("%d bytes for a character of encoding %u", max_bytes, encoding);
    }
  }
}

void check_longest(Probe &probe) {
  for (const Sample &sample : kSamples) {
    int8_t max_bytes = 0;
    if (describe(probe, sample.encoding, &max_bytes) != JX_OK) continue;  // the host has it not
    // U+1F600 has four bytes in all of them.
    if (max_bytes < 4) {
      return probe.found("%d bytes for a character of encoding %u", max_bytes, sample.encoding);
    }
  }
}

void check_unknown(Probe &probe) {
  int8_t max_bytes = 0;
  probe.expect_failure("encoding 4294967280", describe(probe, kNoEncoding, &max_bytes));
}

void check_unknown_transcoder(Probe &probe) {
  JXNls *nls = probe.nls;
  if (nls->create_transcoder(nls, kNoEncoding, JX_ENCODING_UTF32LE, 0, nullptr)) {
    probe.found("a transcoder");
  }
}

// The bytes that a text has after conversion.
void expect_measure(Probe &probe, uint32_t from, std::string_view text, uint32_t to, size_t due) {
  const auto text_bytes = static_cast<uint32_t>(text.size());
  const Room room = probe.room(sizeof(uint32_t));
  auto *length = reinterpret_cast<uint32_t *>(room.data);
  const JXStatus status = probe.nls->measure_conversion(
      probe.nls, from, probe.text(text.data(), text_bytes), text_bytes, to, length);
  if (!probe.expect_status("to measure", status, JX_OK)) return;
  if (*length != due) {
    probe.found("%u bytes from %u to %u, not %u", *length, from, to, static_cast<unsigned>(due));
  }
}

void check_measure_line_feed(Probe &probe) {
  expect_measure(probe, JX_ENCODING_UTF32LE, bytes_of("\n\0\0\0"), JX_ENCODING_NATIVE, 1);
  expect_measure(probe, JX_ENCODING_NATIVE, "abc", JX_ENCODING_UTF32LE, 3 * sizeof(JXChar));
}

void check_measure(Probe &probe) {
  for (const Sample &sample : kSamples) {
    JXNls *nls = probe.nls;
    if (sample.encoding == JX_ENCODING_UTF32LE) continue;
    const Transcoder known(
        nls, nls->create_transcoder(nls, JX_ENCODING_UTF32LE, sample.encoding, 0, nullptr));
    if (!known) continue;  // the host has it not
    expect_measure(probe, JX_ENCODING_UTF32LE, kSampleText, sample.encoding, sample.text.size());
    expect_measure(probe, sample.encoding, sample.text, JX_ENCODING_UTF32LE, kSampleText.size());
  }
}

constexpr Slots kMeasure = slots(Slot::nls, Slot::measure_conversion);

constexpr Check kChecks[] = {
    {Slot::needs_conversion, "every pair of 0, 20, 24 to 27 and 62",
     "0 only where bytes can be copied unchanged, never for 0", guide::kConversions,
     slots(Slot::nls, Slot::needs_conversion), check_needs},
    {Slot::encoding_info, "encodings 62 and 27", "1 and 4 bytes a character", guide::kKernel,
     slots(Slot::nls, Slot::encoding_info), check_info},
    {Slot::encoding_info, "encodings 20 and 24 to 27, where the host has them",
     "the longest character, in bytes", guide::kKernel, slots(Slot::nls, Slot::encoding_info),
     check_longest},
    {Slot::encoding_info, "an encoding that there is not", "a status other than 0", guide::kKernel,
     slots(Slot::nls, Slot::encoding_info), check_unknown},
    {Slot::create_transcoder, "an encoding that there is not", "null", guide::kKernel,
     slots(Slot::nls, Slot::create_transcoder), check_unknown_transcoder},
    {Slot::measure_conversion, "encodings 27 and 62", "the bytes after conversion", guide::kKernel,
     kMeasure, check_measure_line_feed},
    {Slot::measure_conversion, "encodings 20 and 24 to 26, where the host has them",
     "the bytes after conversion", guide::kKernel, kMeasure | kTranscoderSlots, check_measure},
};

}  // namespace

std::span<const Check> service_checks() { return kChecks; }

}  // namespace jxcheck
