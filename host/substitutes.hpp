// Which characters the C library loses without a word: instead of answering that an encoding does
// not have them, it writes the encoding's substitute.
#pragma once

#include <array>
#include <bitset>
#include <memory>

#include "host/encodings.hpp"
#include "host/transcode.hpp"
#include "jx/base.h"

namespace jxhost {

// The character of the substitute.
inline constexpr JXChar kSubstitute = 0x1a;

// Asks the C library, by the way there and back, for a row of characters when one of them is first
// looked up, and remembers the answers. One caller at a time.
class Substitutes {
 public:
  // Null when the C library does not offer the encoding or memory is out.
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
