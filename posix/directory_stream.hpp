// The stream of a directory handle and its entries.
#pragma once

#include <dirent.h>

#include <cstdint>

#include "jx/module.h"

namespace [[gnu::visibility("hidden")]] jx {

// Reads the next entry of a stream. 0, JXWEM_E_EOF when there is none, or JXWEM_E_SYSTEM after the
// system's text went to the journal (which may be null).
JXStatus read_entry(DIR *stream, dirent64 *entry, JXInstance *instance, JXJournal *journal);

// Tells whether a name, in characters of either kind, is "." or "..".
template <typename Char>
constexpr bool is_dot_name(const Char *name, uint32_t length) {
  return length >= 1 && length <= 2 && name[0] == '.' && name[length - 1] == '.';
}

// The stream of a directory handle; null once it is closed.
inline DIR *stream_of(const JXDirectory *directory) {
  void **holder = directory->stream_holder;
  return holder ? static_cast<DIR *>(*holder) : nullptr;
}

}  // namespace jx
