// The table of a single-byte encoding, built once for each transcoder, so that its calls need
// neither the C library nor a lock.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "host/encodings.hpp"
#include "jx/base.h"

namespace jxhost {

class CodePage {
 public:
  // character() of an unassigned byte.
  static constexpr JXChar kNone = 0xffffffffu;

  // Asks the C library for the meaning of every byte. Null when it does not know the encoding, when
  // the characters are too spread out for the table, or when out of memory.
  static std::unique_ptr<const CodePage> create(const Encoding &encoding);

  // Tells whether the bytes below 128 are ASCII.
  bool has_ascii() const { return has_ascii_; }
  // The character of a byte, or kNone.
  JXChar character(uint8_t byte) const { return characters_[byte]; }
  // The byte of a character. Valid only if character() of it gives the same character.
  uint8_t byte(JXChar c) const { return rows_[row_of_[c >> 8 & 0xff]][c & 0xff]; }

 private:
  static constexpr size_t kRows = 24;

  // Enters a byte for a character; false when there are no rows left.
  bool enter(uint8_t byte, JXChar c);

  std::array<JXChar, 256> characters_{};
  std::array<uint8_t, 256> row_of_{};                   // by the upper byte; row 0 stays empty
  std::array<std::array<uint8_t, 256>, kRows> rows_{};  // by the lower byte
  size_t used_rows_ = 1;
  bool has_ascii_ = true;
};

}  // namespace jxhost
