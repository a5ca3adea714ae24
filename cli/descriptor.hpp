// Descriptors of the command-line host itself.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <utility>

#include "cli/failure.hpp"

namespace cli {

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

// Up to count bytes, fewer only at the end. A Failure under shown's name.
std::string read_fully(int fd, size_t count, const std::string &shown);
// Writes everything; false with errno set when that fails.
bool write_fully(int fd, std::string_view bytes);
// Whether two descriptions are those of one file: the same device and inode.
bool is_same_file(const struct ::stat &a, const struct ::stat &b);
// Removes a name in a directory when it is the file that fd stands for, links not followed. Safe in
// a signal handler.
void unlink_own(int dirfd, const char *name, int fd);
// The failure that a system call's error means: a status of the module, with the system's text
// where the status says less.
Failure system_failure(const std::string &shown, int error);
// A path that opens what a descriptor stands for.
std::string path_of(int fd);

}  // namespace cli
