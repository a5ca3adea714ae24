// The thread of a relay.
#include "cli/relay.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "cli/signals.hpp"

namespace cli {
namespace {

constexpr size_t kRelayBytes = 65536;
constexpr size_t kTailBytes = 16;
constexpr size_t kLargestPacket = 98304;  // well below the room of a socket

}  // namespace

Relay::Relay(Session &session, Source source, LineEnds *line_ends, size_t longest_record)
    : source_(std::move(source)),
      finder_(session, source_.encoding, JX_ENCODING_UTF32LE, source_.mark_bytes),
      line_ends_(line_ends),
      line_end_(session.encode(U"\n", source_.encoding)),
      packet_bytes_(0) {
  std::array<int, 2> ends;
  if (longest_record > 0)
    packet_bytes_ = std::min(longest_record, kLargestPacket) + line_end_.size();
  const int result = packet_bytes_ == 0
                         ? ::pipe2(ends.data(), O_CLOEXEC)
                         : ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data());
  if (result != 0) throw system_failure(source_.shown, errno);
  read_end_ = Descriptor(ends[0]);
  write_end_ = Descriptor(ends[1]);
  try {
    const SignalsBlocked guard;
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error &) {
    throw Failure(source_.shown, JX_E_NOMEM);
  }
}

// False when nobody reads the pipe any more.
bool Relay::wait_for_bytes() const {
  std::array<pollfd, 2> fds = {{{source_.fd, POLLIN, 0}, {write_end_.get(), 0, 0}}};
  while (::poll(fds.data(), fds.size(), -1) < 0 && errno == EINTR) {
  }
  return (fds[1].revents & (POLLERR | POLLHUP)) == 0;
}

void Relay::run() {
  try {
    copy();
  } catch (...) {
    failure_ = std::current_exception();
  }
  write_end_.reset();
}

void Relay::copy() {
  pass_on(source_.head);
  while (is_wanted_ && !source_.is_at_end && wait_for_bytes()) {
    const std::string chunk = read_some(source_.fd, kRelayBytes, source_.shown);
    source_.is_at_end = chunk.empty();
    pass_on(chunk);
  }
  if (!source_.is_at_end) return;
  finder_.finish();
  if (packet_bytes_ > 0) write_packets(true);
}

// A reader that has gone wants no more; any other failure would lose what it still waits for.
void Relay::send(std::string_view bytes) {
  is_wanted_ = write_fully(write_end_.get(), bytes);
  const bool has_gone = errno == EPIPE || errno == ECONNRESET;
  if (!is_wanted_ && !has_gone) throw system_failure(source_.shown, errno);
}

void Relay::pass_on(std::string_view bytes) {
  const std::string_view text = bytes.substr(std::exchange(source_.mark_bytes, 0));
  finder_.feed(text);
  if (line_ends_) line_ends_->feed(text);
  tail_ += bytes.substr(bytes.size() - std::min(bytes.size(), kTailBytes));
  tail_.erase(0, tail_.size() - std::min(tail_.size(), kTailBytes));
  if (packet_bytes_ == 0) {
    send(bytes);
    return;
  }
  unsent_ += bytes;
  write_packets(false);
}

// A read takes one packet, so that there is nothing to go back over.
void Relay::write_packets(bool is_end) {
  std::string_view left = unsent_;
  while (is_wanted_ && !left.empty()) {
    const std::string_view window = left.substr(0, packet_bytes_);
    const size_t found = find_line_end(window, 0, line_end_);
    if (found == window.npos && window.size() < packet_bytes_ && !is_end) break;
    const size_t bytes = found == window.npos ? window.size() : found + line_end_.size();
    send(left.substr(0, bytes));
    left.remove_prefix(bytes);
  }
  unsent_.erase(0, unsent_.size() - left.size());
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

void Relay::require_complete() {
  wait();
  if (failure_) std::rethrow_exception(failure_);
}

}  // namespace cli
