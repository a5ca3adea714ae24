// Directory handles, and the lists of members and of directories.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>

#include "support/path_fixture.hpp"

namespace jx::test {
namespace {

class Directory : public PathTest {
 protected:
  void SetUp() override {
    PathTest::SetUp();
    pool = host.host()->create_pool(host.host(), 0, 0, 0, nullptr, "caller");
  }
  void TearDown() override {
    EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
    PathTest::TearDown();
  }

  JXDirectory *open_all(const JXString &path, uint32_t options = JX_DIRECTORY_ALL) {
    JXStatus status = 1;
    JXDirectory *directory = open(path, options, &status);
    EXPECT_EQ(status, JX_OK);
    return directory;
  }
  // The names that the reads of a handle deliver.
  std::set<std::string> read_all(JXDirectory *directory) {
    std::set<std::string> names;
    JXChar name[JX_NAME_MAX_CHARS];
    for (;;) {
      uint32_t length = JX_NAME_MAX_CHARS;
      const JXStatus status = directory->read(directory, name, &length);
      if (status == JXWEM_E_EOF) return names;
      EXPECT_EQ(status, JX_OK);
      names.insert(narrow(name, length));
    }
  }
  JXTable *list(const JXString &path, uint32_t kind, uint32_t flags, uint64_t *count) {
    JXStatus status = 1;
    JXTable *table =
        instance->directory_list(instance, path.data(), chars(path), kind, flags, count, &status);
    EXPECT_EQ(status, JX_OK);
    return table;
  }

  JXPool *pool = nullptr;
};

TEST_F(Directory, ReadsEveryName) {
  std::set<std::string> visible;
  std::set<std::string> all = {".", ".."};
  for (const std::string &name : kHardNames) {
    make_file(name);
    if (name[0] != '.') visible.insert(name);
    all.insert(name);
  }
  const WorkingDirectory here(dir.path());
  JXDirectory *some = open_all(jx("."), 0);
  JXDirectory *every = open_all(jx("."));
  ASSERT_TRUE(some && every);
  EXPECT_EQ(std::string(every->eye_catcher, 4), "nevo");
  EXPECT_STREQ(every->name, "tag");
  EXPECT_EQ(narrow(every->path, every->path_chars), ".");
  EXPECT_EQ(every->path[1], 0u);
  EXPECT_EQ(every->pool, every->working_pool);
  EXPECT_NE(every->pool, instance->pool);
  EXPECT_EQ(every->journal, nullptr);
  // The directory stays the one that was current at the open.
  fs::current_path("/");
  EXPECT_EQ(read_all(some), visible);
  EXPECT_EQ(read_all(every), all);
  EXPECT_EQ(some->close(some), JX_OK);
  EXPECT_EQ(every->close(every), JX_OK);
}

TEST_F(Directory, ANameThatDoesNotFitIsLost) {
  make_folder("folder");
  make_file("folder/abcd");
  make_file("folder/wxyz");
  JXDirectory *directory = open_all(at("folder"), 0);
  JXChar name[4] = {7, 7, 7, 7};
  uint32_t length = 3;
  EXPECT_EQ(directory->read(directory, name, &length), JXWEM_E_NOROOM);
  EXPECT_EQ(name[0], 7u);
  length = 4;
  EXPECT_EQ(directory->read(directory, name, &length), JX_OK);
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(directory->read(directory, name, &length), JXWEM_E_EOF);
  directory->close(directory);
}

TEST_F(Directory, MemberExist) {
  setenv("JX_TEST_A", "a", 1);
  make_folder("folder");
  make_file("folder/a");
  JXDirectory *directory = open_all(at("folder"));
  const std::pair<const char *, JXStatus> rows[] = {{"a", JX_OK},
                                                    {"a  ", JX_OK},
                                                    {"$JX_TEST_A", JX_OK},
                                                    {"b", JXWEM_E_NOTFOUND},
                                                    {"", JXWEM_E_BADMEMBER},
                                                    {"a/b", JXWEM_E_SYSTEM},
                                                    {"  ", JX_OK}};
  for (const auto &[name, status] : rows) {
    EXPECT_EQ(directory->member_exist(directory, jx(name).data(),
                                      static_cast<uint32_t>(std::strlen(name))),
              status)
        << name;
  }
  expect_journal({ENOTDIR});
  EXPECT_EQ(directory->member_exist(directory, nullptr, 1), JXWEM_E_BADMEMBER);
  EXPECT_EQ(directory->member_exist(directory, jx("a").data(), 0x80000001u), JXWEM_E_NAMETOOLONG);
  directory->close(directory);
}

TEST_F(Directory, Refusals) {
  make_file("file");
  make_folder("closed");
  chmod(dir.file("closed").c_str(), 0);
  EXPECT_EQ(open_status(at("file")), JXWEM_E_NOTFOUND);
  EXPECT_EQ(open_status(at("nothing")), JXWEM_E_NOTFOUND);
  EXPECT_EQ(open_status({}), JXWEM_E_BADNAME);
  run_unprivileged([&] { EXPECT_EQ(open_status(at("closed")), JXWEM_E_ACCESS); });
  const JXString path = at("file");
  const auto opened = [&](JXInstance *with, const JXChar *text, uint32_t length) {
    JXStatus status = 9;
    EXPECT_FALSE(jxwemdirectoryopen(with, text, length, 0, 0, nullptr, nullptr, nullptr));
    EXPECT_FALSE(jxwemdirectoryopen(with, text, length, 0, 0, nullptr, nullptr, &status));
    return status;
  };
  EXPECT_EQ(opened(nullptr, path.data(), 1), JXWEM_E_NOHANDLE);
  EXPECT_EQ(opened(instance, nullptr, 1), JXWEM_E_BADNAME);
  EXPECT_EQ(opened(instance, path.data(), 0xC0000000u), JXWEM_E_NAMETOOLONG);
  EXPECT_EQ(bkwemreaddir(nullptr, nullptr, nullptr), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemopendir(nullptr), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemclosedir(nullptr), JXWEM_E_NOHANDLE);
  EXPECT_EQ(jxwemdirectoryclose(nullptr), JXWEM_E_NOHANDLE);
  EXPECT_EQ(jxwemdirectorymemberexist(nullptr, path.data(), 1), JXWEM_E_NOHANDLE);
  uint64_t count = 9;
  JXStatus status = 9;
  EXPECT_FALSE(jxwemdirectorymemberlist(nullptr, pool, 0, &count, &status));
  EXPECT_EQ(status, JXWEM_E_FAILED);
  EXPECT_EQ(count, 0u);
  EXPECT_FALSE(jxwemdirectorylist(nullptr, path.data(), 1, 0, 0, &count, &status));
  EXPECT_EQ(status, JXWEM_E_NOHANDLE);
}

// Each full path of a member list is what the path build makes of the handle's path and the name,
// however the handle's path is written and whatever the name.
TEST_F(Directory, FullPathsAreBuiltPaths) {
  setenv("HOME", dir.file("home").c_str(), 1);
  setenv("JX_TEST_D", "a/$JX_TEST_E", 1);
  setenv("JX_TEST_E", "b", 1);
  for (const char *folder : {"home", "a/b", "a/x y", "$JX_TEST_UNSET"}) {
    make_folder(folder);
    for (const std::string &name : kHardNames) make_file(std::string(folder) + "/" + name);
  }
  const WorkingDirectory here(dir.file("a/b"));
  const std::string given[] = {".",
                               "./",
                               "..",
                               "../b//",
                               "../x y",
                               "~",
                               "~/",
                               "$JX_TEST_D/..",
                               "../../$JX_TEST_D",
                               "../../$JX_TEST_UNSET/",
                               dir.path() + "/a//b///",
                               dir.path(),
                               "/",
                               "//",
                               "/proc/self/fdinfo  "};
  for (const char *working : {"a/b", "/"}) {
    fs::current_path(working[0] == '/' ? working : dir.file(working));
    for (const std::string &path : given) {
      JXStatus status = 0;
      JXDirectory *directory = open(jx(path), JX_DIRECTORY_ALL, &status);
      if (!directory) continue;
      JXDirectory *names = open_all(jx(path));
      std::multiset<std::string> expected;
      for (const std::string &name : read_all(names)) {
        expected.insert(build(jx(path), jx(name), {}, &status));
        if (status != JX_OK) break;
      }
      names->close(names);
      uint64_t count = 0;
      JXStatus list_status = 0;
      JXTable *table =
          directory->member_list(directory, pool, JX_LIST_FULL_PATH, &count, &list_status);
      EXPECT_EQ(list_status, status) << path;
      std::multiset<std::string> found;
      if (table) {
        for (void *value : FaultHost::values(table)) {
          auto *record = static_cast<JXMember *>(value);
          found.insert(narrow(record->name, static_cast<size_t>(record->name_chars)));
        }
        EXPECT_EQ(count, found.size());
        EXPECT_EQ(found, expected) << path;
        table->destroy_table(table);
        EXPECT_EQ(directory->member_list(directory, pool, 0, &count, &list_status), nullptr);
        EXPECT_EQ(list_status, JX_OK) << "a second list is empty";
      }
      directory->close(directory);
    }
  }
}

TEST_F(Directory, MemberList) {
  make_folder("folder/sub");
  make_file("folder/.profile", "123");
  make_file("folder/name", "12345");
  JXStatus status = 0;
  uint64_t count = 0;
  JXDirectory *directory = open_all(at("folder"));
  JXTable *table = directory->member_list(directory, pool, JX_LIST_INFORMATION, &count, &status);
  ASSERT_TRUE(table) << std::hex << status;
  EXPECT_EQ(count, 5u);
  std::map<std::string, JXMember *> members;
  for (void *value : FaultHost::values(table)) {
    auto *record = static_cast<JXMember *>(value);
    members[narrow(record->name, static_cast<size_t>(record->name_chars))] = record;
    EXPECT_EQ(record->pool, pool);
    EXPECT_EQ(FaultHost::values(record->information).size(), 3u);
  }
  const auto item = [&](const char *name, const char *item_name) {
    JXMember *record = members.at(dir.file(name));
    return static_cast<JXInfoItem *>(FaultHost::find(record->information, item_name))->value.bytes;
  };
  EXPECT_EQ(item("folder/name", "FILESIZE"), 5u);
  EXPECT_EQ(item("folder/.profile", "FILESIZE"), 3u);
  EXPECT_EQ(item("folder/sub", "ISDIR"), 1u);
  EXPECT_TRUE(members.count(dir.file("folder/.")) && members.count(dir.file("folder/..")));
  EXPECT_EQ(table->destroy_table(table), JX_OK);
  directory->close(directory);

  // Only hidden names: no table and no failure.
  make_folder("hidden");
  make_file("hidden/.profile");
  directory = open_all(at("hidden"), 0);
  EXPECT_EQ(directory->member_list(directory, pool, 0, &count, &status), nullptr);
  EXPECT_EQ(status, JX_OK);
  EXPECT_EQ(count, 0u);
  directory->close(directory);

  // A member that cannot be asked about ends the list.
  make_link("folder/dangling", "nothing");
  directory = open_all(at("folder"));
  EXPECT_EQ(directory->member_list(directory, pool, JX_LIST_INFORMATION, &count, &status), nullptr);
  EXPECT_EQ(status, JXWEM_E_NOTFOUND);
  directory->close(directory);
}

TEST_F(Directory, ARefusedMemberIsLeftOutOfTheList) {
  make_folder("folder");
  make_file("folder/a");
  make_file("folder/b");
  JXDirectory *directory = open_all(at("folder"), 0);
  const LiveCounts before = host.live();
  JXStatus status = 1;
  uint64_t count = 0;
  // Three inserts for each information table, then those of the list.
  host.arm(calls(Call::table_insert), 6);
  JXTable *table = directory->member_list(directory, pool, JX_LIST_INFORMATION, &count, &status);
  EXPECT_TRUE(host.disarm());
  ASSERT_TRUE(table);
  EXPECT_EQ(status, JX_OK);
  EXPECT_EQ(FaultHost::values(table).size(), 1u);
  table->destroy_table(table);
  EXPECT_EQ(host.live().objects, before.objects);
  directory->close(directory);
}

struct ListRow {
  std::string path;
  uint32_t kind;
  JXStatus status;
};

TEST_F(Directory, ListStatuses) {
  setenv("HOME", dir.path().c_str(), 1);
  make_file("file.txt");
  const ListRow rows[] = {
      {dir.file("file.txt"), JX_DIRECTORY_NAMED, JXWEM_E_NOTFOUND},
      {dir.file("file.txt"), JX_DIRECTORY_PARENT, JX_OK},
      {dir.file("nothing"), JX_DIRECTORY_PARENT, JX_OK},
      {dir.file("nothing"), JX_DIRECTORY_NAMED, JXWEM_E_NOTFOUND},
      {"/", JX_DIRECTORY_PARENT, JXWEM_E_NOMEMBER},
      {"~nosuchuser", JX_DIRECTORY_PARENT, JXWEM_E_NOMEMBER},
      {"/x", JX_DIRECTORY_PARENT, JX_OK},
      {"", JX_DIRECTORY_NAMED, JX_OK},
      {"   ", JX_DIRECTORY_NAMED, JXWEM_E_BADNAME},
      {"ignored", JX_DIRECTORY_ROOT, JX_OK},
      {"", JX_DIRECTORY_HOME, JX_OK},
      {std::string(1025, '/'), JX_DIRECTORY_NAMED, JXWEM_E_NAMETOOLONG},
      {std::string(1024, '/'), JX_DIRECTORY_NAMED, JX_OK},
      {std::string(1025, '/'), JX_DIRECTORY_HOME, JX_OK},
      {"/", 4, JX_E_BADARG},
      {"/", 7, JX_E_BADARG},
  };
  for (const ListRow &row : rows) {
    EXPECT_EQ(list_status(jx(row.path), row.kind), row.status) << row.path << " " << row.kind;
  }
  EXPECT_EQ(list_status(jx(make_long_folder(1024)), JX_DIRECTORY_NAMED), JX_OK);
  run_unprivileged([&] { EXPECT_EQ(list_status(jx("/root"), 0), JXWEM_E_ACCESS); });
}

// With attributes every record holds what the information operation says of the built path, or the
// defaults where it fails.
TEST_F(Directory, ListRecords) {
  const auto shown = [](const std::string &name, int64_t size, double modified, uint32_t is_dir) {
    return name + "|" + std::to_string(size) + "|" + std::to_string(modified) + "|" +
           std::to_string(is_dir);
  };
  setenv("HOME", dir.file("home").c_str(), 1);
  setenv("JX_TEST_T", dir.file("trailing  ").c_str(), 1);
  for (const std::string folder : {"folder", "trailing  "}) {
    std::vector<std::string> names = {"sub", "dangling", "loop"};
    make_folder(folder + "/sub");
    make_link(folder + "/dangling", "nothing");
    make_link(folder + "/loop", "loop");
    for (const std::string &name : kHardNames) {
      make_file(folder + "/" + name, name);
      if (name[0] != '.') names.push_back(name);
    }
    const JXString given = folder == "folder" ? at("folder//") : jx("$JX_TEST_T");
    const JXString directory = at(folder);
    for (const uint32_t flags : {0u, 1u, 2u, 3u}) {
      std::set<std::string> expected = {shown(dir.file(folder), -1, -1.0, 1)};
      for (const std::string &name : names) {
        JXStatus status = 0;
        const JXString full = jx(build(directory, jx(name), {}, &status));
        const std::string record_name = (flags & 1) != 0 ? narrow(full) : name;
        JXInfoItem **array = nullptr;
        uint32_t count = 0;
        if ((flags & 2) == 0 ||
            bkweminfo(instance, pool, full.data(), chars(full), &array, &count) != JX_OK) {
          expected.insert(shown(record_name, -1, -1.0, 0));
          continue;
        }
        expected.insert(shown(record_name, static_cast<int64_t>(array[0]->value.bytes),
                              array[1]->value.time, array[2]->value.word));
      }
      journal.take_lines();
      uint64_t count = 0;
      JXTable *table = list(given, JX_DIRECTORY_NAMED, flags, &count);
      // With attributes the loop is asked about; a folder that its built paths miss has none.
      expect_journal((flags & 2) != 0 && folder == "folder" ? std::vector{ELOOP}
                                                            : std::vector<int>{});
      std::set<std::string> found;
      for (void *value : FaultHost::values(table)) {
        const auto &record = *static_cast<JXDirectoryEntry *>(value);
        found.insert(shown(narrow(record.name, static_cast<size_t>(record.name_chars)),
                           record.size_bytes, record.modified, record.is_dir));
        EXPECT_EQ(record.second_time, -1.0);
        EXPECT_EQ(record.pool, instance->pool);
      }
      EXPECT_EQ(found, expected) << folder << flags;
      EXPECT_EQ(count, names.size() + 1);
      table->destroy_table(table);
    }
  }
}

TEST_F(Directory, AMemberWhosePathIsTooLongEndsAListOfPaths) {
  const std::string folder = make_long_folder(1000);
  for (const size_t name_chars : {23u, 24u}) {
    {
      const WorkingDirectory here(folder);
      write_file(std::string(name_chars, 'f'), "");
    }
    const JXStatus status = name_chars == 23 ? JX_OK : JXWEM_E_NAMETOOLONG;
    EXPECT_EQ(list_status(jx(folder), JX_DIRECTORY_NAMED, 0), JX_OK);
    EXPECT_EQ(list_status(jx(folder), JX_DIRECTORY_NAMED, JX_LIST_FULL_PATH), status);
    EXPECT_EQ(list_status(jx(folder), JX_DIRECTORY_NAMED, JX_LIST_INFORMATION), status);
  }
}

TEST_F(Directory, HundredThousandMembersOnALittleStack) {
  make_folder("wide");
  const int wide = open64(dir.file("wide").c_str(), O_RDONLY | O_DIRECTORY);
  for (int i = 0; i < 100'000; ++i) {
    ::close(openat64(wide, std::to_string(i).c_str(), O_WRONLY | O_CREAT, 0644));
  }
  ::close(wide);
  run_on_small_stack([&] {
    uint64_t count = 0;
    const uint64_t blocks = host.count(Call::pool_allocate);
    JXTable *table = list(at("wide"), JX_DIRECTORY_NAMED, 3, &count);
    EXPECT_EQ(count, 100'001u);
    // Besides the record and the name of each member, only a few blocks for the directory.
    EXPECT_LE(host.count(Call::pool_allocate) - blocks, 2 * count + 12);
    if (table) table->destroy_table(table);
  });
}

}  // namespace
}  // namespace jx::test
