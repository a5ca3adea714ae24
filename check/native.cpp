// Encoding 62, that of file names: byte n is character n.
#include "check/conversion.hpp"

namespace jxcheck {

namespace {

constexpr uint32_t kBytes = 256;

struct AllBytes {
  char bytes[kBytes];
  char chars[kBytes * sizeof(JXChar)];  // JXChars
};

constexpr AllBytes make_all() {
  AllBytes all = {};
  for (uint32_t i = 0; i < kBytes; ++i) {
    all.bytes[i] = all.chars[i * sizeof(JXChar)] = static_cast<char>(i);
  }
  return all;
}

constexpr AllBytes kAll = make_all();
constexpr std::string_view kAllBytes = {kAll.bytes, sizeof kAll.bytes};
constexpr std::string_view kAllChars = {kAll.chars, sizeof kAll.chars};

// All bytes at once, and one by one.
void expect_native(Probe &probe, JXTranscoder *transcoder, std::string_view from,
                   std::string_view to) {
  if (!transcoder) return probe.found("null");
  const auto room_bytes = static_cast<uint32_t>(to.size());
  expect_text(probe, "all 256", convert(probe, transcoder, from, room_bytes), to);
  const size_t from_bytes = from.size() / kBytes, to_bytes = to.size() / kBytes;
  for (size_t i = 0; i < kBytes; ++i) {
    const Converted one =
        convert(probe, transcoder, part_of(from, i * from_bytes, from_bytes), 4 * sizeof(JXChar));
    expect_text(probe, "one alone", one, part_of(to, i * to_bytes, to_bytes));
  }
}

void check_decoder(Probe &probe) {
  const Transcoder made(probe.nls, probe.nls->create_decoder(probe.nls, JX_ENCODING_NATIVE, 0, 0));
  expect_native(probe, made.get(), kAllBytes, kAllChars);
}

void check_encoder(Probe &probe) {
  const Transcoder made(probe.nls, probe.nls->create_encoder(probe.nls, JX_ENCODING_NATIVE, 0, 0));
  expect_native(probe, made.get(), kAllChars, kAllBytes);
}

void check_locale(Probe &probe) {
  expect_native(probe, probe.host->locale->native_decoder, kAllBytes, kAllChars);
}

void check_pair(Probe &probe) {
  const Transcoder decoder = make_transcoder(probe, JX_ENCODING_NATIVE, JX_ENCODING_UTF32LE);
  if (decoder) expect_native(probe, decoder.get(), kAllBytes, kAllChars);
  const Transcoder encoder = make_transcoder(probe, JX_ENCODING_UTF32LE, JX_ENCODING_NATIVE);
  if (encoder) expect_native(probe, encoder.get(), kAllChars, kAllBytes);
}

void check_beyond(Probe &probe) {
  const Transcoder encoder(probe.nls,
                           probe.nls->create_encoder(probe.nls, JX_ENCODING_NATIVE, 0, 0));
  if (!encoder) return probe.found("null");
  for (const std::string_view beyond : {bytes_of("\0\1\0\0"), bytes_of("\xAC\x20\0\0")}) {
    const Converted came = convert(probe, encoder.get(), beyond, 8);
    if (came.status == JX_OK) return probe.found("status 0 and %u bytes", came.produced_bytes);
  }
}

void check_room(Probe &probe) {
  const Transcoder made(probe.nls, probe.nls->create_decoder(probe.nls, JX_ENCODING_NATIVE, 0, 0));
  if (!made) return probe.found("null");
  for (const uint32_t room_bytes : {0u, 4u, 8u, 11u}) {
    if (!probe.expect_failure("3 characters",
                              convert(probe, made.get(), "abc", room_bytes).status)) {
      return;
    }
  }
}

void check_no_count(Probe &probe) {
  const Transcoder made(probe.nls, probe.nls->create_decoder(probe.nls, JX_ENCODING_NATIVE, 0, 0));
  if (!made) return probe.found("null");
  const Room room = probe.room(3 * sizeof(JXChar));
  const JXStatus status =
      made.get()->transcode(made.get(), probe.text("abc", 3), 3, room.data, room.bytes, nullptr, 0);
  expect_text(probe, "3 bytes", {status, room.bytes, room}, bytes_of("a\0\0\0b\0\0\0c\0\0\0"));
}

constexpr Slots kPair = kTranscoderSlots;

constexpr Check kChecks[] = {
    {Slot::create_decoder, "encoding 62: all bytes", "character n for byte n", guide::kKernel,
     kDecoderSlots, check_decoder},
    {Slot::create_encoder, "encoding 62: characters 0 to 255", "byte n for character n",
     guide::kKernel, kEncoderSlots, check_encoder},
    {Slot::native_decoder, "all bytes", "character n for byte n", guide::kKernel,
     slots(Slot::locale, Slot::native_decoder, Slot::transcode), check_locale},
    {Slot::create_transcoder, "62 to 27 and back", "character n for byte n", guide::kKernel, kPair,
     check_pair},
    {Slot::transcode, "characters beyond 255 into encoding 62", "a status other than 0",
     guide::kKernel, kEncoderSlots, check_beyond},
    {Slot::transcode, "text that does not fit its room",
     "a status other than 0, and nothing "
     "beyond the room",
     guide::kKernel, kDecoderSlots, check_room},
    {Slot::transcode, "no place for the number of bytes", "status 0 and the text", guide::kKernel,
     kDecoderSlots, check_no_count},
};

}  // namespace

std::span<const Check> native_checks() { return kChecks; }

}  // namespace jxcheck
