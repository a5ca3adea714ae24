// The next name of a directory handle.
#include "posix/posix.hpp"

extern "C" JXStatus bkwemreaddir(JXDirectory *directory, JXChar *buffer, uint32_t *chars) {
  if (!directory || !directory->stream_holder) return JXWEM_E_NOHANDLE;
  if (!buffer || !chars) return JXWEM_E_FAILED;
  const bool wants_all = (directory->options & JX_DIRECTORY_ALL) != 0;
  auto *stream = static_cast<DIR *>(*directory->stream_holder);
  dirent64 entry;
  do {
    const JXStatus status = jx::read_entry(stream, &entry, directory->instance, directory->journal);
    if (status != JX_OK) return status;
  } while (!wants_all && entry.d_name[0] == '.');
  const uint32_t bytes = skStrLen(entry.d_name);
  if (*chars < bytes) return JXWEM_E_NOROOM;
  return jx::decode_native(directory->instance, entry.d_name, bytes, buffer, chars);
}
