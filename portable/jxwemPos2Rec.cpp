// Positions are byte offsets; there are no record numbers to turn them into.
#include "jx/wem.h"

extern "C" JXStatus jxwemposition2record(JXFile *, ...) { return JXWEM_E_NOTSUPPORTED; }
