// skzfJXString: a JXChar string copied into a buffer.
#include <cstring>

#include "jx/runtime.h"
#include "kernel/text.hpp"

extern "C" JXStatus skzfJXString(const JXChar *source, uint32_t length_chars, JXChar *destination,
                                 int32_t capacity_chars, uint32_t *count_out) {
  if (!source) length_chars = 0;
  if (count_out) *count_out = length_chars;
  if (int64_t{length_chars} > capacity_chars) return JX_E_TRUNCATED;
  if (length_chars != 0) std::memcpy(destination, source, size_t{length_chars} * jx::kJXCharBytes);
  return JX_OK;
}
