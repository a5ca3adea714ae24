// bkwemclosedir: closes the stream of a directory handle.
#include <dirent.h>
#include <utility>

#include "jx/exports/posix.h"

extern "C" JXStatus bkwemclosedir(JXDirectory *directory) {
  if (!directory) return JXWEM_E_NOHANDLE;
  if (!directory->stream_holder) return JX_OK;
  DIR *stream = static_cast<DIR *>(std::exchange(*directory->stream_holder, nullptr));
  if (stream) closedir(stream);
  return JX_OK;
}
