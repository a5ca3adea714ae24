// Threads for the checks.
#pragma once

#include <cstdint>

namespace jxcheck {

inline constexpr uint32_t kThreadCount = 8;

// Calls the function in eight threads at once, each with its number, and waits for all. False when
// the system has not as many.
bool run_threads(void (*function)(void *argument, uint32_t number), void *argument);

void pause_milliseconds(uint32_t count);

}  // namespace jxcheck
