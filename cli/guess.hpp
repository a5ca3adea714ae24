// Guesses the encoding of text that is none of the Unicode encodings, by how likely it reads.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

class Session;

// Text is looked at in this many bytes at most.
inline constexpr size_t kSampleBytes = 65536;
// The confidence from which on a guess is taken for the answer, in percent.
inline constexpr int kSureEnough = 95;

struct Guess {
  uint32_t encoding = 0;
  std::vector<uint32_t> same;  // other encodings in which these bytes are the same text
  std::string_view language;   // the text reads like it best
  int confidence = 0;          // in percent
};

// The guesses for a sample of text with bytes beyond ASCII, the best first; those with less than
// 1 % are left out. Empty when it does not read like text in any of the encodings that are tried.
std::vector<Guess> guess_encoding(Session &session, std::string_view sample);

}  // namespace cli
