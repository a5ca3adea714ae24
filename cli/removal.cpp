// Guards and messages of a removal.
#include "cli/removal.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <optional>

#include "cli/names.hpp"
#include "cli/tree.hpp"

namespace cli {
namespace {

constexpr char kLinkHint[] =
    "it is a link to a directory or to nothing, which is not removed here; use: unlink";
constexpr char kFolderHint[] = "the directory that holds it may not be changed";
constexpr char kReadHint[] = "the directory may not be read";

bool is_root(const std::string &path) {
  struct ::stat named = {}, root = {};
  return ::lstat(path.c_str(), &named) == 0 && ::lstat("/", &root) == 0 &&
         named.st_ino == root.st_ino && named.st_dev == root.st_dev;
}

// Tells whether the user may take a member away from the directory that holds it.
bool may_remove_from(int folder_fd, const struct ::stat &member) {
  struct ::stat folder = {};
  if (::faccessat(folder_fd, ".", W_OK | X_OK, AT_EACCESS) != 0) return false;
  if (::fstat(folder_fd, &folder) != 0 || (folder.st_mode & S_ISVTX) == 0) return true;
  const uid_t user = ::geteuid();
  return user == 0 || user == folder.st_uid || user == member.st_uid;
}

// What is known about a member that stays: nothing, or why.
const char *hint_for(int folder_fd, const char *name, const struct ::stat &member,
                     wem::Status status) {
  if (status == JXWEM_E_NOTFOUND && S_ISLNK(member.st_mode)) return kLinkHint;
  if (status != JXWEM_E_ACCESS) return "";
  if (!may_remove_from(folder_fd, member)) return kFolderHint;
  const bool is_closed =
      S_ISDIR(member.st_mode) && ::faccessat(folder_fd, name, R_OK | X_OK, AT_EACCESS) != 0;
  return is_closed ? kReadHint : "";
}

}  // namespace

void refuse_removal(const std::string &path) {
  const PathParts parts = split_last(path);
  const bool is_dots = parts.name == "." || parts.name == "..";
  if (!is_dots && !parts.name.empty() && !is_root(path)) return;
  throw Failure(path, JXWEM_E_BADOPTIONS)
      .saying(is_dots ? "'.' and '..' are not removed" : "the root directory is not removed");
}

// A removal takes the members of a directory in the order in which they are read and stops at the
// first that stays: that one comes first among those that are left. The walk follows no link.
Failure removal_failure(const std::string &path, wem::Status status) {
  const PathParts parts = split_last(path);
  Failure failure(path, status);
  std::optional<Folder> folder(std::in_place, AT_FDCWD, parts.folder.c_str(), 0);
  std::string name = parts.name;
  while (*folder) {
    struct ::stat member = {};
    if (::fstatat(folder->fd(), name.c_str(), &member, AT_SYMLINK_NOFOLLOW) != 0) break;
    failure.hint = hint_for(folder->fd(), name.c_str(), member, status);
    // A directory that may not go keeps its members, even those that may.
    if (!failure.hint.empty()) break;
    Folder below(folder->fd(), name.c_str(), O_NOFOLLOW);
    const char *first = below ? below.next() : nullptr;
    if (!first) break;
    name = first;
    failure.path += "/" + name;
    folder.emplace(std::move(below));
  }
  return failure;
}

}  // namespace cli
