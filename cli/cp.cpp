// The command "cp". The copy grows in a private directory and takes its name when it is whole.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "cli/commands.hpp"
#include "cli/many.hpp"
#include "cli/session.hpp"
#include "cli/staging.hpp"
#include "cli/target.hpp"
#include "cli/tree.hpp"

namespace cli {
namespace {

constexpr mode_t kPermissions = 0777;
constexpr char kNothingLeft[] = "nothing of the copy was left";
constexpr char kNotRead[] = "it is not in the copy: its directory could not be read to the end";

Descriptor open_folder(int at_fd, const std::string &path) {
  return Descriptor(::openat(at_fd, path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

bool is_same(const struct ::stat &a, const struct ::stat &b) {
  return a.st_ino == b.st_ino && a.st_dev == b.st_dev;
}

class Copy {
 public:
  Copy(Session &session, const std::string &from, const std::string &to)
      : session_(session), from_(from), to_(to), shown_(from + " -> " + to) {}

  void run() {
    find_target();
    open_source();
    if (!is_tree()) {
      require_target_folder();
      return copy(0);
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
    source_fd_ = Descriptor(::open(from_.c_str(), O_PATH | O_CLOEXEC));
    if (source_fd_.get() < 0 || ::fstat(source_fd_.get(), &source_) != 0) {
      throw system_failure(shown_, errno);
    }
    refuse_special(shown_, source_);
  }

  static void refuse_special(const std::string &shown, const struct ::stat &status) {
    if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) return;
    throw Failure(shown, JXWEM_E_NOTSUPPORTED).saying("a FIFO, socket or device is not copied");
  }

  // The module would notice after it has copied a part, and tell of a path that is too long.
  void refuse_copy_into_itself() const {
    std::string folder = parts_.folder;
    Descriptor at = open_folder(AT_FDCWD, folder);
    while (at.get() < 0 && errno == ENOENT) {
      folder = split_last(folder).folder;
      at = open_folder(AT_FDCWD, folder);
    }
    struct ::stat here = {}, below = {};
    while (at.get() >= 0 && ::fstat(at.get(), &here) == 0 && !is_same(here, below)) {
      if (is_same(here, source_)) {
        throw Failure(shown_, JXWEM_E_BADOPTIONS)
            .saying("a directory cannot be copied into itself");
      }
      at = open_folder(at.get(), "..");
      below = here;
    }
  }

  // Refuses what cannot be copied before anything is, and counts the members. What is put in a
  // member's place between this and the copy is not seen here.
  uint64_t check_tree() const {
    uint64_t count = 0;
    walk_tree(source_fd_.get(), from_, [&](const Member &member) {
      const std::string shown = from_ + "/" + member.path;
      refuse_special(shown, member.status);
      const int rights = S_ISDIR(member.status.st_mode) ? R_OK | X_OK : R_OK;
      if (::faccessat(member.folder_fd, member.name, rights, AT_EACCESS) != 0) {
        throw system_failure(shown, errno);
      }
      ++count;
      return false;
    });
    return count;
  }

  void copy(uint64_t member_count) const {
    Staging staging(folder_.get(), parts_.folder, shown_);
    const std::string source = path_through(source_fd_.get(), from_);
    // The module makes every file open to all; a copy is no more open than what it is a copy of.
    const CreationMask mask(is_tree() ? 0 : ~source_.st_mode & kPermissions);
    const wem::Status status =
        session_.instance().copy(session_.name(source), session_.name(staging.path()));
    if (!status.ok()) throw copy_failure(status, staging);
    if (is_tree()) require_whole(member_count, staging);
    staging.publish(parts_.name);
  }

  // The first member of the source that is not in the copy; with_size also one that is shorter
  // there, as when its copying failed. Empty when there is none.
  std::string find_missing(const Staging &staging, bool with_size) const {
    std::string missing;
    const std::string root = std::string(Staging::kContent) + "/";
    walk_tree(source_fd_.get(), from_, [&](const Member &member) {
      struct ::stat copied = {};
      const std::string path = root + member.path;
      const bool is_there = ::fstatat(staging.fd(), path.c_str(), &copied, 0) == 0;
      const bool is_short =
          with_size && S_ISREG(member.status.st_mode) && copied.st_size < member.status.st_size;
      if (!is_there || is_short) missing = member.path;
      return !missing.empty();
    });
    return missing;
  }

  Failure copy_failure(wem::Status status, const Staging &staging) const {
    Failure failure(shown_, status);
    failure.hint = kNothingLeft;
    try {
      const std::string member = is_tree() ? find_missing(staging, true) : std::string();
      if (!member.empty()) failure.path = from_ + "/" + member + " -> " + to_ + "/" + member;
    } catch (const Failure &) {
      // The tree cannot be read any more; the failure of the copy says more than that.
    }
    return failure;
  }

  // The module's copy ends without a word where a directory of the source cannot be read on. Fewer
  // members than before are fine when those that are there now were copied: others were removed.
  void require_whole(uint64_t member_count, const Staging &staging) const {
    uint64_t copied = 0;
    const Descriptor content = open_folder(staging.fd(), Staging::kContent);
    walk_tree(content.get(), to_, [&copied](const Member &) { return ++copied == 0; });
    if (copied >= member_count) return;
    const std::string missing = find_missing(staging, false);
    if (missing.empty()) return;
    throw Failure(from_ + "/" + missing, JXWEM_E_FAILED).saying(kNotRead, kNothingLeft);
  }

  Session &session_;
  std::string from_;
  std::string to_;
  std::string shown_;
  PathParts parts_;  // of the target
  Descriptor folder_;
  int folder_error_ = 0;
  Descriptor source_fd_;
  struct ::stat source_ = {};
};

}  // namespace

int run_cp(Session &session, const Arguments &arguments) {
  return for_each(session, pairs_of(arguments),
                  [&session](const Pair &pair) { Copy(session, pair.from, pair.to).run(); });
}

}  // namespace cli
