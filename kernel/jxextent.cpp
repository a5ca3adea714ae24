// The host kernel handle of the process.
#include "jx/module.h"

extern "C" {

constinit JXHost *Exported_JXHandle = nullptr;

void jxextent(JXHost *host) { Exported_JXHandle = host; }

}  // extern "C"
