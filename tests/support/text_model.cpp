#include "support/text_model.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

namespace jx::test {

namespace {

// The character at the start of some bytes.
struct Decoded {
  enum { whole, cut, malformed } kind;
  uint32_t bytes = 0;
  char32_t character = 0;
};

bool is_character(char32_t c) { return c < 0xD800 || (c > 0xDFFF && c < 0x110000); }
inline bool is_big_endian(uint32_t encoding) {
  return encoding == JX_ENCODING_UTF16BE || encoding == JX_ENCODING_UTF32BE;
}

Decoded decode_utf8(std::string_view text) {
  static constexpr char32_t kFirst[] = {0, 0x80, 0x800, 0x10000};  // the smallest by length
  const auto lead = static_cast<uint8_t>(text[0]);
  const uint32_t bytes = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (bytes == 0 || lead > 0xF7) return {Decoded::malformed};
  char32_t low = bytes == 1 ? lead : lead & (0x7Fu >> bytes);
  char32_t high = low;
  for (uint32_t i = 1; i < bytes; ++i) {
    const bool is_there = i < text.size();
    const auto byte = static_cast<uint8_t>(is_there ? text[i] : 0);
    if (is_there && (byte & 0xC0) != 0x80) return {Decoded::malformed};
    low = low * 64 + (is_there ? byte & 0x3Fu : 0);
    high = high * 64 + (is_there ? byte & 0x3Fu : 0x3F);
  }
  // The bytes must be the start of some character of that length.
  const char32_t first = std::max(low, kFirst[bytes - 1]);
  if (first > high || !is_character(first)) return {Decoded::malformed};
  return text.size() < bytes ? Decoded{Decoded::cut} : Decoded{Decoded::whole, bytes, low};
}

char32_t unit_at(uint32_t encoding, std::string_view text, size_t offset) {
  const uint32_t bytes = unit_bytes_of(encoding);
  char32_t unit = 0;
  for (uint32_t i = 0; i < bytes; ++i) {
    const uint32_t place = is_big_endian(encoding) ? i : bytes - 1 - i;
    unit = unit << 8 | static_cast<uint8_t>(text[offset + place]);
  }
  return unit;
}

Decoded decode(uint32_t encoding, std::string_view text) {
  if (encoding == JX_ENCODING_UTF8) return decode_utf8(text);
  const uint32_t bytes = unit_bytes_of(encoding);
  if (text.size() < bytes) return {Decoded::cut};
  const char32_t unit = unit_at(encoding, text, 0);
  if (bytes != 2 || is_character(unit)) {
    return is_character(unit) ? Decoded{Decoded::whole, bytes, unit} : Decoded{Decoded::malformed};
  }
  if (unit > 0xDBFF) return {Decoded::malformed};
  if (text.size() < 4) return {Decoded::cut};
  const char32_t low = unit_at(encoding, text, 2);
  if (low < 0xDC00 || low > 0xDFFF) return {Decoded::malformed};
  return {Decoded::whole, 4, 0x10000 + (unit - 0xD800) * 0x400 + (low - 0xDC00)};
}

// A character in an encoding.
struct Encoded {
  std::array<char, 4> bytes = {};
  uint32_t count = 0;  // 0: the encoding does not have the character

  void add_unit(uint32_t encoding, char32_t unit) {
    const auto byte = [unit](int shift) { return static_cast<char>(unit >> shift & 0xFF); };
    const bool is_big = is_big_endian(encoding);
    if (unit_bytes_of(encoding) == 1) {
      bytes[count++] = byte(0);
    } else if (unit_bytes_of(encoding) == 2) {
      bytes[count++] = byte(is_big ? 8 : 0);
      bytes[count++] = byte(is_big ? 0 : 8);
    } else {
      for (int i = 0; i < 4; ++i) bytes[count++] = byte(is_big ? 24 - 8 * i : 8 * i);
    }
  }
};

// Encoded characters one after another: a string that grew with each would be most of the cost of a
// test.
class Characters {
 public:
  explicit Characters(size_t most)
      : bytes_(std::make_unique_for_overwrite<char[]>(most * sizeof(Encoded::bytes))) {}
  void add(const Encoded &character) {
    std::copy(character.bytes.begin(), character.bytes.end(), &bytes_[size_]);
    size_ += character.count;
  }
  size_t size() const { return size_; }
  std::string text() const { return {bytes_.get(), size_}; }

 private:
  std::unique_ptr<char[]> bytes_;
  size_t size_ = 0;
};

[[gnu::always_inline]] inline Encoded encode_utf8(char32_t c) {
  const auto tail = [c](int shift) { return static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
  const auto lead = [c](uint32_t mark, int shift) { return static_cast<char>(mark | c >> shift); };
  if (c < 0x80) return {{lead(0, 0)}, 1};
  if (c < 0x800) return {{lead(0xC0, 6), tail(0)}, 2};
  if (c < 0x10000) return {{lead(0xE0, 12), tail(6), tail(0)}, 3};
  return {{lead(0xF0, 18), tail(12), tail(6), tail(0)}, 4};
}

[[gnu::always_inline]] inline Encoded encoded(uint32_t encoding, char32_t c) {
  Encoded made;
  if (encoding == JX_ENCODING_UTF8) return encode_utf8(c);
  if (encoding == JX_ENCODING_NATIVE && c > 0xFF) return made;
  if (c < 0x10000 || unit_bytes_of(encoding) == 4) {
    made.add_unit(encoding, c);
  } else {
    made.add_unit(encoding, 0xD800 + (c - 0x10000) / 0x400);
    made.add_unit(encoding, 0xDC00 + (c - 0x10000) % 0x400);
  }
  return made;
}

}  // namespace

uint32_t unit_bytes_of(uint32_t encoding) {
  if (encoding == JX_ENCODING_UTF32LE || encoding == JX_ENCODING_UTF32BE) return 4;
  return encoding == JX_ENCODING_UTF16LE || encoding == JX_ENCODING_UTF16BE ? 2 : 1;
}

uint32_t max_bytes_of(uint32_t encoding) { return encoding == JX_ENCODING_NATIVE ? 1 : 4; }

std::string bom_of(uint32_t encoding) {
  return encoding == JX_ENCODING_NATIVE ? "" : *encode(encoding, U'\uFEFF');
}

std::optional<std::string> encode(uint32_t encoding, char32_t c) {
  const Encoded made = encoded(encoding, c);
  return made.count == 0 ? std::nullopt : std::optional(std::string(made.bytes.data(), made.count));
}

std::string encode(uint32_t encoding, std::u32string_view text) {
  Characters bytes(text.size());
  for (const char32_t c : text) {
    const Encoded made = encoded(encoding, c);
    if (made.count == 0) std::abort();
    bytes.add(made);
  }
  return bytes.text();
}

uint32_t count_characters(uint32_t encoding, std::string_view text) {
  const uint32_t bytes = unit_bytes_of(encoding);
  uint32_t count = 0;
  for (size_t offset = 0; offset + bytes <= text.size(); offset += bytes) {
    const char32_t unit = unit_at(encoding, text, offset);
    const bool continues = encoding == JX_ENCODING_UTF8 ? unit >= 0x80 && unit <= 0xBF
                                                        : bytes == 2 && unit / 0x400 == 0x37;
    count += !continues;
  }
  return count;
}

JXStatus TextModel::convert(std::string_view text, size_t capacity_bytes,
                            std::string *produced_out) {
  const std::string all = std::exchange(held_, "") + std::string(text);
  produced_out->clear();
  Characters produced(all.size());
  const auto end = [&](JXStatus status) {
    *produced_out = produced.text();
    return status;
  };
  for (size_t done = 0; done < all.size();) {
    const Decoded next = decode(from_, std::string_view(all).substr(done));
    if (next.kind == Decoded::malformed) return end(JXHOST_E_MALFORMED);
    if (next.kind == Decoded::cut) {
      held_ = all.substr(done);
      break;
    }
    const Encoded made = encoded(to_, next.character);
    if (made.count == 0) return end(JXHOST_E_UNMAPPABLE);
    if (produced.size() + made.count > capacity_bytes) return end(JXHOST_E_NOROOM);
    produced.add(made);
    done += next.bytes;
  }
  return end(JX_OK);
}

}  // namespace jx::test
