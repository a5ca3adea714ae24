// Where a name for output leads.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "cli/descriptor.hpp"

namespace cli {

// A name looked up once: a held directory and a member of it that is no link, or a descriptor that
// the program has open already.
struct Place {
  Descriptor folder;                    // may only be used to look things up in it (O_PATH)
  std::string name;                     // in the folder
  std::optional<struct ::stat> status;  // of what has the name; empty: nothing has it
  int own_fd = -1;                      // the descriptor that is meant instead
  bool is_elsewhere = false;            // the name is a link of /proc to what others have open
};

// Looks up a path, byte for byte as the system takes it, and follows the links at its end. "-" is
// standard output; /dev/stdout, /dev/fd/N, /proc/self/fd/N and links to them are the descriptor N.
// A Failure under shown's name for a directory, for a path that is not there, and for a file or
// link that another user put into a folder where anyone may put files.
Place find_place(const std::string &path, const std::string &shown);

// Opens what has the name. A Failure when that fails, or when something else has it by now.
Descriptor open_place(const Place &place, int flags, const std::string &shown);
// The failure of a target that is no longer what it was.
Failure changed_failure(const std::string &shown);

}  // namespace cli
