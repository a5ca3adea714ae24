// Walks, copies and removals by bare calls, and programs as contenders.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "bench/contender.hpp"

namespace jx::bench {

// Runs a program to its end, its output thrown away.
inline void run_program(std::vector<std::string> words) {
  std::vector<char *> arguments;
  for (std::string &word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, kSink, O_WRONLY, 0);
  pid_t child = 0;
  int status = -1;
  if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0 ||
      waitpid(child, &status, 0) != child || status != 0) {
    fail("cannot run " + words[0]);
  }
  posix_spawn_file_actions_destroy(&actions);
}

inline bool is_dots(const char *name) {
  return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

// Calls visit(descriptor of the directory, entry) for every entry but "." and "..".
template <typename Visit>
void each_entry(const char *path, Visit visit) {
  DIR *directory = opendir(path);
  if (!directory) fail(std::string("cannot open ") + path);
  while (const dirent *entry = readdir(directory)) {
    if (!is_dots(entry->d_name)) visit(dirfd(directory), *entry);
  }
  closedir(directory);
}

// The fewest calls that remove a tree.
inline void remove_at(int parent, const char *name) {
  const int fd = openat(parent, name, O_RDONLY | O_DIRECTORY);
  DIR *directory = fdopendir(fd);
  while (const dirent *entry = readdir(directory)) {
    if (is_dots(entry->d_name)) continue;
    if (entry->d_type == DT_DIR) {
      remove_at(fd, entry->d_name);
    } else {
      unlinkat(fd, entry->d_name, 0);
    }
  }
  closedir(directory);
  unlinkat(parent, name, AT_REMOVEDIR);
}

// One file through one buffer.
inline void copy_file_by_loop(const char *from, const char *to, size_t block) {
  const int in = open(from, O_RDONLY), out = open(to, O_WRONLY | O_CREAT | O_TRUNC, 0777);
  if (in < 0 || out < 0) fail(std::string("cannot copy ") + from);
  std::vector<char> buffer(block);
  for (ssize_t got; (got = read(in, buffer.data(), block)) > 0;) {
    if (write(out, buffer.data(), static_cast<size_t>(got)) != got) fail("cannot write");
  }
  close(in);
  close(out);
}

// The calls of the module's contract: target and source are examined before each copy, and a file
// is copied in blocks of its preferred size.
inline void copy_by_path(const std::string &from, const std::string &to) {
  struct stat info;
  if (stat(to.c_str(), &info) == 0) fail("there is already " + to);
  if (stat(from.c_str(), &info) != 0) fail("there is no " + from);
  if (!S_ISDIR(info.st_mode)) {
    return copy_file_by_loop(from.c_str(), to.c_str(), static_cast<size_t>(info.st_blksize));
  }
  mkdir(to.c_str(), 0777);
  each_entry(from.c_str(), [&](int, const dirent &entry) {
    copy_by_path(from + '/' + entry.d_name, to + '/' + entry.d_name);
  });
}

// Files of up to `widest` bytes, a hundred in a directory.
inline void make_tree(const std::string &path, int files, uint64_t widest) {
  Random random;
  std::string directory;
  for (int i = 0; i < files; ++i) {
    if (i % 100 == 0) {
      directory = path + "/group-" + std::to_string(i / 100);
      std::filesystem::create_directories(directory);
    }
    write_file(directory + "/file-" + std::to_string(i % 100) + ".dat",
               std::string(static_cast<size_t>(random.below(widest)), 'x'));
  }
}

inline uint64_t count_tree(const std::string &path) {
  uint64_t files = 0, bytes = 0;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(path)) {
    if (!entry.is_regular_file()) continue;
    ++files;
    bytes += entry.file_size();
  }
  return files * 1'000'003 + bytes;
}

}  // namespace jx::bench
