// Descriptors of the command-line host itself: pipes and spools.
#pragma once

#include <string>
#include <string_view>
#include <utility>

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
// A path that opens what a descriptor stands for.
std::string path_of(int fd);

}  // namespace cli
