// What the tests of paths and file-system operations share: real trees, a journal that is checked,
// the rights of a user who is not the superuser, and a thread with little stack.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
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

// The cells of a row of text, divided by bars.
template <size_t kCount>
std::array<std::string, kCount> cells(const std::string &row) {
  std::array<std::string, kCount> cells;
  std::istringstream text(row);
  for (std::string &cell : cells) std::getline(text, cell, '|');
  return cells;
}

// Closes or ends what an operation gave.
struct Ender {
  void operator()(JXDirectory *directory) const { EXPECT_EQ(directory->close(directory), JX_OK); }
  void operator()(JXTable *table) const { EXPECT_EQ(table->destroy_table(table), JX_OK); }
  void operator()(JXPool *pool) const { EXPECT_EQ(pool->destroy_pool(pool), JX_OK); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Ender>;

// An instance whose errors go to a journal, and a caller's pool; it may change the current
// directory.
class PathTest : public InstanceTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(instance);
    instance->journal = journal.journal();
    pool = make_pool();
  }
  void TearDown() override {
    expect_journal();
    fs::current_path("/");
    EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
    InstanceTest::TearDown();
  }

  JXPool *make_pool() { return host.host()->create_pool(host.host(), 0, 0, 0, nullptr, "caller"); }
  JXString at(std::string_view name) const { return jx(dir.file(name)); }
  void make_file(std::string_view name, std::string_view content = "content") const {
    write_file(dir.file(name), content);
  }
  void make_folder(std::string_view name) const { fs::create_directories(dir.file(name)); }
  void make_link(std::string_view name, const std::string &target) const {
    fs::create_symlink(target, dir.file(name));
  }
  // A folder whose path has exactly so many characters, many levels below the name.
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
  Owned<JXDirectory> open(const JXString &path, uint32_t options, JXStatus *status) {
    Owned<JXDirectory> directory(
        call(instance->directory_open, path, options, 0u, nullptr, "tag", status));
    EXPECT_EQ(directory != nullptr, *status == JX_OK);
    return directory;
  }
  Owned<JXTable> info(const JXString &path, JXStatus *status) {
    Owned<JXTable> table(instance->info(instance, pool, path.data(), chars(path), status));
    EXPECT_EQ(table != nullptr, *status == JX_OK);
    return table;
  }
  Owned<JXTable> list(const JXString &path, uint32_t kind, uint32_t flags, uint64_t *count,
                      JXStatus *status) {
    Owned<JXTable> table(call(instance->directory_list, path, kind, flags, count, status));
    EXPECT_EQ(table != nullptr, *status == JX_OK);
    EXPECT_EQ(*count != 0, *status == JX_OK);
    return table;
  }

  // The statuses of operations whose results go at once.
  JXStatus open_status(const JXString &path) {
    JXStatus status = 0;
    open(path, 0, &status);
    return status;
  }
  JXStatus info_status(const JXString &path) {
    JXStatus status = 0;
    info(path, &status);
    return status;
  }
  JXStatus space_status(const JXString &path) {
    JXStatus status = 0;
    const Owned<JXTable> table(call(instance->file_system_info, path, &status));
    EXPECT_EQ(table != nullptr, status == JX_OK);
    return status;
  }
  JXStatus list_status(const JXString &path, uint32_t kind, uint32_t flags = 0) {
    uint64_t count = 99;
    JXStatus status = 0;
    list(path, kind, flags, &count, &status);
    return status;
  }
  // The records of a member list stay in the pool.
  JXStatus members_status(const JXString &path) {
    JXStatus status = JX_E_NOMEM;
    uint64_t count = 0;
    const Owned<JXPool> own(make_pool());
    const auto directory = own ? open(path, JX_DIRECTORY_ALL, &status) : nullptr;
    if (!directory) return status;
    const Owned<JXTable> table(
        directory->member_list(directory.get(), own.get(), 3, &count, &status));
    EXPECT_EQ(table != nullptr, status == JX_OK);
    return status;
  }
  // The records of a list by their names.
  template <typename Record>
  static std::map<std::string, Record *> by_name(const Owned<JXTable> &table) {
    std::map<std::string, Record *> records;
    for (void *value : FaultHost::values(table.get())) {
      auto *record = static_cast<Record *>(value);
      records[narrow(record->name, static_cast<size_t>(record->name_chars))] = record;
    }
    return records;
  }
  // Adds the names that the reads of a handle deliver; JX_OK at their end.
  static JXStatus read_names(const Owned<JXDirectory> &directory, std::set<std::string> *names) {
    JXChar name[JX_NAME_MAX_CHARS];
    for (;;) {
      uint32_t length = JX_NAME_MAX_CHARS;
      const JXStatus status = directory->read(directory.get(), name, &length);
      if (status != JX_OK) return status == JXWEM_E_EOF ? JX_OK : status;
      names->insert(narrow(name, length));
    }
  }
  JXStatus read_status(const JXString &path) {
    JXStatus status = 0;
    std::set<std::string> names;
    const auto directory = open(path, 0, &status);
    return directory ? read_names(directory, &names) : status;
  }
  // The parts of a path; those that it does not have are empty.
  JXStatus split(const JXString &path, std::array<std::string, 4> *parts) {
    JXChar *part[4] = {};
    int32_t length[4] = {};
    const JXStatus status = call(instance->split_path, path, &part[0], &length[0], &part[1],
                                 &length[1], &part[2], &length[2], &part[3], &length[3]);
    for (size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(part[i] == nullptr, length[i] == 0);
      parts->at(i) = narrow(part[i], static_cast<size_t>(length[i]));
    }
    EXPECT_EQ(part[1], part[2]);
    EXPECT_EQ(instance->split_path_release(instance, part[0], part[1], part[2], part[3]), JX_OK);
    return status;
  }
  std::string build(const JXString &directory, const JXString &member, const JXString &extension,
                    JXStatus *status) {
    JXChar *path = nullptr;
    uint32_t path_chars = 0;
    *status = call(instance->build_path, directory, member.data(), chars(member), extension.data(),
                   chars(extension), &path, &path_chars);
    const std::string text = narrow(path, path_chars);
    EXPECT_EQ(path != nullptr, *status == JX_OK);
    instance->build_path_release(instance, path);
    return text;
  }
  JXStatus create_name(const JXString &directory, const JXString &prefix, const JXString &extension,
                       uint32_t flags, std::string *name) {
    const JXCreateName request = {prefix.data(), chars(prefix), extension.data(), chars(extension),
                                  flags};
    JXChar *path = nullptr;
    uint32_t path_chars = 77;
    const JXStatus status = call(instance->create_name, directory, &request, &path, &path_chars);
    EXPECT_EQ(path != nullptr, status == JX_OK);
    EXPECT_EQ(path_chars == 77u, !path);
    *name = narrow(path, path ? path_chars : 0);
    instance->create_name_release(instance, path);
    return status;
  }

  RecordingJournal journal;
  JXPool *pool = nullptr;
};

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
