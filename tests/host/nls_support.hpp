// Conversions for the tests of the character-set service: by a transcoder, into a destination that
// ends in a canary, and by the C library.
#pragma once

#include <iconv.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "host/test_host.hpp"

namespace jx::test {

constexpr JXStatus kMalformed = JXHOST_E_MALFORMED, kUnmappable = JXHOST_E_UNMAPPABLE;

// A status and what was produced.
using Outcome = std::pair<JXStatus, std::string>;

// A transcoder that is destroyed with the object.
class Converter {
 public:
  Converter(const TestHost &host, uint32_t from, uint32_t to)
      : nls_(host->nls), transcoder_(nls_->create_transcoder(nls_, from, to, 0, nullptr)) {
    EXPECT_NE(transcoder_, nullptr) << from << " to " << to;
  }
  Converter(const Converter &) = delete;
  Converter &operator=(const Converter &) = delete;
  ~Converter() { nls_->destroy_transcoder(nls_, transcoder_); }

  // Converts from a block of exactly the source's size, so that the sanitizer catches every read
  // past it, into the given room, whose end is guarded.
  Outcome operator()(std::string_view source, size_t room) const {
    const std::string canary(16, '\x5a');
    const auto input = std::make_unique<char[]>(source.size());
    std::ranges::copy(source, input.get());
    std::string output = std::string(room, '\x5a') + canary;
    uint32_t produced = 0;
    const JXStatus status =
        transcoder_->transcode(transcoder_, input.get(), static_cast<uint32_t>(source.size()),
                               output.data(), static_cast<uint32_t>(room), &produced, 0);
    EXPECT_LE(produced, room);
    EXPECT_EQ(output.substr(room), canary) << testing::PrintToString(source);
    output.resize(produced);
    return {status, output};
  }
  // The same with enough room.
  Outcome operator()(std::string_view source) const {
    return (*this)(source, source.size() * 4 + 64);
  }

 private:
  JXNls *nls_;
  JXTranscoder *transcoder_;
};

// Converts with the C library: 0 or its errno, and the output before the fault.
inline std::pair<int, std::string> by_iconv(const char *from, const char *to, std::string source) {
  const iconv_t descriptor = iconv_open(to, from);
  std::string output(source.size() * 4 + 64, '\0');
  char *in = source.data();
  char *out = output.data();
  size_t in_bytes = source.size();
  size_t out_bytes = output.size();
  const int error = iconv(descriptor, &in, &in_bytes, &out, &out_bytes) == size_t(-1) ? errno : 0;
  iconv(descriptor, nullptr, nullptr, &out, &out_bytes);
  iconv_close(descriptor);
  output.resize(output.size() - out_bytes);
  return {error, output};
}

// Text as the bytes of its JXChars.
inline std::string jxchars(std::u32string_view text) {
  return {reinterpret_cast<const char *>(text.data()), text.size() * sizeof(JXChar)};
}

}  // namespace jx::test
