// The folder that the checks of "jxelm" work in.
#pragma once

#include <sys/stat.h>

namespace jxcheck {

// A new folder inside one that was given; removed with what the checks leave in it.
class WorkFolder {
 public:
  WorkFolder() = default;
  WorkFolder(const WorkFolder &) = delete;
  WorkFolder &operator=(const WorkFolder &) = delete;
  ~WorkFolder();
  // False when it cannot be made.
  bool make(int parent_fd);
  // Removes the files that checks have left.
  void clear() const;
  int fd() const { return fd_; }

 private:
  int parent_fd_ = -1;
  int fd_ = -1;
  char name_[32] = "";
};

// What the checks put into the folder; its only names are those that clear() removes.
namespace names {
inline constexpr char kFile[] = "file";
inline constexpr char kByteName[] = "\xE9";  // one byte, which is no UTF-8
inline constexpr char kLink[] = "link";
inline constexpr char kFifo[] = "fifo";
inline constexpr char kFolder[] = "sub";
}  // namespace names

inline constexpr char kContent[] = "abc";
// Makes the file kFile with kContent. True when it is there.
bool put_file(int folder_fd, mode_t permissions = 0600);
// The size of a file in the folder, or -1.
long size_of(int folder_fd, const char *name);

}  // namespace jxcheck
