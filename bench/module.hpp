// The module and its handles as the benchmarks use them, and a folder in memory.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "jx/jxhost.h"
#include "jx/wem.h"

namespace jx::bench {

using Chars = std::vector<JXChar>;

inline Chars chars_of(const std::string &text) { return {text.begin(), text.end()}; }
inline uint32_t count_of(const Chars &text) { return static_cast<uint32_t>(text.size()); }

inline void check(bool is_good) {
  if (!is_good) std::abort();
}

// The folder of all passes, in memory, removed at the end.
class Scratch {
 public:
  Scratch() {
    char name[] = "/dev/shm/jxwem-bench-XXXXXX";
    if (!mkdtemp(name)) std::abort();
    path_ = name;
  }
  ~Scratch() { std::filesystem::remove_all(path_); }
  std::string at(const std::string &name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline const Scratch &scratch() {
  static const Scratch instance;
  return instance;
}

inline JXInstance *instance() {
  static JXHost *host = jxhost_create(nullptr);
  static JXInstance *made = [] {
    jxextent(host);
    return jxwem(host, nullptr);
  }();
  return made;
}

// An open file of the module, closed at the end.
class ModuleFile {
 public:
  ModuleFile(const std::string &path, JXOpenOptions options) {
    const std::vector<JXChar> name(path.begin(), path.end());
    JXStatus status = JX_OK;
    file_ = instance()->open(instance(), name.data(), static_cast<uint32_t>(name.size()), &options,
                             0, nullptr, nullptr, &status);
    if (!file_) std::abort();
  }
  ModuleFile(const ModuleFile &) = delete;
  ModuleFile &operator=(const ModuleFile &) = delete;
  ~ModuleFile() { file_->close(file_); }
  JXFile *operator->() const { return file_; }
  JXFile *get() const { return file_; }

 private:
  JXFile *file_;
};

inline JXOpenOptions options_for(uint32_t format, uint32_t access, uint32_t record_length) {
  JXOpenOptions options{};
  options.record_format = format;
  options.access_mode = access;
  options.buffered = 1;
  options.record_length = record_length;
  options.open_flags = JX_OPEN_NO_BOM;
  return options;
}

}  // namespace jx::bench
