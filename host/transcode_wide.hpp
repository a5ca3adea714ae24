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

#include "host/transcode_wide_copy.hpp"
#include "host/transcode_wide_units.hpp"
#include "host/transcode_wide_utf8.hpp"

namespace jxhost {

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

// To bytes of the characters' values, which have none of kRefusedBits.
template <typename Ops, typename Source, uint32_t kRefusedBits>
void convert_wide_to_bytes(Cursor &cursor) {
  const uint8_t *in = cursor.in;
  uint8_t *out = cursor.out;
  for (;;) {
    const auto left = static_cast<size_t>(cursor.in_end - in) / Source::kUnitBytes;
    const auto room = static_cast<size_t>(cursor.out_end - out);
    const size_t most = left < room ? left : room;
    const size_t count = most < Ops::kLanes ? most : Ops::kLanes;
    if (count == 0) break;
    const auto c = Source::load_some(in, count);
    if (Ops::any_bits(c, kRefusedBits)) break;
    if (count == Ops::kLanes) {
      Ops::store_bytes(out, c);
    } else {
      Ops::store_bytes(out, c, count);
    }
    in += count * Source::kUnitBytes;
    out += count;
  }
  cursor.in = in;
  cursor.out = out;
}

// --- The conversions of a level ---

template <typename Ops, size_t kBytes, bool kSwaps>
WideConvert wide_conversion_from(Form to) {
  using Source = WideUnits<Ops, kBytes, kSwaps>;
  switch (to) {
    case Form::kByte:
      return convert_wide_to_bytes<Ops, Source, 0xffffff00u>;
    case Form::kAscii:
      return convert_wide_to_bytes<Ops, Source, 0xffffff80u>;
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
    case Form::kUtf8:
      return copy_wide_utf8<Ops>;
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
