// Home directories from the system's user database.
#include <pwd.h>

#include <cstring>

#include "posix/expand.hpp"

namespace jx {

namespace {

constexpr size_t kEntryBytes = 1024;  // room for the texts of an entry

int copy_home(const passwd *entry, char *destination) {
  if (!entry || !entry->pw_dir) return 1;
  const size_t bytes = std::strlen(entry->pw_dir) + 1;
  if (bytes > kHomeAreaBytes) return 1;
  std::memcpy(destination, entry->pw_dir, bytes);
  return 0;
}

}  // namespace

int vvzgthm(const char *user_name, char *destination) {
  char texts[kEntryBytes] __attribute__((uninitialized));
  passwd record;
  passwd *entry = nullptr;
  if (getpwnam_r(user_name, &record, texts, sizeof texts, &entry) != 0) return 1;
  return copy_home(entry, destination);
}

int vvzgthmu(uint32_t user_id, char *destination) {
  char texts[kEntryBytes] __attribute__((uninitialized));
  passwd record;
  passwd *entry = nullptr;
  if (getpwuid_r(user_id, &record, texts, sizeof texts, &entry) != 0) return 1;
  return copy_home(entry, destination);
}

}  // namespace jx
