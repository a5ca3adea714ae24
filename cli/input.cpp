// Files and pipes as input.
#include "cli/input.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace cli {
namespace {

constexpr uint32_t kChunkBytes = 65536;

struct ByteOrderMark {
  uint32_t encoding;
  std::string_view bytes;
};

// The longer marks first: that of UTF-16 begins that of UTF-32.
constexpr auto kMarks = std::to_array<ByteOrderMark>({
    {JX_ENCODING_UTF32BE, std::string_view("\x00\x00\xfe\xff", 4)},
    {JX_ENCODING_UTF32LE, std::string_view("\xff\xfe\x00\x00", 4)},
    {JX_ENCODING_UTF8, std::string_view("\xef\xbb\xbf", 3)},
    {JX_ENCODING_UTF16BE, std::string_view("\xfe\xff", 2)},
    {JX_ENCODING_UTF16LE, std::string_view("\xff\xfe", 2)},
});

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

Input::Input(Session &session, const std::string &name, Pipe pipe)
    : session_(session), shown_(name == "-" ? "standard input" : name), name_(name) {
  if (name == "-") {
    find_standard_input(pipe);
  } else {
    find_named(name, pipe);
  }
  if (source_fd_ >= 0 && pipe == Pipe::kSpooled) spool();
}

// A file on standard input is opened again by the module, from its start; one that was read in part
// already is treated as a pipe.
void Input::find_standard_input(Pipe pipe) {
  name_ = path_of(STDIN_FILENO);
  is_literal_ = true;
  if (::fstat(STDIN_FILENO, &file_status_) != 0 || S_ISDIR(file_status_.st_mode)) return;
  const bool is_file = S_ISREG(file_status_.st_mode) && ::lseek(STDIN_FILENO, 0, SEEK_CUR) == 0;
  is_lockable_ = is_file;
  is_rereadable_ = is_file && file_status_.st_size > 0;
  size_ = is_file ? static_cast<uint64_t>(file_status_.st_size) : 0;
  if (!is_file && pipe != Pipe::kDirect) source_fd_ = STDIN_FILENO;
}

// A file without a size may still have bytes (those of /proc do): it is read as a pipe is.
void Input::find_named(const std::string &name, Pipe pipe) {
  const std::string path = literal_path(name);
  if (::stat(path.c_str(), &file_status_) != 0 || S_ISDIR(file_status_.st_mode)) return;
  const bool is_file = S_ISREG(file_status_.st_mode);
  is_lockable_ = is_file;
  is_rereadable_ = is_file && file_status_.st_size > 0;
  size_ = is_file ? static_cast<uint64_t>(file_status_.st_size) : 0;
  if (is_rereadable_ || pipe == Pipe::kDirect) return;
  source_ = Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  source_fd_ = source_.get();
}

void Input::spool() {
  Descriptor memory(::memfd_create("jxfile", MFD_CLOEXEC));
  std::string chunk;
  do {
    chunk = read_fully(source_fd_, kChunkBytes, shown_);
    if (!write_fully(memory.get(), chunk)) throw Failure(shown_, JX_E_NOMEM);
    size_ += chunk.size();
  } while (chunk.size() == kChunkBytes);
  source_ = std::move(memory);
  source_fd_ = -1;
  name_ = path_of(source_.get());
  is_literal_ = true;
  is_rereadable_ = true;
}

const std::string &Input::head() {
  if (head_) return *head_;
  if (source_fd_ >= 0) {
    head_ = read_fully(source_fd_, kLongestMark, shown_);
    return *head_;
  }
  head_.emplace();
  wem::File file = open_bytes();
  const auto first = file.read(kLongestMark);
  if (first)
    head_->assign(reinterpret_cast<const char *>(first->bytes.data()), first->bytes.size());
  if (!first && first.status() != JXWEM_E_EOF) throw Failure(shown_, first.status());
  return *head_;
}

uint32_t Input::encoding(uint32_t asked) {
  if (asked != 0) return asked;
  const uint32_t found = sniff(head());
  return found != 0 ? found : JX_ENCODING_UTF8;
}

bool Input::has_byte_order_mark(uint32_t encoding) {
  return byte_order_mark_size(head(), encoding) > 0;
}

wem::File Input::open(const wem::OpenOptions &options, uint32_t encoding) {
  wem::OpenOptions asked = is_lockable_ ? options : options.lock(JX_LOCK_NONE);
  if (source_fd_ >= 0) {
    const size_t mark_bytes = byte_order_mark_size(head(), encoding);
    relay_ = std::make_unique<Relay>(session_, source_fd_, head(), mark_bytes, encoding);
    name_ = relay_->path();
    is_literal_ = true;
    asked = asked.lock(JX_LOCK_NONE);
  }
  if (is_literal_) asked = asked.literal_name();
  auto file = session_.instance().open(session_.name(name_),
                                       asked.journal(session_.instance().raw()->journal));
  if (relay_) relay_->let_go();
  return require(std::move(file), shown_);
}

wem::File Input::open_bytes() {
  return open(wem::OpenOptions::input().binary(kChunkBytes).direct());
}

bool Input::ends_with(const std::string &bytes) {
  if (relay_) return relay_->tail().ends_with(bytes);
  if (!is_rereadable_) return false;
  wem::File file = open_bytes();
  int64_t at = require(file.point(0, JX_POINT_END), shown_) - static_cast<int64_t>(bytes.size());
  if (at < 0) return false;
  const auto tail = file.read(static_cast<uint32_t>(bytes.size()), &at);
  return tail && std::memcmp(tail->bytes.data(), bytes.data(), bytes.size()) == 0;
}

void Input::require_complete() {
  if (!relay_ || relay_->error() == 0) return;
  throw Failure(shown_, JXWEM_E_SYSTEM, std::strerror(relay_->error()));
}

std::optional<Fault> Input::scan(uint32_t from, uint32_t to, uint64_t start) {
  FaultFinder finder(session_, from, to, start);
  wem::File file = open_bytes();
  auto at = static_cast<int64_t>(start);
  while (const auto chunk = file.read(kChunkBytes, &at)) {
    at += static_cast<int64_t>(chunk->bytes.size());
    const auto *bytes = reinterpret_cast<const char *>(chunk->bytes.data());
    if (!finder.feed({bytes, chunk->bytes.size()})) return finder.fault();
  }
  finder.finish();
  return finder.fault();
}

std::optional<Fault> Input::find_fault(uint32_t from, uint32_t to) {
  if (relay_) return relay_->fault();
  if (!is_rereadable_) return std::nullopt;
  return scan(from, to, byte_order_mark_size(head(), from));
}

std::optional<Fault> Input::find_cut_end(uint32_t from, uint32_t to) {
  if (relay_) return relay_->fault();
  if (!is_rereadable_) return std::nullopt;
  const std::string line_end = session_.encode(U"\n", from);
  const auto mark = static_cast<int64_t>(byte_order_mark_size(head(), from));
  wem::File file = open_bytes();
  const int64_t size = require(file.point(0, JX_POINT_END), shown_);
  // A window whose start is a multiple of every character unit.
  int64_t at = std::max<int64_t>(mark, (size - kChunkBytes + 7) / 4 * 4);
  const auto window = file.read(kChunkBytes, &at);
  if (!window) return std::nullopt;
  const auto *bytes = reinterpret_cast<const char *>(window->bytes.data());
  const size_t line = behind_last_line_end({bytes, window->bytes.size()}, line_end);
  const int64_t start = line > 0 ? at + static_cast<int64_t>(line) : mark;
  if (!scan(from, to, static_cast<uint64_t>(start))) return std::nullopt;
  return find_fault(from, to);
}

}  // namespace cli
