// Checks that need a file in the folder.
#pragma once

#include <errno.h>
#include <string.h>

#include "check/folder.hpp"
#include "check/objects.hpp"

namespace jxcheck {

// Runs a check with "jxelm" and the file kFile of three bytes, if there is a folder.
template <void (*function)(Probe &, const Elm &)>
void with_file(Probe &probe) {
  if (probe.folder_fd < 0) return probe.skip("no folder was given");
  const Elm elm(probe);
  if (!elm) return;
  if (!put_file(probe.folder_fd)) return probe.skip("no file to be made: %s", ::strerror(errno));
  function(probe, elm);
}

}  // namespace jxcheck
