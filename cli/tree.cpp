// Reading directories and trees.
#include "cli/tree.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <vector>

#include "cli/descriptor.hpp"
#include "cli/failure.hpp"

namespace cli {
namespace {

constexpr size_t kLongestMember = 1000;  // bytes; a copy has paths of 1024 and names the root too

struct Level {
  Folder folder;
  size_t path_bytes;  // of the folder's path in the tree, its slash included
  struct ::stat status;
};

class Walk {
 public:
  Walk(const std::string &shown, Links links) : shown_(shown), follows_(links == Links::kFollow) {}

  void enter(int at_fd, const char *name) {
    Level level{
        Folder(at_fd, name, follows_ ? 0 : O_NOFOLLOW), path_.empty() ? 0 : path_.size() + 1, {}};
    if (!level.folder || ::fstat(level.folder.fd(), &level.status) != 0) fail(errno);
    for (const Level &above : levels_) {
      if (!is_same_file(above.status, level.status)) continue;
      throw Failure(shown(), JXWEM_E_NAMETOOLONG)
          .saying("the tree has no end: a link leads back to a directory above it");
    }
    if (!path_.empty()) path_ += '/';
    levels_.push_back(std::move(level));
  }

  // The next member; null at the end of the tree.
  const Member *next() {
    while (!levels_.empty()) {
      Level &level = levels_.back();
      path_.resize(level.path_bytes);
      const char *name = level.folder.next();
      if (name) return look_at(level, name);
      if (errno != 0) fail(errno);
      levels_.pop_back();
    }
    return nullptr;
  }

 private:
  const Member *look_at(const Level &level, const char *name) {
    path_ += name;
    if (path_.size() > kLongestMember) fail(ENAMETOOLONG);
    member_ = {path_, level.folder.fd(), name, {}};
    const int flags = follows_ ? 0 : AT_SYMLINK_NOFOLLOW;
    if (::fstatat(member_.folder_fd, name, &member_.status, flags) != 0) fail(errno);
    return &member_;
  }

  std::string shown() const {
    const std::string path = shown_ + "/" + path_;
    return path.substr(0, path.find_last_not_of('/') + 1);
  }
  [[noreturn]] void fail(int error) const { throw system_failure(shown(), error); }

  const std::string &shown_;
  bool follows_;
  std::string path_;
  std::vector<Level> levels_;
  Member member_ = {};
};

}  // namespace

Folder::Folder(int at_fd, const char *name, int flags) {
  const int fd = ::openat(at_fd, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags);
  if (fd < 0) return;
  stream_.reset(::fdopendir(fd));
  if (!stream_) ::close(fd);
}

const char *Folder::next() {
  for (;;) {
    errno = 0;
    const struct ::dirent *entry = ::readdir(stream_.get());
    if (!entry) return nullptr;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") return entry->d_name;
  }
}

bool walk_tree(int root_fd, const std::string &shown, Links links,
               const std::function<bool(const Member &)> &visit) {
  Walk walk(shown, links);
  walk.enter(root_fd, ".");
  while (const Member *member = walk.next()) {
    if (visit(*member)) return true;
    if (S_ISDIR(member->status.st_mode)) walk.enter(member->folder_fd, member->name);
  }
  return false;
}

}  // namespace cli
