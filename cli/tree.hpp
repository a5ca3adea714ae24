// Trees of files, walked by open descriptors.
#pragma once

#include <dirent.h>
#include <sys/stat.h>

#include <functional>
#include <memory>
#include <string>

namespace cli {

// A directory that is read name by name.
class Folder {
 public:
  // Opens a name relative to a directory's descriptor or AT_FDCWD; flags may hold O_NOFOLLOW. Not
  // open, with errno set, when that fails.
  Folder(int at_fd, const char *name, int flags);
  explicit operator bool() const { return stream_ != nullptr; }
  int fd() const { return ::dirfd(stream_.get()); }
  // The next name but "." and "..", good until the next call; null at the end (errno 0) and when
  // the directory cannot be read on.
  const char *next();
  // Names are read from the first one again, as they are now.
  void rewind() { ::rewinddir(stream_.get()); }

 private:
  struct Close {
    void operator()(DIR *stream) const { ::closedir(stream); }
  };
  std::unique_ptr<DIR, Close> stream_;
};

// A member of a tree.
struct Member {
  std::string path;      // from the root of the tree on
  int folder_fd;         // the directory that holds it
  const char *name;      // in that directory
  struct ::stat status;  // of what a link leads to, or of the link itself
};

// Whether links are followed, or members themselves.
enum class Links { kFollow, kKeep };

// Visits every member of the tree at an open directory, a directory before its members, until
// visit returns true; tells whether it did. A Failure under shown and the member's path for a
// directory that cannot be read to its end, for what is not there or has too long a path, and for a
// link back to a directory above it.
bool walk_tree(int root_fd, const std::string &shown, Links links,
               const std::function<bool(const Member &)> &visit);

}  // namespace cli
