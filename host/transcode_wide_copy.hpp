// UTF-8 into UTF-8: checked in blocks, then copied.
#pragma once

#include <algorithm>
#include <cstring>

#include "host/transcode_wide_utf8.hpp"

namespace jxhost {

// How many bytes of a text are whole, valid characters; up to the block with the first that is not.
template <typename Ops>
[[gnu::always_inline]] inline size_t valid_utf8_bytes(const uint8_t *in, size_t bytes) {
  constexpr size_t kAsciiBytes = 4 * Ops::kLanes;
  size_t done = 0;
  while (done != bytes) {
    const size_t left = bytes - done;
    const bool is_full = left >= Ops::kBytes;
    const size_t count = is_full ? whole_utf8_bytes<Ops>(in + done) : left;
    const auto block =
        is_full ? Ops::load_start(in + done, count) : Ops::load_block(in + done, count);
    const auto top_bits = Ops::top_bits(block);
    if (top_bits == 0) {
      done += count;
      while (bytes - done >= kAsciiBytes && Ops::is_ascii(in + done)) done += kAsciiBytes;
      continue;
    }
    typename Ops::ByteMask tails;
    if (!check_utf8<Ops>(block, Ops::upper_digits(block), top_bits, tails)) break;
    done += count;
  }
  return done;
}

template <typename Ops>
void copy_wide_utf8(Cursor &cursor) {
  constexpr size_t kSliceBytes = 4096;  // still in the fast cache when they are copied
  for (;;) {
    const size_t slice = std::min({cursor.in_bytes(), cursor.out_bytes(), kSliceBytes});
    const size_t valid = valid_utf8_bytes<Ops>(cursor.in, slice);
    if (valid == 0) return;
    std::memcpy(cursor.out, cursor.in, valid);
    cursor.in += valid;
    cursor.out += valid;
  }
}

}  // namespace jxhost
