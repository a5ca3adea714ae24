// What the fuzz targets share: how a finding ends the run, and the host with its module.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jx/jxhost.h"
#include "jx/wem.h"

// The sanitizer's defaults, for ASAN_OPTIONS to change. Stacks of allocations take a fifth of the
// time: run the input of a finding with malloc_context_size=30. A run frees less than is held back
// here. Leaks are looked for by the host, which counts its objects.
extern "C" const char *__asan_default_options() {
  return "detect_leaks=0:allocator_may_return_null=1:malloc_context_size=1:quarantine_size_mb=4";
}

namespace jx::fuzz {

// Ends the run when a promise is broken; the fuzzer keeps the input.
inline void require(bool holds, const std::string &what) {
  if (holds) return;
  std::fprintf(stderr, "finding: %s\n", what.c_str());
  std::abort();
}

// Bytes in a block of exactly their size, so that the sanitizer sees every step over an end.
class Block {
 public:
  explicit Block(std::string_view bytes) : Block(bytes.size()) {
    if (!bytes.empty()) bytes.copy(data_.get(), bytes.size());
  }
  explicit Block(size_t bytes) : data_(new char[bytes]), bytes_(bytes) {}

  char *data() const { return data_.get(); }
  uint32_t bytes() const { return static_cast<uint32_t>(bytes_); }
  std::string text(size_t bytes) const { return {data_.get(), bytes}; }

 private:
  std::unique_ptr<char[]> data_;
  size_t bytes_;
};

// Characters as bytes, and JXChars in a block of exactly their size.
class Name {
 public:
  explicit Name(std::string_view bytes)
      : chars_(new JXChar[bytes.size()]), count_(static_cast<uint32_t>(bytes.size())) {
    for (uint32_t i = 0; i < count_; ++i) chars_[i] = static_cast<uint8_t>(bytes[i]);
  }

  JXChar *data() const { return chars_.get(); }
  uint32_t chars() const { return count_; }

 private:
  std::unique_ptr<JXChar[]> chars_;
  uint32_t count_;
};

inline std::string narrow(const JXChar *chars, uint32_t count) {
  std::string text;
  for (uint32_t i = 0; i < count; ++i) text += static_cast<char>(chars[i]);
  return text;
}

// The reference host and an instance of the module linked to the program; ended at exit, where
// nothing may be left.
class World {
 public:
  World() : host_(jxhost_create(nullptr)) {
    jxextent(host_);
    instance_ = jxwem(host_, nullptr);
    require(instance_, "no instance");
    std::atexit([] { world().end(); });
  }

  JXHost *host() const { return host_; }
  JXInstance *instance() const { return instance_; }

  static World &world() {
    static World *const one = new World;
    return *one;
  }

 private:
  void end() {
    instance_->destroy(instance_);
    require(jxhost_destroy(host_) == 0, "something is left at the end");
  }

  JXHost *host_;
  JXInstance *instance_;
};

inline JXHost *host() { return World::world().host(); }
inline JXInstance *instance() { return World::world().instance(); }

}  // namespace jx::fuzz
