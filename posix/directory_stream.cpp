// The next entry of a directory stream.
#include "posix/directory_stream.hpp"

#include <dirent.h>

#include "posix/errno_map.hpp"

namespace jx {

namespace {

constexpr ErrnoMap kReadEntryErrors = {};

}  // namespace

JXStatus read_entry(DIR *stream, dirent64 *entry, JXInstance *instance, JXJournal *journal) {
  dirent64 *found = nullptr;
  // This call tells the end from a failure without errno; the C library deprecates it for systems
  // whose names are longer than its entry holds.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  const int error = readdir64_r(stream, entry, &found);
#pragma GCC diagnostic pop
  if (error != 0) return status_of_errno(kReadEntryErrors, error, instance, journal);
  return found ? JX_OK : JXWEM_E_EOF;
}

}  // namespace jx
