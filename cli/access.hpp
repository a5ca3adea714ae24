// Who may do what with a file that takes the place of another.
#pragma once

#include <sys/stat.h>

#include <string>

namespace cli {

inline constexpr mode_t kPermissions = 0777;  // of a mode: without its set-id and sticky bits

// Gives a file the owner, group, permissions and access list of an old one. What cannot be kept is
// taken away, never given to others: see access.cpp. Set-user-id, set-group-id and sticky bits are
// not kept. A Failure under shown's name when the permissions cannot be set.
void keep_access(int fd, int old_fd, const std::string &shown);

}  // namespace cli
