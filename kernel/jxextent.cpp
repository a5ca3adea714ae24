// jxextent: the host handle that the whole module uses.
#include "jx/module.h"

extern "C" {

constinit JXHost *Exported_JXHandle = nullptr;

void jxextent(JXHost *host) { Exported_JXHandle = host; }

}  // extern "C"
