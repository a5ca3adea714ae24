// UTF-8 in blocks. Masks of the lead and continuation bytes show whether a block is well formed and
// where its characters begin; the bytes from there on are gathered into lanes, stripped of their
// marks, joined and shifted right by the bits that a shorter character does not have.
#pragma once

#include "host/transcode_wide_units.hpp"

namespace jxhost {

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

// Puts the ASCII at the start of the input, four groups at once.
template <typename Ops, typename Target>
[[gnu::always_inline]] inline void put_ascii_run(const uint8_t *&in, const uint8_t *in_end,
                                                 uint8_t *&out, const uint8_t *out_end) {
  constexpr size_t kLanes = Ops::kLanes, kStep = 4 * kLanes;
  const auto put_group = [&](size_t at) {
    Target::store(out + at * Target::kUnitBytes, Ops::load_bytes(in + at));
  };
  while (static_cast<size_t>(in_end - in) >= kStep &&
         static_cast<size_t>(out_end - out) >= kStep * Target::kUnitBytes && Ops::is_ascii(in)) {
    // Written out: a loop would jump after each store.
    put_group(0);
    put_group(kLanes);
    put_group(2 * kLanes);
    put_group(3 * kLanes);
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

}  // namespace jxhost
