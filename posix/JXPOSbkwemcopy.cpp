// bkwemcopy, the copy slot: copies a file or a tree. A tree is copied by a loop over a list of
// levels, each with an open directory handle; the two paths grow and shrink as the walk goes down
// and up.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "jx/exports/posix.h"
#include "posix/directory_open.hpp"
#include "posix/directory_stream.hpp"
#include "posix/errno_map.hpp"
#include "posix/owners.hpp"
#include "posix/path.hpp"
#include "posix/path_steps.hpp"

namespace {

constexpr mode_t kPermissions = 0777;  // before the process's creation mask

constexpr jx::ErrnoRow kOpenRows[] = {{EACCES, JXWEM_E_ACCESS},
                                      {ENOTDIR, JXWEM_E_NOPATH},
                                      {ETXTBSY, JXWEM_E_INUSE},
                                      {EROFS, JXWEM_E_ACCESS}};
constexpr jx::ErrnoRow kWriteRows[] = {{ENXIO, JXWEM_E_NOTSUPPORTED}, {ENOSPC, JXWEM_E_DISKFULL}};
constexpr jx::ErrnoMap kOpenErrors = {kOpenRows, JXWEM_E_FAILED};
constexpr jx::ErrnoMap kReadErrors = {{}, JXWEM_E_FAILED};
constexpr jx::ErrnoMap kWriteErrors = {kWriteRows, JXWEM_E_FAILED};

JXStatus failure(JXInstance *instance, const jx::ErrnoMap &map, int error) {
  return jx::status_of_errno(map, error, instance, instance->journal);
}

// ---- One file

// Reads up to one block; repeats a read that a signal interrupts.
ssize_t read_block(int fd, char *block, size_t block_bytes) {
  for (;;) {
    const ssize_t bytes = read(fd, block, block_bytes);
    if (bytes >= 0 || errno != EINTR) return bytes;
  }
}

// Writes a whole block, in as many writes as it takes. 0, or the errno of the first that fails.
int write_block(int fd, const char *block, size_t bytes) {
  while (bytes != 0) {
    const ssize_t written = write(fd, block, bytes);
    if (written < 0) return errno;
    if (written == 0) return EIO;
    block += written;
    bytes -= static_cast<size_t>(written);
  }
  return 0;
}

JXStatus copy_blocks(JXInstance *instance, int from, int to, uint64_t block_bytes) {
  auto block = jx::PoolBlock<char>::allocate(instance->pool, block_bytes);
  if (!block) return JX_E_NOMEM;
  for (;;) {
    const ssize_t bytes = read_block(from, block.get(), static_cast<size_t>(block_bytes));
    if (bytes < 0) return failure(instance, kReadErrors, errno);
    if (bytes == 0) return JX_OK;
    const int error = write_block(to, block.get(), static_cast<size_t>(bytes));
    if (error != 0) return failure(instance, kWriteErrors, error);
  }
}

JXStatus copy_file(JXInstance *instance, const char *source, const char *target,
                   uint64_t block_bytes) {
  const jx::Descriptor from(open64(source, O_RDONLY | O_CLOEXEC));
  if (!from) return failure(instance, kOpenErrors, errno);
  jx::Descriptor to(open64(target, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kPermissions));
  if (!to) return failure(instance, kOpenErrors, errno);
  const JXStatus status = copy_blocks(instance, from.get(), to.get(), block_bytes);
  // Some file systems report only now that there was no space for the data. A close that a signal
  // interrupts has closed the file, and the copy is whole.
  if (to.close() != 0 && errno != EINTR && status == JX_OK) {
    return failure(instance, kWriteErrors, errno);
  }
  return status;
}

// The check before a name is copied: what the source is, and whether the target is free.
struct Check {
  struct stat64 source;  // by stat, so that a link counts as what it points to
  JXStatus target;       // JXWEM_E_NOTFOUND: free; or why that is not known

  JXStatus run(JXInstance *instance, const char *source_path, const char *target_path) {
    target = jx::test_exists(instance, target_path);
    if (target == JX_OK) return JXWEM_E_EXISTS;
    if (stat64(source_path, &source) == 0) return JX_OK;
    return failure(instance, jx::kStatErrors, errno);
  }
  bool is_dir() const { return S_ISDIR(source.st_mode); }
  uint64_t block_bytes() const {
    return source.st_blksize > 0 ? static_cast<uint64_t>(source.st_blksize) : 1;
  }
};

// ---- A tree

// A path of the walk in both forms, as it grows and shrinks.
class WalkPath {
 public:
  // Starts with an expanded path whose caller gave it in given_chars characters; both forms of
  // every path below must fit JX_NAME_MAX_CHARS. 0, JXWEM_E_NAMETOOLONG or JXWEM_E_FAILED.
  JXStatus start(JXInstance *instance, jx::Text expanded, uint32_t given_chars) {
    if (expanded.chars > JX_NAME_MAX_CHARS) return JXWEM_E_NAMETOOLONG;
    const uint32_t longest_chars = std::max(expanded.chars, given_chars);
    const uint32_t room_chars = JX_NAME_MAX_CHARS - std::min(longest_chars, kMaxChars);
    limit_chars_ = expanded.chars + room_chars;
    std::copy_n(expanded.data, expanded.chars, text_);
    chars_ = expanded.chars;
    return jx::encode_native(instance, expanded, native_);
  }

  // Adds a slash and a name. 0, JXWEM_E_NAMETOOLONG or JXWEM_E_FAILED.
  JXStatus append(JXInstance *instance, jx::Text name) {
    if (uint64_t{chars_} + 1 + name.chars > limit_chars_) return JXWEM_E_NAMETOOLONG;
    text_[chars_] = '/';
    native_[chars_] = '/';
    std::copy_n(name.data, name.chars, text_ + chars_ + 1);
    const JXStatus status = jx::encode_native(instance, name, native_ + chars_ + 1);
    if (status == JX_OK) chars_ += 1 + name.chars;
    return status;
  }

  // Goes back to an earlier length.
  void cut(uint32_t chars) {
    chars_ = chars;
    native_[chars] = '\0';
  }

  jx::Text text() const { return {text_, chars_}; }
  const char *native() const { return native_; }

 private:
  static constexpr uint32_t kMaxChars = JX_NAME_MAX_CHARS;

  JXChar text_[JX_NAME_MAX_CHARS];
  char native_[JX_NAME_MAX_CHARS + 1];
  uint32_t chars_;
  uint32_t limit_chars_;  // of the expanded form
};

// One directory on the way from the named one down to the one being copied.
struct Level {
  Level *above;            // null for the named directory
  JXDirectory *directory;  // being read
  uint32_t source_chars;   // lengths of the two paths here
  uint32_t target_chars;
};

class TreeCopy {
 public:
  explicit TreeCopy(JXInstance *instance) : instance_(instance) {}
  TreeCopy(const TreeCopy &) = delete;
  TreeCopy &operator=(const TreeCopy &) = delete;
  ~TreeCopy() {
    while (deepest_) static_cast<void>(leave());
  }

  // Copies a directory whose names have passed their check.
  JXStatus run(jx::Text source, uint32_t source_given_chars, jx::Text target,
               uint32_t target_given_chars, const Check &check) {
    paths_ = jx::PoolBlock<Paths>::allocate(instance_->pool, 1);
    if (!paths_) return JX_E_NOMEM;
    JXStatus status = paths_->source.start(instance_, source, source_given_chars);
    if (status == JX_OK) status = paths_->target.start(instance_, target, target_given_chars);
    if (status == JX_OK) status = make_target(check);
    if (status == JX_OK) remember_target_root();
    if (status == JX_OK) status = enter();
    while (status == JX_OK && deepest_) status = copy_next();
    return status;
  }

 private:
  struct Paths {
    WalkPath source;
    WalkPath target;
  };

  JXStatus make_target(const Check &check) {
    if (check.target != JXWEM_E_NOTFOUND) return check.target;
    return jx::make_directory(instance_, paths_->target.native());
  }

  void remember_target_root() {
    has_target_root_ = stat64(paths_->target.native(), &target_root_) == 0;
  }

  // Opens the source directory and makes it the deepest level.
  JXStatus enter() {
    auto level = jx::PoolBlock<Level>::allocate(instance_->pool, 1);
    if (!level) return JX_E_NOMEM;
    const jx::Text path = paths_->source.text();
    JXStatus status = JX_OK;
    JXDirectory *directory =
        instance_->directory_open(instance_, path.data, path.chars, JX_DIRECTORY_OPEN_ALL, 0,
                                  nullptr, jx::kCopyHandleName, &status);
    if (!directory) return status;
    *level.get() = {deepest_, directory, path.chars, paths_->target.text().chars};
    deepest_ = level.release();
    return JX_OK;
  }

  // Ends the deepest level, whose copy has the status of its directory's close.
  JXStatus leave() {
    const JXStatus status = deepest_->directory->close(deepest_->directory);
    Level *above = deepest_->above;
    instance_->pool->pool_free(instance_->pool, deepest_);
    deepest_ = above;
    return status;
  }

  // Copies the next member of the deepest level. When a read gives none, at the end or by a
  // failure, the level is left.
  JXStatus copy_next() {
    uint32_t chars = JX_NAME_MAX_CHARS;
    JXDirectory *directory = deepest_->directory;
    const bool is_read = directory->read(directory, name_, &chars) == JX_OK;
    JXStatus status = JX_OK;
    if (!is_read) {
      status = leave();
    } else if (!jx::is_dot_name(name_, chars)) {
      status = copy_member({name_, chars});
    }
    std::fill_n(name_, is_read ? chars : JX_NAME_MAX_CHARS, JXChar{0});
    return status;
  }

  JXStatus copy_member(jx::Text name) {
    WalkPath &source = paths_->source;
    WalkPath &target = paths_->target;
    source.cut(deepest_->source_chars);
    target.cut(deepest_->target_chars);
    JXStatus status = source.append(instance_, name);
    if (status == JX_OK) status = target.append(instance_, name);
    if (status != JX_OK) return status;
    Check check;
    status = check.run(instance_, source.native(), target.native());
    if (status != JX_OK) return status;
    if (!check.is_dir()) {
      return copy_file(instance_, source.native(), target.native(), check.block_bytes());
    }
    // A tree copied into itself would grow until a path is too long. Answers so at once, before any
    // level is made.
    if (is_target_root(check.source)) return JXWEM_E_NAMETOOLONG;
    status = make_target(check);
    return status == JX_OK ? enter() : status;
  }

  bool is_target_root(const struct stat64 &info) const {
    return has_target_root_ && info.st_dev == target_root_.st_dev &&
           info.st_ino == target_root_.st_ino;
  }

  JXInstance *instance_;
  jx::PoolBlock<Paths> paths_;
  Level *deepest_ = nullptr;
  struct stat64 target_root_ = {};
  bool has_target_root_ = false;
  // Zeros between reads: the length read is that of the name on the system, and a decoder may have
  // filled less.
  JXChar name_[JX_NAME_MAX_CHARS] = {};
};

}  // namespace

extern "C" JXStatus bkwemcopy(JXInstance *instance, const JXChar *source, uint32_t source_chars,
                              const JXChar *target, uint32_t target_chars) {
  if (!instance) return JXWEM_E_NOHANDLE;
  if (!source || source_chars == 0 || !target || target_chars == 0) return JXWEM_E_BADNAME;
  jx::SystemPath to;
  const JXStatus to_status = to.prepare(instance, target, target_chars);
  jx::SystemPath from;
  const JXStatus from_status = from.prepare(instance, source, source_chars);
  if (from_status != JX_OK || to_status != JX_OK) {
    // A target that exists takes precedence over a fault of the source.
    const bool is_taken = to_status == JX_OK && jx::test_exists(instance, to.native()) == JX_OK;
    if (is_taken) return JXWEM_E_EXISTS;
    return from_status != JX_OK ? from_status : to_status;
  }
  Check check;
  const JXStatus status = check.run(instance, from.native(), to.native());
  if (status != JX_OK) return status;
  if (!check.is_dir()) {
    return copy_file(instance, from.native(), to.native(), check.block_bytes());
  }
  return TreeCopy(instance).run(from.expanded(), source_chars, to.expanded(), target_chars, check);
}
