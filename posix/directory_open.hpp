// Opening the stream of a directory handle.
#pragma once

#include "jx/module.h"

namespace [[gnu::visibility("hidden")]] jx {

// The name that the copy of a tree gives its directory handles.
inline constexpr char kCopyHandleName[] = "BKWEMCOPY";

// Tells whether the copy of a tree opens a directory handle, whose path must not be expanded: the
// names in it are those of the tree. The slot it calls has no room for a switch, so the address of
// the name is the switch; a host may use the same text, but cannot have the same pointer.
inline bool is_copy_handle(const char *name8) { return name8 == kCopyHandleName; }

// Opens the stream of a directory handle, by its path: literal or expanded. The statuses of
// bkwemopendir.
JXStatus open_stream(JXDirectory *directory, bool is_literal);

}  // namespace jx
