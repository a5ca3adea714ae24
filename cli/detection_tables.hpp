// What is known of languages, for telling encodings: see cli/guess.hpp.
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace cli {

// A language with an alphabet.
struct Language {
  std::string_view name;
  std::u32string_view letters;  // small ones
  // How unlikely each letter is after each, 0 to 7, row by row, with what is between words before
  // the first letter: two in a digit of base 64.
  std::string_view pairs;
};

// What is between words, the most frequent first, and how unlikely each is, 0 to 7.
struct Signs {
  std::u32string_view chars;
  std::string_view levels;
};

// A language written in signs: the most frequent ones in their order.
struct Script {
  std::string_view name;
  std::u32string_view chars;
};

// The costs of the levels, as minus the natural logarithm of a probability.
inline constexpr std::array<float, 8> kLevelCosts = {0.5f, 1.5f, 2.5f, 3.5f,
                                                     4.7f, 6.0f, 7.5f, 9.5f};

std::span<const Language> languages();
const Signs &signs();
std::span<const Script> scripts();

}  // namespace cli
