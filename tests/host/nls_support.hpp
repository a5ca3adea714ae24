// What the tests of the character-set service share: a host that must end with nothing left, and
// conversions whose destination ends in a canary.
#pragma once

#include <gtest/gtest.h>
#include <iconv.h>

#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jx/jxhost.h"

namespace jx::test {

// A host for one test; its end checks that every transcoder was destroyed.
class NlsHost {
 public:
  NlsHost() : host_(jxhost_create(nullptr)) {}
  ~NlsHost() { EXPECT_EQ(jxhost_destroy(host_), 0u); }
  NlsHost(const NlsHost &) = delete;
  NlsHost &operator=(const NlsHost &) = delete;

  JXNls *nls() const { return host_->nls; }
  JXHost *get() const { return host_; }

 private:
  JXHost *host_;
};

struct Outcome {
  JXStatus status;
  std::string bytes;

  bool operator==(const Outcome &) const = default;
};

inline std::string hex(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    constexpr const char *kDigits = "0123456789abcdef";
    text += kDigits[static_cast<uint8_t>(c) >> 4];
    text += kDigits[c & 15];
    text += ' ';
  }
  return text;
}

inline std::ostream &operator<<(std::ostream &out, const Outcome &outcome) {
  return out << std::hex << outcome.status << std::dec << " [" << hex(outcome.bytes) << "]";
}

// A transcoder that is destroyed with the object.
class Converter {
 public:
  static constexpr size_t kRoom = SIZE_MAX;

  Converter(const NlsHost &host, uint32_t from, uint32_t to)
      : nls_(host.nls()), transcoder_(nls_->create_transcoder(nls_, from, to, 0, nullptr)) {
    EXPECT_NE(transcoder_, nullptr) << from << " to " << to;
  }
  ~Converter() {
    if (transcoder_) nls_->destroy_transcoder(nls_, transcoder_);
  }
  Converter(const Converter &) = delete;
  Converter &operator=(const Converter &) = delete;

  // Converts from a block of exactly the source's size, so that the sanitizer sees each byte read
  // too many, into the given room, whose end is guarded.
  Outcome operator()(std::string_view source, size_t capacity = kRoom) const {
    constexpr size_t kCanaryBytes = 16;
    if (capacity == kRoom) capacity = source.size() * 4 + 64;
    const auto input = std::make_unique<char[]>(source.size());
    if (!source.empty()) std::memcpy(input.get(), source.data(), source.size());
    std::string output(capacity + kCanaryBytes, '\x5a');
    uint32_t produced = 0;
    const JXStatus status =
        transcoder_->transcode(transcoder_, input.get(), static_cast<uint32_t>(source.size()),
                               output.data(), static_cast<uint32_t>(capacity), &produced, 0);
    EXPECT_LE(produced, capacity);
    EXPECT_EQ(output.substr(capacity), std::string(kCanaryBytes, '\x5a')) << hex(source);
    output.resize(produced);
    return {status, output};
  }
  JXTranscoder *get() const { return transcoder_; }

 private:
  JXNls *nls_;
  JXTranscoder *transcoder_;
};

// What the C library makes of a text: 0, or its errno, with what came before the fault.
inline std::pair<int, std::string> by_iconv(const char *from, const char *to,
                                            std::string_view source) {
  const iconv_t descriptor = iconv_open(to, from);
  std::string input(source);
  std::string output(source.size() * 4 + 64, '\0');
  char *in = input.data();
  char *out = output.data();
  size_t in_bytes = input.size();
  size_t out_bytes = output.size();
  const bool failed = iconv(descriptor, &in, &in_bytes, &out, &out_bytes) == size_t(-1);
  const int error = failed ? errno : 0;
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
