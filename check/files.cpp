// Files that "jxelm" opens: content, flags, and one close.
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include "check/with_file.hpp"

namespace jxcheck {

namespace {

void check_content(Probe &probe, const Elm &elm) {
  OpenFile file(probe, elm, {names::kFile, O_RDONLY});
  if (!expect_open(probe, file, "O_RDONLY")) return;
  char content[8] = "";
  const ssize_t count = ::read(file.fd(), content, sizeof content);
  if (count != 3 || ::memcmp(content, kContent, 3) != 0) {
    probe.found("a descriptor from which %d other bytes come", static_cast<int>(count));
  }
}

void check_flags(Probe &probe, const Elm &elm) {
  for (const int flags : {O_RDONLY, O_WRONLY, O_RDWR, O_RDWR | O_APPEND, O_WRONLY | O_APPEND}) {
    OpenFile file(probe, elm, {names::kFile, static_cast<uint32_t>(flags)});
    if (!expect_open(probe, file, "the file")) return;
    const int came = ::fcntl(file.fd(), F_GETFL);
    constexpr int kSeen = O_ACCMODE | O_APPEND;
    if ((came & kSeen) != flags) return probe.found("flags 0x%x for 0x%x", came & kSeen, flags);
  }
}

void check_create(Probe &probe, const Elm &elm) {
  constexpr mode_t kMask = 022, kDue = 0640;
  const mode_t before = ::umask(kMask);
  OpenFile file(probe, elm, {names::kByteName, O_RDWR | O_CREAT | O_EXCL, JXELM_LOCK_NONE, 0660});
  ::umask(before);
  if (!expect_open(probe, file, "a name of byte 0xe9")) return;
  struct stat facts;
  if (::fstatat(probe.folder_fd, names::kByteName, &facts, 0) != 0) {
    return probe.found("a file of another name");
  }
  if ((facts.st_mode & 07777) != kDue) probe.found("permissions 0%o", facts.st_mode & 07777);
}

void check_truncate(Probe &probe, const Elm &elm) {
  OpenFile file(probe, elm, {names::kFile, O_WRONLY | O_TRUNC});
  if (!expect_open(probe, file, "O_TRUNC")) return;
  const long size = size_of(probe.folder_fd, names::kFile);
  if (size != 0) probe.found("a size of %ld", size);
}

// Tells whether a descriptor is open.
bool is_open(int fd) { return ::fcntl(fd, F_GETFD) >= 0; }

void check_close(Probe &probe, const Elm &elm) {
  OpenFile file(probe, elm, {names::kFile, O_RDONLY});
  if (!expect_open(probe, file, "the file")) return;
  const int fd = file.fd();
  if (!is_open(fd)) return probe.found("a descriptor that is not open");
  if (!probe.expect_status("to close it", file.close(), JX_OK)) return;
  if (is_open(fd)) probe.found("descriptor %d is still open", fd);
}

void check_close_once(Probe &probe) {
  if (probe.folder_fd < 0) return probe.skip("no folder was given");
  if (!put_file(probe.folder_fd)) return probe.skip("no file to be made: %s", ::strerror(errno));
  int fd = -1;
  {
    const Elm elm(probe);
    if (!elm) return;
    OpenFile file(probe, elm, {names::kFile, O_RDONLY});
    if (!expect_open(probe, file, "the file")) return;
    fd = file.fd();
    if (!probe.expect_status("to close it", file.close(), JX_OK)) return;
    // The next file of the program gets the number.
    if (::dup2(probe.folder_fd, fd) != fd) return probe.skip("no descriptor to be had");
    OpenFile other(probe, elm, {names::kFile, O_RDONLY});
  }
  if (!is_open(fd)) return probe.found("a descriptor of the program was closed later");
  ::close(fd);
}

constexpr Check kChecks[] = {
    {Slot::open_file, "to read a file", "the descriptor of that file", guide::kElm, kFileSlots,
     with_file<check_content>},
    {Slot::open_file, "POSIX flags", "a descriptor that is open with them", guide::kElm, kFileSlots,
     with_file<check_flags>},
    {Slot::open_file, "a new file with permissions 0660 and a mask of 022",
     "a file of that name, byte for byte, and permissions 0640", guide::kElm, kFileSlots,
     with_file<check_create>},
    {Slot::open_file, "O_TRUNC", "an empty file", guide::kLockWords, kFileSlots,
     with_file<check_truncate>},
    {Slot::close_file, "a file", "status 0, and the descriptor is closed", guide::kElm, kFileSlots,
     with_file<check_close>},
    {Slot::close_file, "a file whose descriptor is taken again", "closed exactly once", guide::kElm,
     kFileSlots, check_close_once},
};

}  // namespace

std::span<const Check> file_checks() { return kChecks; }

}  // namespace jxcheck
