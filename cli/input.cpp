// Files, pipes and descriptors as input.
#include "cli/input.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace cli {
namespace {

constexpr int64_t kWindowBytes = 65536;

struct ByteOrderMark {
  uint32_t encoding;
  std::string_view bytes;
};

// The longer marks first.
#define MARK_ROW(encoding, size, bytes) {encoding, std::string_view(bytes, size)},
constexpr auto kMarks = std::to_array<ByteOrderMark>({JX_BYTE_ORDER_MARKS(MARK_ROW)});
#undef MARK_ROW

// Whether more bytes may make a byte-order mark of these, or a longer one.
bool may_become_mark(std::string_view head) {
  return std::ranges::any_of(kMarks, [head](const ByteOrderMark &mark) {
    return mark.bytes.size() > head.size() && mark.bytes.starts_with(head);
  });
}

int open_for_reading(const std::string &name) {
  int fd = -1;
  do {
    fd = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

// A file that is missing is told from one whose directory is.
Failure failure_to_open(const std::string &name, int error) {
  const std::string folder = name.substr(0, name.rfind('/') + 1);
  const bool has_folder = folder.empty() || ::access(folder.c_str(), F_OK) == 0;
  return has_folder ? system_failure(name, error) : path_failure(name, error);
}

}  // namespace

uint32_t sniff(std::string_view head) {
  for (const ByteOrderMark &mark : kMarks) {
    if (head.starts_with(mark.bytes)) return mark.encoding;
  }
  return 0;
}

std::string_view byte_order_mark(uint32_t encoding) {
  for (const ByteOrderMark &mark : kMarks) {
    if (mark.encoding == encoding) return mark.bytes;
  }
  return {};
}

size_t byte_order_mark_size(std::string_view head, uint32_t encoding) {
  const std::string_view mark = byte_order_mark(encoding);
  return head.starts_with(mark) ? mark.size() : 0;
}

uint32_t settle(Encoding asked, std::string_view head) {
  if (asked.number == 0) {
    const uint32_t found = sniff(head);
    return found != 0 ? found : JX_ENCODING_UTF8;
  }
  const bool is_other = asked.follows_mark() && byte_order_mark_size(head, asked.other_order) > 0;
  return is_other ? asked.other_order : asked.number;
}

Input::Input(Session &session, const std::string &name, Use use)
    : session_(session), shown_(name == "-" ? "standard input" : name), use_(use) {
  const auto fd = name == "-" ? STDIN_FILENO : descriptor_named(name);
  if (fd) {
    find_descriptor(*fd);
  } else {
    find_named(name);
  }
  examine();
}

Input::Input(Session &session, int fd, std::string shown, Use use)
    : session_(session), shown_(std::move(shown)), use_(use) {
  find_descriptor(fd);
  examine();
}

void Input::examine() {
  if (::fstat(fd_, &file_status_) != 0) throw system_failure(shown_, errno);
  if (S_ISDIR(file_status_.st_mode)) throw Failure(shown_, JXWEM_E_OPENREFUSED);
  start_ = ::lseek(fd_, 0, SEEK_CUR);
  if (!S_ISREG(file_status_.st_mode)) return;
  // A file without a size may still have bytes (those of /proc do): it is read as a pipe is.
  is_rereadable_ = file_status_.st_size > start_;
  size_ = is_rereadable_ ? static_cast<uint64_t>(file_status_.st_size - start_) : 0;
  is_lockable_ = own_.get() >= 0;
}

void Input::find_descriptor(int fd) {
  const int flags = ::fcntl(fd, F_GETFL);
  if (flags < 0 || (flags & O_ACCMODE) == O_WRONLY) {
    throw Failure(shown_, JXWEM_E_ACCESS).saying("the descriptor is not open for reading");
  }
  fd_ = fd;
}

void Input::find_named(const std::string &name) {
  own_ = Descriptor(open_for_reading(name));
  if (own_.get() < 0) throw failure_to_open(name, errno);
  fd_ = own_.get();
}

void Input::refuse_standard_output() const {
  struct ::stat output = {};
  if (::fstat(STDOUT_FILENO, &output) == 0) refuse_same_file(file_status_, output, shown_);
}

std::string Input::read_at(uint64_t offset, size_t bytes) {
  return cli::read_at(fd_, bytes, static_cast<uint64_t>(start_) + offset, shown_);
}

const std::string &Input::head() {
  if (head_) return *head_;
  head_.emplace();
  if (is_rereadable_) {
    // The lock is the descriptor's and outlasts this opening; nothing is looked at before.
    static_cast<void>(open_descriptor(wem::OpenOptions::input().binary(1).direct()));
    *head_ = read_at(0, kLongestMark);
    return *head_;
  }
  session_.output().flush();
  // A socket of packets drops what a read leaves of one, so as much is taken as may be there.
  while (!is_at_end_ && may_become_mark(*head_)) {
    const std::string more = read_some(fd_, kWindowBytes, shown_);
    is_at_end_ = more.empty();
    *head_ += more;
  }
  return *head_;
}

Detection Input::detect() {
  Sampler sampler;
  if (!is_rereadable_) {
    // As much as a file is looked at before it is read; what was read is passed on.
    for (bool wants_more = sampler.feed(head()); wants_more && !is_at_end_;) {
      const std::string more = read_some(fd_, kWindowBytes, shown_);
      is_at_end_ = more.empty();
      *head_ += more;
      wants_more = sampler.feed(more) && head_->size() < kSampleBytes;
    }
    return sampler.detect(session_, is_at_end_);
  }
  head();
  for (uint64_t at = 0;;) {
    const std::string chunk = read_at(at, kWindowBytes);
    at += chunk.size();
    if (chunk.empty() || !sampler.feed(chunk)) return sampler.detect(session_, chunk.empty());
  }
}

uint32_t Input::encoding(Encoding asked) {
  if (asked.is_auto) return require_encoding(detect(), shown_);
  const bool is_given = asked.number != 0 && !asked.follows_mark();
  return is_given ? asked.number : settle(asked, head());
}

uint32_t Input::encoding_of_bytes(Encoding asked, std::string_view head, bool is_whole) {
  if (!asked.is_auto) return settle(asked, head);
  if (is_rereadable_) return encoding(asked);
  return require_encoding(detect_encoding(session_, head, is_whole), shown_);
}

bool Input::has_byte_order_mark(uint32_t encoding) {
  return byte_order_mark_size(head(), encoding) > 0;
}

wem::File Input::open_descriptor(const wem::OpenOptions &options) {
  const auto asked = is_lockable_ ? options : options.lock(JX_LOCK_NONE);
  return session_.open_descriptor(fd_, asked, shown_);
}

wem::File Input::open(const wem::OpenOptions &options, uint32_t encoding) {
  if (use_ == Use::kLines) line_ends_.emplace(session_, encoding);
  if (use_ == Use::kBytes || is_rereadable_) return open_descriptor(options);
  const size_t mark_bytes = byte_order_mark_size(head(), encoding);
  const bool is_direct = options.raw().buffered == 0;
  relay_ = std::make_unique<Relay>(
      session_, Relay::Source{shown_, fd_, head(), mark_bytes, is_at_end_, encoding},
      line_ends_ ? &*line_ends_ : nullptr, is_direct ? options.raw().record_length : 0);
  auto file = session_.open_descriptor(relay_->read_end(), options.lock(JX_LOCK_NONE), shown_);
  relay_->let_go();
  return file;
}

const char *Input::end_of(const wem::Record &record) {
  while (!relay_ && !record.partial && !line_ends_->has_next()) {
    const std::string chunk = read_at(watched_, kWindowBytes);
    if (chunk.empty()) break;
    line_ends_->feed(chunk);
    watched_ += chunk.size();
  }
  return line_ends_->end_of(record);
}

bool Input::is_waiting() {
  if (relay_) return line_ends_ && !line_ends_->has_next();
  return !is_rereadable_ && would_wait(fd_);
}

int64_t Input::consumed_bytes() const {
  const int64_t at = ::lseek(fd_, 0, SEEK_CUR);
  if (at < 0 && start_ >= 0) throw system_failure(shown_, errno);
  return at - start_;
}

uint64_t Input::bytes_done() const {
  const int64_t at = start_ >= 0 ? ::lseek(fd_, 0, SEEK_CUR) : -1;
  return at > start_ ? static_cast<uint64_t>(at - start_) : 0;
}

bool Input::ends_with(std::string_view bytes) {
  if (relay_) return relay_->tail().ends_with(bytes);
  const int64_t start = consumed_bytes() - static_cast<int64_t>(bytes.size());
  return start >= 0 && read_at(static_cast<uint64_t>(start), bytes.size()) == bytes;
}

void Input::require_complete() {
  if (relay_) relay_->require_complete();
}

std::optional<Fault> Input::scan(uint32_t from, uint32_t to, uint64_t start, bool has_new_ends) {
  FaultFinder finder(session_, from, to, start, has_new_ends);
  uint64_t at = start;
  for (std::string chunk = read_at(at, kWindowBytes); !chunk.empty();
       chunk = read_at(at, kWindowBytes)) {
    at += chunk.size();
    if (!finder.feed(chunk)) return finder.fault();
  }
  finder.finish();
  return finder.fault();
}

std::optional<Fault> Input::find_fault(uint32_t from, uint32_t to, bool has_new_ends) {
  if (relay_) return relay_->fault();
  if (!is_rereadable_) return std::nullopt;
  return scan(from, to, byte_order_mark_size(head(), from), has_new_ends);
}

std::optional<Fault> Input::find_cut_end(uint32_t from, uint32_t to) {
  if (relay_) return relay_->fault();
  if (!is_rereadable_) return std::nullopt;
  const std::string line_end = session_.encode(U"\n", from);
  const uint64_t mark = byte_order_mark_size(head(), from);
  const int64_t size = consumed_bytes();
  // A window whose start is a multiple of every character unit.
  const int64_t last = (size - kWindowBytes + 7) / 4 * 4;
  const uint64_t at = std::max(mark, static_cast<uint64_t>(std::max<int64_t>(last, 0)));
  const size_t line = after_last_line_end(read_at(at, kWindowBytes), line_end);
  const uint64_t start = line > 0 ? at + line : mark;
  if (!scan(from, to, start)) return std::nullopt;
  return find_fault(from, to);
}

}  // namespace cli
