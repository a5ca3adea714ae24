// How likely text is in a language.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "cli/detection_tables.hpp"

namespace cli {

// A character as the models see it.
struct Sign {
  char32_t small = 0;  // the small letter, or the character itself
  bool is_letter = false;
  bool is_capital = false;
  float cost = 0;  // of one that is no letter, at any place between words
};
Sign sign_of(char32_t c);

// All costs are minus the natural logarithm of a probability: small ones are likely.
class AlphabetModel {
 public:
  explicit AlphabetModel(const Language &language);
  std::string_view name() const { return language_.name; }
  // The place of a letter in the alphabet from 1 on; 0 for what is between words, -1 for a letter
  // of another alphabet.
  int place(const Sign &sign) const;
  // The cost of a character after another.
  float cost(const Sign &before, int place_before, const Sign &sign, int place) const;

 private:
  const Language &language_;
  size_t size_;
};

class ScriptModel {
 public:
  explicit ScriptModel(const Script &script);
  std::string_view name() const { return script_.name; }
  // The cost of a character that is not ASCII.
  float cost(char32_t c) const;

 private:
  const Script &script_;
  std::unordered_map<char32_t, float> costs_;
};

}  // namespace cli
