// Counting faults and telling the first places.
#include "cli/fault_tally.hpp"

namespace cli {
namespace {

std::string counted(uint64_t count, const std::string &thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

}  // namespace

std::string FaultTally::text(OnFault on_fault) const {
  constexpr const char *kDone[] = {"", " replaced: ", " skipped: ", " escaped: "};
  std::string text;
  if (count_ > 0) {
    text = counted(count_, "fault") + kDone[static_cast<size_t>(on_fault)];
    for (const PlaceInText &place : places_) {
      text += (&place == places_.data() ? "" : "; ") + ("record " + std::to_string(place.record));
      text += ", " + place.text;
    }
    if (count_ > kMostPlaces) text += "; and " + std::to_string(count_ - kMostPlaces) + " more";
  }
  if (transliterated_count_ == 0) return text;
  if (!text.empty()) text += "; ";
  return text + counted(transliterated_count_, "character") + " transliterated";
}

}  // namespace cli
