// bkwemreaddir, the read slot of a directory handle: the next name.
#include <dirent.h>

#include "jx/exports/posix.h"
#include "jx/runtime.h"
#include "posix/directory_stream.hpp"
#include "posix/path.hpp"

extern "C" JXStatus bkwemreaddir(JXDirectory *directory, JXChar *buffer, uint32_t *chars) {
  DIR *stream = directory ? jx::stream_of(directory) : nullptr;
  if (!stream) return JXWEM_E_NOHANDLE;
  if (!buffer || !chars) return JXWEM_E_FAILED;
  const bool wants_all = (directory->options & JX_DIRECTORY_OPEN_ALL) != 0;
  dirent64 entry __attribute__((uninitialized));
  do {
    const JXStatus status = jx::read_entry(stream, &entry, directory->instance, directory->journal);
    if (status != JX_OK) return status;
  } while (!wants_all && entry.d_name[0] == '.');
  const uint32_t bytes = skStrLen(entry.d_name);
  if (*chars < bytes) return JXWEM_E_NOROOM;
  // The length is that of the name on the system, one character a byte, even when decoding fails.
  *chars = bytes;
  uint32_t decoded_chars = 0;
  return jx::decode_native(directory->instance, entry.d_name, bytes, buffer, &decoded_chars);
}
