// Opening the stream of a directory handle.
#pragma once

#include "jx/module.h"

namespace jx {

// The name that the copy of a tree gives its directory handles. Handles opened with this very
// pointer, which no host has, use their path as it is: the names in it are those of the tree.
inline constexpr char kCopyHandleName[] = "BKWEMCOPY";

// Opens the stream of a directory handle, by its path as it is or expanded. The statuses of
// bkwemopendir.
JXStatus open_stream(JXDirectory *directory, bool is_literal);

}  // namespace jx
