// Routines on their way: a weak answer until the real one is linked.
#define PENDING(name) \
  extern "C" __attribute__((weak, visibility("default"))) unsigned name() { return 0x803fc004u; }
PENDING(jxAtomicAdd)
PENDING(jxAtomicSet)
PENDING(jxzFormatBuff)
extern "C" __attribute__((weak, visibility("default"))) double jxzdtgmt(double *offset) {
  if (offset) *offset = 0;
  return 0;
}
