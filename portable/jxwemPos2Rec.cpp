// jxwemposition2record, the position_to_record slot: positions are byte offsets, not record
// numbers.
#include "jx/exports/portable.h"

extern "C" JXStatus jxwemposition2record(JXFile *, ...) { return JXWEM_E_NOTSUPPORTED; }
