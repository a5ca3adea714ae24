// A folder of the process's own in memory, and trees of files in it.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>

#include "fuzz/fuzz.hpp"
#include "support/files.hpp"

namespace jx::fuzz {

namespace fs = std::filesystem;
using jx::test::read_file;
using jx::test::write_file;

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

// What is below a folder: each name with its content; folders with a slash, links with their
// target.
using Content = std::map<std::string, std::string>;
inline Content look(const fs::path &folder) {
  Content found;
  const size_t prefix = folder.native().size() + 1;
  for (const auto &entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().native().substr(prefix);
    if (entry.is_symlink()) {
      found[name] = "to " + fs::read_symlink(entry.path()).native();
    } else if (entry.is_directory()) {
      found[name + "/"];
    } else {
      found[name] = read_file(entry.path().native());
    }
  }
  return found;
}

}  // namespace jx::fuzz
