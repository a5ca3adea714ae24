// bkwembyte2position, the byte_to_position slot: a byte offset is a position.
#include "jx/exports/posix.h"

extern "C" JXStatus bkwembyte2position(JXFile *, const int64_t *offset, int64_t *position_out) {
  *position_out = *offset;
  return JX_OK;
}
