// A model of text conversion, as plain as possible: one character at a time, ranges instead of bit
// tricks. The tests compare transcoders and converted records with it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "jx/jxhost.h"

namespace jx::test {

// Bytes of one unit of an encoding: 1, 2 or 4.
uint32_t unit_bytes_of(uint32_t encoding);
// The longest character, in bytes.
uint32_t max_bytes_of(uint32_t encoding);
// The byte-order mark; empty for encodings without one.
std::string bom_of(uint32_t encoding);
// A character in an encoding; nullopt when the encoding does not have it.
std::optional<std::string> encode(uint32_t encoding, char32_t character);
// Text in an encoding, which must have every character.
std::string encode(uint32_t encoding, std::u32string_view text);
// Units that begin a character.
uint32_t count_characters(uint32_t encoding, std::string_view text);

// A transcoder between two of the encodings 20, 24 to 27 and 62.
class TextModel {
 public:
  TextModel(uint32_t from, uint32_t to) : from_(from), to_(to) {}

  // Converts all of `text`; a character cut off at its end is kept for the next call. On failure
  // nothing is kept and *produced_out is the output before the fault.
  JXStatus convert(std::string_view text, size_t capacity_bytes, std::string *produced_out);
  // Drops a kept character; JXHOST_E_MALFORMED if there was one, else 0.
  JXStatus end() { return std::exchange(held_, "").empty() ? JX_OK : JXHOST_E_MALFORMED; }

 private:
  uint32_t from_;
  uint32_t to_;
  std::string held_;
};

}  // namespace jx::test
