// Single-byte encodings in blocks: runs of ASCII where the page agrees with it, and eight table
// look-ups without a branch between them. Text in blocks ends before the first byte without a
// character or character without a byte.
// Measured by bench/transcode_bench for European lines of 80 characters, iconv is 1 (i386, x86-64):
// 0.98, 0.63 decoded and 0.84, 0.78 encoded.
#pragma once

#include <type_traits>

#include "host/transcode_runs.hpp"

namespace jxhost {

// Whether a pair of encodings goes through the table of a page.
template <typename Source, typename Target>
inline constexpr bool kHasPage =
    std::disjunction_v<std::is_same<Source, PageCodec>, std::is_same<Target, PageCodec>>;

constexpr size_t kPageBlock = 8;

// Decodes eight bytes. Returns the bits that their characters have; kNone when one has none.
template <typename Target>
[[gnu::always_inline]] inline JXChar decode_block(const CodePage &page, const uint8_t *in,
                                                  uint8_t *out) {
  JXChar bits = 0;
#pragma GCC unroll 8
  for (size_t i = 0; i < kPageBlock; ++i) {
    const JXChar c = page.character(in[i]);
    Target::store(out + i * sizeof(c), c);
    bits |= c;
  }
  return bits;
}

// Encodes eight characters. Returns the bits that they have; kNone when the page lacks one.
template <typename Source>
[[gnu::always_inline]] inline JXChar encode_block(const CodePage &page, const uint8_t *in,
                                                  uint8_t *out) {
  JXChar bits = 0;
  JXChar differences = 0;
#pragma GCC unroll 8
  for (size_t i = 0; i < kPageBlock; ++i) {
    const JXChar c = Source::load(in + i * sizeof(c));
    out[i] = page.byte(c);
    differences |= page.character(out[i]) ^ c;
    bits |= c;
  }
  return differences == 0 ? bits : CodePage::kNone;
}

// Converts blocks until one has a character that needs a decision or there is no room. The last
// block overlaps the one before it.
template <typename Source, typename Target>
void convert_page_blocks(const CodePage &page, Cursor &at) {
  constexpr bool kDecodes = std::is_same_v<Source, PageCodec>;
  const size_t units =
      std::min(at.in_bytes() / Source::kUnitBytes, at.out_bytes() / Target::kUnitBytes);
  if (units < kPageBlock) return;
  size_t done = 0;
  for (size_t plain = 0; done < units;) {
    const size_t begin = std::min(done, units - kPageBlock);
    const uint8_t *const in = at.in + begin * Source::kUnitBytes;
    uint8_t *const out = at.out + begin * Target::kUnitBytes;
    JXChar bits;
    if constexpr (kDecodes) bits = decode_block<Target>(page, in, out);
    if constexpr (!kDecodes) bits = encode_block<Source>(page, in, out);
    if (bits == CodePage::kNone) break;
    done = begin + kPageBlock;
    // Two blocks of ASCII are probably the start of a run.
    plain = bits < 0x80 && page.has_ascii() ? plain + 1 : 0;
    if (plain < 2) continue;
    plain = 0;
    const uint8_t *const run = at.in + done * Source::kUnitBytes;
    uint8_t *const to = at.out + done * Target::kUnitBytes;
    if constexpr (kDecodes) done += copy_units<Ascii, Target>(run, to, units - done);
    if constexpr (!kDecodes) done += copy_units<Source, Ascii>(run, to, units - done);
  }
  at.in += done * Source::kUnitBytes;
  at.out += done * Target::kUnitBytes;
}

}  // namespace jxhost
