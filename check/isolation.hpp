// Runs a check so that a slot which crashes or hangs is a finding.
#pragma once

#include "check/probe.hpp"

namespace jxcheck {

// Whether the program is watched by the address sanitizer, which keeps freed memory for a while and
// needs descriptors of its own.
bool is_sanitized();

// Runs the function of a check and stores its outcome, in a child process if the probe is to be
// alone. False when there is no child process to be had.
bool run_isolated(void (*function)(Probe &), Probe &probe, Outcome *outcome);

}  // namespace jxcheck
