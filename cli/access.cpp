// Owner, group, permissions and access list.
#include "cli/access.hpp"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "cli/descriptor.hpp"

namespace cli {
namespace {

constexpr const char *kList = "system.posix_acl_access";

// What all of them had: the group is another one now, and the old group is among the others.
mode_t without_group(mode_t mode) {
  const mode_t shared = (mode >> 3) & mode & S_IRWXO;
  return (mode & S_IRWXU) | shared << 3 | shared;
}

// The access list of a file as the system stores it; empty when it has none.
std::string access_list(int fd) {
  const ssize_t bytes = ::fgetxattr(fd, kList, nullptr, 0);
  std::string list(bytes > 0 ? static_cast<size_t>(bytes) : 0, '\0');
  const ssize_t got = list.empty() ? 0 : ::fgetxattr(fd, kList, list.data(), list.size());
  list.resize(got > 0 ? static_cast<size_t>(got) : 0);
  return list;
}

// Replaces the access list that the folder may have given the file.
bool set_access_list(int fd, const std::string &list) {
  if (!list.empty()) return ::fsetxattr(fd, kList, list.data(), list.size(), 0) == 0;
  return ::fremovexattr(fd, kList) == 0 || errno == ENODATA || errno == EOPNOTSUPP;
}

}  // namespace

void keep_access(int fd, int old_fd, const std::string &shown) {
  struct ::stat old = {};
  if (::fstat(old_fd, &old) != 0) throw system_failure(shown, errno);
  mode_t mode = old.st_mode & kPermissions;
  // Only the superuser can give a file away; to a group of theirs everybody can. Before the
  // permissions, because whoever owns the file until then must not profit from them.
  const bool is_group_kept = ::fchown(fd, old.st_uid, old.st_gid) == 0 ||
                             ::fchown(fd, static_cast<uid_t>(-1), old.st_gid) == 0;
  if (!is_group_kept) mode = without_group(mode);
  const std::string list = access_list(old_fd);
  const bool is_list_kept = set_access_list(fd, is_group_kept ? list : std::string());
  // With a list, the permissions of the group are the most that anyone in the list gets.
  if (!is_list_kept || (!list.empty() && !is_group_kept)) mode &= S_IRWXU;
  if (::fchmod(fd, mode) != 0) throw system_failure(shown, errno);
}

}  // namespace cli
