// bkwemposition2byte, the position_to_byte slot: a position is a byte offset.
#include "jx/exports/posix.h"

extern "C" JXStatus bkwemposition2byte(JXFile *, const int64_t *position, int64_t *offset_out) {
  *offset_out = *position;
  return JX_OK;
}
