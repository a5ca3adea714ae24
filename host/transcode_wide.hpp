// Conversion in blocks and groups, for the levels above the baseline: written once, over the
// operations of vector/lanes_avx2.hpp or lanes_avx512.hpp. A block of UTF-8 is looked at byte by
// byte; everything else goes by groups of characters in lanes of 32 bits.
//
// These functions convert what is valid and has room, and stop at a character boundary before
// anything else: convert_pair() takes the next characters one by one and decides what is wrong.
//
// Measured with AVX-512 for lines of 80 characters a call, simdutf is 1 (i386, x86-64): UTF-8 to
// UTF-32 0.42, 0.51 for ASCII, 0.34, 0.43 for European and 0.46, 0.63 for CJK text; UTF-32 to UTF-8
// 0.37, 0.51 and 0.27, 0.46 and 0.22, 0.38. With AVX2 on the same machine it takes 1.1 to 2.4 times
// as long as with AVX-512.
#pragma once

#include "host/transcode.hpp"

namespace jxhost {

// --- Reading groups: up to kLanes characters of one unit each ---

// Units of kBytes bytes each.
template <typename Ops, size_t kBytes, bool kSwaps>
struct WideUnits {
  static constexpr size_t kUnitBytes = kBytes;

  // Loads up to a group of units, zeros after them.
  [[gnu::always_inline]] static typename Ops::Lanes load_some(const uint8_t *in, size_t count) {
    if constexpr (kBytes == 1) return Ops::load_bytes(in, count);
    if constexpr (kBytes == 2) {
      const auto c = Ops::load_halves(in, count);
      return kSwaps ? Ops::swap_halves(c) : c;
    }
    if constexpr (kBytes == 4) {
      const auto c = Ops::load_lanes(in, count);
      return kSwaps ? Ops::swap_lanes(c) : c;
    }
  }
  // How many of the first `count` lanes hold characters of one unit, up to the first that does not.
  [[gnu::always_inline]] static size_t valid(typename Ops::Lanes c, size_t count) {
    typename Ops::LaneMask wrong = 0;
    if constexpr (kBytes == 2) wrong = Ops::equal_lanes(Ops::both(c, 0xf800), 0xd800);
    if constexpr (kBytes == 4) {
      wrong = Ops::equal_lanes(Ops::both(c, 0xfffff800u), 0xd800) | Ops::above(c, 0x10ffff);
    }
    if (wrong == 0) return count;
    const size_t valid = Ops::lowest(wrong);
    return valid < count ? valid : count;
  }

  // Stores characters, each below 0x10000 for units of two bytes.
  [[gnu::always_inline]] static void store(uint8_t *out, typename Ops::Lanes c) {
    if constexpr (kBytes == 2) {
      Ops::store_halves(out, kSwaps ? Ops::swap_halves(c) : c);
    } else {
      Ops::store_lanes(out, kSwaps ? Ops::swap_lanes(c) : c);
    }
  }
  [[gnu::always_inline]] static void store(uint8_t *out, typename Ops::Lanes c, size_t count) {
    if constexpr (kBytes == 2) {
      Ops::store_halves(out, kSwaps ? Ops::swap_halves(c) : c, count);
    } else {
      Ops::store_lanes(out, kSwaps ? Ops::swap_lanes(c) : c, count);
    }
  }
  // Stores `count` characters, which have room, with whole groups while there is room.
  [[gnu::always_inline]] static void put(uint8_t *&out, const uint8_t *out_end,
                                         typename Ops::Lanes c, size_t count) {
    if (static_cast<size_t>(out_end - out) >= Ops::kLanes * kBytes) {
      store(out, c);
    } else {
      store(out, c, count);
    }
    out += count * kBytes;
  }
};

// --- UTF-8 to units ---

// How a byte takes part in a character, by its upper four bits. Lead bytes begin four pieces of six
// bits; those that the character does not have are shifted out.
struct WideUtf8Tables {
  alignas(16) uint8_t payload[16] = {0x7f, 0x7f, 0x7f, 0x7f, 0x7f, 0x7f, 0x7f, 0x7f,
                                     0x3f, 0x3f, 0x3f, 0x3f, 0x1f, 0x1f, 0x0f, 0x07};
  alignas(16) uint8_t unused_bits[16] = {18, 18, 18, 18, 18, 18, 18, 18, 0, 0, 0, 0, 12, 12, 6, 0};
  // A byte may need a closer look when its two digits have a bit in common: c0, c1, e0, ed, f0 and
  // f4 to ff.
  alignas(16) uint8_t suspect_upper[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 2, 4};
  alignas(16) uint8_t suspect_lower[16] = {7, 1, 0, 0, 4, 4, 4, 4, 4, 4, 4, 4, 4, 6, 4, 4};
};
namespace {
constexpr WideUtf8Tables kUtf8Tables;
}

// Tells whether the bytes after the lead bytes e0, ed, f0 and f4 are in range and no byte is one
// that never occurs.
template <typename Ops>
[[gnu::noinline]] bool wide_suspects_pass(typename Ops::Bytes block) {
  using Mask = typename Ops::ByteMask;
  const Mask from_a0 = Ops::at_least(block, 0xa0);
  const Mask from_90 = Ops::at_least(block, 0x90);
  const auto after = [block](uint8_t lead) {
    return static_cast<Mask>(Ops::equal(block, lead) << 1);
  };
  const Mask never =
      (Ops::at_least(block, 0xc0) & ~Ops::at_least(block, 0xc2)) | Ops::at_least(block, 0xf5);
  return (never | (after(0xe0) & ~from_a0) | (after(0xed) & from_a0) | (after(0xf0) & ~from_90) |
          (after(0xf4) & from_90)) == 0;
}

// How many of the bytes of a full block belong to characters that end in it, if it is valid. By the
// last three bytes alone, so that the next block need not wait for the masks of this one.
template <typename Ops>
[[gnu::always_inline]] inline size_t whole_utf8_bytes(const uint8_t *in) {
  constexpr size_t count = Ops::kBytes;
  const unsigned one = in[count - 1] >= 0xc0 ? 1 : 0;
  const unsigned two = in[count - 2] >= 0xe0 ? 2 : 0;
  const unsigned three = in[count - 3] >= 0xf0 ? 3 : 0;
  return count - (one | two | three);
}

// Finds the tails (continuation bytes) of a block, zeros after its `count` bytes. False unless it
// consists of whole, valid characters.
template <typename Ops>
[[gnu::always_inline]] inline bool check_utf8(typename Ops::Bytes block,
                                              typename Ops::Bytes upper_digits,
                                              typename Ops::ByteMask top_bits,
                                              typename Ops::ByteMask &tails_out) {
  using Mask = typename Ops::ByteMask;
  const Mask twos = Ops::at_least(block, 0xc0);
  const Mask threes = Ops::at_least(block, 0xe0);
  const Mask fours = Ops::at_least(block, 0xf0);
  tails_out = top_bits & ~twos;
  // A character that ends after the block would need a tail there; only one that is two or more
  // bytes longer than the block loses all of these, and it loses them from a full block.
  if (static_cast<Mask>(twos << 1 | threes << 2 | fours << 3) != tails_out) return false;
  const auto suspects =
      Ops::any_in_both(Ops::look_up(kUtf8Tables.suspect_upper, upper_digits),
                       Ops::look_up(kUtf8Tables.suspect_lower, Ops::lower_digits(block)));
  return !suspects || wide_suspects_pass<Ops>(block);
}

// Puts the characters of a block that begin at the leads.
template <typename Ops, typename Target>
[[gnu::always_inline]] inline void put_utf8_characters(typename Ops::Bytes block,
                                                       typename Ops::Bytes upper_digits,
                                                       typename Ops::ByteMask leads, size_t chars,
                                                       uint8_t *&out, const uint8_t *out_end) {
  const auto payload = Ops::both(block, Ops::look_up(kUtf8Tables.payload, upper_digits));
  const auto unused_bits = Ops::look_up(kUtf8Tables.unused_bits, upper_digits);
  auto numbers = Ops::numbers_of(leads);
  for (;;) {
    const auto at = Ops::widen_bytes(numbers);
    const auto pieces = Ops::both(Ops::gather(payload, at), 0x3f3f3f7f);
    const auto c = Ops::shift_right(Ops::join_sixes(pieces), Ops::gather_one(unused_bits, at));
    Target::put(out, out_end, c, chars < Ops::kLanes ? chars : Ops::kLanes);
    if (chars <= Ops::kLanes) return;
    chars -= Ops::kLanes;
    numbers = Ops::drop_group(numbers);
  }
}

// Puts the ASCII at the start of the input, a full block and more at once.
template <typename Ops, typename Target>
[[gnu::always_inline]] inline void put_ascii_run(const uint8_t *&in, const uint8_t *in_end,
                                                 uint8_t *&out, const uint8_t *out_end) {
  constexpr size_t kStep = 4 * Ops::kLanes;
  while (static_cast<size_t>(in_end - in) >= kStep &&
         static_cast<size_t>(out_end - out) >= kStep * Target::kUnitBytes && Ops::is_ascii(in)) {
    for (size_t at = 0; at < kStep; at += Ops::kLanes) {
      Target::store(out + at * Target::kUnitBytes, Ops::load_bytes(in + at));
    }
    in += kStep;
    out += kStep * Target::kUnitBytes;
  }
}

// Puts a block of ASCII, up to two groups.
template <typename Ops, typename Target>
[[gnu::always_inline]] inline void put_ascii(typename Ops::Bytes block, size_t chars, uint8_t *&out,
                                             const uint8_t *out_end) {
  constexpr size_t kGroupBytes = Ops::kLanes * Target::kUnitBytes;
  static_assert(Ops::kBytes == 2 * Ops::kLanes);
  const auto first = Ops::widen_bytes(block);
  const auto second = Ops::widen_bytes(Ops::drop_group(block));
  if (static_cast<size_t>(out_end - out) >= 2 * kGroupBytes) {
    Target::store(out, first);
    Target::store(out + kGroupBytes, second);
  } else {
    Target::store(out, first, chars < Ops::kLanes ? chars : Ops::kLanes);
    if (chars > Ops::kLanes) Target::store(out + kGroupBytes, second, chars - Ops::kLanes);
  }
  out += chars * Target::kUnitBytes;
}

template <typename Ops, typename Target>
void convert_wide_utf8(Cursor &cursor) {
  const uint8_t *in = cursor.in;
  const uint8_t *const in_end = cursor.in_end;
  uint8_t *out = cursor.out;
  const uint8_t *const out_end = cursor.out_end;
  while (in != in_end) {
    const auto left = static_cast<size_t>(in_end - in);
    const bool is_full = left >= Ops::kBytes;
    const size_t count = is_full ? whole_utf8_bytes<Ops>(in) : left;
    const auto block = is_full ? Ops::load_start(in, count) : Ops::load_block(in, count);
    const auto top_bits = Ops::top_bits(block);
    const auto room = static_cast<size_t>(out_end - out) / Target::kUnitBytes;
    if (top_bits == 0) {
      if (room < count) break;
      put_ascii<Ops, Target>(block, count, out, out_end);
      in += count;
      put_ascii_run<Ops, Target>(in, in_end, out, out_end);
      continue;
    }
    const auto upper_digits = Ops::upper_digits(block);
    typename Ops::ByteMask tails;
    if (!check_utf8<Ops>(block, upper_digits, top_bits, tails)) break;
    if (Target::kUnitBytes == 2 && Ops::at_least(block, 0xf0) != 0) break;
    const auto leads = Ops::first(count) & ~tails;
    const size_t chars = Ops::count(leads);
    if (room < chars) break;
    put_utf8_characters<Ops, Target>(block, upper_digits, leads, chars, out, out_end);
    in += count;
  }
  cursor.in = in;
  cursor.out = out;
}

// --- Units to UTF-8 and to other units ---

// Copies ASCII, of which the first group is in hand, and returns how many characters: four groups
// of a long text, the whole of a shorter one, by groups from both ends that may overlap. 0 when it
// is not all ASCII; then the group alone may be.
template <typename Ops, typename Source>
[[gnu::always_inline]] inline size_t copy_ascii(const uint8_t *in, size_t chars,
                                                typename Ops::Lanes first, uint8_t *out) {
  constexpr size_t kLanes = Ops::kLanes;
  const auto group = [in](size_t at) {
    return Source::load_some(in + at * Source::kUnitBytes, kLanes);
  };
  const auto is_ascii = [](typename Ops::Lanes bits) { return !Ops::any_bits(bits, 0xffffff80u); };
  if (chars < 2 * kLanes) {
    const auto last = group(chars - kLanes);
    if (!is_ascii(last)) return 0;
    Ops::store_bytes(out, first);
    Ops::store_bytes(out + chars - kLanes, last);
    return chars;
  }
  if (chars > 4 * kLanes) chars = 4 * kLanes;
  const typename Ops::Lanes groups[4] = {first, group(kLanes), group(chars - 2 * kLanes),
                                         group(chars - kLanes)};
  const auto bits = Ops::either(Ops::either(groups[1], groups[2]), groups[3]);
  if (!is_ascii(bits)) return 0;
  Ops::store_bytes(out, groups[0]);
  Ops::store_bytes(out + kLanes, groups[1]);
  Ops::store_bytes(out + chars - 2 * kLanes, groups[2]);
  Ops::store_bytes(out + chars - kLanes, groups[3]);
  return chars;
}

template <typename Ops, typename Source>
void convert_wide_to_utf8(Cursor &cursor) {
  const uint8_t *in = cursor.in;
  const uint8_t *const in_end = cursor.in_end;
  uint8_t *out = cursor.out;
  const uint8_t *const out_end = cursor.out_end;
  size_t mixed = 0;  // groups to convert before the next is tried as ASCII
  for (;;) {
    const auto left = static_cast<size_t>(in_end - in) / Source::kUnitBytes;
    if (left == 0) break;
    const size_t count = left < Ops::kLanes ? left : Ops::kLanes;
    const auto room = static_cast<size_t>(out_end - out);
    const auto c = Source::load_some(in, count);
    if (mixed == 0 && !Ops::any_bits(c, 0xffffff80u) && room >= Ops::kLanes) {
      size_t copied = 0;
      if (left >= Ops::kLanes && room >= left) copied = copy_ascii<Ops, Source>(in, left, c, out);
      if (copied == 0) {
        Ops::store_bytes(out, c);
        copied = count;
      }
      in += copied * Source::kUnitBytes;
      out += copied;
      continue;
    }
    mixed = mixed == 0 ? 3 : mixed - 1;
    if (Source::valid(c, count) != count) break;
    // Lanes without a character hold 0, which takes a byte at the end.
    const size_t written = Ops::store_utf8(out, c, room, Ops::kLanes - count);
    if (written > room) break;
    in += count * Source::kUnitBytes;
    out += written;
  }
  cursor.in = in;
  cursor.out = out;
}

template <typename Ops, typename Source, typename Target>
void convert_wide_units(Cursor &cursor) {
  const uint8_t *in = cursor.in;
  uint8_t *out = cursor.out;
  for (;;) {
    const auto left = static_cast<size_t>(cursor.in_end - in) / Source::kUnitBytes;
    const auto room = static_cast<size_t>(cursor.out_end - out) / Target::kUnitBytes;
    const size_t count = left < Ops::kLanes ? left : Ops::kLanes;
    if (count == 0 || count > room) break;
    const auto c = Source::load_some(in, count);
    if (Target::kUnitBytes == 2 && Ops::any_bits(c, 0xffff0000u)) break;
    const size_t valid = Source::valid(c, count);
    if (valid == 0) break;
    Target::put(out, cursor.out_end, c, valid);
    in += valid * Source::kUnitBytes;
    if (valid != count) break;
  }
  cursor.in = in;
  cursor.out = out;
}

// --- The conversions of a level ---

template <typename Ops, size_t kBytes, bool kSwaps>
WideConvert wide_conversion_from(Form to) {
  using Source = WideUnits<Ops, kBytes, kSwaps>;
  switch (to) {
    case Form::kUtf8:
      return convert_wide_to_utf8<Ops, Source>;
    case Form::kUtf16Le:
      return convert_wide_units<Ops, Source, WideUnits<Ops, 2, false>>;
    case Form::kUtf16Be:
      return convert_wide_units<Ops, Source, WideUnits<Ops, 2, true>>;
    case Form::kUtf32Le:
      return convert_wide_units<Ops, Source, WideUnits<Ops, 4, false>>;
    case Form::kUtf32Be:
      return convert_wide_units<Ops, Source, WideUnits<Ops, 4, true>>;
    default:
      return nullptr;
  }
}

template <typename Ops>
WideConvert wide_conversion_from_utf8(Form to) {
  switch (to) {
    case Form::kUtf16Le:
      return convert_wide_utf8<Ops, WideUnits<Ops, 2, false>>;
    case Form::kUtf16Be:
      return convert_wide_utf8<Ops, WideUnits<Ops, 2, true>>;
    case Form::kUtf32Le:
      return convert_wide_utf8<Ops, WideUnits<Ops, 4, false>>;
    case Form::kUtf32Be:
      return convert_wide_utf8<Ops, WideUnits<Ops, 4, true>>;
    default:
      return nullptr;
  }
}

template <typename Ops>
WideConvert wide_conversion(Form from, Form to) {
  switch (from) {
    case Form::kByte:
      return wide_conversion_from<Ops, 1, false>(to);
    case Form::kUtf8:
      return wide_conversion_from_utf8<Ops>(to);
    case Form::kUtf16Le:
      return wide_conversion_from<Ops, 2, false>(to);
    case Form::kUtf16Be:
      return wide_conversion_from<Ops, 2, true>(to);
    case Form::kUtf32Le:
      return wide_conversion_from<Ops, 4, false>(to);
    case Form::kUtf32Be:
      return wide_conversion_from<Ops, 4, true>(to);
    default:
      return nullptr;
  }
}

}  // namespace jxhost
