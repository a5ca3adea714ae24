// The current time in the host's epoch, and what must be added for the host's time zone.
#include "jx/wem.h"
#include "kernel/kernel.hpp"

double jxzdtgmt(double *gmt_offset_out) {
  const JXHost *host = Exported_JXHandle;
  // The zone counts seconds west of UTC; as a double it can be negated whatever its value.
  if (gmt_offset_out) *gmt_offset_out = host ? -static_cast<double>(host->time_zone) : 0.0;
  return bkztod() + jx::kEpochShift;
}
