// Codecs: decode and encode one character of each encoding that is converted directly. decode()
// takes at least one byte and returns the bytes read, kCut when the input ends inside a character
// that is valid so far, or kFault for malformed input. encode() takes a valid character and returns
// the bytes written, kNoRoom, or kFault for a character that the encoding does not have. Up to
// kRunLimit a unit of the encoding equals the character; 0 when there is no such range.
#pragma once

#include <bit>
#include <cstring>

#include "host/code_page.hpp"
#include "host/transcode.hpp"

namespace jxhost {

static_assert(std::endian::native == std::endian::little, "units are loaded in native order");

inline constexpr int kCut = 0;
inline constexpr int kNoRoom = 0;
inline constexpr int kFault = -1;

constexpr bool is_surrogate(JXChar c) { return (c & 0xfffff800u) == 0xd800; }
constexpr bool is_character(JXChar c) { return c < 0x110000 && !is_surrogate(c); }

// Units of 1, 2 or 4 bytes in either byte order.
template <typename T, std::endian kOrder>
struct Units {
  static constexpr size_t kUnitBytes = sizeof(T);
  static constexpr bool kSwaps = sizeof(T) > 1 && kOrder == std::endian::big;

  static T swap(T unit) {
    if constexpr (!kSwaps) return unit;
    if constexpr (sizeof(T) == 2) return static_cast<T>(__builtin_bswap16(unit));
    if constexpr (sizeof(T) == 4) return static_cast<T>(__builtin_bswap32(unit));
  }
  static T load(const uint8_t *in) {
    T unit;
    std::memcpy(&unit, in, sizeof(unit));
    return swap(unit);
  }
  static void store(uint8_t *out, T unit) {
    unit = swap(unit);
    std::memcpy(out, &unit, sizeof(unit));
  }
};
using Bytes = Units<uint8_t, std::endian::little>;

// Encodings whose byte n is character n, below kEnd.
template <JXChar kEnd>
struct ByteCodec : Bytes {
  static constexpr JXChar kRunLimit = kEnd - 1;
  static constexpr bool kHolds = false;
  explicit ByteCodec(const Step &) {}

  [[gnu::always_inline]] static int decode(const uint8_t *in, size_t, JXChar &c) {
    c = *in;
    return c < kEnd ? 1 : kFault;
  }
  [[gnu::always_inline]] static int encode(JXChar c, uint8_t *out, size_t room_bytes) {
    if (c >= kEnd) return kFault;
    if (room_bytes == 0) return kNoRoom;
    *out = static_cast<uint8_t>(c);
    return 1;
  }
};

struct Utf8Codec : Bytes {
  static constexpr JXChar kRunLimit = 0x7f;
  static constexpr bool kHolds = true;
  explicit Utf8Codec(const Step &) {}

  [[gnu::always_inline]] static int decode(const uint8_t *in, size_t bytes, JXChar &c) {
    const uint32_t lead = in[0];
    if (lead < 0x80) {
      c = lead;
      return 1;
    }
    if (lead < 0xe0) return lead < 0xc2 ? kFault : decode_two(in, bytes, c);
    return lead < 0xf0 ? decode_three(in, bytes, c) : decode_four(in, bytes, c);
  }

  [[gnu::always_inline]] static int encode(JXChar c, uint8_t *out, size_t room_bytes) {
    if (c < 0x80) {
      if (room_bytes < 1) return kNoRoom;
      out[0] = static_cast<uint8_t>(c);
      return 1;
    }
    const auto tail_of = [c](int shift) {
      return static_cast<uint8_t>(0x80 | (c >> shift & 0x3f));
    };
    if (c < 0x800) {
      if (room_bytes < 2) return kNoRoom;
      out[0] = static_cast<uint8_t>(0xc0 | c >> 6);
      out[1] = tail_of(0);
      return 2;
    }
    if (c < 0x10000) {
      if (room_bytes < 3) return kNoRoom;
      out[0] = static_cast<uint8_t>(0xe0 | c >> 12);
      out[1] = tail_of(6);
      out[2] = tail_of(0);
      return 3;
    }
    if (room_bytes < 4) return kNoRoom;
    out[0] = static_cast<uint8_t>(0xf0 | c >> 18);
    out[1] = tail_of(12);
    out[2] = tail_of(6);
    out[3] = tail_of(0);
    return 4;
  }

 private:
  // The six bits of a continuation byte; above 0x3f when the byte is not one.
  static uint32_t tail(uint8_t byte) { return byte ^ 0x80u; }

  [[gnu::always_inline]] static int decode_two(const uint8_t *in, size_t bytes, JXChar &c) {
    if (bytes < 2) return kCut;
    c = (in[0] & 0x1fu) << 6 | tail(in[1]);
    return tail(in[1]) > 0x3f ? kFault : 2;
  }
  [[gnu::always_inline]] static int decode_three(const uint8_t *in, size_t bytes, JXChar &c) {
    if (bytes < 3) return is_prefix(in, bytes) ? kCut : kFault;
    c = (in[0] & 0xfu) << 12 | tail(in[1]) << 6 | tail(in[2]);
    const bool tails = (tail(in[1]) | tail(in[2])) <= 0x3f;
    return tails && c >= 0x800 && !is_surrogate(c) ? 3 : kFault;
  }
  [[gnu::always_inline]] static int decode_four(const uint8_t *in, size_t bytes, JXChar &c) {
    if (bytes < 4) return is_prefix(in, bytes) ? kCut : kFault;
    c = (in[0] & 0xfu) << 18 | tail(in[1]) << 12 | tail(in[2]) << 6 | tail(in[3]);
    const bool tails = (tail(in[1]) | tail(in[2]) | tail(in[3])) <= 0x3f;
    return tails && c >= 0x10000 && c < 0x110000 ? 4 : kFault;
  }
  // Tells whether one to three bytes begin some character of three or four bytes.
  [[gnu::noinline]] static bool is_prefix(const uint8_t *in, size_t bytes) {
    if (in[0] > 0xf4) return false;
    if (bytes == 1) return true;
    const uint8_t low = in[0] == 0xe0 ? 0xa0 : in[0] == 0xf0 ? 0x90 : 0x80;
    const uint8_t high = in[0] == 0xed ? 0x9f : in[0] == 0xf4 ? 0x8f : 0xbf;
    return in[1] >= low && in[1] <= high && (bytes == 2 || tail(in[2]) <= 0x3f);
  }
};

template <std::endian kOrder>
struct Utf16Codec : Units<uint16_t, kOrder> {
  using Base = Units<uint16_t, kOrder>;
  static constexpr JXChar kRunLimit = 0xff;
  static constexpr bool kHolds = true;
  explicit Utf16Codec(const Step &) {}

  [[gnu::always_inline]] static int decode(const uint8_t *in, size_t bytes, JXChar &c) {
    if (bytes < 2) return kCut;
    c = Base::load(in);
    if (!is_surrogate(c)) return 2;
    if (c >= 0xdc00) return kFault;
    if (bytes < 4) return kCut;
    const uint32_t low = Base::load(in + 2);
    c = 0x10000 + ((c - 0xd800) << 10) + (low - 0xdc00);
    return (low & 0xfc00) == 0xdc00 ? 4 : kFault;
  }
  [[gnu::always_inline]] static int encode(JXChar c, uint8_t *out, size_t room_bytes) {
    const int bytes = c < 0x10000 ? 2 : 4;
    if (room_bytes < static_cast<size_t>(bytes)) return kNoRoom;
    if (bytes == 4) {
      Base::store(out + 2, static_cast<uint16_t>(0xdc00 | (c & 0x3ff)));
      c = 0xd7c0 + (c >> 10);
    }
    Base::store(out, static_cast<uint16_t>(c));
    return bytes;
  }
};

template <std::endian kOrder>
struct Utf32Codec : Units<uint32_t, kOrder> {
  using Base = Units<uint32_t, kOrder>;
  static constexpr JXChar kRunLimit = 0xff;
  static constexpr bool kHolds = true;
  explicit Utf32Codec(const Step &) {}

  [[gnu::always_inline]] static int decode(const uint8_t *in, size_t bytes, JXChar &c) {
    if (bytes < 4) return kCut;
    c = Base::load(in);
    return is_character(c) ? 4 : kFault;
  }
  [[gnu::always_inline]] static int encode(JXChar c, uint8_t *out, size_t room_bytes) {
    if (room_bytes < 4) return kNoRoom;
    Base::store(out, c);
    return 4;
  }
};

// A single-byte encoding, through the step's table.
class PageCodec : public Bytes {
 public:
  static constexpr JXChar kRunLimit = 0;
  static constexpr bool kHolds = false;
  explicit PageCodec(const Step &step) : page_(*step.page) {}

  int decode(const uint8_t *in, size_t, JXChar &c) const {
    c = page_.character(*in);
    return c != CodePage::kNone ? 1 : kFault;
  }
  int encode(JXChar c, uint8_t *out, size_t room_bytes) const {
    const uint8_t byte = page_.byte(c);
    if (page_.character(byte) != c) return kFault;
    if (room_bytes == 0) return kNoRoom;
    *out = byte;
    return 1;
  }

 private:
  const CodePage &page_;
};

using Latin1 = ByteCodec<0x100>;
using Ascii = ByteCodec<0x80>;
using Utf16Be = Utf16Codec<std::endian::big>;
using Utf16Le = Utf16Codec<std::endian::little>;
using Utf32Be = Utf32Codec<std::endian::big>;
using Utf32Le = Utf32Codec<std::endian::little>;

}  // namespace jxhost
