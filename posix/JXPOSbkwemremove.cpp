// bkwemremove, the remove slot: removes a file, a directory or a whole tree. A tree is removed by a
// loop over a list of levels, one for each directory from the named one down to the one being
// emptied. Below the named directory every call that removes or opens names its entry relative to
// an open descriptor and follows no link, so nothing swapped in for an entry can lead out of the
// tree. Only the test of what a name is follows links: a link to a file is removed itself; a link
// to a directory or to nothing is JXWEM_E_NOTFOUND, stays, and ends the removal.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "jx/exports/posix.h"
#include "jx/runtime.h"
#include "posix/directory_stream.hpp"
#include "posix/errno_map.hpp"
#include "posix/owners.hpp"
#include "posix/path.hpp"
#include "posix/path_steps.hpp"

namespace {

constexpr uint32_t kOpenLevelMax = 32;  // directories open at the same time
constexpr int kOpenFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

constexpr jx::ErrnoRow kRemoveRows[] = {{EPERM, JXWEM_E_ACCESS},      {ENOENT, JXWEM_E_NOTFOUND},
                                        {EACCES, JXWEM_E_ACCESS},     {ENOTDIR, JXWEM_E_NOTFOUND},
                                        {ETXTBSY, JXWEM_E_INUSE},     {EROFS, JXWEM_E_ACCESS},
                                        {ENOTEMPTY, JXWEM_E_NOTEMPTY}};
constexpr jx::ErrnoMap kRemoveErrors = {kRemoveRows};

// Removes a directory or anything else by its name relative to a directory's descriptor, or by its
// path. 0 or errno.
int remove_by_kind(int directory_fd, const char *name, bool is_dir) {
  int result;
  if (directory_fd == AT_FDCWD) {
    result = is_dir ? rmdir(name) : unlink(name);
  } else {
    result = unlinkat(directory_fd, name, is_dir ? AT_REMOVEDIR : 0);
  }
  return result == 0 ? 0 : errno;
}

// Tells whether test_directory found anything.
bool exists(JXStatus test) { return test == JX_OK || test == jx::kNotDirectory; }

// Removes a name, relative to a directory's descriptor or AT_FDCWD. A test that follows links tells
// what the name is; where the directory's entry tells the type of something that is no link, the
// test is made only when the removal fails.
JXStatus remove_name(JXInstance *instance, int directory_fd, const char *name, unsigned char type,
                     bool *is_dir_out) {
  const bool is_known = type != DT_UNKNOWN && type != DT_LNK;
  JXStatus test = type == DT_DIR ? JX_OK : jx::kNotDirectory;
  if (!is_known) test = jx::test_directory(instance, directory_fd, name);
  if (!exists(test)) return JXWEM_E_NOTFOUND;
  *is_dir_out = test == JX_OK;
  const int error = remove_by_kind(directory_fd, name, *is_dir_out);
  if (error == 0) return JX_OK;
  if (is_known && error != ENOTEMPTY && !exists(jx::test_directory(instance, directory_fd, name))) {
    return JXWEM_E_NOTFOUND;
  }
  return jx::status_of_errno(kRemoveErrors, error, instance, instance->journal);
}

// One directory on the way from the named one down to the one being emptied.
struct Level {
  Level *above;             // null for the named directory
  Level *below;             // null for the deepest
  DIR *stream;              // null while closed
  dev_t device;             // identity, checked when it is opened again
  ino64_t inode;            // likewise
  char name[NAME_MAX + 1];  // in the level above
};

// Removes everything in a directory, and the directory.
class TreeRemoval {
 public:
  // The path is lent for the object's lifetime.
  TreeRemoval(JXInstance *instance, const char *path) : instance_(instance), path_(path) {}
  TreeRemoval(const TreeRemoval &) = delete;
  TreeRemoval &operator=(const TreeRemoval &) = delete;
  ~TreeRemoval() {
    while (deepest_) drop_deepest();
  }

  JXStatus run() {
    // Not by opendir, which would follow a link swapped in for the directory.
    JXStatus status = enter(AT_FDCWD, path_);
    while (status == JX_OK && deepest_) {
      dirent64 entry __attribute__((uninitialized));
      status = jx::read_entry(deepest_->stream, &entry, instance_, instance_->journal);
      if (status == JXWEM_E_EOF) {
        status = leave();
      } else if (status == JX_OK) {
        status = remove_entry(entry);
      }
    }
    return status;
  }

 private:
  JXStatus remove_entry(const dirent64 &entry) {
    const uint32_t bytes = skStrLen(entry.d_name);
    if (jx::is_dot_name(entry.d_name, bytes)) return JX_OK;
    // The native name is used; one that cannot be decoded still ends the removal.
    JXChar name[sizeof entry.d_name] __attribute__((uninitialized));
    uint32_t name_chars = 0;
    JXStatus status = jx::decode_native(instance_, entry.d_name, bytes, name, &name_chars);
    if (status != JX_OK) return status;
    const int directory_fd = dirfd(deepest_->stream);
    bool is_dir = false;
    status = remove_name(instance_, directory_fd, entry.d_name, entry.d_type, &is_dir);
    if (status != JXWEM_E_NOTEMPTY || !is_dir) return status;
    return enter(directory_fd, entry.d_name);
  }

  // Makes a directory the deepest level.
  JXStatus enter(int directory_fd, const char *name) {
    auto level = jx::PoolBlock<Level>::allocate(instance_->pool, 1, JX_POOL_ZERO_FILL);
    if (!level) return JX_E_NOMEM;
    if (open_count_ == kOpenLevelMax) close_shallowest();
    int error = open_level(level.get(), directory_fd, name);
    // Without a free descriptor the walk gives up those of the levels above, one at a time.
    while ((error == EMFILE || error == ENFILE) && open_count_ > 1) {
      close_shallowest();
      error = open_level(level.get(), directory_fd, name);
    }
    if (error != 0) return open_failure(error);
    level->above = deepest_;
    if (deepest_) {
      deepest_->below = level.get();
      std::memcpy(level->name, name, skStrLen(name) + 1);
    } else {
      shallowest_open_ = level.get();
    }
    deepest_ = level.release();
    ++open_count_;
    return JX_OK;
  }

  // 0 or errno.
  static int open_level(Level *level, int directory_fd, const char *name) {
    jx::Descriptor directory(openat64(directory_fd, name, kOpenFlags));
    struct stat64 info;
    if (!directory || fstat64(directory.get(), &info) != 0) return errno;
    level->stream = fdopendir(directory.get());
    if (!level->stream) return errno;
    static_cast<void>(directory.release());
    level->device = info.st_dev;
    level->inode = info.st_ino;
    return 0;
  }

  JXStatus open_failure(int error) {
    return jx::status_of_errno(jx::kOpenDirectoryErrors, error, instance_, instance_->journal);
  }

  void close_shallowest() {
    closedir(std::exchange(shallowest_open_->stream, nullptr));
    shallowest_open_ = shallowest_open_->below;
    --open_count_;
  }

  // Opens the level above the deepest again, through the deepest. Its walk starts over, which is
  // right because every entry it passed is gone. Another directory in its place ends the walk.
  JXStatus reopen_above() {
    Level *above = deepest_->above;
    const dev_t device = above->device;
    const ino64_t inode = above->inode;
    const int error = open_level(above, dirfd(deepest_->stream), "..");
    if (error != 0) return open_failure(error);
    shallowest_open_ = above;
    ++open_count_;
    return above->device == device && above->inode == inode ? JX_OK : JXWEM_E_NOTFOUND;
  }

  // Removes the deepest level, which is empty, and goes on in the one above.
  JXStatus leave() {
    Level *above = deepest_->above;
    if (above && !above->stream) {
      const JXStatus status = reopen_above();
      if (status != JX_OK) return status;
    }
    close_deepest();
    const int error = above ? remove_by_kind(dirfd(above->stream), deepest_->name, true)
                            : remove_by_kind(AT_FDCWD, path_, true);
    drop_deepest();
    if (error == 0) return JX_OK;
    return jx::status_of_errno(kRemoveErrors, error, instance_, instance_->journal);
  }

  void close_deepest() {
    if (!deepest_->stream) return;
    closedir(std::exchange(deepest_->stream, nullptr));
    --open_count_;
  }

  void drop_deepest() {
    close_deepest();
    Level *level = deepest_;
    deepest_ = level->above;
    if (deepest_) deepest_->below = nullptr;
    instance_->pool->pool_free(instance_->pool, level);
  }

  JXInstance *instance_;
  const char *path_;
  Level *deepest_ = nullptr;
  Level *shallowest_open_ = nullptr;  // the levels from here down are open, those above closed
  uint32_t open_count_ = 0;
};

}  // namespace

extern "C" JXStatus bkwemremove(JXInstance *instance, const JXChar *path, uint32_t path_chars,
                                uint32_t flags) {
  if (!instance) return JXWEM_E_NOHANDLE;
  if (!path || path_chars == 0) return JXWEM_E_BADNAME;
  jx::SystemPath system_path;
  JXStatus status = system_path.prepare(instance, path, path_chars);
  if (status != JX_OK) return status;
  bool is_dir = false;
  status = remove_name(instance, AT_FDCWD, system_path.native(), DT_UNKNOWN, &is_dir);
  if (status != JXWEM_E_NOTEMPTY || !is_dir || (flags & JX_REMOVE_CONTENTS) == 0) return status;
  return TreeRemoval(instance, system_path.native()).run();
}
