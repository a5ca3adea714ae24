// Tells the encoding of text: for certain where the bytes prove it, else by a guess.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/guess.hpp"

namespace cli {

struct Detection {
  uint32_t encoding = 0;       // 0: not told
  int confidence = 0;          // in percent; 100 when the bytes prove it
  std::string reason;          // one clause
  size_t mark_bytes = 0;       // of the byte-order mark
  std::vector<Guess> guesses;  // of a guess: the candidates, the best first
  bool is_certain() const { return confidence == 100; }
  // Whether the encoding may be taken without asking.
  bool is_sure_enough() const { return encoding != 0 && confidence >= kSureEnough; }
};

// Looks at bytes of a text: those it begins with, which are all when is_whole, or those from an
// offset on that only ASCII comes before.
Detection detect_encoding(Session &session, std::string_view sample, bool is_whole,
                          uint64_t offset = 0);

// Takes bytes until those beyond ASCII, of which the first may come late, are enough to look at.
class Sampler {
 public:
  // Takes the next bytes. False when it has enough.
  bool feed(std::string_view bytes);
  // The detection, from what was taken. is_end: there are no more bytes.
  Detection detect(Session &session, bool is_end) const;

 private:
  void keep_context();

  std::string sample_;
  uint64_t offset_ = 0;  // of the sample in the text
  bool is_ascii_ = true;
};

// The encoding to go on with; a Failure under shown's name that lists the candidates when it cannot
// be told well enough. ASCII goes on as UTF-8, which refuses what is neither.
uint32_t require_encoding(const Detection &detection, const std::string &shown);

// The names of an encoding and of those with the same text: "windows-1252 (as iso-8859-1)".
std::string to_text(const Guess &guess);

}  // namespace cli
