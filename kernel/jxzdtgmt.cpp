// The current time in the host's epoch, and what must be added for the host's time zone.
#include "jx/module.h"
#include "jx/runtime.h"

double jxzdtgmt(double *gmt_offset_out) {
  const JXHost *host = Exported_JXHandle;
  // The zone counts seconds west of UTC; in 64 bits it can be negated whatever its value, and as an
  // integer 0 stays without a sign.
  if (gmt_offset_out) *gmt_offset_out = host ? static_cast<double>(-int64_t{host->time_zone}) : 0.0;
  return bkztod() + JX_SECONDS_1960_TO_1970;
}
