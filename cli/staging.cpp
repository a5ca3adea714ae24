// Copies that are complete or leave nothing.
#include "cli/staging.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <utility>

#include "cli/failure.hpp"
#include "cli/hidden_name.hpp"

namespace cli {
namespace {

// Removal by system calls alone: a signal handler runs it.

using Name = std::array<char, NAME_MAX + 1>;

// Removes what is no directory from an open directory and stores the name of a directory in it,
// empty when there is none. False when something else stays.
bool remove_files(int fd, Name &directory) {
  alignas(dirent64) std::array<char, 4096> entries;
  directory[0] = '\0';
  if (::lseek(fd, 0, SEEK_SET) != 0) return false;
  for (;;) {
    const ssize_t bytes = ::getdents64(fd, entries.data(), entries.size());
    if (bytes <= 0) return bytes == 0;
    for (ssize_t at = 0; at < bytes;) {
      const auto *entry = reinterpret_cast<const dirent64 *>(entries.data() + at);
      at += entry->d_reclen;
      const char *name = entry->d_name;
      if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
      if (::unlinkat(fd, name, 0) == 0 || errno == ENOENT) continue;
      if (errno != EISDIR) return false;
      std::copy_n(name, std::min(std::strlen(name) + 1, directory.size() - 1), directory.begin());
    }
  }
}

// Removes a directory without directories in it, somewhere below an open one. False when there is
// none or it stays.
bool remove_a_leaf(int root_fd) {
  Descriptor above, at(::fcntl(root_fd, F_DUPFD_CLOEXEC, 0));
  Name name = {}, below = {};
  while (remove_files(at.get(), below) && below[0] != '\0') {
    above = std::exchange(at, Descriptor(::openat(at.get(), below.data(), kFolderFlags)));
    name = below;
  }
  return above.get() >= 0 && ::unlinkat(above.get(), name.data(), AT_REMOVEDIR) == 0;
}

// Tells whether a directory just made is that one, and not what somebody who may write the folder
// put in its place: only the user and root can have made it, and nobody else may write in it, or
// its file system gives every directory the same owner and permissions.
bool is_own(int fd, int folder_fd) {
  struct ::stat made = {}, folder = {};
  if (::fstat(fd, &made) != 0 || ::fstat(folder_fd, &folder) != 0) return false;
  const auto is_owner = [](uid_t user) { return user == ::geteuid() || user == 0; };
  constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
  if (is_owner(folder.st_uid) && (folder.st_mode & kOthersWrite) == 0) return true;
  const bool is_alike = made.st_uid == folder.st_uid && made.st_mode == folder.st_mode;
  return is_owner(made.st_uid) && (is_alike || (made.st_mode & (S_IRWXG | S_IRWXO)) == 0);
}

// For file systems that cannot rename without replacing: a link fails when the name is taken, and
// a directory replaces none but the empty one made for it.
bool publish_in_steps(int from_fd, const char *from, int to_fd, const char *to) {
  struct ::stat status = {};
  if (::fstatat(from_fd, from, &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (!S_ISDIR(status.st_mode)) return ::linkat(from_fd, from, to_fd, to, 0) == 0;
  if (::mkdirat(to_fd, to, S_IRWXU) != 0) return false;
  if (::renameat(from_fd, from, to_fd, to) == 0) return true;
  const int error = errno;
  ::unlinkat(to_fd, to, AT_REMOVEDIR);
  errno = error;
  return false;
}

}  // namespace

Staging::Staging(int folder_fd, const std::string &folder, std::string shown)
    : folder_fd_(folder_fd), shown_(std::move(shown)), name_(hidden_name(shown_)) {
  const SignalsBlocked guard;
  if (::mkdirat(folder_fd_, name_.c_str(), S_IRWXU) != 0) throw system_failure(shown_, errno);
  fd_ = Descriptor(::openat(folder_fd_, name_.c_str(), kFolderFlags));
  const int error = fd_.get() < 0 ? errno : EACCES;
  if (fd_.get() < 0 || !is_own(fd_.get(), folder_fd_)) {
    ::unlinkat(folder_fd_, name_.c_str(), AT_REMOVEDIR);
    throw system_failure(shown_, error);
  }
  path_ = path_through(fd_.get(), folder + name_);
  enlist();
}

Staging::~Staging() {
  const SignalsBlocked guard;
  delist();
  clean_up();
}

void Staging::clean_up() const {
  while (remove_a_leaf(fd_.get())) {
  }
  ::unlinkat(folder_fd_, name_.c_str(), AT_REMOVEDIR);
}

void Staging::publish(const std::string &name) {
  const int from = fd_.get();
  const char *to = name.c_str();
  if (::renameat2(from, kContent, folder_fd_, to, RENAME_NOREPLACE) == 0) return;
  const bool is_unknown = errno == EINVAL || errno == ENOSYS;
  if (is_unknown && publish_in_steps(from, kContent, folder_fd_, to)) return;
  throw system_failure(shown_, errno);
}

std::string path_through(int fd, const std::string &other) {
  const std::string path = path_of(fd);
  return ::access(path.c_str(), F_OK) == 0 ? path : other;
}

}  // namespace cli
