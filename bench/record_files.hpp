// Files in memory for the record benchmarks, made once, and the module's handles.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "jx/jxhost.h"
#include "jx/wem.h"

namespace jx::bench {

inline constexpr size_t kFileBytes = size_t{64} << 20;
inline constexpr uint32_t kRecordBytes = 80;
inline constexpr size_t kReadAhead = 8192;

// The input files, made once and removed at the end.
class Files {
 public:
  Files() {
    char name[] = "/dev/shm/jxwem-bench-XXXXXX";
    if (!mkdtemp(name)) std::abort();
    folder_ = name;
    fill(ascii(), std::string(kRecordBytes - 1, 'a') + "\n");
    std::string line;
    for (int i = 0; i < 26; ++i) line += "\xe6\xbc\xa2";
    fill(cjk(), line + "x\n");
  }
  ~Files() {
    for (const std::string &path : {ascii(), cjk(), output()}) unlink(path.c_str());
    rmdir(folder_.c_str());
  }
  std::string ascii() const { return folder_ + "/ascii"; }
  std::string cjk() const { return folder_ + "/cjk"; }
  std::string output() const { return folder_ + "/output"; }

 private:
  static void fill(const std::string &path, const std::string &line) {
    FILE *file = std::fopen(path.c_str(), "w");
    if (!file) std::abort();
    for (size_t done = 0; done < kFileBytes; done += line.size()) {
      std::fwrite(line.data(), 1, line.size(), file);
    }
    std::fclose(file);
  }
  std::string folder_;
};

inline const Files &files() {
  static const Files instance;
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
