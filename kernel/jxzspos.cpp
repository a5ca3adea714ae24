// jxzspos: search for a character.
#include "jx/runtime.h"
#include "kernel/scan.hpp"

extern "C" int32_t jxzspos(const JXChar *buffer, int32_t count, JXChar value) {
  if (!buffer || count <= 0) return -1;
  const auto units = static_cast<uint32_t>(count);
  const size_t index = jx::scan_units<uint32_t>(buffer, units, value);
  return index == units ? -1 : static_cast<int32_t>(index);
}
