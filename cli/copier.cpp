// Copies, member by member.
#include "cli/copier.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include "cli/access.hpp"
#include "cli/target.hpp"

namespace cli {
namespace {

constexpr char kPart[] = "part";  // a file of a tree that is being copied
constexpr char kBare[] = "the copy is whole but for permissions and times";

mode_t current_umask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}

std::string folder_of(const std::string &member) {
  const size_t slash = member.rfind('/');
  return slash == member.npos ? "." : member.substr(0, slash);
}

}  // namespace

void refuse_special(const std::string &shown, mode_t mode) {
  if (S_ISREG(mode) || S_ISDIR(mode) || S_ISLNK(mode)) return;
  throw Failure(shown, JXWEM_E_NOTSUPPORTED).saying("a FIFO, socket or device is not copied");
}

Copier::Copier(Session &session, CopyManner manner, Staging &staging, std::string from,
               std::string to, uint64_t byte_count)
    : session_(session),
      manner_(manner),
      staging_(staging),
      from_(std::move(from)),
      to_(std::move(to)),
      umask_(current_umask()),
      watch_(byte_count, [this] { return copied_bytes(); }) {}

// On the thread of the watch.
uint64_t Copier::copied_bytes() const {
  const char *name = growing_;
  struct ::stat status = {};
  const bool is_growing = name && ::fstatat(staging_.fd(), name, &status, AT_SYMLINK_NOFOLLOW) == 0;
  return done_bytes_ + (is_growing ? static_cast<uint64_t>(status.st_size) : 0);
}

std::string Copier::shown(const std::string &member) const {
  const std::string tail = member == "." ? "" : "/" + member;
  return from_ + tail + " -> " + to_ + tail;
}

void Copier::copy(int source_fd, const struct ::stat &source) {
  if (S_ISDIR(source.st_mode)) return copy_tree(source_fd, source);
  if (!S_ISLNK(source.st_mode)) return copy_file(source_fd, source, ".", Staging::kContent);
  copy_link(source_fd, source, ".", staging_.fd(), Staging::kContent);
}

// The module makes every file open to all; a copy is no more open than what it is a copy of.
void Copier::copy_file(int source_fd, const struct ::stat &source, const std::string &member,
                       const char *name) {
  refuse_special(shown(member), source.st_mode);
  const std::string path = path_through(source_fd, member == "." ? from_ : from_ + "/" + member);
  const CreationMask mask(~source.st_mode & kPermissions);
  growing_ = name;
  require(session_.instance().copy(session_.name(path), session_.name(staging_.path(name))),
          shown(member));
  growing_ = nullptr;
  done_bytes_ += static_cast<uint64_t>(source.st_size);
  set_attributes(staging_.fd(), name, source, shown(member));
}

void Copier::copy_link(int source_fd, const struct ::stat &source, const std::string &member,
                       int to_fd, const char *name) const {
  std::array<char, PATH_MAX> text;
  const ssize_t bytes = ::readlinkat(source_fd, "", text.data(), text.size() - 1);
  if (bytes < 0) throw system_failure(shown(member), errno);
  text[static_cast<size_t>(bytes)] = '\0';
  if (::symlinkat(text.data(), to_fd, name) != 0) throw system_failure(shown(member), errno);
  set_attributes(to_fd, name, source, shown(member));
}

void Copier::copy_tree(int source_fd, const struct ::stat &source) {
  make_folder(staging_.fd(), Staging::kContent, ".", source);
  root_ = Descriptor(::openat(staging_.fd(), Staging::kContent, kFolderFlags));
  if (root_.get() < 0) throw system_failure(shown("."), errno);
  enter(".");
  const Links links = manner_.keeps_links ? Links::kKeep : Links::kFollow;
  walk_tree(source_fd, from_, links, [this](const Member &member) {
    add_member(member);
    return false;
  });
  for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
    if (!is_closed(*folder)) settle(*folder);
  }
}

void Copier::add_member(const Member &member) {
  const std::string where = shown(member.path);
  if (S_ISDIR(member.status.st_mode)) {
    enter(folder_of(member.path));
    return make_folder(folder_.get(), member.name, member.path, member.status);
  }
  // From here on it is this file, even if another one takes its name.
  const int flags = O_PATH | O_CLOEXEC | (manner_.keeps_links ? O_NOFOLLOW : 0);
  const Descriptor source(::openat(member.folder_fd, member.name, flags));
  struct ::stat status = {};
  if (source.get() < 0 || ::fstat(source.get(), &status) != 0) throw system_failure(where, errno);
  if (S_ISDIR(status.st_mode)) throw system_failure(where, ENOTDIR);
  enter(folder_of(member.path));
  if (S_ISLNK(status.st_mode)) {
    return copy_link(source.get(), status, member.path, folder_.get(), member.name);
  }
  copy_file(source.get(), status, member.path, kPart);
  if (::renameat(staging_.fd(), kPart, folder_.get(), member.name) != 0) {
    throw system_failure(where, errno);
  }
}

// Its owner may work in it until all is copied.
void Copier::make_folder(int at_fd, const char *name, const std::string &path,
                         const struct ::stat &source) {
  const mode_t mode = (source.st_mode & kPermissions) | S_IRWXU;
  if (::mkdirat(at_fd, name, mode) != 0) throw system_failure(shown(path), errno);
  folders_.push_back({path, source});
}

// Members come directory by directory.
void Copier::enter(const std::string &folder) {
  if (folder == folder_path_) return;
  folder_ = Descriptor(::openat(root_.get(), folder.c_str(), kFolderFlags));
  if (folder_.get() < 0) throw system_failure(shown(folder), errno);
  folder_path_ = folder;
}

// Whether a directory's owner may not work in it, who has to give it a name and to clean it up.
bool Copier::is_closed(const Folder &folder) const {
  return folder.path == "." || (folder.source.st_mode & S_IRWXU) != S_IRWXU;
}

void Copier::settle(const Folder &folder) const {
  const mode_t mode = folder.source.st_mode & kPermissions;
  const std::string where = shown(folder.path);
  set_attributes(root_.get(), folder.path.c_str(), folder.source, where);
  if (manner_.keeps_attributes || (mode & S_IRWXU) == S_IRWXU) return;
  if (::fchmodat(root_.get(), folder.path.c_str(), mode & ~umask_, 0) != 0) {
    throw system_failure(where, errno);
  }
}

void Copier::set_attributes(int at_fd, const char *name, const struct ::stat &source,
                            const std::string &where) const {
  if (!manner_.keeps_attributes) return;
  const struct ::timespec times[] = {source.st_atim, source.st_mtim};
  const bool is_link = S_ISLNK(source.st_mode);
  // A directory may close with its permissions.
  const bool is_set = ::utimensat(at_fd, name, times, AT_SYMLINK_NOFOLLOW) == 0 &&
                      (is_link || ::fchmodat(at_fd, name, source.st_mode & kPermissions, 0) == 0);
  if (!is_set) throw system_failure(where, errno);
}

void Copier::finish() const {
  try {
    for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
      if (is_closed(*folder)) settle(*folder);
    }
  } catch (Failure &failure) {
    failure.hint = kBare;
    throw;
  }
}

}  // namespace cli
