// Guesses the encoding of text.
//
// Each candidate decodes the bytes. The text then costs, in each language that is written in that
// encoding, what its letters after one another are unlikely, and the cheapest language counts.
// Between encodings that extend ASCII the pairs of ASCII are the same text; they only tell how
// likely the language is.
#include "cli/guess.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <optional>

#include "cli/byte_pairs.hpp"
#include "cli/candidates.hpp"
#include "cli/language_model.hpp"
#include "cli/letters.hpp"
#include "cli/session.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr float kNever = std::numeric_limits<float>::infinity();
// By how much one text must cost less than another to be e times as likely: costs of neighbouring
// pairs are not independent. The variants of EBCDIC differ in a few signs that some texts are full
// of: a guess among them is never sure.
constexpr float kTemperature = 3;
constexpr float kEbcdicTemperature = 10;
constexpr int kMostConfidence = 99;
constexpr int kMostEbcdicConfidence = 90;
static_assert(kMostEbcdicConfidence < kSureEnough);
constexpr char kEbcdicBlank = 0x40;
constexpr float kMostPriorCost = 50;  // of a language that the ASCII letters speak against
constexpr float kPriorPairs = 150;    // the ASCII pairs count like that many at most
constexpr float kOldCost = 3;         // of an encoding that is less common
constexpr float kMixedCost = 3;       // of a sign of East Asia beside a letter
// What is no text costs more than this on average.
constexpr float kMostCostOfHighPair = 6.5f;
constexpr float kMostCostOfEbcdicByte = 6.5f;
constexpr float kMostCostOfSign = 9.5f;
// Text mostly beyond ASCII that reads worse than that, in all and for each pair, may be of a
// language that is not known: Hebrew costs 4.5 to 5.2 a pair as Russian in KOI8-R, Russian 2.8.
constexpr float kSureCost = 6;
constexpr float kSureCostOfHighPair = 4;
constexpr float kSurePairs = 40;  // of a shorter one that average says little
constexpr int kMostDoubtfulConfidence = 90;
static_assert(kMostDoubtfulConfidence < kSureEnough);

struct Scored {
  const Candidate *candidate;
  std::u32string text;  // the sample, or the characters of the bytes in it
  std::string_view language;
  float cost;
  bool is_text;      // the text is likely enough to be one
  bool is_doubtful;  // but may be of a language that is not known
};

// e to the power of a number that is not positive, by squaring that of its 1024th part. Not by
// std::exp: loading the C library's mathematics takes a tenth of a short command's time.
float exponential(float power) {
  if (power < -80) return 0;
  const float part = power / 1024;
  float value = 1 + part * (1 + part / 2 * (1 + part / 3));
  for (int i = 0; i < 10; ++i) value *= value;
  return value;
}

bool is_ascii_pair(size_t first, size_t second) { return first < 128 && second < 128; }

// Whether two candidates give the same text.
bool is_same(const Scored &a, const Scored &b) {
  return (a.candidate->kind == EncodingKind::kWide) == (b.candidate->kind == EncodingKind::kWide) &&
         a.text == b.text;
}

bool is_named(std::string_view list, std::string_view name) {
  return list.find(name.substr(0, name.find(' '))) != list.npos;
}

// What is the same for all candidates.
class Guesser {
 public:
  Guesser(Session &session, std::string_view sample)
      : session_(session), sample_(sample), pairs_(sample) {
    for (const Language &language : languages()) alphabets_.emplace_back(language);
    for (const Script &script : scripts()) scripts_.emplace_back(script);
    weigh_ascii();
  }

  std::optional<Scored> score(const Candidate &candidate) {
    return candidate.kind == EncodingKind::kWide ? score_wide(candidate) : score_bytes(candidate);
  }

 private:
  // The ASCII pairs: what they cost in the language that they fit best, and what that says against
  // the others.
  void weigh_ascii() {
    std::array<Sign, 128> ascii;
    for (char32_t c = 0; c < 128; ++c) ascii[c] = sign_of(c);
    float letters = 0;
    pairs_.each([&](size_t first, size_t second, float count) {
      if (!is_ascii_pair(first, second)) return;
      if (ascii[first].is_letter && ascii[second].is_letter) letters += count;
    });
    for (const AlphabetModel &alphabet : alphabets_) {
      const bool is_latin = alphabet.place(ascii['a']) > 0;
      ascii_costs_.push_back(is_latin ? cost_of(alphabet, ascii, is_ascii_pair) : kNever);
    }
    ascii_cost_ = *std::ranges::min_element(ascii_costs_);
    const float weight = std::min(1.0f, kPriorPairs / std::max(letters, 1.0f));
    for (float &cost : ascii_costs_) cost = std::min(kMostPriorCost, (cost - ascii_cost_) * weight);
    // The ASCII letters in other writing systems are mostly English; it is the first of the
    // languages.
    for (size_t i = 0; i < alphabets_.size(); ++i) {
      if (alphabets_[i].place(ascii['a']) < 0) ascii_costs_[i] = ascii_costs_[0];
    }
  }

  template <typename Signs, typename Counts>
  float cost_of(const AlphabetModel &alphabet, const Signs &signs, Counts counts) const {
    std::array<int, 256> places = {};
    for (size_t byte = 0; byte < signs.size(); ++byte) {
      if (pairs_.is_used(byte)) places[byte] = alphabet.place(signs[byte]);
    }
    float cost = 0;
    pairs_.each([&](size_t first, size_t second, float count) {
      if (!counts(first, second)) return;
      cost += count * alphabet.cost(signs[first], places[first], signs[second], places[second]);
    });
    return cost;
  }

  std::optional<Scored> score_bytes(const Candidate &candidate) {
    std::string bytes;
    for (size_t byte = 0; byte < 256; ++byte) {
      if (pairs_.is_used(byte)) bytes += static_cast<char>(byte);
    }
    auto text = session_.decode(candidate.encoding, bytes);
    if (!text || text->size() != bytes.size()) return std::nullopt;
    const bool is_ebcdic = candidate.kind == EncodingKind::kEbcdic;
    std::array<Sign, 256> signs;
    for (size_t i = 0; i < bytes.size(); ++i) {
      const char32_t c = (*text)[i];
      signs[static_cast<uint8_t>(bytes[i])] = sign_of(is_ebcdic && c == 0x85 ? U'\n' : c);
    }
    Scored scored{&candidate, std::move(*text), {}, kNever, false, false};
    const float most = is_ebcdic ? kMostCostOfEbcdicByte * static_cast<float>(sample_.size())
                                 : kMostCostOfHighPair * pairs_.high_pairs();
    const bool is_beyond_ascii =
        !is_ebcdic && pairs_.high_pairs() * 2 > static_cast<float>(sample_.size());
    for (size_t i = 0; i < alphabets_.size(); ++i) {
      if (!is_named(candidate.languages, alphabets_[i].name())) continue;
      const float cost = cost_of(alphabets_[i], signs, [is_ebcdic](size_t first, size_t second) {
        return is_ebcdic || !is_ascii_pair(first, second);
      });
      const float own = candidate.kind == EncodingKind::kOld ? kOldCost : 0;
      const float whole = is_ebcdic ? cost : cost + own + ascii_costs_[i] + ascii_cost_;
      if (whole >= scored.cost) continue;
      const float sure = kSureCost + kSureCostOfHighPair * pairs_.high_pairs();
      const bool is_read_badly = pairs_.high_pairs() < kSurePairs || cost > sure;
      scored = {&candidate, std::move(scored.text), alphabets_[i].name(),
                whole,      cost <= most,           is_beyond_ascii && is_read_badly};
    }
    return scored;
  }

  std::optional<Scored> score_wide(const Candidate &candidate) {
    auto text = session_.decode(candidate.encoding, sample_);
    if (!text) return std::nullopt;
    Scored scored{&candidate, std::move(*text), {}, kNever, false, false};
    for (const ScriptModel &script : scripts_) {
      if (!is_named(candidate.languages, script.name())) continue;
      float signs_cost = 0;
      float signs = 0;
      float mixed = 0;
      bool was_latin = false;
      bool was_sign = false;
      for (const char32_t c : scored.text) {
        const bool is_sign = c >= 128;
        const bool is_latin = !is_sign && is_letter(c);
        signs_cost += is_sign ? script.cost(c) : 0;
        signs += is_sign ? 1 : 0;
        mixed += (is_sign && was_latin) || (is_latin && was_sign) ? 1 : 0;
        was_latin = is_latin;
        was_sign = is_sign;
      }
      const float cost = ascii_cost_ + ascii_costs_[0] + signs_cost + mixed * kMixedCost;
      if (cost >= scored.cost) continue;
      scored = {&candidate,
                std::move(scored.text),
                script.name(),
                cost,
                signs_cost <= signs * kMostCostOfSign,
                false};
    }
    return scored;
  }

  Session &session_;
  std::string_view sample_;
  BytePairs pairs_;
  std::vector<AlphabetModel> alphabets_;
  std::vector<ScriptModel> scripts_;
  std::vector<float> ascii_costs_;  // what the ASCII letters say against each alphabet
  float ascii_cost_ = 0;
};

}  // namespace

std::vector<Guess> guess_encoding(Session &session, std::string_view sample) {
  Guesser guesser(session, sample);
  std::vector<Scored> found;
  // The blank is the commonest sign of most texts, and another one in EBCDIC.
  const bool may_be_ebcdic =
      std::ranges::count(sample, kEbcdicBlank) >= std::ranges::count(sample, ' ');
  for (const Candidate &candidate : kCandidates) {
    if (candidate.kind == EncodingKind::kEbcdic && !may_be_ebcdic) continue;
    if (auto scored = guesser.score(candidate)) found.push_back(std::move(*scored));
  }
  // Of equally likely ones the first candidate is named.
  std::ranges::sort(found, {},
                    [](const Scored &scored) { return std::pair(scored.cost, scored.candidate); });
  if (found.empty() || !found[0].is_text) return {};
  const bool is_ebcdic = found[0].candidate->kind == EncodingKind::kEbcdic;
  const float temperature = is_ebcdic ? kEbcdicTemperature : kTemperature;
  const int most = is_ebcdic              ? kMostEbcdicConfidence
                   : found[0].is_doubtful ? kMostDoubtfulConfidence
                                          : kMostConfidence;
  const auto weight = [&](const Scored &scored) {
    return exponential((found[0].cost - scored.cost) / temperature);
  };
  std::vector<Guess> guesses;
  std::vector<const Scored *> heads;  // of the guesses, in their order
  float sum = 0;
  for (const Scored &scored : found) {
    const auto head =
        std::ranges::find_if(heads, [&](auto *other) { return is_same(*other, scored); });
    if (head != heads.end()) {
      guesses[static_cast<size_t>(head - heads.begin())].same.push_back(scored.candidate->encoding);
      continue;
    }
    sum += weight(scored);
    heads.push_back(&scored);
    guesses.push_back({scored.candidate->encoding, {}, scored.language, 0});
  }
  for (size_t i = 0; i < guesses.size(); ++i) {
    guesses[i].confidence = std::min(most, static_cast<int>(weight(*heads[i]) / sum * 100));
  }
  std::erase_if(guesses, [](const Guess &guess) { return guess.confidence < 1; });
  return guesses;
}

}  // namespace cli
