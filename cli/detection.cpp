// Tells the encoding of text.
#include "cli/detection.hpp"

#include <algorithm>
#include <span>

#include "cli/ascii.hpp"
#include "cli/input.hpp"
#include "cli/language_model.hpp"
#include "cli/letters.hpp"
#include "cli/utf8_survey.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr size_t kContextBytes = 1024;  // of ASCII, kept before the first byte beyond it
constexpr uint32_t kAscii = 21;
constexpr uint32_t kIso2022Jp = 50220;
constexpr size_t kNamedCandidates = 5;   // in a message
constexpr char32_t kFirstSign = 0x2E80;  // of the writing systems of East Asia
constexpr float kMostSignCost = 9.5f;    // of a sign, on average, in text

// Whether text has such a character. The last ones are a line feed, a carriage return and a blank
// whose bytes were swapped.
bool is_implausible(char32_t c) {
  const bool is_layout = c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == 0x85;
  const bool is_control = (c < 0x20 || (c >= 0x7F && c < 0xA0)) && !is_layout;
  const bool is_private = c >= 0xE000 && c <= 0xF8FF;
  const bool is_none = (c & 0xFFFE) == 0xFFFE || (c >= 0xFDD0 && c <= 0xFDEF) || c > 0x3FFFF;
  return is_control || is_private || is_none || c == 0xA00 || c == 0xD00 || c == 0x2000;
}

// Whether the signs of East Asia in a text are those that texts have.
bool has_usual_signs(std::u32string_view text) {
  const size_t count =
      static_cast<size_t>(std::ranges::count_if(text, [](char32_t c) { return c >= kFirstSign; }));
  if (count == 0) return true;
  return std::ranges::any_of(scripts(), [&](const Script &script) {
    const ScriptModel model(script);
    float cost = 0;
    for (const char32_t c : text) cost += c >= kFirstSign ? model.cost(c) : 0;
    return cost <= kMostSignCost * static_cast<float>(count);
  });
}

constexpr uint32_t kWideEncodings[] = {JX_ENCODING_UTF32LE, JX_ENCODING_UTF32BE,
                                       JX_ENCODING_UTF16LE, JX_ENCODING_UTF16BE};

// What bytes are in an encoding, where that may be text.
std::optional<std::u32string> plausible_text(Session &session, uint32_t encoding,
                                             std::string_view sample) {
  auto text = session.decode(encoding, sample);
  const bool is_plausible = text && !text->empty() && std::ranges::none_of(*text, is_implausible);
  return is_plausible && has_usual_signs(*text) ? std::move(text) : std::nullopt;
}

// Whether bytes with zeros in them are text in one of the encodings with wide units.
bool reads_as(Session &session, uint32_t encoding, std::string_view sample, bool is_whole) {
  const size_t unit = encoding >= JX_ENCODING_UTF32BE ? 4 : 2;
  if (is_whole && sample.size() % unit != 0) return false;
  const auto text = plausible_text(session, encoding, sample);
  return text && text->find_first_of(U" \n\r") != text->npos;
}

Detection certain(uint32_t encoding, std::string reason, size_t mark_bytes = 0) {
  return {encoding, 100, std::move(reason), mark_bytes, {}};
}

std::optional<Detection> by_mark(std::string_view sample) {
  const uint32_t encoding = sniff(sample);
  if (encoding == 0) return std::nullopt;
  const std::string_view mark = byte_order_mark(encoding);
  return certain(encoding, "it begins with the byte-order mark " + to_hex(mark, " "), mark.size());
}

std::optional<Detection> by_zeros(Session &session, std::string_view sample, bool is_whole) {
  if (sample.find('\0') == sample.npos) return std::nullopt;
  std::vector<uint32_t> fitting;
  for (const uint32_t encoding : kWideEncodings) {
    if (reads_as(session, encoding, sample, is_whole)) fitting.push_back(encoding);
  }
  if (fitting.size() != 1) return std::nullopt;
  const bool is_long = fitting[0] >= JX_ENCODING_UTF32BE;
  return certain(fitting[0], std::string("every ") + (is_long ? "four" : "two") +
                                 " bytes are a character of text, in this order only");
}

// ASCII that may as well be a word or a text cut off in an encoding with wide units.
std::optional<Detection> by_controls(Session &session, std::string_view sample) {
  const auto is_control = [](char c) { return is_implausible(static_cast<uint8_t>(c)); };
  if (std::ranges::none_of(sample, is_control)) return std::nullopt;
  Detection doubtful;
  for (const uint32_t encoding : kWideEncodings) {
    if (plausible_text(session, encoding, sample))
      doubtful.guesses.push_back({encoding, {}, {}, 0});
  }
  if (doubtful.guesses.empty()) return std::nullopt;
  doubtful.reason = "every byte is ASCII, some are control characters, and it may be wide units";
  return doubtful;
}

std::optional<Detection> by_escapes(Session &session, std::string_view sample) {
  const bool has_escape =
      sample.find("\x1b$B") != sample.npos || sample.find("\x1b$@") != sample.npos;
  if (!has_escape || !session.decode(kIso2022Jp, sample)) return std::nullopt;
  return certain(kIso2022Jp, "it shifts by the escape sequences of this encoding");
}

std::optional<Detection> by_utf8(std::string_view sample, uint64_t offset, bool is_whole) {
  const Utf8Survey survey(sample, is_whole);
  if (survey.faults == 0 && survey.characters > 0) {
    return certain(JX_ENCODING_UTF8, "every byte beyond ASCII is part of a UTF-8 character");
  }
  if (survey.characters <= survey.faults * 3) return std::nullopt;
  Detection damaged;
  damaged.reason = "it is UTF-8 with damage: at " + std::to_string(survey.faults) +
                   (survey.faults == 1 ? " place" : " places") + ", first at byte offset " +
                   std::to_string(offset + survey.first_fault);
  damaged.guesses = {{JX_ENCODING_UTF8, {}, {}, 0}};
  return damaged;
}

Detection by_guess(Session &session, std::string_view sample) {
  Detection detection;
  detection.guesses = guess_encoding(session, sample);
  if (detection.guesses.empty()) {
    detection.reason = "it reads like no language that is known here";
    return detection;
  }
  const Guess &best = detection.guesses[0];
  detection.encoding = best.encoding;
  detection.confidence = best.confidence;
  detection.reason = "it reads like " + std::string(best.language) + " in this encoding";
  return detection;
}

}  // namespace

Detection detect_encoding(Session &session, std::string_view sample, bool is_whole,
                          uint64_t offset) {
  if (auto marked = by_mark(sample)) return std::move(*marked);
  if (auto wide = by_zeros(session, sample, is_whole)) return std::move(*wide);
  if (is_ascii(sample)) {
    if (auto shifting = by_escapes(session, sample)) return std::move(*shifting);
    if (auto doubtful = by_controls(session, sample)) return std::move(*doubtful);
    return certain(kAscii, "every byte is ASCII");
  }
  if (auto utf8 = by_utf8(sample, offset, is_whole)) return std::move(*utf8);
  return by_guess(session, sample);
}

void Sampler::keep_context() {
  const size_t dropped = sample_.size() - std::min(sample_.size(), kContextBytes);
  sample_.erase(0, dropped);
  offset_ += dropped;
}

bool Sampler::feed(std::string_view bytes) {
  // The sample begins at the start, or a little before the first byte that tells something.
  if (is_ascii_ && offset_ > 0 && !is_ascii(bytes)) keep_context();
  sample_ += bytes;
  is_ascii_ = is_ascii_ && is_ascii(bytes);
  if (sample_.size() < kSampleBytes) return true;
  const bool has_shift = sample_.find("\x1b$") != sample_.npos;
  if (!is_ascii_ || has_shift || sample_.find('\0') != sample_.npos) return false;
  keep_context();
  return true;
}

Detection Sampler::detect(Session &session, bool is_end) const {
  const std::string_view sample = std::string_view(sample_).substr(0, kSampleBytes);
  const bool is_whole = is_end && sample.size() == sample_.size() && offset_ == 0;
  return detect_encoding(session, sample, is_whole, offset_);
}

uint32_t require_encoding(const Detection &detection, const std::string &shown) {
  if (detection.is_sure_enough()) {
    return detection.encoding == kAscii ? JX_ENCODING_UTF8 : detection.encoding;
  }
  std::string candidates;
  for (const Guess &guess :
       std::span(detection.guesses).first(std::min(detection.guesses.size(), kNamedCandidates))) {
    candidates +=
        (candidates.empty() ? ": " : ", ") + to_text({guess.encoding, {}, {}, guess.confidence});
  }
  throw Failure(shown, JXHOST_E_BADENCODING)
      .saying("the encoding cannot be told: " + detection.reason + candidates,
              "name it with --from; see: jxfile detect");
}

std::string to_text(const Guess &guess) {
  std::string text = jxhost_encoding_name(guess.encoding);
  if (guess.confidence > 0) text += " " + std::to_string(guess.confidence) + " %";
  for (const uint32_t same : guess.same) {
    text +=
        (same == guess.same[0] ? " (the same as " : ", ") + std::string(jxhost_encoding_name(same));
  }
  return text + (guess.same.empty() ? "" : ")");
}

}  // namespace cli
