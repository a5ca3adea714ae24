// The command "cp". The copy grows in a private directory and takes its name when it is whole.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "cli/commands.hpp"
#include "cli/copier.hpp"
#include "cli/many.hpp"
#include "cli/session.hpp"
#include "cli/staging.hpp"
#include "cli/tree.hpp"

namespace cli {
namespace {

constexpr char kNothingLeft[] = "nothing of the copy was left";

Descriptor open_folder(int at_fd, const std::string &path) {
  return Descriptor(::openat(at_fd, path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

class Copy {
 public:
  Copy(Session &session, const Pair &pair, CopyManner manner)
      : session_(session), from_(pair.from), to_(pair.to), shown_(pair.shown()), manner_(manner) {}

  void run() {
    find_target();
    open_source();
    if (!is_tree()) {
      require_target_folder();
      return copy(static_cast<uint64_t>(source_.st_size));
    }
    refuse_copy_into_itself();
    require_target_folder();
    copy(check_tree());
  }

 private:
  bool is_tree() const { return S_ISDIR(source_.st_mode); }

  // What is there is never replaced, and said before what is wrong with the source.
  void find_target() {
    parts_ = split_last(to_);
    folder_ = open_folder(AT_FDCWD, parts_.folder);
    folder_error_ = errno;
    if (folder_.get() < 0) return;
    struct ::stat target = {};
    const int fd = folder_.get();
    const bool is_taken = parts_.name.empty() ||
                          ::fstatat(fd, parts_.name.c_str(), &target, AT_SYMLINK_NOFOLLOW) == 0;
    if (is_taken) throw Failure(shown_, JXWEM_E_EXISTS);
    if (errno != ENOENT) throw system_failure(shown_, errno);
  }

  void require_target_folder() const {
    const bool is_file_with_slash = !is_tree() && to_.ends_with('/');
    if (folder_.get() >= 0 && !is_file_with_slash) return;
    const bool is_missing = folder_.get() >= 0 || folder_error_ == ENOENT;
    throw system_failure(shown_, is_missing ? ENOTDIR : folder_error_);
  }

  // The module opens through this descriptor what was looked at here.
  void open_source() {
    const int flags = O_PATH | O_CLOEXEC | (manner_.keeps_links ? O_NOFOLLOW : 0);
    source_fd_ = Descriptor(::open(from_.c_str(), flags));
    if (source_fd_.get() < 0 || ::fstat(source_fd_.get(), &source_) != 0) {
      throw system_failure(shown_, errno);
    }
    refuse_special(shown_, source_.st_mode);
  }

  // It would grow without end.
  void refuse_copy_into_itself() const {
    std::string folder = parts_.folder;
    Descriptor at = open_folder(AT_FDCWD, folder);
    while (at.get() < 0 && errno == ENOENT) {
      folder = split_last(folder).folder;
      at = open_folder(AT_FDCWD, folder);
    }
    struct ::stat here = {}, below = {};
    while (at.get() >= 0 && ::fstat(at.get(), &here) == 0 && !is_same_file(here, below)) {
      if (is_same_file(here, source_)) {
        throw Failure(shown_, JXWEM_E_BADOPTIONS)
            .saying("a directory cannot be copied into itself");
      }
      at = open_folder(at.get(), "..");
      below = here;
    }
  }

  // Refuses what cannot be copied before anything is, and counts the bytes of all files.
  uint64_t check_tree() const {
    uint64_t bytes = 0;
    const Links links = manner_.keeps_links ? Links::kKeep : Links::kFollow;
    walk_tree(source_fd_.get(), from_, links, [&](const Member &member) {
      const std::string shown = from_ + "/" + member.path;
      const mode_t mode = member.status.st_mode;
      refuse_special(shown, mode);
      if (S_ISLNK(mode)) return false;
      const int rights = S_ISDIR(mode) ? R_OK | X_OK : R_OK;
      if (::faccessat(member.folder_fd, member.name, rights, AT_EACCESS) != 0) {
        throw system_failure(shown, errno);
      }
      if (S_ISREG(mode)) bytes += static_cast<uint64_t>(member.status.st_size);
      return false;
    });
    return bytes;
  }

  void copy(uint64_t byte_count) const {
    Staging staging(folder_.get(), parts_.folder, shown_);
    Copier copier(session_, manner_, staging, from_, to_, byte_count);
    try {
      copier.copy(source_fd_.get(), source_);
    } catch (Failure &failure) {
      failure.hint = kNothingLeft;
      throw;
    }
    staging.publish(parts_.name);
    copier.finish();
  }

  Session &session_;
  std::string from_;
  std::string to_;
  std::string shown_;
  CopyManner manner_;
  PathParts parts_;  // of the target
  Descriptor folder_;
  int folder_error_ = 0;
  Descriptor source_fd_;
  struct ::stat source_ = {};
};

}  // namespace

int run_cp(Session &session, const Arguments &arguments) {
  const CopyManner manner = {arguments.has("--no-dereference"), arguments.has("--preserve")};
  return for_each(session, pairs_of(arguments),
                  [&](const Pair &pair) { Copy(session, pair, manner).run(); });
}

}  // namespace cli
