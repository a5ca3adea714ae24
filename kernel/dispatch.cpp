// Chooses the bodies of kernel/long_runs.hpp for the processor that the module is loaded on.
//
// Each routine here is an indirect function: the dynamic linker calls its resolver for the address
// to put into kLongRuns. It does so before it is done with the module, so resolvers touch nothing
// that has to be relocated and call nothing, not even what sanitizers insert.
#include "kernel/long_runs.hpp"
#include "vector/processor.hpp"

#if !JX_ONE_LEVEL

namespace {

using jx::LongRunsOf;
using jx::vector::Level;
using BaseRuns = LongRunsOf<jx::vector::Base>;
using Avx2Runs = LongRunsOf<jx::vector::Avx2>;

#if defined(__clang__)
#define JX_NO_SANITIZERS __attribute__((no_sanitize("all")))
#else
#define JX_NO_SANITIZERS __attribute__((no_sanitize("address", "thread", "undefined")))
#endif
#define JX_RESOLVER \
  JX_NO_SANITIZERS __attribute__((used, no_stack_protector, no_profile_instrument_function))

// Whether the processor was asked, and has AVX2. One answer serves all resolvers: asking takes a
// microsecond where the processor is a virtual one.
bool is_known = false;
bool has_avx2 = false;

[[gnu::always_inline]] inline bool knows_avx2() {
  if (!is_known) {
    has_avx2 = jx::vector::processor_level() >= Level::avx2;
    is_known = true;
  }
  return has_avx2;
}

// Declares the indirect function of a routine, and defines its resolver.
#define JX_CHOOSE(routine)                                                     \
  extern "C" JX_RESOLVER decltype(&BaseRuns::routine) jx_resolve_##routine() { \
    return knows_avx2() ? &Avx2Runs::routine : &BaseRuns::routine;             \
  }                                                                            \
  __attribute__((ifunc("jx_resolve_" #routine))) decltype(BaseRuns::routine) routine

JX_CHOOSE(find_byte);
JX_CHOOSE(find_other_byte);
JX_CHOOSE(find_char);
JX_CHOOSE(find_other_char);
JX_CHOOSE(compare_bytes);
JX_CHOOSE(compare_chars);
JX_CHOOSE(fill_chars);
JX_CHOOSE(copy_bytes);
JX_CHOOSE(length_of_bytes);
JX_CHOOSE(length_of_chars);
JX_CHOOSE(note_bytes);

}  // namespace

constinit const jx::LongRuns jx::kLongRuns = {
    find_byte,  find_other_byte, find_char,       find_other_char, compare_bytes, compare_chars,
    fill_chars, copy_bytes,      length_of_bytes, length_of_chars, note_bytes,
};

#endif
