// Text in the module's characters and in UTF-8, and the names of files.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "jx/base.h"
#include "jx/wem/status.hpp"

namespace wem {

static_assert(sizeof(char32_t) == sizeof(JXChar));
static_assert(alignof(char32_t) == alignof(JXChar));

// Text as JXChars, for the module. char32_t and JXChar have one representation, and the module,
// which is compiled separately, sees the memory only as JXChars: no code reads it through both
// types. Valid as long as the text.
inline const JXChar *as_chars(std::u32string_view text) {
  return reinterpret_cast<const JXChar *>(text.data());
}

// The length of a text in JXChars. A length beyond 32 bits is too long for every operation and
// becomes the largest one.
constexpr uint32_t char_count(std::u32string_view text) {
  return text.size() > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(text.size());
}

// Text of the module as a view; empty for null. Valid as long as the module's text.
template <typename Count>
std::u32string_view as_view(const JXChar *data, Count chars) {
  if (!data || chars <= 0) return {};
  return {reinterpret_cast<const char32_t *>(data), static_cast<size_t>(chars)};
}

namespace detail {

constexpr bool is_character(char32_t unit) {
  return unit < 0xD800 || (unit > 0xDFFF && unit <= 0x10FFFF);
}

// Appends a character as UTF-8.
inline void append_utf8(std::string &utf8, char32_t character) {
  constexpr uint32_t kBits = 6;  // in a continuation byte
  const uint32_t more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  const uint32_t lead = more == 0 ? 0 : 0xFF00u >> (more + 1) & 0xFFu;
  utf8 += static_cast<char>(lead | character >> kBits * more);
  for (uint32_t left = more; left > 0; --left) {
    utf8 += static_cast<char>(0x80u | (character >> kBits * (left - 1) & 0x3Fu));
  }
}

// Takes a character off the front of UTF-8 that is not empty; nullopt when it is malformed,
// overlong, a surrogate, out of range or cut off.
inline std::optional<char32_t> take_utf8(std::string_view &utf8) {
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};  // by continuation bytes
  const auto byte = [&utf8](size_t i) { return static_cast<unsigned char>(utf8[i]); };
  const unsigned lead = byte(0);
  const size_t more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  if ((lead >= 0x80 && lead < 0xC0) || lead > 0xF7 || utf8.size() <= more) return std::nullopt;
  char32_t character = more == 0 ? lead : lead & 0x3Fu >> more;
  for (size_t i = 1; i <= more; ++i) {
    if ((byte(i) & 0xC0u) != 0x80) return std::nullopt;
    character = character << 6 | (byte(i) & 0x3Fu);
  }
  if (character < kSmallest[more] || !is_character(character)) return std::nullopt;
  utf8.remove_prefix(more + 1);
  return character;
}

}  // namespace detail

// Text as UTF-8. JXHOST_E_MALFORMED when a unit is no character.
inline Result<std::string> to_utf8(std::u32string_view text) {
  std::string utf8;
  utf8.reserve(text.size());
  for (const char32_t unit : text) {
    if (!detail::is_character(unit)) return Failed(JXHOST_E_MALFORMED);
    detail::append_utf8(utf8, unit);
  }
  return Result<std::string>(std::move(utf8));
}

// UTF-8 as text. JXHOST_E_MALFORMED when it is not UTF-8; nothing is replaced.
inline Result<std::u32string> from_utf8(std::string_view utf8) {
  std::u32string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    const auto character = detail::take_utf8(utf8);
    if (!character) return Failed(JXHOST_E_MALFORMED);
    text += *character;
  }
  return Result<std::u32string>(std::move(text));
}

// Whether bytes are UTF-8.
inline bool is_utf8(std::string_view bytes) {
  while (!bytes.empty()) {
    if (!detail::take_utf8(bytes)) return false;
  }
  return true;
}

// The name of a file or a path, the argument of every operation. To the system a name is bytes,
// usually UTF-8; the module's characters are those bytes, one each. So "Zürich.txt",
// u8"Zürich.txt", a std::filesystem::path of any bytes, and text from the module (a directory
// entry, a built path) all work. A literal U"..." compiles only in ASCII: its other characters are
// not the bytes of a name.
class Name {
 public:
  // No name.
  constexpr Name() = default;
  // The bytes of a name; none for a null pointer.
  Name(const char *bytes) : Name(bytes ? std::string_view(bytes) : std::string_view()) {}
  template <std::convertible_to<std::string_view> Bytes>
  requires(!std::is_pointer_v<Bytes>) Name(const Bytes &bytes)
      : chars_(widen(std::string_view(bytes))) {}
  template <std::convertible_to<std::u8string_view> Utf8>
  Name(const Utf8 &utf8) : chars_(widen(std::u8string_view(utf8))) {}
  Name(const std::filesystem::path &path) : chars_(widen(std::string_view(path.native()))) {}
  // A name in the module's characters.
  template <std::convertible_to<std::u32string_view> Chars>
  Name(const Chars &chars) : chars_(std::u32string_view(chars)) {}
  Name(std::u32string chars) : chars_(std::move(chars)) {}
  template <size_t N>
  consteval Name(const char32_t (&ascii)[N]) : literal_(ascii, N - 1) {
    for (const char32_t character : literal_) {
      if (character > 0x7F) a_name_is_bytes_drop_the_u();
    }
  }

  // The name in the module's characters. Valid until the object is changed.
  std::u32string_view chars() const & { return chars_ ? std::u32string_view(*chars_) : literal_; }
  std::u32string_view chars() && = delete;
  // Whether there is no name.
  bool empty() const { return chars().empty(); }
  // The bytes of the name: UTF-8 if the name is. A character above 255, which no name from the
  // module has, is encoded in UTF-8.
  std::string utf8() const {
    std::string bytes;
    bytes.reserve(chars().size());
    for (const char32_t character : chars()) {
      if (character <= 0xFF) {
        bytes += static_cast<char>(character);
      } else {
        detail::append_utf8(bytes, character);
      }
    }
    return bytes;
  }
  // The same as a path of the standard library.
  std::filesystem::path path() const { return utf8(); }

  // Whether both are the same name.
  friend bool operator==(const Name &a, const Name &b) { return a.chars() == b.chars(); }

 private:
  template <typename Byte>
  static std::u32string widen(std::basic_string_view<Byte> bytes) {
    std::u32string chars(bytes.size(), U'\0');
    std::transform(bytes.begin(), bytes.end(), chars.begin(),
                   [](Byte byte) { return static_cast<unsigned char>(byte); });
    return chars;
  }
  // Never called: a literal with such a character does not compile.
  static void a_name_is_bytes_drop_the_u();

  std::optional<std::u32string> chars_;
  std::u32string_view literal_ = U"";  // when chars_ is empty
};

}  // namespace wem
