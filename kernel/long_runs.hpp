// The routines for runs longer than kShortRunBytes, and the choice of their bodies: each has one
// for every level of processor that the build knows (vector/processor.hpp).
//
// The choice is made once, while the module is being loaded: kLongRuns is a table of addresses that
// the dynamic linker asks dispatch.cpp for, and read-only afterwards. A call costs what any call
// through the table of addresses costs. With one level only, the calls are direct.
//
// Measured with AVX2, absent units or equal runs, in times of the C library's routine (wmemchr,
// wmemset, wmemcmp, memchr, memcmp): 1,024 units i386 0.17, 0.36, 0.31, 0.58, 0.39;
// x86-64 1.0, 1.0, 1.05, 0.8, 1.15. There that one is as wide; on i386 it has SSE2 or SSE4 only. It
// is called for lengths alone: a comparison by it may read on after the first difference.
#pragma once

#include <cstdint>

#include "vector/base.hpp"

#if defined(JX_VECTOR_PLAIN) || !(defined(__i386__) || defined(__x86_64__))
#define JX_ONE_LEVEL 1
#else
#define JX_ONE_LEVEL 0
#endif

// For jumps to other routines: on i386 they are out of line, so that a short run needs no stack
// frame and no table of addresses.
#if defined(__i386__)
#define JX_APART [[gnu::noinline]]
#else
#define JX_APART
#endif

namespace jx::vector {
struct Avx2;
}

namespace [[gnu::visibility("hidden")]] jx {

// The bodies over one set of operations. Counts are in units and more than kShortRunBytes. The
// scans return an index, or -1 for none; the arguments come in the order of the exported routines,
// so that these end with a jump.
template <class Ops>
struct LongRunsOf {
  static int32_t find_byte(const void *buffer, uint32_t count, uint8_t value);
  static int32_t find_other_byte(const void *buffer, uint32_t count, uint8_t value);
  static int32_t find_char(const void *buffer, uint32_t count, uint32_t value);
  static int32_t find_other_char(const void *buffer, uint32_t count, uint32_t value);
  static int32_t compare_bytes(const void *first, const void *second, uint32_t count);
  static int32_t compare_chars(const void *first, const void *second, uint32_t count);
  static void fill_chars(uint32_t *buffer, uint32_t value, uint32_t count);
  // Between ranges that do not overlap.
  static void copy_bytes(const void *source, void *destination, uint32_t count);
  // The units of a string before its zero, of any number. For 32-bit programs.
  static uint32_t length_of_bytes(const void *string);
  static uint32_t length_of_chars(const void *string);
  // Notes where bytes of `data` from *offset up to `end` equal `value`: their offsets, which it
  // returns the number of. Stops after kManyPlaces or more, and moves *offset there. Any length.
  static uint32_t note_bytes(const uint8_t *data, uint32_t *offset, uint32_t end, uint8_t value,
                             uint32_t *places);
};

inline constexpr uint32_t kManyPlaces = 32;
inline constexpr uint32_t kPlacesRoom = kManyPlaces + 66;  // of note_bytes: two blocks, two spare

extern template struct LongRunsOf<vector::Base>;
#if !JX_ONE_LEVEL
extern template struct LongRunsOf<vector::Avx2>;
#endif

// The bodies that were chosen, by the names above.
struct LongRuns {
  decltype(&LongRunsOf<vector::Base>::find_byte) find_byte;
  decltype(&LongRunsOf<vector::Base>::find_other_byte) find_other_byte;
  decltype(&LongRunsOf<vector::Base>::find_char) find_char;
  decltype(&LongRunsOf<vector::Base>::find_other_char) find_other_char;
  decltype(&LongRunsOf<vector::Base>::compare_bytes) compare_bytes;
  decltype(&LongRunsOf<vector::Base>::compare_chars) compare_chars;
  decltype(&LongRunsOf<vector::Base>::fill_chars) fill_chars;
  decltype(&LongRunsOf<vector::Base>::copy_bytes) copy_bytes;
  decltype(&LongRunsOf<vector::Base>::length_of_bytes) length_of_bytes;
  decltype(&LongRunsOf<vector::Base>::length_of_chars) length_of_chars;
  decltype(&LongRunsOf<vector::Base>::note_bytes) note_bytes;
};

#if JX_ONE_LEVEL
using BaseRuns = LongRunsOf<vector::Base>;
inline constexpr LongRuns kLongRuns = {
    BaseRuns::find_byte,       BaseRuns::find_other_byte, BaseRuns::find_char,
    BaseRuns::find_other_char, BaseRuns::compare_bytes,   BaseRuns::compare_chars,
    BaseRuns::fill_chars,      BaseRuns::copy_bytes,      BaseRuns::length_of_bytes,
    BaseRuns::length_of_chars, BaseRuns::note_bytes,
};
#else
extern const LongRuns kLongRuns;
#endif

}  // namespace jx
