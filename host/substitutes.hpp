// Characters that the C library loses silently: it writes the encoding's substitute instead of
// reporting that the encoding does not have them.
#pragma once

#include <array>
#include <bitset>
#include <memory>

#include "host/encodings.hpp"
#include "host/transcode.hpp"
#include "jx/base.h"

namespace jxhost {

// The substitute character, SUB.
inline constexpr JXChar kSubstitute = 0x1a;

// Converts a row of characters there and back when one of them is first looked up, and caches the
// results. One caller at a time.
class Substitutes {
 public:
  // Null when the C library does not know the encoding or when out of memory.
  static std::unique_ptr<Substitutes> create(const Encoding &encoding);

  // Tells whether the character would become a substitute. False for one that the C library
  // refuses.
  bool contains(JXChar c);

 private:
  static constexpr size_t kRowChars = 256;
  static constexpr size_t kRows = 256;  // the basic plane

  bool is_lost(JXChar c);

  Step encode_;
  Step decode_;
  std::bitset<kRows> is_known_;
  std::array<std::bitset<kRowChars>, kRows> lost_;
};

}  // namespace jxhost
