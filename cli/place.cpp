// Looking up a name for output so that nobody can change what it means afterwards.
#include "cli/place.hpp"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>

namespace cli {
namespace {

constexpr int kMostLinks = 40;  // as the system follows them

bool is_in_proc(int folder) {
  struct ::statfs system = {};
  return ::fstatfs(folder, &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
}

bool is_same_folder(int folder, const char *path) {
  struct ::stat held = {};
  struct ::stat named = {};
  return ::fstat(folder, &held) == 0 && ::stat(path, &named) == 0 && is_same_file(held, named);
}

// The number that a member of a folder of /proc has, if these are the descriptors of this process;
// -1 otherwise.
int own_descriptor(int folder, const std::string &name) {
  int number = -1;
  const char *end = name.data() + name.size();
  const auto parsed = std::from_chars(name.data(), end, number);
  const bool is_number = parsed.ec == std::errc() && parsed.ptr == end && number >= 0;
  const bool is_own = is_number && (is_same_folder(folder, "/proc/self/fd") ||
                                    is_same_folder(folder, "/proc/thread-self/fd"));
  return is_own ? number : -1;
}

// What others put into /tmp must not lead the superuser astray. Many systems are set to refuse this
// themselves; here it is refused on every one.
void refuse_planted(int folder, const struct ::stat &found, const std::string &shown) {
  struct ::stat holder = {};
  if (::fstat(folder, &holder) != 0) throw system_failure(shown, errno);
  const bool is_open_to_all = (holder.st_mode & S_ISVTX) != 0 && (holder.st_mode & S_IWOTH) != 0;
  const bool is_trusted = found.st_uid == ::geteuid() || found.st_uid == holder.st_uid;
  if (!is_open_to_all || is_trusted || S_ISDIR(found.st_mode)) return;
  throw Failure(shown, JXWEM_E_ACCESS)
      .saying("another user put it into a folder where anyone may put files");
}

// Looks up the last component of a path that starts in the folder at, unless it is absolute.
Place look_up(const Descriptor &at, const std::string &path, const std::string &shown) {
  const size_t slash = path.rfind('/');
  const std::string folder = slash == path.npos ? "." : path.substr(0, slash + 1);
  Place place;
  place.folder = Descriptor(::openat(at.get(), folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (place.folder.get() < 0) throw path_failure(shown, errno);
  place.name = path.substr(slash + 1);
  const bool is_folder = place.name.empty() || place.name == "." || place.name == "..";
  if (is_folder) throw Failure(shown, JXWEM_E_OPENREFUSED);
  return place;
}

std::string read_link(int link, const std::string &shown) {
  std::array<char, PATH_MAX> path;
  const ssize_t length = ::readlinkat(link, "", path.data(), path.size());
  if (length < 0) throw system_failure(shown, errno);
  return std::string(path.data(), static_cast<size_t>(length));
}

// Stores the status of what has the name. The path that it leads to when that is a link to follow,
// empty otherwise.
std::string examine(Place &place, const std::string &shown) {
  const int folder = place.folder.get();
  const bool is_proc = is_in_proc(folder);
  if (is_proc) place.own_fd = own_descriptor(folder, place.name);
  if (place.own_fd >= 0) return {};
  const Descriptor member(::openat(folder, place.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (member.get() < 0 && errno == ENOENT) return {};
  struct ::stat status = {};
  if (member.get() < 0 || ::fstat(member.get(), &status) != 0) throw system_failure(shown, errno);
  refuse_planted(folder, status, shown);
  place.is_elsewhere = is_proc && S_ISLNK(status.st_mode);
  if (S_ISLNK(status.st_mode) && !is_proc) return read_link(member.get(), shown);
  if (place.is_elsewhere && ::fstatat(folder, place.name.c_str(), &status, 0) != 0) {
    throw system_failure(shown, errno);
  }
  if (S_ISDIR(status.st_mode)) throw Failure(shown, JXWEM_E_OPENREFUSED);
  place.status = status;
  return {};
}

}  // namespace

Place find_place(const std::string &path, const std::string &shown) {
  Place place;
  const auto own_fd = path == "-" ? STDOUT_FILENO : descriptor_named(path);
  if (own_fd) {
    place.own_fd = *own_fd;
    return place;
  }
  Descriptor at(AT_FDCWD);
  std::string rest = path;
  for (int links = 0; links <= kMostLinks; ++links) {
    place = look_up(at, rest, shown);
    rest = examine(place, shown);
    if (rest.empty()) return place;
    at = std::move(place.folder);
  }
  throw system_failure(shown, ELOOP);
}

Descriptor open_place(const Place &place, int flags, const std::string &shown) {
  const int nofollow = place.is_elsewhere ? 0 : O_NOFOLLOW;
  Descriptor file(
      ::openat(place.folder.get(), place.name.c_str(), flags | nofollow | O_CLOEXEC | O_NOCTTY));
  if (file.get() < 0) return file;
  struct ::stat status = {};
  if (::fstat(file.get(), &status) != 0) throw system_failure(shown, errno);
  if (!place.status || !is_same_file(status, *place.status)) throw changed_failure(shown);
  return file;
}

Failure changed_failure(const std::string &shown) {
  return Failure(shown, JXWEM_E_INUSE).saying("it became another file meanwhile", "try again");
}

}  // namespace cli
