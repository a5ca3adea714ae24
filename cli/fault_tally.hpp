// The faults of a text that were put up with.
#pragma once

#include <cstdint>
#include <string>

#include "cli/text_changes.hpp"

namespace cli {

class FaultTally {
 public:
  // Counts a fault. place makes the text of its place, "record 2, byte offset 4, bytes ff", if that
  // is of interest.
  template <typename Place>
  void add(Place place) {
    if (count_ < kMostPlaces) places_ += (count_ == 0 ? "" : "; ") + place();
    ++count_;
  }
  // Counts a character that others took the place of.
  void add_transliterated() { ++transliterated_count_; }
  // "3 faults replaced: record 2, byte offset 4, bytes ff; ..."; empty when there is nothing to
  // tell.
  std::string text(OnFault on_fault) const;

 private:
  static constexpr uint64_t kMostPlaces = 3;

  uint64_t count_ = 0;
  uint64_t transliterated_count_ = 0;
  std::string places_;  // the first
};

}  // namespace cli
