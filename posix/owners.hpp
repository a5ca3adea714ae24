// Owners of what the system lends: descriptors and directory streams.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <utility>

namespace jx {

// Owns a descriptor.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  [[nodiscard]] int release() { return std::exchange(fd_, -1); }
  // Closes and tells how that went, in errno. Never repeated: the descriptor is gone either way.
  int close() { return ::close(release()); }

 private:
  int fd_;
};

// Owns a directory stream.
class DirectoryStream {
 public:
  explicit DirectoryStream(DIR *stream) : stream_(stream) {}
  DirectoryStream(const DirectoryStream &) = delete;
  DirectoryStream &operator=(const DirectoryStream &) = delete;
  ~DirectoryStream() {
    if (stream_) closedir(stream_);
  }

  DIR *get() const { return stream_; }
  explicit operator bool() const { return stream_ != nullptr; }
  [[nodiscard]] DIR *release() { return std::exchange(stream_, nullptr); }

 private:
  DIR *stream_;
};

}  // namespace jx
