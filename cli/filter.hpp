// What changes the bytes of a text on their way.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "jx/wem.hpp"

namespace cli {

class Filter {
 public:
  // Takes what came out, in order.
  using Sink = std::function<void(std::string_view)>;

  Filter() = default;
  Filter(const Filter &) = delete;
  Filter &operator=(const Filter &) = delete;
  virtual ~Filter() = default;

  // Begins a text: what messages call it, and the offset of its first byte.
  virtual void begin(const std::string &shown, uint64_t offset) = 0;
  // Changes the next bytes; chunks may end anywhere. A status of the host for a fault, what comes
  // out of the bytes before it is then incomplete; or a Failure with its place.
  virtual wem::Status feed(std::string_view bytes, const Sink &sink) = 0;
  // Takes note of the end.
  virtual wem::Status finish(const Sink &sink) = 0;
  // What was put up with, for a message; empty for nothing.
  virtual std::string tally_text() const = 0;
};

}  // namespace cli
