// jxzbytrv and jxztchrv: reversal of bytes and of 32-bit units, in place.
#include <algorithm>

#include "jx/runtime.h"

extern "C" {

int32_t jxzbytrv(void *bytes, uint32_t count) {
  auto *first = static_cast<unsigned char *>(bytes);
  std::reverse(first, first + count);
  return 0;
}

void jxztchrv(uint32_t *units, uint32_t count) { std::reverse(units, units + count); }

}  // extern "C"
