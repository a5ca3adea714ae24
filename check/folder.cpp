// Everything is reached from the descriptor of the folder.
#include "check/folder.hpp"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <initializer_list>

namespace jxcheck {

bool WorkFolder::make(int parent_fd) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    ::snprintf(name_, sizeof name_, "jxcheck-%d-%d", static_cast<int>(::getpid()), attempt);
    if (::mkdirat(parent_fd, name_, 0700) == 0) {
      parent_fd_ = parent_fd;
      fd_ = ::openat(parent_fd, name_, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
      return fd_ >= 0;
    }
    if (errno != EEXIST) return false;
  }
  return false;
}

void WorkFolder::clear() const {
  for (const char *name : {names::kFile, names::kByteName, names::kLink, names::kFifo}) {
    ::unlinkat(fd_, name, 0);
  }
  ::unlinkat(fd_, names::kFolder, AT_REMOVEDIR);
}

WorkFolder::~WorkFolder() {
  if (parent_fd_ < 0) return;
  if (fd_ >= 0) {
    clear();
    ::close(fd_);
  }
  ::unlinkat(parent_fd_, name_, AT_REMOVEDIR);
}

bool put_file(int folder_fd, mode_t permissions) {
  const int fd = ::openat(folder_fd, names::kFile,
                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, permissions);
  if (fd < 0) return false;
  const size_t bytes = ::strlen(kContent);
  const bool is_written = ::write(fd, kContent, bytes) == static_cast<ssize_t>(bytes);
  return ::close(fd) == 0 && is_written;
}

long size_of(int folder_fd, const char *name) {
  struct stat facts;
  if (::fstatat(folder_fd, name, &facts, AT_SYMLINK_NOFOLLOW) != 0) return -1;
  return static_cast<long>(facts.st_size);
}

}  // namespace jxcheck
