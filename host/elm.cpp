// The extension "jxelm": opens files with open-file-description locks, or hands out a descriptor
// that the embedding program offers.
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

#include "host/host.hpp"

namespace jxhost {

namespace {

// Read, write and execute only: no new file is set-user-id or set-group-id.
constexpr uint32_t kPermissionsMax = 0777;

struct OpenFile final : JXOpenFile, Live {
  OpenFile();
  ~OpenFile() override { close(); }
  // Closes the descriptor once. 0 or the errno. Never repeated: Linux closes it even when the call
  // is interrupted, and another thread may have its number already.
  int close() {
    if (fd < 0) return 0;
    return ::close(std::exchange(fd, -1)) == 0 || errno == EINTR ? 0 : errno;
  }
  int fd = -1;
};

struct Elm final : JXElm, Live {
  Elm();
};

// The outcome of a system call as a status of the extension.
struct Outcome {
  JXStatus status = JX_OK;
  int error = 0;  // errno that led to it; 0: refused without a call
};

// The path of a request in bytes: encoding 62, byte n is character n.
class Path {
 public:
  JXStatus assign(const JXChar *path, uint32_t path_chars) {
    if (path_chars >= sizeof bytes_) return JXELM_E_TOOLONG;
    for (uint32_t i = 0; i < path_chars; ++i) {
      // A zero would end the name early and open another file.
      if (path[i] == 0 || path[i] > 0xFF) return JXELM_E_REFUSED;
      bytes_[i] = static_cast<char>(path[i]);
    }
    bytes_[path_chars] = 0;
    return JX_OK;
  }

  const char *bytes() const { return bytes_; }

  // Tells whether the parent directory is missing. Cuts the last component off the path.
  bool cut_to_missing_parent() {
    size_t length = std::strlen(bytes_);
    while (length > 0 && bytes_[length - 1] == '/') --length;
    while (length > 0 && bytes_[length - 1] != '/') --length;
    if (length == 0) return false;
    bytes_[length] = 0;
    struct stat facts;
    return ::stat(bytes_, &facts) != 0 && (errno == ENOENT || errno == ENOTDIR);
  }

 private:
  char bytes_[PATH_MAX];  // zero-terminated
};

bool is_valid(const JXOpenRequest *request, uint32_t lock_word) {
  if (!request || (!request->path && request->path_chars > 0)) return false;
  if (request->permissions > kPermissionsMax || lock_word == JXELM_LOCK_WAIT) return false;
  const uint32_t access = request->flags & O_ACCMODE;
  switch (lock_word & ~JXELM_LOCK_WAIT) {
    case JXELM_LOCK_NONE:
      break;
    case JXELM_LOCK_SHARED:
      if (access == O_WRONLY) return false;
      break;
    case JXELM_LOCK_EXCLUSIVE:
      if (access == O_RDONLY) return false;
      break;
    default:
      return false;
  }
  return access != O_ACCMODE && !(access == O_RDONLY && (request->flags & O_TRUNC));
}

Outcome failed_open(int error, Path &path) {
  if (error == ENOENT && path.cut_to_missing_parent()) return {JXELM_E_NOPATH, error};
  return {elm_status_of_open(error), error};
}

Outcome open_path(Path &path, const JXOpenRequest &request, OpenFile &file) {
  const int flags =
      (static_cast<int>(request.flags) & ~O_TRUNC) | O_LARGEFILE | O_CLOEXEC | O_NOCTTY;
  do {
    file.fd = ::open(path.bytes(), flags, static_cast<mode_t>(request.permissions));
  } while (file.fd < 0 && errno == EINTR);
  return file.fd < 0 ? failed_open(errno, path) : Outcome{};
}

// Duplicates an offered descriptor if its access mode allows what the request asks for.
Outcome duplicate(int fd, uint32_t flags, OpenFile &file) {
  const int have = ::fcntl(fd, F_GETFL);
  if (have < 0) return {elm_status_of_open(errno), errno};
  const int access = have & O_ACCMODE;
  if (access != O_RDWR && access != static_cast<int>(flags & O_ACCMODE)) return {JXELM_E_ACCESS};
  file.fd = ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
  return file.fd < 0 ? Outcome{elm_status_of_open(errno), errno} : Outcome{};
}

Outcome lock_file(int fd, uint32_t lock_word) {
  if ((lock_word & ~JXELM_LOCK_WAIT) == JXELM_LOCK_NONE) return {};
  struct flock lock = {};  // the whole file, however it grows
  lock.l_type = lock_word & JXELM_LOCK_EXCLUSIVE ? F_WRLCK : F_RDLCK;
  lock.l_whence = SEEK_SET;
  const int command = lock_word & JXELM_LOCK_WAIT ? F_OFD_SETLKW : F_OFD_SETLK;
  while (::fcntl(fd, command, &lock) != 0) {
    if (errno != EINTR) return {elm_status_of_lock(errno), errno};
  }
  return {};
}

Outcome empty_file(int fd) {
  while (::ftruncate(fd, 0) != 0) {
    if (errno != EINTR) return {elm_status_of_open(errno), errno};
  }
  return {};
}

// The steps after the open. The order matters: the file is emptied only once the lock is held.
Outcome take_possession(const OpenFile &file, uint32_t flags, uint32_t lock_word) {
  struct stat facts;
  if (::fstat(file.fd, &facts) != 0) return {elm_status_of_open(errno), errno};
  if (S_ISDIR(facts.st_mode)) return {JXELM_E_REFUSED, EISDIR};
  if (!S_ISREG(facts.st_mode)) return {};
  const Outcome locked = lock_file(file.fd, lock_word);
  if (locked.status != JX_OK) return locked;
  return flags & O_TRUNC ? empty_file(file.fd) : Outcome{};
}

// The module answers all of these with one system error, so the journal gets the text.
constexpr JXStatus kReported[] = {JXELM_E_SYSTEM, JXELM_E_BADARG, JXELM_E_TOOLONG,  JXELM_E_NOSPACE,
                                  JXELM_E_LIMIT,  JXELM_E_LOOP,   JXELM_E_NODEVICE, JXELM_E_TOOBIG,
                                  JXELM_E_EXISTS, JXELM_E_NOLOCKS};

void report_outcome(JXJournal *journal, const Outcome &outcome) {
  const bool is_reported = std::ranges::find(kReported, outcome.status) != std::end(kReported);
  if (outcome.error == 0 || !is_reported) return;
  const char *text = ::strerrordesc_np(outcome.error);
  report(journal, JX_JOURNAL_ERROR, outcome.status, text ? text : "unknown system error");
}

Outcome open_and_lock(const JXOpenRequest *request, uint32_t lock_word, OpenFile &file) {
  if (!is_valid(request, lock_word)) return {JXELM_E_BADARG};
  int32_t offered_fd = -1;
  if (file.host->offers.get(request->path, request->path_chars, &offered_fd)) {
    const Outcome opened = duplicate(offered_fd, request->flags, file);
    // Not emptied: the content of an offered file is the offerer's to decide.
    return opened.status != JX_OK ? opened : take_possession(file, 0, lock_word);
  }
  Path path;
  if (const JXStatus status = path.assign(request->path, request->path_chars)) return {status};
  const Outcome opened = open_path(path, *request, file);
  return opened.status != JX_OK ? opened : take_possession(file, request->flags, lock_word);
}

JXOpenFile *open_file(JXElm *elm, const JXOpenRequest *request, uint32_t, uint32_t lock_word,
                      JXJournal *journal, JXStatus *status_out) {
  JXStatus ignored;
  JXStatus &status = status_out ? *status_out : ignored;
  status = JXELM_E_BADARG;
  if (!elm) return nullptr;
  // Allocated first: nothing may fail once the file has been emptied.
  OpenFile *file = make_live<OpenFile>(static_cast<Elm *>(elm)->host, "open file", nullptr);
  status = JXELM_E_NOMEM;
  if (!file) return nullptr;
  const Outcome outcome = open_and_lock(request, lock_word, *file);
  status = outcome.status;
  if (status == JX_OK) {
    std::snprintf(file->name, sizeof file->name, "descriptor %d", file->fd);
    return file;
  }
  end_live(file);
  report_outcome(journal, outcome);
  return nullptr;
}

JXStatus close_file(JXOpenFile *file, const uint32_t *, JXJournal *journal) {
  if (!file) return JXHOST_E_BADOBJECT;
  auto *self = static_cast<OpenFile *>(file);
  const int error = self->close();
  const Outcome outcome = {error == 0 ? JX_OK : elm_status_of_open(error), error};
  end_live(self);
  report_outcome(journal, outcome);
  return outcome.status;
}

JXStatus release_elm(JXExtension *extension) {
  return end_live(static_cast<Elm *>(reinterpret_cast<JXElm *>(extension)));
}

OpenFile::OpenFile() : JXOpenFile{.close_file = jxhost::close_file, .descriptor = &fd} {}

Elm::Elm() : JXElm{.release_extension = release_elm, .open_file = jxhost::open_file} {}

}  // namespace

JXExtension *make_elm(JXHost *host) {
  JXElm *elm = make_live<Elm>(host, "extension", "jxelm");
  return reinterpret_cast<JXExtension *>(elm);
}

}  // namespace jxhost

extern "C" {

JXStatus jxhost_offer_descriptor(JXHost *host, const char *path8, int fd) {
  if (!host || !path8 || !*path8 || fd < 0) return JX_E_BADARG;
  return static_cast<jxhost::Host *>(host)->offers.set(path8, fd);
}

void jxhost_withdraw_descriptor(JXHost *host, const char *path8) {
  if (host && path8) static_cast<jxhost::Host *>(host)->offers.remove(path8);
}

}  // extern "C"
