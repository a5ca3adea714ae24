// The letters of alphabets, in both cases.
#include "cli/letters.hpp"

#include <algorithm>
#include <array>

namespace cli {
namespace {

// A run of capitals. The small letter of one is a distance away; where the distance is 1 capitals
// and small letters take turns.
struct Capitals {
  char32_t first;
  char32_t last;
  int distance;
};

constexpr auto kCapitals = std::to_array<Capitals>({
    {'A', 'Z', 32},
    {0xC0, 0xD6, 32},
    {0xD8, 0xDE, 32},
    {0x100, 0x12E, 1},
    {0x132, 0x136, 1},
    {0x139, 0x147, 1},
    {0x14A, 0x176, 1},
    {0x178, 0x178, -121},
    {0x179, 0x17D, 1},
    {0x218, 0x21A, 1},
    {0x386, 0x386, 38},
    {0x388, 0x38A, 37},
    {0x38C, 0x38C, 64},
    {0x38E, 0x38F, 63},
    {0x391, 0x3AB, 32},
    {0x400, 0x40F, 80},
    {0x410, 0x42F, 32},
    {0x490, 0x490, 1},
});

struct LetterRange {
  char32_t first;
  char32_t last;
};

constexpr auto kLetters = std::to_array<LetterRange>({
    {'A', 'Z'},
    {'a', 'z'},
    {0xC0, 0xD6},
    {0xD8, 0xF6},
    {0xF8, 0x17F},
    {0x218, 0x21B},
    {0x386, 0x386},
    {0x388, 0x3CE},
    {0x400, 0x45F},
    {0x490, 0x491},
});

}  // namespace

char32_t to_small(char32_t c) {
  const auto run = std::ranges::find_if(
      kCapitals, [c](const Capitals &row) { return c >= row.first && c <= row.last; });
  if (run == kCapitals.end()) return c;
  if (run->distance == 1 && (c - run->first) % 2 != 0) return c;
  return c + static_cast<char32_t>(run->distance);
}

bool is_letter(char32_t c) {
  return std::ranges::any_of(
      kLetters, [c](const LetterRange &range) { return c >= range.first && c <= range.last; });
}

}  // namespace cli
