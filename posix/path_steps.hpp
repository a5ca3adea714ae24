// Operations on a path in the platform encoding that several routines need. Each is defined beside
// the exported routine that it implements.
#pragma once

#include "jx/module.h"

namespace [[gnu::visibility("hidden")]] jx {

// Tells whether a path names anything. 0, or a status of kStatErrors.
JXStatus test_exists(JXInstance *instance, const char *path);
// Tells what a name, relative to a directory's descriptor or AT_FDCWD, is: 0 for a directory,
// kNotDirectory for anything else that exists, JXWEM_E_NOPATH when missing, JXWEM_E_ACCESS,
// JXWEM_E_SYSTEM.
inline constexpr JXStatus kNotDirectory = 1;
JXStatus test_directory(JXInstance *instance, int directory_fd, const char *name);
// Makes one directory; an existing one is success. The statuses of bkwemmakedirectory.
JXStatus make_directory(JXInstance *instance, const char *path);

}  // namespace jx
