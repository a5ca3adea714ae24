// Characters into bytes, also those that the encoding does not have.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/fault_tally.hpp"
#include "cli/session.hpp"
#include "cli/transliteration.hpp"

namespace cli {

// Encodes a text part by part.
class Encoder {
 public:
  // shown: what messages call the text. tally lives longer. A UsageError when what is to take the
  // place of characters does not exist in the encoding.
  Encoder(Session &session, uint32_t to, const TextChanges &changes, std::string shown,
          FaultTally &tally);

  // Encodes a part of the text. False when the encoding lacks one of the characters, or for a
  // failure, which status() tells apart.
  bool encode(std::u32string_view text);
  wem::Status status() const { return status_; }
  // What encode made.
  std::string_view bytes() const { return {room_.get(), produced_}; }

  // The same part with other characters, or none, in the place of those that the encoding does not
  // have; counted, in a text of which so many lines ended before. A Failure at the first that is
  // not to be put up with.
  std::u32string replaced(std::u32string_view text, uint64_t lines);

  // What takes the place of what is no character: U+FFFD, or a question mark where there is none.
  const std::u32string &substitute() const { return substitute_; }

 private:
  void replace(char32_t character, uint64_t lines, std::u32string &out);

  Transcoder transcoder_;
  const TextChanges &changes_;
  std::string shown_;
  FaultTally &tally_;
  bool is_of_bytes_ = false;  // the encoding has a byte for each character
  std::u32string substitute_;
  std::optional<Transliteration> transliteration_;
  std::unique_ptr<char[]> room_;
  size_t room_bytes_ = 0;
  size_t produced_ = 0;
  wem::Status status_;
};

}  // namespace cli
