// How likely text is in a language.
#include "cli/language_model.hpp"

#include "cli/letters.hpp"

namespace cli {
namespace {

constexpr float kForeignCost = 9;  // a letter of another alphabet
constexpr float kAfterForeignCost = 5;
constexpr float kCapitalInsideCost = 4;  // a capital after a small letter
constexpr float kRareSignCost = 10;
constexpr float kControlCost = 14;

constexpr uint8_t value_of_digit(char digit) {
  if (digit >= 'A' && digit <= 'Z') return static_cast<uint8_t>(digit - 'A');
  if (digit >= 'a' && digit <= 'z') return static_cast<uint8_t>(digit - 'a' + 26);
  if (digit >= '0' && digit <= '9') return static_cast<uint8_t>(digit - '0' + 52);
  return digit == '+' ? 62 : 63;
}

bool is_control(char32_t c) {
  const bool is_layout = c == '\t' || c == '\n' || c == '\r' || c == '\f';
  return (c < 0x20 && !is_layout) || (c >= 0x7F && c < 0xA0);
}

// 0: Latin, 1: Greek, 2: Cyrillic.
int script_of(char32_t letter) { return letter < 0x386 ? 0 : letter < 0x400 ? 1 : 2; }

float sign_cost(char32_t c) {
  if (is_control(c)) return kControlCost;
  const size_t at = signs().chars.find(c < 0x20 ? U'\n' : c);
  return at == signs().chars.npos ? kRareSignCost
                                  : kLevelCosts[static_cast<size_t>(signs().levels[at] - '0')];
}

}  // namespace

Sign sign_of(char32_t c) {
  Sign sign;
  sign.is_letter = is_letter(c);
  sign.small = sign.is_letter ? to_small(c) : c;
  sign.is_capital = sign.small != c;
  if (!sign.is_letter) sign.cost = sign_cost(c);
  return sign;
}

AlphabetModel::AlphabetModel(const Language &language)
    : language_(language), size_(language.letters.size() + 1) {}

int AlphabetModel::place(const Sign &sign) const {
  if (!sign.is_letter) return 0;
  const size_t at = language_.letters.find(sign.small);
  return at == language_.letters.npos ? -1 : static_cast<int>(at) + 1;
}

float AlphabetModel::cost(const Sign &before, int place_before, const Sign &sign, int place) const {
  const bool is_mixed =
      before.is_letter && sign.is_letter && script_of(before.small) != script_of(sign.small);
  if (place < 0 || is_mixed) return kForeignCost;
  if (place_before < 0) return kAfterForeignCost + sign.cost;
  const size_t at = static_cast<size_t>(place_before) * size_ + static_cast<size_t>(place);
  const uint8_t digit = value_of_digit(language_.pairs[at / 2]);
  const float pair = kLevelCosts[at % 2 == 0 ? digit >> 3 : digit & 7];
  const bool is_inside = sign.is_capital && before.is_letter && !before.is_capital;
  return pair + sign.cost + (is_inside ? kCapitalInsideCost : 0);
}

ScriptModel::ScriptModel(const Script &script) : script_(script) {
  // The frequency of a character goes down with its rank; the most frequent 600 make nine in ten.
  // The cost is the logarithm of (rank + 10) / 0.22, from that of the rank before.
  float cost = 3.8167128f;
  for (size_t rank = 0; rank < script.chars.size(); ++rank) {
    costs_.emplace(script.chars[rank], cost);
    const float step = 1 / static_cast<float>(2 * rank + 21);
    cost += 2 * step * (1 + step * step / 3);
  }
}

float ScriptModel::cost(char32_t c) const {
  const auto found = costs_.find(c);
  if (found != costs_.end()) return found->second;
  if (is_control(c)) return kControlCost;
  const bool is_usual = (c >= 0x3000 && c <= 0x30FF) || (c >= 0x4E00 && c <= 0x9FFF) ||
                        (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xFF01 && c <= 0xFF5E);
  return is_usual ? 11.0f : 14.0f;
}

}  // namespace cli
