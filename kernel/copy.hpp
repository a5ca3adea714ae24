// Copies for short runs of unknown length: records, line ends, text, digits. For these, memcpy's
// call and dispatch cost more than the copy.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

namespace jx {

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

// Copies `count` bytes between ranges that do not overlap.
inline void copy_bytes(void *destination, const void *source, size_t count) {
  constexpr size_t kLongest = 256;  // above it, memcpy is faster
  auto *to = static_cast<uint8_t *>(destination);
  const auto *from = static_cast<const uint8_t *>(source);
  if (count > kLongest) {
    std::memcpy(to, from, count);
  } else if (count >= 16) {
    size_t done = 0;
    for (; done + 32 <= count; done += 16) {
      _mm_storeu_si128(reinterpret_cast<__m128i *>(to + done),
                       _mm_loadu_si128(reinterpret_cast<const __m128i *>(from + done)));
    }
    detail::copy_ends<__m128i>(to + done, from + done, count - done);
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
