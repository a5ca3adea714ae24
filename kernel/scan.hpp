// Scans and comparisons of 8-, 16- and 32-bit units, each written once over the operations of
// vector/. The scans of short runs take at most four blocks, which may overlap, and one branch
// that depends on the data; kernel/long_runs.hpp has the bodies for longer ones.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "vector/base.hpp"

namespace jx {

// Runs of up to this many bytes are worth no call.
inline constexpr size_t kShortRunBytes = 64;

template <typename T>
constexpr bool is_short_run(size_t count) {
  return count <= kShortRunBytes / sizeof(T);
}

namespace detail {

static_assert(std::endian::native == std::endian::little);
static_assert(kShortRunBytes == 4 * vector::Base::kBytes);

template <typename T>
inline T load_as(const void *from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

// The index of the first set bit's unit, of a mask with a bit for each byte.
template <typename T, typename Mask>
[[gnu::always_inline]] inline size_t first_unit(Mask mask) {
  return static_cast<size_t>(std::countr_zero(mask)) / sizeof(T);
}

// A match is a unit that equals `value`, or with kEqual false differs from it.
template <class Ops, typename T, bool kEqual>
struct ValueMatch {
  T value;
  typename Ops::Block pattern;

  explicit ValueMatch(T wanted) : value(wanted), pattern(Ops::template repeat<T>(wanted)) {}

  // All bits set in each unit that equals the value.
  typename Ops::Block equal_at(size_t index, const uint8_t *data) const {
    return Ops::template equal<T>(Ops::load(data + index * sizeof(T)), pattern);
  }
  // The same for the first word of a run and the one at `last`.
  template <typename Word>
  typename Ops::Block equal_words(size_t last, const uint8_t *data) const {
    return Ops::template equal<T>(Ops::template load_pair<Word>(data, data + last * sizeof(T)),
                                  pattern);
  }
  bool is_equal(size_t index, const uint8_t *data) const {
    return load_as<T>(data + index * sizeof(T)) == value;
  }
  static constexpr bool kWantsEqual = kEqual;
};

// A match is a unit that differs from the one at its place in another run.
template <class Ops, typename T>
struct Mismatch {
  const uint8_t *other;

  typename Ops::Block equal_at(size_t index, const uint8_t *data) const {
    return Ops::template equal<T>(Ops::load(data + index * sizeof(T)),
                                  Ops::load(other + index * sizeof(T)));
  }
  template <typename Word>
  typename Ops::Block equal_words(size_t last, const uint8_t *data) const {
    const size_t offset = last * sizeof(T);
    return Ops::template equal<T>(Ops::template load_pair<Word>(data, data + offset),
                                  Ops::template load_pair<Word>(other, other + offset));
  }
  bool is_equal(size_t index, const uint8_t *data) const {
    return load_as<T>(data + index * sizeof(T)) == load_as<T>(other + index * sizeof(T));
  }
  static constexpr bool kWantsEqual = false;
};

// The matches in a block, from what its units are equal in.
template <class Ops, class Match>
inline typename Ops::Mask matches_of(const typename Ops::Block &equal) {
  const typename Ops::Mask mask = Ops::mask(equal);
  return Match::kWantsEqual ? mask : mask ^ Ops::kAll;
}

// The blocks of a group have a match exactly when the block that this makes of them has one.
template <class Ops, class Match>
inline typename Ops::Block join(const typename Ops::Block &a, const typename Ops::Block &b) {
  return Match::kWantsEqual ? Ops::either(a, b) : Ops::both(a, b);
}

// Tells whether four blocks have a match, of which two begin at `low` and two end at `high`.
template <class Ops, typename T, class Match>
inline bool has_match(const Match &match, const uint8_t *data, size_t low, size_t high) {
  constexpr size_t kStep = Ops::kBytes / sizeof(T);
  const auto first = join<Ops, Match>(match.equal_at(low, data), match.equal_at(low + kStep, data));
  const auto second =
      join<Ops, Match>(match.equal_at(high - 2 * kStep, data), match.equal_at(high - kStep, data));
  return matches_of<Ops, Match>(join<Ops, Match>(first, second)) != 0;
}

// The same for two blocks: one begins at `low`, the other ends at `high`.
template <class Ops, typename T, class Match>
inline bool has_match_in_two(const Match &match, const uint8_t *data, size_t low, size_t high) {
  constexpr size_t kStep = Ops::kBytes / sizeof(T);
  const auto both = join<Ops, Match>(match.equal_at(low, data), match.equal_at(high - kStep, data));
  return matches_of<Ops, Match>(both) != 0;
}

// The first match, of which there is one at `index` or after it and before `end`.
template <class Ops, typename T, class Match>
inline size_t find_match(const Match &match, const uint8_t *data, size_t index, size_t end) {
  constexpr size_t kStep = Ops::kBytes / sizeof(T);
  for (;; index += kStep) {
    // The last block may overlap the one before: the units seen twice did not match.
    if (index > end - kStep) index = end - kStep;
    const auto mask = matches_of<Ops, Match>(match.equal_at(index, data));
    if (mask != 0) return index + first_unit<T>(mask);
  }
}

// The first match in one block to four.
template <typename T, class Match>
[[gnu::always_inline]] inline size_t scan_short_blocks(const Match &match, const uint8_t *data,
                                                       size_t count) {
  using Ops = vector::Base;
  constexpr size_t kStep = Ops::kBytes / sizeof(T);
  if (count <= 2 * kStep) {
    if (!has_match_in_two<Ops, T>(match, data, 0, count)) [[likely]]
      return count;
  } else if (!has_match<Ops, T>(match, data, 0, count)) [[likely]] {
    return count;
  }
  return find_match<Ops, T>(match, data, 0, count);
}

// The first match in two blocks or more, by groups of four: the first at the start, the last at the
// end, and in a long run those between them on the grid of blocks. Only indices grow: a count may
// go beyond the memory if a match comes in an earlier group.
template <class Ops, typename T, class Match>
[[gnu::always_inline]] inline size_t scan_blocks(const Match &match, const uint8_t *data,
                                                 size_t count) {
  constexpr size_t kStep = Ops::kBytes / sizeof(T), kFourSteps = 4 * kStep;
  size_t index = 0, end = count < kFourSteps ? count : kFourSteps;
  if (!has_match<Ops, T>(match, data, 0, end)) {
    if (end == count) return count;
    index = kFourSteps;
    if (count > 2 * kFourSteps) [[unlikely]] {
      index -= reinterpret_cast<uintptr_t>(data) % Ops::kBytes / sizeof(T);
      while (count - index > kFourSteps &&
             !has_match<Ops, T>(match, data, index, index + kFourSteps)) {
        index += kFourSteps;
      }
      const bool is_in_two = count - index <= 2 * kStep;
      if (is_in_two && !has_match_in_two<Ops, T>(match, data, count - 2 * kStep, count)) {
        return count;
      }
    }
    end = count - index > kFourSteps ? index + kFourSteps : count;
    if (end == count && !has_match<Ops, T>(match, data, count - kFourSteps, count)) return count;
  }
  return find_match<Ops, T>(match, data, index, end);
}

// The first match in two words, which may overlap.
template <typename Word, typename T, class Match>
[[gnu::always_inline]] inline size_t scan_two_words(const Match &match, const uint8_t *data,
                                                    size_t count) {
  using Ops = vector::Base;
  constexpr size_t kStep = sizeof(Word) / sizeof(T);
  constexpr typename Ops::Mask kBothWords = (1u << 2 * sizeof(Word)) - 1;
  const size_t last = count - kStep;
  const auto equal = match.template equal_words<Word>(last, data);
  const auto mask = matches_of<Ops, Match>(equal) & kBothWords;
  if (mask == 0) [[likely]]
    return count;
  const size_t index = first_unit<T>(mask);
  return index < kStep ? index : last + index - kStep;
}

// The first match among fewer units than a block.
template <typename T, class Match>
[[gnu::always_inline]] inline size_t scan_few(const Match &match, const uint8_t *data,
                                              size_t count) {
  if (count >= 8 / sizeof(T)) return scan_two_words<uint64_t, T>(match, data, count);
  if constexpr (sizeof(T) < 4) {
    if (count >= 4 / sizeof(T)) return scan_two_words<uint32_t, T>(match, data, count);
  }
  size_t index = 0;
  while (index < count && match.is_equal(index, data) != Match::kWantsEqual) ++index;
  return index;
}

// The first match in at most kShortRunBytes.
template <typename T, class Match>
[[gnu::always_inline]] inline size_t scan_short_run(const Match &match, const uint8_t *data,
                                                    size_t count) {
  if (count < vector::Base::kBytes / sizeof(T)) [[unlikely]]
    return scan_few<T>(match, data, count);
  return scan_short_blocks<T>(match, data, count);
}

}  // namespace detail

// The index of the first of `count` units that equals `value`, or differs from it with kEqual
// false; `count` if there is none. At most kShortRunBytes. The units need no alignment.
template <typename T, bool kEqual = true>
[[gnu::always_inline]] inline size_t scan_short(const void *buffer, size_t count, T value) {
  const detail::ValueMatch<vector::Base, T, kEqual> match(value);
  return detail::scan_short_run<T>(match, static_cast<const uint8_t *>(buffer), count);
}

// The same for any count.
template <typename T, bool kEqual = true>
inline size_t scan_units(const void *buffer, size_t count, T value) {
  if (is_short_run<T>(count)) return scan_short<T, kEqual>(buffer, count, value);
  const detail::ValueMatch<vector::Base, T, kEqual> match(value);
  return detail::scan_blocks<vector::Base, T>(match, static_cast<const uint8_t *>(buffer), count);
}

// The index of the first unit in which two runs differ, `count` if they are equal. At most
// kShortRunBytes.
template <typename T>
[[gnu::always_inline]] inline size_t mismatch_short(const void *first, const void *second,
                                                    size_t count) {
  const detail::Mismatch<vector::Base, T> match = {static_cast<const uint8_t *>(second)};
  return detail::scan_short_run<T>(match, static_cast<const uint8_t *>(first), count);
}

// The order of two runs by the units at `index`, which differ: 1 or -1. Bytes compare as unsigned
// numbers, 32-bit units by the sign of their wrapped difference.
template <typename T>
[[gnu::always_inline]] inline int32_t order_at(const void *first, const void *second,
                                               size_t index) {
  T a, b;
  std::memcpy(&a, static_cast<const uint8_t *>(first) + index * sizeof(T), sizeof a);
  std::memcpy(&b, static_cast<const uint8_t *>(second) + index * sizeof(T), sizeof b);
  if constexpr (sizeof(T) == 1) return a > b ? 1 : -1;
  return static_cast<int32_t>(static_cast<uint32_t>(a) - b) > 0 ? 1 : -1;
}

}  // namespace jx
