// There are no record numbers that could become positions.
#include "jx/exports/portable.h"

extern "C" JXStatus jxwemrecord2position(JXFile *, ...) { return JXWEM_E_NOTSUPPORTED; }
