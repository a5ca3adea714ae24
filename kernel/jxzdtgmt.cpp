// jxzdtgmt: the time since 1960, and the offset of the host's time zone.
#include "jx/module.h"
#include "jx/runtime.h"

extern "C" double jxzdtgmt(double *gmt_offset_out) {
  const JXHost *host = Exported_JXHandle;
  // The zone counts seconds west of UTC. Negated as a 64-bit integer, INT32_MIN does not overflow
  // and 0 does not become -0.0.
  if (gmt_offset_out) *gmt_offset_out = host ? static_cast<double>(-int64_t{host->time_zone}) : 0.0;
  return bkztod() + JX_SECONDS_1960_TO_1970;
}
