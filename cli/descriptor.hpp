// Descriptors of the command-line host itself.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "cli/failure.hpp"

namespace cli {

// To read a directory that a name is, and not what a link of that name leads to.
inline constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// A descriptor that is closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor &operator=(Descriptor &&other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~Descriptor() { reset(); }
  int get() const { return fd_; }
  void reset();

 private:
  int fd_;
};

// The descriptor that a name means: /dev/stdin, /dev/stdout, /dev/stderr, /dev/fd/N or
// /proc/self/fd/N. None for other names. Whether it is open is not looked at.
std::optional<int> descriptor_named(std::string_view name);

// What comes next, up to count bytes; waits for the first of them only. Empty at the end. A Failure
// under shown's name.
std::string read_some(int fd, size_t count, const std::string &shown);
// Up to count bytes, fewer only at the end. A Failure under shown's name.
std::string read_fully(int fd, size_t count, const std::string &shown);
// The same at an offset of a file; the descriptor's own position stays.
std::string read_at(int fd, size_t count, uint64_t offset, const std::string &shown);
// Whether a read would wait.
bool would_wait(int fd);
// Writes everything; false with errno set when that fails.
bool write_fully(int fd, std::string_view bytes);
// Whether two descriptions are those of one file: the same device and inode.
bool is_same_file(const struct ::stat &a, const struct ::stat &b);
// Throws a Failure under shown's name when a command would read the regular file that it writes.
void refuse_same_file(const struct ::stat &input, const struct ::stat &output,
                      const std::string &shown);
// Whether a name in a directory is the file that fd is open on, links not followed. Safe in a
// signal handler, as the next.
bool is_named(int dirfd, const char *name, int fd);
// Removes a name in a directory when it is that file.
void unlink_own(int dirfd, const char *name, int fd);
// A path that opens the file of a descriptor.
std::string path_of(int fd);

}  // namespace cli
