// A test with real files, folders and links in a folder of its own.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/instance.hpp"

namespace jx::test {

namespace fs = std::filesystem;

// Names that are easy to get wrong.
inline const std::vector<std::string> kHardNames = {
    "plain",   "two words", "$HOME", "blanks  ", "-rf",  "\x80\xff bytes",     "~",
    ".hidden", "..x",       "a\nb",  "$",        "${A}", std::string(255, 'n')};

class TreeTest : public InstanceTest {
 protected:
  JXString at(std::string_view name) const { return jx(dir.file(name)); }
  void make_file(std::string_view name, std::string_view content = "content") const {
    write_file(dir.file(name), content);
  }
  void make_folder(std::string_view name) const { fs::create_directories(dir.file(name)); }
  void make_link(std::string_view name, const std::string &target) const {
    fs::create_symlink(target, dir.file(name));
  }
  // A folder many levels below the name, whose path has exactly that many characters.
  std::string make_long_folder(std::string_view name, size_t path_chars) const {
    make_folder(name);
    std::string path = dir.file(name);
    while (path.size() < path_chars) {
      path += (path_chars - path.size()) % 2 == 0 ? "/d" : "/dd";
      mkdir(path.c_str(), 0755);
    }
    return path;
  }
  // A folder of 100,000 files.
  void make_wide_folder(std::string_view name) const {
    make_folder(name);
    const int fd = open64(dir.file(name).c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < 100'000; ++i) {
      ::close(openat64(fd, std::to_string(i).c_str(), O_WRONLY | O_CREAT, 0644));
    }
    ::close(fd);
  }
  bool exists(std::string_view name) const {
    return fs::exists(fs::symlink_status(dir.file(name)));
  }
};

}  // namespace jx::test
