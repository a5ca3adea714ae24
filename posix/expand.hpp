// The steps of path expansion, on terminated text in the platform encoding.
#pragma once

#include <cstdint>

#include "jx/base.h"

namespace [[gnu::visibility("hidden")]] jx {

inline constexpr uint32_t kPathAreaBytes = 1024;  // the longest text while a path is expanded
inline constexpr uint32_t kHomeAreaBytes = 1024;  // room for a home directory, terminator included
inline constexpr uint32_t kVariableNameBytes = 127;  // room for a variable's name, likewise
inline constexpr uint32_t kVariableValueBytes =
    1024;                                       // room for a value still to be expanded, likewise
inline constexpr uint32_t kVariableDepth = 16;  // how deep values may refer to variables

// Expands the variables of source into destination; limit is the last byte that may be written,
// and output beyond it is dropped. Returns the number of bytes written, without a terminator.
// *status_out receives 0, or JXWEM_E_NAMETOOLONG when a name or the rest of a value does not fit
// its area or values nest too deep.
uint32_t expand_env(const char *source, char *destination, char *limit, JXStatus *status_out);

// Copies the home directory of a user, by name or by number, into an area of kHomeAreaBytes.
// 0, or 1 when the user database has no entry or its home directory does not fit.
int vvzgthm(const char *user_name, char *destination);
int vvzgthmu(uint32_t user_id, char *destination);

}  // namespace jx
