// iconv with //TRANSLIT.
#include "cli/transliteration.hpp"

#include <iconv.h>

#include <array>
#include <clocale>
#include <span>
#include <utility>

#include "jx/jxhost.h"

namespace cli {

Transliteration::Transliteration(Session &session, uint32_t to)
    : decoder_(session.nls(), to, JX_ENCODING_UTF32LE) {
  const std::string name = jxhost_encoding_name(to);
  const ::iconv_t opened = ::iconv_open((name + "//TRANSLIT").c_str(), "UTF-32LE");
  if (opened == reinterpret_cast<::iconv_t>(-1)) {
    throw UsageError("--translit: the C library does not know " + name);
  }
  descriptor_ = opened;
}

Transliteration::~Transliteration() { ::iconv_close(descriptor_); }

const std::optional<std::u32string> &Transliteration::operator()(char32_t character) {
  const auto [entry, is_new] = known_.try_emplace(character);
  if (is_new) entry->second = ask(character);
  return entry->second;
}

// A question mark is what the C library writes when it knows no others.
std::optional<std::u32string> Transliteration::ask(char32_t character) {
  std::array<char, 64> bytes;
  char *in = reinterpret_cast<char *>(&character);
  char *out = bytes.data();
  size_t in_bytes = sizeof character;
  size_t room = bytes.size();
  const bool is_done =
      ::iconv(descriptor_, &in, &in_bytes, &out, &room) != static_cast<size_t>(-1) &&
      ::iconv(descriptor_, nullptr, nullptr, &out, &room) == 0;
  if (!is_done) ::iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
  std::array<char32_t, 64> others;
  size_t produced = 0;
  const std::span<char> other_room(reinterpret_cast<char *>(others.data()), sizeof others);
  const std::string_view made(bytes.data(), bytes.size() - room);
  if (!is_done || !decoder_(made, other_room, &produced).ok()) return std::nullopt;
  std::u32string found(others.data(), produced / sizeof(char32_t));
  return found == U"?" ? std::nullopt : std::optional(std::move(found));
}

void use_locale() {
  const WithVariables variables;
  std::setlocale(LC_CTYPE, "");
}

}  // namespace cli
