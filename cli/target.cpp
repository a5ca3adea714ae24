// Writing a file so that a failure leaves the old content.
#include "cli/target.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/input.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr mode_t kForAll = 0666;  // reduced by the umask

// The first bytes of a file; none where it cannot be read: it has no mark as far as anyone can
// tell.
std::string read_head(int fd) {
  std::string head(kLongestMark, '\0');
  const ssize_t count = ::pread(fd, head.data(), head.size(), 0);
  head.resize(count > 0 ? static_cast<size_t>(count) : 0);
  return head;
}

bool is_reader_gone(int fd) {
  struct ::pollfd poll = {fd, 0, 0};
  return ::poll(&poll, 1, 0) == 1 && (poll.revents & POLLERR) != 0;
}

}  // namespace

Target::Target(Session &session, const std::string &name, Mode mode)
    : session_(session),
      shown_(name == "-" ? "standard output" : name),
      mode_(mode),
      place_(find_place(name, shown_)) {
  const bool is_file = !place_.status || S_ISREG(place_.status->st_mode);
  const bool is_revised = mode == Mode::kRevise;
  if (is_revised && (place_.own_fd >= 0 || !is_file)) {
    throw Failure(shown_, JXWEM_E_BADOPTIONS).saying("it is not a file that can be replaced");
  }
  if (place_.own_fd >= 0) {
    open_standing();
  } else if ((mode != Mode::kReplace && !is_revised) || !is_file) {
    open_in_place();
  } else {
    if (place_.status) open_old();
    if (!is_revised) replacement_.emplace(place_, held_.get(), shown_);
  }
}

Target::~Target() {
  static_cast<void>(file_.close());
  struct ::stat status = {};
  const bool is_empty = is_new_ && ::fstat(held_.get(), &status) == 0 && status.st_size == 0;
  if (is_empty) unlink_own(place_.folder.get(), place_.name.c_str(), held_.get());
}

int Target::fd() const {
  if (place_.own_fd >= 0) return place_.own_fd;
  return replacement_ ? replacement_->fd() : held_.get();
}

// What the program opened itself closes on exec, unlike what it was given.
void Target::open_standing() {
  const int flags = ::fcntl(fd(), F_GETFD);
  if (flags < 0 || (flags & FD_CLOEXEC) != 0) throw system_failure(shown_, EBADF);
  if (::fstat(fd(), &status_) != 0) throw system_failure(shown_, errno);
  require_offsets();
}

// The lock keeps others from it until the new content has its place.
void Target::open_old() {
  if (place_.is_elsewhere) {
    throw Failure(shown_, JXWEM_E_BADOPTIONS)
        .saying("it is what another process has open, which is not replaced",
                "name the file itself, or add to it with --append");
  }
  status_ = *place_.status;
  const auto unbuffered = [](const wem::OpenOptions &options) {
    return options.binary(1).direct().lock(JX_LOCK_EXCLUSIVE);
  };
  held_ = open_place(place_, O_RDWR | O_NONBLOCK, shown_);
  is_readable_ = held_.get() >= 0;
  if (!is_readable_ && errno == EACCES) held_ = open_place(place_, O_WRONLY | O_NONBLOCK, shown_);
  if (held_.get() < 0) throw system_failure(shown_, errno);
  const auto access = is_readable_ ? wem::OpenOptions::input() : wem::OpenOptions::append();
  guard_ = session_.open_descriptor(held_.get(), unbuffered(access), shown_);
}

// A file is opened for reading too, for the mark at its start, where that is allowed.
void Target::open_in_place() {
  if (!place_.status) create();
  if (place_.status) {
    const bool is_file = S_ISREG(place_.status->st_mode);
    const int both = is_file || mode_ == Mode::kUpdate ? O_RDWR : O_WRONLY;
    held_ = open_place(place_, both | append_flag(), shown_);
    const bool is_refused = held_.get() < 0 && errno == EACCES && mode_ == Mode::kAppend;
    if (is_refused) held_ = open_place(place_, O_WRONLY | append_flag(), shown_);
  }
  if (held_.get() < 0 || ::fstat(fd(), &status_) != 0) throw system_failure(shown_, errno);
  require_offsets();
}

// Makes the target, unless someone else did so a moment ago.
void Target::create() {
  const int flags = O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
  held_ = Descriptor(
      ::openat(place_.folder.get(), place_.name.c_str(), flags | append_flag(), kForAll));
  is_new_ = held_.get() >= 0;
  if (is_new_) return;
  if (errno != EEXIST) throw path_failure(shown_, errno);
  place_ = find_place(shown_, shown_);
  if (!place_.status) throw changed_failure(shown_);
}

// Additions go to the end even when another program makes some at the same time.
int Target::append_flag() const { return mode_ == Mode::kAppend ? O_APPEND : 0; }

void Target::require_offsets() {
  if (mode_ != Mode::kUpdate) {
    if (place_.own_fd < 0) head_ = read_head(fd());
    return;
  }
  const bool is_both = (::fcntl(fd(), F_GETFL) & O_ACCMODE) == O_RDWR;
  if (!is_both || ::lseek(fd(), 0, SEEK_CUR) < 0) {
    throw Failure(shown_, JXWEM_E_BADOPTIONS)
        .saying("--update and --at need a file, open for reading and writing");
  }
  head_ = read_head(fd());
}

void Target::refuse_same(const struct ::stat &source) const {
  if (!S_ISREG(status_.st_mode) || !is_same_file(source, status_)) return;
  throw Failure(shown_, JXWEM_E_BADOPTIONS)
      .saying("input and output are the same file",
              "write to another file and rename it with: jxfile mv");
}

uint32_t Target::encoding(uint32_t asked) const {
  const uint32_t found = sniff(head_);
  if (found == 0 || found == asked) return asked != 0 ? asked : JX_ENCODING_UTF8;
  if (asked == 0) return found;
  const std::string meaning = "its byte-order mark is that of ";
  throw Failure(shown_, JXWEM_E_BADOPTIONS)
      .saying(meaning + jxhost_encoding_name(found), "leave --to out");
}

void require_mark(uint32_t encoding) {
  if (!byte_order_mark(encoding).empty()) return;
  throw UsageError(std::string("--bom: ") + jxhost_encoding_name(encoding) + " has no mark");
}

void Target::require_mark(uint32_t encoding) const {
  cli::require_mark(encoding);
  if (head_.empty() || byte_order_mark_size(head_, encoding) > 0) return;
  throw UsageError("--bom: '" + shown_ + "' begins without a mark and is changed in place");
}

bool Target::is_terminal() const { return ::isatty(fd()) == 1; }

bool Target::is_forced() const {
  return place_.own_fd < 0 && (replacement_ || mode_ == Mode::kRevise || S_ISREG(status_.st_mode));
}

wem::OpenOptions Target::options() const {
  using wem::OpenOptions;
  const bool is_append = mode_ == Mode::kAppend && place_.own_fd < 0;
  const auto options = mode_ == Mode::kUpdate ? OpenOptions::update()
                       : is_append            ? OpenOptions::append()
                                              : OpenOptions::output();
  // A lock on a device would only keep others from it.
  return is_forced() ? options : options.lock(JX_LOCK_NONE);
}

wem::File &Target::open(const wem::OpenOptions &options) {
  if (mode_ == Mode::kRevise) replacement_.emplace(place_, held_.get(), shown_);
  file_ = session_.open_descriptor(fd(), options, shown_);
  return file_;
}

void Target::require_written(wem::Status status, const std::string &detail) const {
  if (status.ok()) return;
  if (status != JXWEM_E_SYSTEM || is_forced()) throw Failure(shown_, status, detail);
  const std::string why = is_reader_gone(fd()) ? std::strerror(EPIPE) : "it cannot be written";
  throw Failure(shown_, status, detail.empty() ? why : why + ", " + detail);
}

void Target::commit(ChangedFolders *folders) {
  // A pipe or a device cannot be forced anywhere; it has accepted what was written.
  const auto tolerable = [this](wem::Status status) {
    return status == JXWEM_E_FAILED && !is_forced() ? wem::Status() : status;
  };
  require_written(tolerable(file_.flush()));
  require_written(tolerable(file_.close()));
  is_new_ = false;
  if (replacement_) replacement_->put_in_place(backup_suffix_, folders);
}

}  // namespace cli
