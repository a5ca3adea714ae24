// Text from one encoding into another, chunk by chunk.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "cli/session.hpp"

namespace cli {

// Converts a text, whose chunks may end inside a character.
class TextFilter {
 public:
  // Takes what came out, in order.
  using Sink = std::function<void(std::string_view)>;

  TextFilter(Session &session, uint32_t from, uint32_t to);

  // Converts the next bytes. A status of the host for a fault; what comes out of the bytes before
  // it is then incomplete.
  wem::Status feed(std::string_view bytes, const Sink &sink);
  // Takes note of the end: malformed when it cuts a character off.
  wem::Status finish(const Sink &sink);
  // Makes it ready for another text in the same encodings.
  void restart();

 private:
  wem::Status convert(std::string_view bytes);

  Session &session_;
  uint32_t from_;
  uint32_t to_;
  std::string line_end_;      // in the one encoding
  std::string line_end_out_;  // and in the other
  bool may_shift_;            // one may be in a state that outlasts the text
  std::optional<Transcoder> transcoder_;
  std::unique_ptr<char[]> room_;
  size_t room_bytes_ = 0;
  size_t produced_ = 0;  // by the last conversion
};

}  // namespace cli
