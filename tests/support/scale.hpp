// The number of repetitions of random tests.
#pragma once

#include <cstdint>
#include <cstdlib>

namespace jx::test {

// Repetitions of a random test: `count`, or a twentieth of it under a sanitizer, multiplied by the
// environment variable JX_TEST_SCALE.
inline int64_t scaled(int64_t count) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  count /= 20;
#endif
  const char *scale = std::getenv("JX_TEST_SCALE");
  return scale ? static_cast<int64_t>(static_cast<double>(count) * std::atof(scale)) : count;
}

}  // namespace jx::test
