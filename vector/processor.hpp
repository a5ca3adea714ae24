// What the running processor offers, and which bodies of the vector routines this build has.
//
// A routine is written once, as a template over a set of operations: Plain (plain C++, any
// processor), Sse2 (the least that an x86 build assumes; elsewhere through a translation of the
// intrinsics) or Avx2. Files named *_avx2.cpp and *_avx512.cpp are compiled for such processors;
// their code runs only where processor_level() says so. They define nothing that the linker could
// merge with code of other files.
#pragma once

#if defined(__i386__) || defined(__x86_64__)
#include <cpuid.h>
#define JX_VECTOR_X86 1
#else
#define JX_VECTOR_X86 0
#endif

namespace jx::vector {

enum class Level { base, avx2, avx512 };

namespace detail {

#if JX_VECTOR_X86 && !defined(JX_VECTOR_PLAIN)
// Tells whether the system saves the registers of a mask of state components.
[[gnu::always_inline]] inline bool saves_registers(unsigned wanted) {
  unsigned low, high;
  asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return (low & wanted) == wanted;
}
#endif

}  // namespace detail

// The best level of the processor. Inlined into its callers and without calls, so that it can run
// while the program is still being linked.
[[gnu::always_inline]] inline Level processor_level() {
#if JX_VECTOR_X86 && !defined(JX_VECTOR_PLAIN)
  // Not covered: which way this goes is up to the processor.
  constexpr unsigned kOsSavesState = bit_OSXSAVE | bit_POPCNT;
  constexpr unsigned kAvx2 = bit_AVX2 | bit_BMI | bit_BMI2;
  constexpr unsigned kAvx512 = bit_AVX512F | bit_AVX512DQ | bit_AVX512BW | bit_AVX512VL;
  constexpr unsigned kAvx512Bytes = bit_AVX512VBMI | bit_AVX512VBMI2;
  constexpr unsigned kVectors = 0x6, kMasksAndWideVectors = 0xE6;  // state components
  unsigned a, b, c, d;
  __cpuid(0, a, b, c, d);
  if (a < 7) return Level::base;
  __cpuid(1, a, b, c, d);
  if ((c & kOsSavesState) != kOsSavesState || !detail::saves_registers(kVectors)) {
    return Level::base;
  }
  __cpuid_count(7, 0, a, b, c, d);
  if ((b & kAvx2) != kAvx2) return Level::base;
  const bool is_wide = (b & kAvx512) == kAvx512 && (c & kAvx512Bytes) == kAvx512Bytes &&
                       detail::saves_registers(kMasksAndWideVectors);
  return is_wide ? Level::avx512 : Level::avx2;
  // Covered.
#else
  return Level::base;
#endif
}

// Tells the processor that the caller waits in a loop for another thread.
[[gnu::always_inline]] inline void pause() {
#if JX_VECTOR_X86
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("isb" ::: "memory");  // "yield" does nothing on most processors
#endif
}

}  // namespace jx::vector
