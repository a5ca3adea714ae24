// Full paths of the members of one directory, as the lists need them.
#pragma once

#include "posix/path.hpp"

namespace [[gnu::visibility("hidden")]] jx {

// Builds the full paths of one directory's members, each as bkwembuildpath would. The text before
// the names is expanded once, unless it holds variables; a name that the expansion would not change
// is appended to it without another call.
class MemberPaths {
 public:
  // The directory's text is lent for the object's lifetime.
  MemberPaths(JXInstance *instance, Text directory);

  // Tells whether a member's path is the prefix and the unchanged name.
  bool is_plain(Text name) const;
  // Tells whether plain paths lead into the directory of that expanded path.
  bool lead_into(Text directory) const;
  // The path of a member as a block of the pool. 0, or a status of bkwembuildpath.
  JXStatus build(Text name, JXPool *pool, OwnedPath *path_out) const;

 private:
  JXInstance *instance_;
  Text directory_;
  JXStatus status_ = JX_OK;    // why there is no path into the directory
  uint32_t joined_chars_ = 0;  // the directory as given, its separator included
  OwnedPath prefix_;           // the expanded directory and its slash; empty: none to use
};

}  // namespace jx
