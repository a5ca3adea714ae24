// Text in every encoding that is converted without the C library, valid and not, in one call and in
// two, with enough room and with less, against a model that converts one character at a time.
#include <iconv.h>

#include <array>
#include <map>
#include <optional>

#include "fuzz/fuzz.hpp"
#include "support/text_model.hpp"

namespace jx::fuzz {
namespace {

using jx::test::TextModel;

constexpr uint32_t kJxChars = JX_ENCODING_UTF32LE;

struct Outcome {
  JXStatus status;
  std::string produced;
  bool operator==(const Outcome &) const = default;
};

// A single-byte encoding: the character of each byte, as the C library tells, and back.
class Page {
 public:
  explicit Page(const char *name) {
    const iconv_t converter = iconv_open("UTF-32LE", name);
    for (uint32_t byte = 0; byte < 256; ++byte) {
      char in = static_cast<char>(byte);
      char32_t out = 0;
      char *from = &in, *to = reinterpret_cast<char *>(&out);
      size_t from_bytes = 1, to_bytes = sizeof out;
      iconv(converter, nullptr, nullptr, nullptr, nullptr);
      if (iconv(converter, &from, &from_bytes, &to, &to_bytes) != 0 || to_bytes != 0) continue;
      characters_[byte] = out;
      bytes_.emplace(out, in);
    }
    iconv_close(converter);
  }

  std::optional<char32_t> character(char byte) const {
    return characters_[static_cast<uint8_t>(byte)];
  }
  std::optional<char> byte(char32_t c) const {
    const auto at = bytes_.find(c);
    return at == bytes_.end() ? std::nullopt : std::optional(at->second);
  }

 private:
  std::array<std::optional<char32_t>, 256> characters_;
  std::map<char32_t, char> bytes_;
};

struct Kind {
  uint32_t number;
  const char *page;  // the C library's name of a single-byte encoding; null for the others
};
constexpr Kind kKinds[] = {{20, nullptr},   {24, nullptr},  {25, nullptr},     {26, nullptr},
                           {27, nullptr},   {62, nullptr},  {1252, "CP1252"},  {1250, "CP1250"},
                           {866, "IBM866"}, {874, "CP874"}, {1047, "IBM1047"}, {1253, "CP1253"}};

const Page &page_of(const Kind &kind) {
  static std::map<uint32_t, Page> pages;
  return pages.try_emplace(kind.number, kind.page).first->second;
}

// Text as JXChars, up to the first fault.
Outcome decode(const Kind &from, std::string_view text) {
  Outcome outcome = {JX_OK, ""};
  if (!from.page) {
    outcome.status = TextModel(from.number, kJxChars).convert(text, SIZE_MAX, &outcome.produced);
    return outcome;
  }
  for (const char byte : text) {
    const std::optional<char32_t> c = page_of(from).character(byte);
    if (!c) return {JXHOST_E_MALFORMED, outcome.produced};
    outcome.produced += jx::test::encode(kJxChars, *c).value();
  }
  return outcome;
}

Outcome encode(const Kind &to, std::string_view jxchars, size_t room) {
  Outcome outcome = {JX_OK, ""};
  if (!to.page) {
    outcome.status = TextModel(kJxChars, to.number).convert(jxchars, room, &outcome.produced);
    return outcome;
  }
  for (size_t at = 0; at < jxchars.size(); at += sizeof(char32_t)) {
    char32_t c = 0;
    jxchars.copy(reinterpret_cast<char *>(&c), sizeof c, at);
    const std::optional<char> byte = page_of(to).byte(c);
    if (!byte) return {JXHOST_E_UNMAPPABLE, outcome.produced};
    if (outcome.produced.size() == room) return {JXHOST_E_NOROOM, outcome.produced};
    outcome.produced += *byte;
  }
  return outcome;
}

Outcome model(const Kind &from, const Kind &to, std::string_view text, size_t room) {
  const Outcome decoded = decode(from, text);
  const Outcome encoded = encode(to, decoded.produced, room);
  return encoded.status != JX_OK ? encoded : Outcome{decoded.status, encoded.produced};
}

class Transcoder {
 public:
  Transcoder(const Kind &from, const Kind &to)
      : nls_(host()->nls),
        transcoder_(nls_->create_transcoder(nls_, from.number, to.number, 0, nullptr)) {
    require(transcoder_, "no transcoder");
  }
  Transcoder(const Transcoder &) = delete;
  Transcoder &operator=(const Transcoder &) = delete;
  ~Transcoder() { nls_->destroy_transcoder(nls_, transcoder_); }

  // `offset` moves the blocks off their alignment.
  Outcome operator()(std::string_view text, size_t room, size_t offset) {
    const Block source(std::string(offset, '.') + std::string(text));
    const Block target(offset + room);
    uint32_t produced = 0;
    const JXStatus status = transcoder_->transcode(
        transcoder_, source.data() + offset, static_cast<uint32_t>(text.size()),
        target.data() + offset, static_cast<uint32_t>(room), &produced, 0);
    require(produced <= room, "more than the room");
    return {status, {target.data() + offset, produced}};
  }

 private:
  JXNls *nls_;
  JXTranscoder *transcoder_;
};

// Characters of one kind after another, in the encoding, with some bytes changed.
std::string make_text(FuzzedDataProvider *input, const Kind &kind) {
  if (input->ConsumeBool()) return input->ConsumeRandomLengthString();
  static constexpr std::array<char32_t, 2> kRanges[] = {
      {0x20, 0x7E},     {0, 0x7F},        {0xA0, 0x17F},      {0x400, 0x7FF},
      {0x4E00, 0x9FFF}, {0xE000, 0xFFFF}, {0x10000, 0x10FFFF}};
  std::string text;
  while (input->remaining_bytes() > 4 && text.size() < 3000) {
    const auto [first, last] = kRanges[input->ConsumeIntegralInRange<size_t>(0, 6)];
    char32_t c = first + input->ConsumeIntegral<uint16_t>() % (last - first + 1);
    for (size_t count = input->ConsumeIntegralInRange<size_t>(0, 70); count > 0; --count) {
      const auto byte = kind.page ? page_of(kind).byte(c) : std::nullopt;
      if (kind.page) text += byte ? std::string(1, *byte) : "";
      if (!kind.page) text += jx::test::encode(kind.number, c).value_or("");
      c = c == last ? first : c + 1;
    }
    if (!text.empty() && input->ConsumeIntegral<uint8_t>() < 8) {
      text[input->ConsumeIntegral<uint16_t>() % text.size()] = input->ConsumeIntegral<char>();
    }
  }
  return text;
}

void run(FuzzedDataProvider *input) {
  const Kind &from = kKinds[input->ConsumeIntegralInRange<size_t>(0, std::size(kKinds) - 1)];
  const Kind &to = kKinds[input->ConsumeIntegralInRange<size_t>(0, std::size(kKinds) - 1)];
  const size_t offset = input->ConsumeIntegralInRange<size_t>(0, 63);
  const auto cut_at = input->ConsumeIntegral<uint16_t>();
  const auto room_at = input->ConsumeIntegral<uint16_t>();
  const std::string text = make_text(input, from);
  if (from.page && from.number == to.number) return;  // bytes are copied, checked or not
  const std::string pair = std::to_string(from.number) + " to " + std::to_string(to.number);

  const Outcome whole = model(from, to, text, SIZE_MAX);
  const size_t enough = text.size() * 4 + 4;
  require(Transcoder(from, to)(text, enough, offset) == whole, pair + " in one call");
  const size_t room = whole.produced.size() - room_at % (whole.produced.size() + 1);
  require(Transcoder(from, to)(text, room, offset) == model(from, to, text, room),
          pair + " in little room");

  Transcoder convert(from, to);
  const size_t cut = cut_at % (text.size() + 1);
  Outcome parts = convert(text.substr(0, cut), enough, offset);
  if (parts.status == JX_OK) {
    const Outcome second = convert(text.substr(cut), enough, offset);
    parts = {second.status, parts.produced + second.produced};
  }
  require(parts == whole, pair + " in two calls");
}

}  // namespace
}  // namespace jx::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider input(data, size);
  jx::fuzz::run(&input);
  return 0;
}
