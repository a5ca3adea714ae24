// Transfers that are complete or fail, and what the system says.
#include "cli/descriptor.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>

#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr std::string_view kStandardNames[] = {"/dev/stdin", "/dev/stdout", "/dev/stderr"};
static_assert(STDIN_FILENO == 0 && STDOUT_FILENO == 1 && STDERR_FILENO == 2);

// What poll answers about one kind of event.
int wait_for(int fd, short events, int milliseconds) {
  struct ::pollfd state = {fd, events, 0};
  return ::poll(&state, 1, milliseconds);
}

// Room that is not cleared: of a large one for a small file most pages stay untouched.
std::unique_ptr<char[]> make_room(size_t bytes) {
  return std::make_unique_for_overwrite<char[]>(bytes);
}

// Repeats a transfer to a place with so many bytes before it until count bytes are there.
template <typename Transfer>
std::string gather(int fd, size_t count, const std::string &shown, Transfer transfer) {
  const auto room = make_room(count);
  size_t used = 0;
  while (used < count) {
    const ssize_t got = transfer(room.get() + used, count - used, used);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 && errno == EAGAIN && wait_for(fd, POLLIN, -1) >= 0) continue;
    if (got < 0) throw system_failure(shown, errno);
    if (got == 0) break;
    used += static_cast<size_t>(got);
  }
  return {room.get(), used};
}

}  // namespace

void Descriptor::reset() {
  if (fd_ >= 0) ::close(std::exchange(fd_, -1));
}

std::optional<int> descriptor_named(std::string_view name) {
  const auto standard = std::ranges::find(kStandardNames, name);
  if (standard != std::end(kStandardNames)) {
    return static_cast<int>(standard - std::begin(kStandardNames));
  }
  for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (!name.starts_with(folder)) continue;
    const char *const end = name.data() + name.size();
    int fd = -1;
    const auto [stop, error] = std::from_chars(name.data() + folder.size(), end, fd);
    if (error == std::errc() && stop == end && fd >= 0) return fd;
  }
  return std::nullopt;
}

std::string read_some(int fd, size_t count, const std::string &shown) {
  const auto room = make_room(count);
  ssize_t got = -1;
  while ((got = ::read(fd, room.get(), count)) < 0) {
    if (errno != EINTR && errno != EAGAIN) throw system_failure(shown, errno);
    // Whoever shares the descriptor may have made it one that does not wait.
    wait_for(fd, POLLIN, -1);
  }
  return {room.get(), static_cast<size_t>(got)};
}

std::string read_fully(int fd, size_t count, const std::string &shown) {
  return gather(fd, count, shown,
                [fd](char *to, size_t left, size_t) { return ::read(fd, to, left); });
}

std::string read_at(int fd, size_t count, uint64_t offset, const std::string &shown) {
  return gather(fd, count, shown, [fd, offset](char *to, size_t left, size_t used) {
    return ::pread(fd, to, left, static_cast<off_t>(offset + used));
  });
}

bool would_wait(int fd) { return wait_for(fd, POLLIN, 0) == 0; }

bool write_fully(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    // Whoever shares the descriptor may have made it one that does not wait.
    if (count < 0 && errno == EAGAIN && wait_for(fd, POLLOUT, -1) >= 0) continue;
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

bool is_same_file(const struct ::stat &a, const struct ::stat &b) {
  return a.st_ino == b.st_ino && a.st_dev == b.st_dev;
}

void refuse_same_file(const struct ::stat &input, const struct ::stat &output,
                      const std::string &shown) {
  if (!S_ISREG(input.st_mode) || !is_same_file(input, output)) return;
  throw Failure(shown, JXWEM_E_BADOPTIONS)
      .saying("input and output are the same file",
              "write to another file and rename it with: jxfile mv");
}

bool is_named(int dirfd, const char *name, int fd) {
  struct ::stat own = {};
  struct ::stat named = {};
  return ::fstat(fd, &own) == 0 && ::fstatat(dirfd, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         is_same_file(own, named);
}

void unlink_own(int dirfd, const char *name, int fd) {
  if (is_named(dirfd, name, fd)) ::unlinkat(dirfd, name, 0);
}

std::string path_of(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

}  // namespace cli
