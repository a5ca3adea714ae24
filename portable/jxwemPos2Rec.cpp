// Positions are byte offsets; there are no record numbers to turn them into.
#include "jx/exports/portable.h"

extern "C" JXStatus jxwemposition2record(JXFile *, ...) { return JXWEM_E_NOTSUPPORTED; }
