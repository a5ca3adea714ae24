// Characters written with others, by the C library.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "cli/session.hpp"

namespace cli {

// What the C library writes instead of a character that an encoding does not have, in the language
// of the user's locale.
class Transliteration {
 public:
  // A UsageError when the C library does not know the encoding.
  Transliteration(Session &session, uint32_t to);
  Transliteration(const Transliteration &) = delete;
  Transliteration &operator=(const Transliteration &) = delete;
  ~Transliteration();

  // The characters to write, of a combining accent none; nullopt when the C library knows no way.
  // Valid as long as this.
  const std::optional<std::u32string> &operator()(char32_t character);

 private:
  std::optional<std::u32string> ask(char32_t character);

  void *descriptor_;    // an iconv_t
  Transcoder decoder_;  // back into characters
  std::unordered_map<char32_t, std::optional<std::u32string>> known_;
};

// Lets transliterations follow the user's locale. Before threads are started.
void use_locale();

}  // namespace cli
