// What the tests of paths and file-system operations share: real trees, a journal that is checked,
// the rights of a user who is not the superuser, and a thread with little stack.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "support/instance.hpp"
#include "support/journal.hpp"
#include "support/path_calls.hpp"

namespace jx::test {

namespace fs = std::filesystem;

// Names that are easy to get wrong.
inline const std::vector<std::string> kHardNames = {
    "plain",   "two words", "$HOME", "blanks  ", "-rf",  "\x80\xff bytes",     "~",
    ".hidden", "..x",       "a\nb",  "$",        "${A}", std::string(255, 'n')};

// An instance whose errors go to a journal, and a folder that every user may enter.
class PathTest : public InstanceTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(instance);
    instance->journal = journal.journal();
    chmod(dir.path().c_str(), 0755);
  }
  void TearDown() override {
    expect_journal();
    InstanceTest::TearDown();
  }

  JXString at(std::string_view name) const { return jx(dir.file(name)); }
  void make_file(std::string_view name, std::string_view content = "content") const {
    write_file(dir.file(name), content);
  }
  void make_folder(std::string_view name) const { fs::create_directories(dir.file(name)); }
  void make_link(std::string_view name, const std::string &target) const {
    fs::create_symlink(target, dir.file(name));
  }
  // A folder whose path has exactly so many characters.
  std::string make_long_folder(size_t path_chars) const {
    std::string path = dir.file("long");
    while (path.size() < path_chars) {
      size_t more = std::min<size_t>(200, path_chars - path.size() - 1);
      if (path.size() + 1 + more == path_chars - 1) --more;  // one character would be left over
      path += "/" + std::string(more, 'd');
    }
    make_deep(path);
    return path;
  }
  // Makes a folder with its parents, whatever the length of its path.
  static void make_deep(const std::string &path) {
    for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
      mkdir(path.substr(0, end).c_str(), 0755);
      if (end == std::string::npos) return;
    }
  }
  // All names below a folder, sorted.
  std::set<std::string> names_below(std::string_view name) const {
    std::set<std::string> names;
    const fs::path root = dir.file(name);
    for (const auto &entry : fs::recursive_directory_iterator(root)) {
      names.insert(entry.path().string().substr(root.string().size() + 1));
    }
    return names;
  }
  bool exists(std::string_view name) const {
    struct stat info;
    return lstat(dir.file(name).c_str(), &info) == 0;
  }

  // Checks that the journal got the text of each errno, in order, and nothing else.
  void expect_journal(const std::vector<int> &errors = {}) {
    std::vector<std::string> expected;
    std::vector<std::string> found;
    for (const int error : errors) expected.emplace_back(std::strerror(error));
    for (const JournalLine &line : journal.take_lines()) {
      EXPECT_EQ(line.operation, "status_to_journal");
      EXPECT_EQ(line.words, (std::vector<uintptr_t>{4, JXWEM_E_SYSTEM}));
      found.push_back(line.text);
    }
    EXPECT_EQ(found, expected);
  }

  // Calls an operation that takes a path first.
  template <typename Operation, typename... Rest>
  auto call(Operation operation, const JXString &path, Rest... rest) {
    return operation(instance, path.data(), chars(path), rest...);
  }
  JXStatus exist(const JXString &path) { return call(instance->exist, path); }
  JXStatus is_dir(const JXString &path) { return call(bkwemisdir, path); }
  JXStatus make(const JXString &path) { return call(instance->make_directory, path); }
  JXStatus remove(const JXString &path, uint32_t flags = 0) {
    return call(instance->remove, path, flags);
  }
  JXStatus rename(const JXString &from, const JXString &to) {
    return call(instance->rename, from, to.data(), chars(to));
  }
  JXStatus copy(const JXString &from, const JXString &to) {
    return call(instance->copy, from, to.data(), chars(to));
  }
  JXDirectory *open(const JXString &path, uint32_t options, JXStatus *status) {
    return call(instance->directory_open, path, options, 0u, nullptr, "tag", status);
  }
  // Opens and closes; the status of the open.
  JXStatus open_status(const JXString &path) {
    JXStatus status = 0;
    JXDirectory *directory = open(path, 0, &status);
    EXPECT_EQ(directory != nullptr, status == JX_OK);
    if (directory) directory->close(directory);
    return status;
  }
  // Makes and ends a directory list; its status.
  JXStatus list_status(const JXString &path, uint32_t kind, uint32_t flags = 0) {
    uint64_t count = 99;
    JXStatus status = 0;
    JXTable *table =
        instance->directory_list(instance, path.data(), chars(path), kind, flags, &count, &status);
    EXPECT_EQ(table != nullptr, status == JX_OK);
    EXPECT_EQ(count != 0, status == JX_OK);
    if (table) table->destroy_table(table);
    return status;
  }
  std::string build(const JXString &directory, const JXString &member, const JXString &extension,
                    JXStatus *status) {
    JXChar *path = nullptr;
    uint32_t path_chars = 0;
    *status =
        instance->build_path(instance, directory.data(), chars(directory), member.data(),
                             chars(member), extension.data(), chars(extension), &path, &path_chars);
    const std::string text = narrow(path, path_chars);
    EXPECT_EQ(path != nullptr, *status == JX_OK);
    instance->build_path_release(instance, path);
    return text;
  }

  RecordingJournal journal;
};

// Another current directory for a while.
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::string &path) : before_(fs::current_path()) {
    fs::current_path(path);
  }
  WorkingDirectory(const WorkingDirectory &) = delete;
  WorkingDirectory &operator=(const WorkingDirectory &) = delete;
  ~WorkingDirectory() { fs::current_path(before_); }

 private:
  fs::path before_;
};

// Runs with the rights of a user who owns nothing.
inline void run_unprivileged(const std::function<void()> &body) {
  const uid_t user = geteuid();
  if (user == 0) {
    ASSERT_EQ(seteuid(65534), 0);
  }
  body();
  ASSERT_EQ(seteuid(user), 0);
}

// Runs on a thread with 128 KiB of stack.
inline void run_on_small_stack(std::function<void()> body) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 128 * 1024), 0);
  pthread_t thread;
  const auto run = [](void *argument) -> void * {
    (*static_cast<std::function<void()> *>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace jx::test
