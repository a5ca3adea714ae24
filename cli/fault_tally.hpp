// The faults of a text that were put up with.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "cli/text_changes.hpp"

namespace cli {

class FaultTally {
 public:
  // Counts a fault in a record. place makes the text of its place, "byte offset 4, bytes ff", if
  // that is of interest.
  template <typename Place>
  void add(uint64_t record, Place place) {
    ++count_;
    if (places_.size() == kMostPlaces && record >= places_.back().record) return;
    const auto after = std::ranges::upper_bound(places_, record, {}, &PlaceInText::record);
    places_.insert(after, {record, place()});
    if (places_.size() > kMostPlaces) places_.pop_back();
  }
  // Counts a character that others took the place of.
  void add_transliterated() { ++transliterated_count_; }
  // "3 faults replaced: record 2, byte offset 4, bytes ff; ..."; empty when there is nothing to
  // tell.
  std::string text(OnFault on_fault) const;

 private:
  static constexpr size_t kMostPlaces = 3;
  struct PlaceInText {
    uint64_t record;
    std::string text;
  };

  uint64_t count_ = 0;
  uint64_t transliterated_count_ = 0;
  // The first, in order: of what is decoded at once, bytes that are no text are found before
  // characters that the target does not have.
  std::vector<PlaceInText> places_;
};

}  // namespace cli
