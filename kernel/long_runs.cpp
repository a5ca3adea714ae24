// The bodies for every processor of this build.
#include "kernel/long_runs_bodies.hpp"

template struct jx::LongRunsOf<jx::vector::Base>;
