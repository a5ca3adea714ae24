// Transfers that are complete or fail, and what the system says.
#include "cli/descriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace cli {
namespace {

struct ErrorRow {
  int error;
  JXStatus status;
};

constexpr auto kErrors = std::to_array<ErrorRow>({
    {ENOENT, JXWEM_E_NOPATH},
    {ENOTDIR, JXWEM_E_NOPATH},
    {EACCES, JXWEM_E_ACCESS},
    {EPERM, JXWEM_E_ACCESS},
    {EROFS, JXWEM_E_ACCESS},
    {EISDIR, JXWEM_E_OPENREFUSED},
    {ETXTBSY, JXWEM_E_INUSE},
    {EBUSY, JXWEM_E_INUSE},
    {EEXIST, JXWEM_E_EXISTS},
    {ENOSPC, JXWEM_E_DISKFULL},
    {EDQUOT, JXWEM_E_DISKFULL},
    {EFBIG, JXWEM_E_DISKFULL},
    {ENOMEM, JX_E_NOMEM},
});

}  // namespace

void Descriptor::reset() {
  if (fd_ >= 0) ::close(std::exchange(fd_, -1));
}

std::string read_fully(int fd, size_t count, const std::string &shown) {
  std::string bytes(count, '\0');
  size_t used = 0;
  while (used < count) {
    const ssize_t got = ::read(fd, bytes.data() + used, count - used);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw system_failure(shown, errno);
    if (got == 0) break;
    used += static_cast<size_t>(got);
  }
  bytes.resize(used);
  return bytes;
}

bool write_fully(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

bool is_same_file(const struct ::stat &a, const struct ::stat &b) {
  return a.st_ino == b.st_ino && a.st_dev == b.st_dev;
}

void unlink_own(int dirfd, const char *name, int fd) {
  struct ::stat own = {};
  struct ::stat named = {};
  const bool is_own = ::fstat(fd, &own) == 0 &&
                      ::fstatat(dirfd, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
                      is_same_file(own, named);
  if (is_own) ::unlinkat(dirfd, name, 0);
}

Failure system_failure(const std::string &shown, int error) {
  const auto row = std::ranges::find(kErrors, error, &ErrorRow::error);
  if (row != kErrors.end()) return Failure(shown, row->status);
  return Failure(shown, JXWEM_E_SYSTEM, std::strerror(error));
}

std::string path_of(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

}  // namespace cli
