// A folder of the process's own in memory, and trees of files in it.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "fuzz/fuzz.hpp"

namespace jx::fuzz {

namespace fs = std::filesystem;

// Made at the first use, removed at exit.
inline const fs::path &scratch() {
  static const fs::path *const folder = [] {
    auto *path = new fs::path("/dev/shm/jxfuzz-" + std::to_string(getpid()));
    fs::create_directory(*path);
    std::atexit([] { fs::remove_all(scratch()); });
    return path;
  }();
  return *folder;
}

// Removes everything in the folder.
inline void empty_scratch() {
  for (const auto &entry : fs::directory_iterator(scratch())) fs::remove_all(entry.path());
}

inline void write_file(const fs::path &path, const std::string &content) {
  std::ofstream(path, std::ios::binary) << content;
}
inline std::string read_file(const fs::path &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// What is below a folder: each name with its content; folders with a slash, links with their
// target.
inline std::map<std::string, std::string> look(const fs::path &folder) {
  std::map<std::string, std::string> found;
  for (const auto &entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().lexically_relative(folder).string();
    if (entry.is_symlink()) {
      found[name] = "to " + fs::read_symlink(entry.path()).string();
    } else if (entry.is_directory()) {
      found[name + "/"];
    } else {
      found[name] = read_file(entry.path());
    }
  }
  return found;
}

}  // namespace jx::fuzz
