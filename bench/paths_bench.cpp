// Directory lists, removal and copying of trees, and path building, against the bare system calls,
// std::filesystem, rm and cp, on files in memory.
#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/module.hpp"
#include "bench/paired.hpp"

namespace {

namespace fs = std::filesystem;

using namespace jx::bench;

// ---- Lists

void make_wide_folder(const std::string &path, uint32_t files) {
  if (!fs::create_directory(path)) return;
  for (uint32_t i = 0; i < files; ++i) {
    const std::string name = path + "/member-" + std::to_string(i) + ".dat";
    close(open(name.c_str(), O_WRONLY | O_CREAT, 0644));
  }
}

void list(const std::string &path) {
  const Chars name = chars_of(path);
  uint64_t count = 0;
  JXStatus status = JX_OK;
  JXTable *table =
      instance()->directory_list(instance(), name.data(), count_of(name), JX_DIRECTORY_NAMED,
                                 JX_LIST_INFORMATION, &count, &status);
  check(table && count > 1);
  table->destroy_table(table);
}

void list_bare(const std::string &path) {
  DIR *stream = opendir(path.c_str());
  int64_t total = 0;
  while (const dirent *entry = readdir(stream)) {
    struct stat info;
    if (entry->d_name[0] == '.') continue;
    check(fstatat(dirfd(stream), entry->d_name, &info, 0) == 0);
    total += info.st_size + info.st_mtime + S_ISDIR(info.st_mode);
  }
  keep(total);
  closedir(stream);
}

void list_filesystem(const std::string &path) {
  struct Entry {
    std::string name;
    uintmax_t size;
    fs::file_time_type modified;
    bool is_dir;
  };
  std::vector<Entry> entries;
  for (const auto &entry : fs::directory_iterator(path)) {
    entries.push_back({entry.path().filename().string(), entry.file_size(), entry.last_write_time(),
                       entry.is_directory()});
  }
  keep(entries.size());
}

// ---- Trees

constexpr int kFolders = 50;
constexpr int kFilesEach = 100;
constexpr size_t kFileBytes = 10'000;

void make_tree(const std::string &root, size_t file_bytes) {
  const std::string content(file_bytes, 'c');
  fs::create_directory(root);
  for (int i = 0; i < kFolders; ++i) {
    const std::string folder = root + "/folder-" + std::to_string(i);
    fs::create_directory(folder);
    for (int j = 0; j < kFilesEach; ++j) {
      const std::string name = folder + "/member-" + std::to_string(j);
      const int fd = open(name.c_str(), O_WRONLY | O_CREAT, 0644);
      check(write(fd, content.data(), file_bytes) == static_cast<ssize_t>(file_bytes));
      close(fd);
    }
  }
}

void remove_tree(const std::string &path) {
  const Chars name = chars_of(path);
  check(instance()->remove(instance(), name.data(), count_of(name), JX_REMOVE_CONTENTS) == JX_OK);
}

void remove_bare(int parent, const char *name) {
  const int fd = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  DIR *stream = fdopendir(fd);
  while (const dirent *entry = readdir(stream)) {
    if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
    if (entry->d_type == DT_DIR) {
      remove_bare(fd, entry->d_name);
    } else {
      check(unlinkat(fd, entry->d_name, 0) == 0);
    }
  }
  closedir(stream);
  check(unlinkat(parent, name, AT_REMOVEDIR) == 0);
}

void copy_tree(const std::string &from, const std::string &to) {
  const Chars source = chars_of(from);
  const Chars target = chars_of(to);
  check(instance()->copy(instance(), source.data(), count_of(source), target.data(),
                         count_of(target)) == JX_OK);
}

void copy_file_bare(const char *from, const char *to, const struct stat &info) {
  const int source = open(from, O_RDONLY | O_CLOEXEC);
  const int target = open(to, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0777);
  std::vector<char> block(static_cast<size_t>(info.st_blksize));
  for (ssize_t bytes; (bytes = read(source, block.data(), block.size())) > 0;) {
    check(write(target, block.data(), static_cast<size_t>(bytes)) == bytes);
  }
  close(target);
  close(source);
}

void copy_bare(const std::string &from, const std::string &to) {
  struct stat info;
  check(stat(to.c_str(), &info) != 0);
  check(stat(from.c_str(), &info) == 0);
  if (!S_ISDIR(info.st_mode)) return copy_file_bare(from.c_str(), to.c_str(), info);
  check(mkdir(to.c_str(), 0777) == 0);
  DIR *stream = opendir(from.c_str());
  while (const dirent *entry = readdir(stream)) {
    if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
    copy_bare(from + "/" + entry->d_name, to + "/" + entry->d_name);
  }
  closedir(stream);
}

void run_program(std::vector<const char *> words) {
  words.push_back(nullptr);
  pid_t child = 0;
  auto **arguments = const_cast<char **>(words.data());
  check(posix_spawnp(&child, words[0], nullptr, nullptr, arguments, environ) == 0);
  int result = 0;
  check(waitpid(child, &result, 0) == child && result == 0);
}

// ---- Paths

constexpr int kPaths = 10'000;

void build_paths(const std::string &directory) {
  const Chars folder = chars_of(directory);
  const Chars member = chars_of("member-1234");
  const Chars extension = chars_of("dat");
  for (int i = 0; i < kPaths; ++i) {
    JXChar *path = nullptr;
    uint32_t path_chars = 0;
    check(instance()->build_path(instance(), folder.data(), count_of(folder), member.data(),
                                 count_of(member), extension.data(), count_of(extension), &path,
                                 &path_chars) == JX_OK);
    keep(path_chars);
    instance()->build_path_release(instance(), path);
  }
}

// The same result: joined, absolute, leading dots resolved.
void build_filesystem(const std::string &directory) {
  for (int i = 0; i < kPaths; ++i) {
    fs::path path = fs::path(directory) / "member-1234";
    path += ".dat";
    const fs::path result = fs::absolute(path).lexically_normal();
    keep(result.native().size());
  }
}

// ---- The pairs

void add_lists(std::vector<Pair> *all) {
  const std::string some = scratch().at("some");
  const std::string many = scratch().at("many");
  const auto make = [some, many] {
    make_wide_folder(some, 10'000);
    make_wide_folder(many, 100'000);
  };
  const std::string what = "directory list with attributes, 10,000 files";
  const auto list_some = [some] { list(some); };
  all->push_back({what, "readdir + fstatat", list_some, [some] { list_bare(some); }, make});
  all->push_back({what, "std::filesystem", list_some, [some] { list_filesystem(some); }, make});
  const auto ten_lists = [some] {
    for (int i = 0; i < 10; ++i) list(some);
  };
  all->push_back({"directory list with attributes, 100,000 files", "ten lists of 10,000",
                  [many] { list(many); }, ten_lists, make});
}

void add_trees(std::vector<Pair> *all) {
  const std::string tree = scratch().at("tree");
  const std::string copy = scratch().at("copy");
  const auto plant = [tree, copy] {
    fs::remove_all(tree);
    fs::remove_all(copy);
    make_tree(tree, 0);
  };
  const auto fill = [tree, copy] {
    fs::remove_all(copy);
    fs::remove_all(tree);
    make_tree(tree, kFileBytes);
  };
  const std::string removal = "tree of 5,000 files removed";
  const auto remove = [tree] { remove_tree(tree); };
  all->push_back({removal, "the same calls bare", remove,
                  [tree] { remove_bare(AT_FDCWD, tree.c_str()); }, plant});
  all->push_back({removal, "rm -r", remove,
                  [tree] {
                    run_program({"rm", "-r", tree.c_str()});
                  },
                  plant});
  const std::string copying = "tree of 5,000 files of 10,000 bytes copied";
  const auto copy_it = [tree, copy] { copy_tree(tree, copy); };
  all->push_back(
      {copying, "the same calls bare", copy_it, [tree, copy] { copy_bare(tree, copy); }, fill});
  all->push_back({copying, "cp -r", copy_it,
                  [tree, copy] {
                    run_program({"cp", "-r", tree.c_str(), copy.c_str()});
                  },
                  fill});
}

void add_paths(std::vector<Pair> *all) {
  for (const std::string &directory :
       std::vector<std::string>{"/usr/share/doc/package", "data/sets", "../data"}) {
    all->push_back({"path built from " + directory, "std::filesystem",
                    [directory] { build_paths(directory); },
                    [directory] { build_filesystem(directory); }});
  }
}

}  // namespace

int main(int argc, char **argv) {
  std::vector<Pair> all;
  add_lists(&all);
  add_trees(&all);
  add_paths(&all);
  return jx::bench::run_pairs(argc, argv, all);
}
