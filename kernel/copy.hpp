// Copies for short runs of unknown length: records, line ends, text, digits. For these, memcpy's
// call and dispatch cost more than the copy.
#pragma once

#include <cstdint>
#include <cstring>

#include "vector/base.hpp"

namespace jx {

// Runs of up to this many bytes are worth no call.
inline constexpr size_t kShortCopyBytes = 4 * vector::Base::kBytes;

namespace detail {

// Copies sizeof(T) to 2 * sizeof(T) bytes as two pieces, which may overlap.
template <typename T>
inline void copy_ends(uint8_t *to, const uint8_t *from, size_t count) {
  T first, last;
  std::memcpy(&first, from, sizeof(T));
  std::memcpy(&last, from + count - sizeof(T), sizeof(T));
  std::memcpy(to, &first, sizeof(T));
  std::memcpy(to + count - sizeof(T), &last, sizeof(T));
}

}  // namespace detail

// Copies at most kShortCopyBytes. The ranges may overlap: all is loaded before any is stored.
[[gnu::always_inline]] inline void copy_short(void *destination, const void *source, size_t count) {
  using Ops = vector::Base;
  constexpr size_t kBlock = Ops::kBytes;
  auto *to = static_cast<uint8_t *>(destination);
  const auto *from = static_cast<const uint8_t *>(source);
  if (count >= kBlock) {
    const auto first = Ops::load(from);
    const auto last = Ops::load(from + count - kBlock);
    if (count > 2 * kBlock) {
      const auto second = Ops::load(from + kBlock);
      const auto third = Ops::load(from + count - 2 * kBlock);
      Ops::store(to + kBlock, second);
      Ops::store(to + count - 2 * kBlock, third);
    }
    Ops::store(to, first);
    Ops::store(to + count - kBlock, last);
  } else if (count >= 8) {
    detail::copy_ends<uint64_t>(to, from, count);
  } else if (count >= 4) {
    detail::copy_ends<uint32_t>(to, from, count);
  } else if (count >= 2) {
    detail::copy_ends<uint16_t>(to, from, count);
  } else if (count == 1) {
    *to = *from;
  }
}

// Copies two blocks or more between ranges that do not overlap: whole groups of four, the last of
// which may overlap. Up to two groups there is no branch on the length.
template <class Ops>
[[gnu::always_inline]] inline void copy_blocks(void *destination, const void *source,
                                               size_t count) {
  constexpr size_t kStep = Ops::kBytes, kFourSteps = 4 * kStep;
  auto *to = static_cast<uint8_t *>(destination);
  const auto *from = static_cast<const uint8_t *>(source);
  // Two blocks begin at `low` and two end at `high`.
  const auto copy_group = [=](size_t low, size_t high) {
    const auto first = Ops::load(from + low);
    const auto second = Ops::load(from + low + kStep);
    const auto third = Ops::load(from + high - 2 * kStep);
    const auto fourth = Ops::load(from + high - kStep);
    Ops::store(to + low, first);
    Ops::store(to + low + kStep, second);
    Ops::store(to + high - 2 * kStep, third);
    Ops::store(to + high - kStep, fourth);
  };
  if (count <= kFourSteps) return copy_group(0, count);
  copy_group(0, kFourSteps);
  for (size_t done = kFourSteps; count - done > kFourSteps; done += kFourSteps) {
    copy_group(done, done + kFourSteps);
  }
  copy_group(count - kFourSteps, count);
}

// Up to this many bytes, blocks copied inline are as fast as memcpy.
inline constexpr size_t kInlineCopyBytes = 256;

// Copies at most kInlineCopyBytes between ranges that do not overlap.
[[gnu::always_inline]] inline void copy_inline(void *destination, const void *source,
                                               size_t count) {
  if (count <= kShortCopyBytes) return copy_short(destination, source, count);
  copy_blocks<vector::Base>(destination, source, count);
}

// The same for any count.
inline void copy_bytes(void *destination, const void *source, size_t count) {
  if (count <= kInlineCopyBytes) return copy_inline(destination, source, count);
  std::memcpy(destination, source, count);
}

// The same for 32-bit units; a short run costs no call.
inline void copy_chars(const uint32_t *source, size_t count, uint32_t *destination) {
  constexpr size_t kStep = 4;
  constexpr size_t kLongRun = 64;
  if (count >= kLongRun) {
    std::memcpy(destination, source, count * sizeof(uint32_t));
    return;
  }
  if (count < kStep) {
    for (; count > 0; --count) *destination++ = *source++;
    return;
  }
  for (size_t done = 0; done + kStep < count; done += kStep) {
    std::memcpy(destination + done, source + done, kStep * sizeof(uint32_t));
  }
  // The last block may overlap the one before.
  const size_t last = count - kStep;
  std::memcpy(destination + last, source + last, kStep * sizeof(uint32_t));
}

}  // namespace jx
