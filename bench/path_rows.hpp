// What the benchmarks of paths share: rows that call one routine with every element of a list.
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/contender.hpp"

namespace jx::bench {

inline constexpr int kRounds = 1000;

inline std::u32string widen(const std::string &text) { return {text.begin(), text.end()}; }

// A pass calls `each` with every element, over and over. It returns the length of what it made,
// the same for all rows, or 0 where rows differ in what they make.
template <typename Elements, typename Each>
void add(Job &job, const char *name, const Elements &elements, Each each, Kind kind = Kind::kPeer) {
  job.add(
      name,
      [elements, each](Watch &) {
        uint64_t sum = 0;
        for (int round = 0; round < kRounds; ++round) {
          for (const auto &element : elements) sum += each(element);
        }
        return sum;
      },
      kind);
}

inline size_t uncompared(size_t value) {
  keep(value);
  return 0;
}

// A copy in memory of its own, freed at once: the least that making a text costs.
inline size_t copied_and_freed(const char *text) {
  char *copy = strdup(text);
  const size_t length = std::strlen(copy);
  keep(*copy);
  std::free(copy);
  return length;
}

}  // namespace jx::bench
