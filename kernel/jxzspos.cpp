// jxzspos: search for a character.
#include "jx/runtime.h"
#include "kernel/runs.hpp"

extern "C" int32_t jxzspos(const JXChar *buffer, int32_t count, JXChar value) {
  if (!buffer) return -1;
  const auto chars = static_cast<uint32_t>(count);
  if (!jx::is_short_run<JXChar>(chars) && count < 0) [[unlikely]]
    return -1;
  return jx::find_unit<JXChar, true>(buffer, chars, value);
}
