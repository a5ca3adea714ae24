// The bodies for processors with AVX2.
#include "kernel/long_runs_bodies.hpp"
#include "vector/avx2.hpp"

template struct jx::LongRunsOf<jx::vector::Avx2>;
