// Guards and messages of a removal.
#include "cli/removal.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>

#include "cli/names.hpp"
#include "cli/tree.hpp"
#include "cli/watch.hpp"

namespace cli {
namespace {

constexpr char kLinkHint[] = "it is a link; without the slash at the end the link is removed";
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
  if (status != JXWEM_E_ACCESS) return "";
  if (!may_remove_from(folder_fd, member)) return kFolderHint;
  const bool is_closed =
      S_ISDIR(member.st_mode) && ::faccessat(folder_fd, name, R_OK | X_OK, AT_EACCESS) != 0;
  return is_closed ? kReadHint : "";
}

// The member that ended a removal.
struct Stopper {
  std::string path;              // as the user would give it
  std::optional<Folder> folder;  // that holds it; none when it is not known
  std::string name;              // in the folder
  struct ::stat status;
  const char *hint = "";
};

// A removal takes the members of a directory in the order in which they are read and stops at the
// first that stays: that one comes first among those that are left. The walk follows no link.
Stopper find_stopper(const std::string &path, wem::Status status) {
  const PathParts parts = split_last(path);
  Stopper found{path, {}, parts.name, {}};
  Folder folder(AT_FDCWD, parts.folder.c_str(), 0);
  while (folder) {
    const int fd = folder.fd();
    const char *name = found.name.c_str();
    if (::fstatat(fd, name, &found.status, AT_SYMLINK_NOFOLLOW) != 0) break;
    found.hint = hint_for(fd, name, found.status, status);
    Folder below(fd, name, O_NOFOLLOW);
    found.folder.emplace(std::move(folder));
    // A directory that may not go keeps its members, even those that may.
    const char *first = below && !*found.hint ? below.next() : nullptr;
    if (!first) break;
    found.name = first;
    found.path += "/" + found.name;
    folder = std::move(below);
  }
  return found;
}

// Removes the links among the names of a directory that are left to read: the module would read all
// of it anew for each. One that stays stops the module again, which tells.
void remove_links(Folder &folder) {
  while (const char *name = folder.next()) {
    struct ::stat member = {};
    const bool is_link =
        ::fstatat(folder.fd(), name, &member, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(member.st_mode);
    if (is_link) ::unlinkat(folder.fd(), name, 0);
  }
}

// How far the module is with a directory: its members are counted now and then, by its descriptor.
class Remains {
 public:
  // Of a directory with nothing but a directory in it, that of the first one below with more.
  explicit Remains(const std::string &path) : folder_(AT_FDCWD, path.c_str(), O_NOFOLLOW) {
    while (folder_ && (total_ = count()) == 1) {
      folder_.rewind();
      const char *name = folder_.next();
      Folder below(folder_.fd(), name ? name : "", O_NOFOLLOW);
      if (!below) break;
      folder_ = std::move(below);
    }
  }

  // Members in the beginning; 0 when the directory cannot be read.
  uint64_t total() const { return total_; }
  // How many of them are no longer there. They are not counted again before twenty times the time
  // has gone by that it took: the removal waits meanwhile.
  uint64_t gone() {
    const auto start = std::chrono::steady_clock::now();
    if (start < next_) return gone_;
    gone_ = total_ - std::min(total_, count());
    const auto end = std::chrono::steady_clock::now();
    next_ = end + 20 * (end - start);
    return gone_;
  }

 private:
  uint64_t count() {
    uint64_t count = 0;
    for (folder_.rewind(); folder_.next();) ++count;
    return count;
  }

  Folder folder_;
  uint64_t total_ = 0;
  uint64_t gone_ = 0;
  std::chrono::steady_clock::time_point next_;
};

// Removes everything; on a terminal it is shown how far that is.
wem::Status remove_tree(Session &session, const std::string &path) {
  const wem::Name name = session.name(path);
  if (!Progress::is_possible()) return session.instance().remove(name, true);
  Remains remains(path);
  const Watch watch(
      remains.total(), [&remains] { return remains.gone(); }, Progress::Unit::kThings);
  return session.instance().remove(name, true);
}

}  // namespace

void refuse_removal(const std::string &path) {
  const PathParts parts = split_last(path);
  const bool is_dots = parts.name == "." || parts.name == "..";
  if (!is_dots && !parts.name.empty() && !is_root(path)) return;
  throw Failure(path, JXWEM_E_BADOPTIONS)
      .saying(is_dots ? "'.' and '..' are not removed" : "the root directory is not removed");
}

void remove(Session &session, const std::string &path, bool is_recursive) {
  for (;;) {
    const wem::Status status = is_recursive ? remove_tree(session, path)
                                            : session.instance().remove(session.name(path), false);
    if (status.ok()) return;
    if (!is_recursive && status != JXWEM_E_NOTFOUND) throw Failure(path, status);
    Stopper stopper = find_stopper(path, status);
    Failure failure(stopper.path, status);
    failure.hint = stopper.hint;
    // The module finds what a link leads to: nothing, or a directory, which it does not touch.
    const bool is_link =
        status == JXWEM_E_NOTFOUND && stopper.folder && S_ISLNK(stopper.status.st_mode);
    if (!is_link) throw failure;
    const bool is_all = stopper.path == path;
    if (is_all && path.ends_with('/')) throw std::move(failure).saying({}, kLinkHint);
    if (::unlinkat(stopper.folder->fd(), stopper.name.c_str(), 0) != 0) {
      throw system_failure(stopper.path, errno);
    }
    if (is_all) return;
    remove_links(*stopper.folder);
  }
}

}  // namespace cli
