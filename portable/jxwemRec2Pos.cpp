// There are no record numbers that could become positions.
#include "jx/wem.h"

extern "C" JXStatus jxwemrecord2position(JXFile *, ...) { return JXWEM_E_NOTSUPPORTED; }
