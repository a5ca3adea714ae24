// Distances between words.
#include "cli/suggestion.hpp"

#include <algorithm>

namespace cli {
namespace {

constexpr size_t kLongestWord = 32;     // others are no mistyped ones
constexpr size_t kLettersPerFault = 3;  // in a word: one fault for every three letters

// How many letters are changed, added, left out or swapped with the next from a to b.
size_t distance(std::string_view a, std::string_view b) {
  // Rows of the usual table: of the beginnings of a with two letters fewer, one fewer, and all.
  std::vector<size_t> before, above, row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    before = std::move(above);
    above = row;
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t change = above[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({change, above[j] + 1, row[j - 1] + 1});
      const bool is_swap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (is_swap) row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row.back();
}

}  // namespace

std::string_view nearest(std::string_view word, const std::vector<std::string_view> &candidates) {
  const auto begins = [word](std::string_view candidate) { return candidate.starts_with(word); };
  const auto first = std::ranges::find_if(candidates, begins);
  if (word.size() > 1 && std::ranges::count_if(candidates, begins) == 1) return *first;
  if (word.size() > kLongestWord) return {};
  std::string_view found;
  size_t least = word.size() / kLettersPerFault + 1;  // one more than is near enough
  for (const std::string_view candidate : candidates) {
    const size_t faults = distance(word, candidate);
    if (faults < least) found = candidate;
    least = std::min(least, faults);
  }
  return found;
}

}  // namespace cli
