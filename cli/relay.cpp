// The thread of a relay.
#include "cli/relay.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "cli/signals.hpp"

namespace cli {
namespace {

constexpr size_t kChunkBytes = 65536;
constexpr size_t kTailBytes = 16;

}  // namespace

Relay::Relay(Session &session, int source_fd, std::string head, size_t mark_bytes,
             uint32_t encoding)
    : source_fd_(source_fd),
      head_(std::move(head)),
      mark_bytes_(mark_bytes),
      finder_(session, encoding, JX_ENCODING_UTF32LE, mark_bytes) {
  std::array<int, 2> ends;
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw Failure("", JXWEM_E_SYSTEM, "no pipe");
  read_end_ = Descriptor(ends[0]);
  write_end_ = Descriptor(ends[1]);
  const SignalsBlocked guard;
  thread_ = std::thread([this] { run(); });
}

// False when nobody reads the pipe any more.
bool Relay::wait_for_bytes() const {
  std::array<pollfd, 2> fds = {{{source_fd_, POLLIN, 0}, {write_end_.get(), 0, 0}}};
  while (::poll(fds.data(), fds.size(), -1) < 0 && errno == EINTR) {
  }
  return (fds[1].revents & POLLERR) == 0;
}

void Relay::run() {
  pass_on(head_);
  std::string buffer(kChunkBytes, '\0');
  while (is_wanted_ && wait_for_bytes()) {
    const ssize_t count = ::read(source_fd_, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) error_ = errno;
    if (count == 0) finder_.finish();
    if (count <= 0) break;
    pass_on(std::string_view(buffer).substr(0, static_cast<size_t>(count)));
  }
  write_end_.reset();
}

void Relay::pass_on(std::string_view bytes) {
  finder_.feed(bytes.substr(std::min(mark_bytes_, bytes.size())));
  mark_bytes_ = 0;
  tail_ += bytes.substr(bytes.size() - std::min(bytes.size(), kTailBytes));
  tail_.erase(0, tail_.size() - std::min(tail_.size(), kTailBytes));
  is_wanted_ = write_fully(write_end_.get(), bytes);
}

void Relay::wait() {
  let_go();
  if (thread_.joinable()) thread_.join();
}

std::string_view Relay::tail() {
  wait();
  return tail_;
}

const std::optional<Fault> &Relay::fault() {
  wait();
  return finder_.fault();
}

int Relay::error() {
  wait();
  return error_;
}

}  // namespace cli
