// jxwemrecord2position, the record_to_position slot: there are no record numbers.
#include "jx/exports/portable.h"

extern "C" JXStatus jxwemrecord2position(JXFile *, ...) { return JXWEM_E_NOTSUPPORTED; }
