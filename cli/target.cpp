// Writing a file so that a failure leaves the old content.
#include "cli/target.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "cli/descriptor.hpp"
#include "cli/input.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr int kAttempts = 100;
constexpr mode_t kExecutable = 0111;

// The file to remove when a signal ends the program.
std::array<char, PATH_MAX> unfinished_path;

void remove_unfinished(int signal) {
  ::unlink(unfinished_path.data());
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void remove_on_signal(const std::string &path) {
  const size_t length = std::min(path.size(), unfinished_path.size() - 1);
  std::copy_n(path.begin(), length, unfinished_path.begin());
  unfinished_path[length] = '\0';
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::signal(signal, path.empty() ? SIG_DFL : remove_unfinished);
  }
}

bool is_same(const struct ::stat &a, const struct ::stat &b) {
  return a.st_ino == b.st_ino && a.st_dev == b.st_dev;
}

Failure creation_failure(const std::string &path, int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return Failure(path, JXWEM_E_NOPATH);
    case EACCES:
    case EPERM:
    case EROFS:
      return Failure(path, JXWEM_E_ACCESS);
    case ENOSPC:
    case EDQUOT:
      return Failure(path, JXWEM_E_DISKFULL);
    default:
      return Failure(path, JXWEM_E_SYSTEM, std::strerror(error));
  }
}

}  // namespace

Target::Target(Session &session, const std::string &name, Mode mode)
    : session_(session), shown_(name), path_(session.expand(name)), mode_(mode) {
  if (name == "-") throw UsageError("- is standard input; write /dev/stdout, or ./- for a file");
  exists_ = ::stat(path_.c_str(), &old_) == 0;
  // What has no old content to keep is written as it stands, links that lead nowhere too.
  struct ::stat link = {};
  const bool is_dangling = !exists_ && ::lstat(path_.c_str(), &link) == 0;
  if (is_dangling || (exists_ && !S_ISREG(old_.st_mode))) return;
  if (mode != Mode::kReplace) {
    read_head();
  } else if (!exists_ || resolve_links()) {
    make_neighbour();
  }
}

Target::~Target() {
  static_cast<void>(file_.close());
  if (neighbour_.empty()) return;
  ::unlink(neighbour_.c_str());
  remove_on_signal({});
}

void Target::refuse_same(const struct ::stat &source) const {
  if (!exists_ || !is_same(source, old_) || !S_ISREG(old_.st_mode)) return;
  throw Failure(shown_, JXWEM_E_BADOPTIONS)
      .saying("input and output are the same file",
              "write to another file and rename it with: jxfile mv");
}

// False when the path that links lead to is not that of the file: a link of /proc leads to an open
// file that has no name any more, and a new content in the link's place would take the link away.
bool Target::resolve_links() {
  std::array<char, PATH_MAX> resolved;
  struct ::stat found = {};
  const bool is_found = ::realpath(path_.c_str(), resolved.data()) &&
                        ::stat(resolved.data(), &found) == 0 && is_same(found, old_);
  if (is_found) path_ = resolved.data();
  return is_found;
}

// A file that cannot be read has no mark as far as anyone can tell.
void Target::read_head() {
  const Descriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.get() >= 0) head_ = read_fully(file.get(), kLongestMark, shown_);
}

uint32_t Target::encoding(uint32_t asked) const {
  const uint32_t found = sniff(head_);
  if (found == 0 || found == asked) return asked != 0 ? asked : JX_ENCODING_UTF8;
  if (asked == 0) return found;
  const std::string meaning = "its byte-order mark is that of ";
  throw Failure(shown_, JXWEM_E_BADOPTIONS)
      .saying(meaning + jxhost_encoding_name(found), "leave --to out");
}

void Target::require_mark(uint32_t encoding) const {
  if (byte_order_mark(encoding).empty()) {
    throw UsageError(std::string("--bom: ") + jxhost_encoding_name(encoding) + " has no mark");
  }
  if (head_.empty() || byte_order_mark_size(head_, encoding) > 0) return;
  throw UsageError("--bom: '" + shown_ + "' begins without a mark and is changed in place");
}

// Makes an empty file in the target's directory that nobody else can have made.
void Target::make_neighbour() {
  if (exists_) {
    guard_ =
        session_.open(shown_, wem::OpenOptions::input().binary(1).direct().lock(JX_LOCK_EXCLUSIVE));
  }
  const std::string folder = path_.substr(0, std::max<size_t>(path_.rfind('/'), 1));
  if (session_.expand(path_) != path_) throw Failure(shown_, JXWEM_E_BADNAME, path_);
  const wem::NameRequest request{".jxfile-", std::nullopt};
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const auto name = require(session_.instance().create_name(widen(folder), request), shown_);
    const std::string path = narrow(name);
    const int flags = O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC;
    const int fd = ::open(path.c_str(), flags, S_IRUSR | S_IWUSR);
    if (fd < 0 && errno == EEXIST) continue;
    if (fd < 0) throw creation_failure(shown_, errno);
    ::close(fd);
    neighbour_ = path;
    remove_on_signal(neighbour_);
    return;
  }
  throw Failure(shown_, JXWEM_E_EXISTS, "no free name beside it");
}

wem::OpenOptions Target::options() const {
  using wem::OpenOptions;
  const auto options = mode_ == Mode::kReplace  ? OpenOptions::output()
                       : mode_ == Mode::kAppend ? OpenOptions::append()
                                                : OpenOptions::update();
  // A lock on a device would only keep others from it.
  return exists_ && !S_ISREG(old_.st_mode) ? options.lock(JX_LOCK_NONE) : options;
}

wem::File &Target::open(const wem::OpenOptions &options) {
  // The module makes files executable as far as the mask allows; text is not.
  const CreationMask mask(kExecutable);
  JXJournal *journal = session_.instance().raw()->journal;
  auto opened =
      neighbour_.empty()
          ? session_.instance().open(widen(shown_), options.journal(journal))
          : session_.instance().open(widen(neighbour_), options.journal(journal).literal_name());
  file_ = require(std::move(opened), shown_);
  return file_;
}

void Target::commit() {
  const bool is_device = exists_ && !S_ISREG(old_.st_mode);
  // A pipe or a device cannot be forced anywhere; what was written to it was accepted by then.
  const auto tolerable = [is_device](wem::Status status) {
    return is_device && (status == JXWEM_E_FAILED || status == JXWEM_E_SYSTEM) ? wem::Status()
                                                                               : status;
  };
  require(tolerable(file_.flush()), shown_);
  require(tolerable(file_.close()), shown_);
  if (neighbour_.empty()) return;
  const mode_t mode = exists_ ? old_.st_mode & 07777 : 0666 & ~CreationMask(0).umask();
  // Only the superuser can give a file away; for others the owner is the same or stays their own.
  if (exists_ && ::chown(neighbour_.c_str(), old_.st_uid, old_.st_gid) != 0) errno = 0;
  if (::chmod(neighbour_.c_str(), mode) != 0) throw creation_failure(shown_, errno);
  require(session_.instance().rename(widen(neighbour_), widen(path_)), shown_);
  neighbour_.clear();
  remove_on_signal({});
}

}  // namespace cli
