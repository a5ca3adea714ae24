// A test of directory handles, lists and information tables.
#pragma once

#include <map>
#include <memory>
#include <set>

#include "support/path_fixture.hpp"

namespace jx::test {

// Closes or destroys the result of an operation.
struct Ender {
  void operator()(JXDirectory *directory) const { EXPECT_EQ(directory->close(directory), JX_OK); }
  void operator()(JXTable *table) const { EXPECT_EQ(table->destroy_table(table), JX_OK); }
  void operator()(JXPool *pool) const { EXPECT_EQ(pool->destroy_pool(pool), JX_OK); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Ender>;

// The caller's pool is that of information tables and member lists.
class DirectoryTest : public PathTest {
 protected:
  void SetUp() override {
    PathTest::SetUp();
    pool = make_pool();
  }
  void TearDown() override {
    EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
    PathTest::TearDown();
  }

  JXPool *make_pool() { return host.host()->create_pool(host.host(), 0, 0, 0, nullptr, "caller"); }
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

  // The statuses of operations, their results released at once.
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
  // Destroying the table of a member list leaves its records in the pool.
  JXStatus members_status(const JXString &path, uint32_t flags = 3) {
    JXStatus status = JX_E_NOMEM;
    uint64_t count = 0;
    const Owned<JXPool> own(make_pool());
    const auto directory = own ? open(path, JX_DIRECTORY_ALL, &status) : nullptr;
    if (!directory) return status;
    const Owned<JXTable> table(
        directory->member_list(directory.get(), own.get(), flags, &count, &status));
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
  // Adds the names that a handle reads; JX_OK at the end of the directory.
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

  JXPool *pool = nullptr;
};

}  // namespace jx::test
