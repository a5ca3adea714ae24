// jxzspos: search for a character.
#include "jx/runtime.h"
#include "kernel/runs.hpp"

extern "C" int32_t jxzspos(const JXChar *buffer, int32_t count, JXChar value) {
  if (!buffer || count <= 0) return -1;
  const auto chars = static_cast<uint32_t>(count);
  return jx::find_unit<JXChar, true>(buffer, chars, value);
}
