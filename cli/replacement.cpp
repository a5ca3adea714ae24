// Making a file beside its target, and putting it in the target's place.
#include "cli/replacement.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

#include "cli/access.hpp"
#include "cli/hidden_name.hpp"

namespace cli {
namespace {

constexpr int kAttempts = 100;
constexpr mode_t kOwnOnly = 0600;  // until the old file's permissions are known to be safe
constexpr mode_t kForNew = 0666;   // reduced by the umask or the folder's default access list

}  // namespace

// A folder that may not be read cannot be opened to be made durable.
void ChangedFolders::add(int folder_fd, const std::string &shown) {
  struct ::stat status = {};
  if (::fstat(folder_fd, &status) != 0) throw system_failure(shown, errno);
  const std::lock_guard guard(mutex_);
  const bool is_known = std::ranges::any_of(
      folders_, [&](const Folder &folder) { return is_same_file(folder.status, status); });
  if (is_known) return;
  Descriptor folder(::openat(folder_fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.get() >= 0) folders_.push_back({status, std::move(folder), shown});
}

void ChangedFolders::sync() const {
  for (const Folder &folder : folders_) {
    if (::fsync(folder.descriptor.get()) == 0 || errno == EINVAL || errno == EROFS) continue;
    throw system_failure(folder.shown, errno);
  }
}

Replacement::Replacement(const Place &place, int old_fd, std::string shown)
    : place_(place), old_fd_(old_fd), shown_(std::move(shown)) {
  const mode_t mode = old_fd >= 0 ? kOwnOnly : kForNew;
  file_ = Descriptor(::openat(place.folder.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
  if (file_.get() >= 0 && can_be_linked()) return;
  // What a file system or kernel without unnamed files answers.
  const bool is_refused = file_.get() < 0 && errno != EOPNOTSUPP && errno != EISDIR &&
                          errno != EINVAL && errno != ENOENT;
  if (is_refused) throw failure(errno);
  make_hidden(mode);
}

Replacement::~Replacement() {
  if (!hidden_.empty()) unlink_own(place_.folder.get(), hidden_.c_str(), file_.get());
  if (!backup_.empty()) unlink_own(place_.folder.get(), backup_.c_str(), old_fd_);
}

// A name is given through /proc, which may not be there.
bool Replacement::can_be_linked() const {
  struct ::stat own = {};
  struct ::stat linked = {};
  return ::fstat(fd(), &own) == 0 && ::stat(path_of(fd()).c_str(), &linked) == 0 &&
         is_same_file(own, linked);
}

void Replacement::make_hidden(mode_t mode) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::string name = hidden_name(shown_);
    const SignalsBlocked guard;
    file_ = Descriptor(::openat(place_.folder.get(), name.c_str(),
                                O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, mode));
    if (file_.get() < 0 && errno == EEXIST) continue;
    if (file_.get() < 0) throw failure(errno);
    hidden_ = std::move(name);
    on_signal_.set(place_.folder.get(), hidden_, fd());
    return;
  }
  throw Failure(shown_, JXWEM_E_EXISTS, "no free name beside it");
}

void Replacement::link_hidden() {
  std::string name = hidden_name(shown_);
  const SignalsBlocked guard;
  if (::linkat(AT_FDCWD, path_of(fd()).c_str(), place_.folder.get(), name.c_str(),
               AT_SYMLINK_FOLLOW) != 0) {
    throw failure(errno);
  }
  hidden_ = std::move(name);
  on_signal_.set(place_.folder.get(), hidden_, fd());
}

// Fails when something has the name by now.
void Replacement::take_empty_place() {
  const int folder = place_.folder.get();
  const char *name = place_.name.c_str();
  const int result =
      hidden_.empty() ? ::linkat(AT_FDCWD, path_of(fd()).c_str(), folder, name, AT_SYMLINK_FOLLOW)
                      : ::renameat2(folder, hidden_.c_str(), folder, name, RENAME_NOREPLACE);
  if (result == 0) return;
  // Some file systems cannot be asked not to replace.
  const bool is_unknown = !hidden_.empty() && (errno == EINVAL || errno == ENOSYS);
  struct ::stat status = {};
  if (!is_unknown) throw naming_failure(errno);
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0) throw changed_failure(shown_);
  if (::renameat(folder, hidden_.c_str(), folder, name) != 0) throw naming_failure(errno);
}

// By its descriptor: what has the name by now may be another file.
void Replacement::link_backup(const std::string &suffix) {
  std::string name = place_.name + suffix;
  const SignalsBlocked guard;
  const int result = ::linkat(AT_FDCWD, path_of(old_fd_).c_str(), place_.folder.get(), name.c_str(),
                              AT_SYMLINK_FOLLOW);
  const int error = result == 0 ? 0 : errno;
  if (error == 0) {
    backup_ = std::move(name);
    backup_on_signal_.emplace(place_.folder.get(), backup_, old_fd_);
    return;
  }
  if (error != EEXIST) throw system_failure(shown_ + suffix, error);
  // A run that was killed may have got as far as this.
  if (is_named(place_.folder.get(), name.c_str(), old_fd_)) return;
  throw Failure(shown_ + suffix, JXWEM_E_EXISTS)
      .saying("a backup of that name is there already", "give another suffix with --backup");
}

void Replacement::replace_old(const std::string &backup_suffix) {
  const int folder = place_.folder.get();
  const char *name = place_.name.c_str();
  struct ::stat status = {};
  const bool is_there = ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0;
  if (!is_there || !is_same_file(status, *place_.status)) throw changed_failure(shown_);
  keep_access(fd(), old_fd_, shown_);
  if (!backup_suffix.empty()) link_backup(backup_suffix);
  if (hidden_.empty()) link_hidden();
  // From the moment of the rename on the backup has to stay.
  const SignalsBlocked guard;
  if (::renameat(folder, hidden_.c_str(), folder, name) != 0) throw naming_failure(errno);
  backup_on_signal_.reset();
  backup_.clear();
}

void Replacement::put_in_place(const std::string &backup_suffix, ChangedFolders *folders) {
  if (old_fd_ >= 0) {
    replace_old(backup_suffix);
  } else {
    take_empty_place();
  }
  hidden_.clear();
  on_signal_.release();
  if (!is_named(place_.folder.get(), place_.name.c_str(), fd())) throw changed_failure(shown_);
  ChangedFolders this_one;
  (folders ? *folders : this_one).add(place_.folder.get(), shown_);
  this_one.sync();
}

// The file or the place is gone, or the place is taken: somebody else was at work.
Failure Replacement::naming_failure(int error) const {
  struct ::stat folder = {};
  const bool is_folder_gone = ::fstat(place_.folder.get(), &folder) == 0 && folder.st_nlink == 0;
  if (error == ENOENT && is_folder_gone) return path_failure(shown_, error);
  return error == ENOENT || error == EEXIST ? changed_failure(shown_) : failure(error);
}

// The failure of making or naming the file. That the old one may be written does not help.
Failure Replacement::failure(int error) const {
  Failure failure = system_failure(shown_, error);
  const bool is_folder = error == EACCES || error == EPERM || error == EROFS || error == EBUSY;
  if (old_fd_ < 0 || !is_folder) return failure;
  return std::move(failure).saying(
      "it may be written, but its folder does not let a new file take its place",
      "give - as the output and let the shell write the file, with > FILE");
}

}  // namespace cli
