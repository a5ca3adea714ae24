// Files in memory for the record benchmarks, made once.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/module.hpp"

namespace jx::bench {

inline constexpr size_t kFileBytes = size_t{64} << 20;
inline constexpr uint32_t kRecordBytes = 80;
inline constexpr size_t kReadAhead = 8192;

// The input files, made once.
class Files {
 public:
  Files() {
    fill(ascii(), std::string(kRecordBytes - 1, 'a') + "\n");
    std::string line;
    for (int i = 0; i < 26; ++i) line += "\xe6\xbc\xa2";
    fill(cjk(), line + "x\n");
  }
  static std::string ascii() { return scratch().at("ascii"); }
  static std::string cjk() { return scratch().at("cjk"); }
  static std::string output() { return scratch().at("output"); }

 private:
  static void fill(const std::string &path, const std::string &line) {
    FILE *file = std::fopen(path.c_str(), "w");
    if (!file) std::abort();
    for (size_t done = 0; done < kFileBytes; done += line.size()) {
      std::fwrite(line.data(), 1, line.size(), file);
    }
    std::fclose(file);
  }
};

inline const Files &files() {
  static const Files instance;
  return instance;
}

}  // namespace jx::bench
