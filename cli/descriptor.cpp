// Transfers that are complete or fail.
#include "cli/descriptor.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/failure.hpp"

namespace cli {

void Descriptor::reset() {
  if (fd_ >= 0) ::close(std::exchange(fd_, -1));
}

std::string read_fully(int fd, size_t count, const std::string &shown) {
  std::string bytes(count, '\0');
  size_t used = 0;
  while (used < count) {
    const ssize_t got = ::read(fd, bytes.data() + used, count - used);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw Failure(shown, JXWEM_E_SYSTEM, std::strerror(errno));
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

std::string path_of(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

}  // namespace cli
