// Lists of directories.
#include "support/directory_fixture.hpp"
#include "support/path_text.hpp"
#include "support/small_stack.hpp"

namespace jx::test {
namespace {

using DirectoryList = DirectoryTest;

TEST_F(DirectoryList, Statuses) {
  setenv("HOME", dir.path().c_str(), 1);
  make_file("file.txt");
  const std::tuple<JXString, uint32_t, JXStatus> rows[] = {
      {at("file.txt"), JX_DIRECTORY_NAMED, JXWEM_E_NOTFOUND},
      {at("file.txt"), JX_DIRECTORY_PARENT, JX_OK},
      {at("nothing"), JX_DIRECTORY_PARENT, JX_OK},
      {jx("/"), JX_DIRECTORY_PARENT, JXWEM_E_NOMEMBER},
      {jx("~nosuchuser"), JX_DIRECTORY_PARENT, JXWEM_E_NOTFOUND},
      {jx("/x"), JX_DIRECTORY_PARENT, JX_OK},
      {{}, JX_DIRECTORY_NAMED, JX_OK},
      {jx("   "), JX_DIRECTORY_NAMED, JXWEM_E_BADNAME},
      {jx("ignored"), JX_DIRECTORY_ROOT, JX_OK},
      {{}, JX_DIRECTORY_HOME, JX_OK},
      {JXString(1025, '/'), JX_DIRECTORY_NAMED, JXWEM_E_NAMETOOLONG},
      {JXString(1024, '/'), JX_DIRECTORY_NAMED, JX_OK},
      {JXString(1025, '/'), JX_DIRECTORY_HOME, JX_OK},
      {jx(make_long_folder("long", 1024)), JX_DIRECTORY_NAMED, JX_OK},
      {jx("/"), 4, JX_E_BADARG},
      {jx("/"), 7, JX_E_BADARG},
  };
  for (const auto &[path, kind, status] : rows) {
    EXPECT_EQ(list_status(path, kind), status) << narrow(path) << " " << kind;
  }
}

// With attributes every record has the facts that `info` gives for the built path, or the defaults
// when it fails.
TEST_F(DirectoryList, Records) {
  using Facts = std::tuple<int64_t, double, uint32_t>;  // size, time, whether a directory
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
    for (const uint32_t flags : {0u, 1u, 2u, 3u}) {
      std::map<std::string, Facts> expected = {{dir.file(folder), {-1, -1.0, 1}}};
      for (const std::string &name : names) {
        JXStatus status = 0;
        const std::string full = build(instance, at(folder), jx(name), {}, &status);
        Facts &facts = expected[(flags & 1) != 0 ? full : name];
        facts = {-1, -1.0, 0};
        const auto table = (flags & 2) != 0 ? info(jx(full), &status) : nullptr;
        if (!table) continue;
        const auto item = [&](const char *key) {
          return static_cast<JXInfoItem *>(FaultHost::find(table.get(), key))->value;
        };
        facts = {item("FILESIZE").bytes, item("MODTIME").time, item("ISDIR").word};
      }
      journal.take_lines();
      JXStatus status = 0;
      uint64_t count = 0;
      const auto table = list(given, JX_DIRECTORY_NAMED, flags, &count, &status);
      // With attributes the loop is reported; in a folder that its built paths miss there is none.
      const bool meets_loop = (flags & 2) != 0 && folder == "folder";
      expect_journal(meets_loop ? std::vector{ELOOP} : std::vector<int>{});
      std::map<std::string, Facts> found;
      for (const auto &[name, record] : by_name<JXDirectoryEntry>(table)) {
        found[name] = {record->size_bytes, record->modified, record->is_dir};
        EXPECT_EQ(record->second_time, -1.0);
        EXPECT_EQ(record->pool, instance->pool);
      }
      EXPECT_EQ(found, expected) << folder << flags;
      EXPECT_EQ(count, names.size() + 1);
    }
  }
}

TEST_F(DirectoryList, AMemberWhosePathIsTooLongEndsAListOfPaths) {
  const std::string folder = make_long_folder("long", 1000);
  for (const size_t name_chars : {23u, 24u}) {
    fs::current_path(folder);
    write_file(std::string(name_chars, 'f'), "");
    const JXStatus status = name_chars == 23 ? JX_OK : JXWEM_E_NAMETOOLONG;
    EXPECT_EQ(list_status(jx(folder), JX_DIRECTORY_NAMED, 0), JX_OK);
    EXPECT_EQ(list_status(jx(folder), JX_DIRECTORY_NAMED, JX_LIST_FULL_PATH), status);
    EXPECT_EQ(list_status(jx(folder), JX_DIRECTORY_NAMED, JX_LIST_INFORMATION), status);
  }
}

TEST_F(DirectoryList, HundredThousandMembersOnALittleStack) {
  make_wide_folder("wide");
  run_on_small_stack([&] {
    JXStatus status = 0;
    uint64_t count = 0;
    const uint64_t blocks = host.count(Call::pool_allocate);
    const auto table = list(at("wide"), JX_DIRECTORY_NAMED, 3, &count, &status);
    EXPECT_EQ(count, 100'001u);
    // A record and a name for each member, and a few blocks for the directory.
    EXPECT_LE(host.count(Call::pool_allocate) - blocks, 2 * count + 12);
  });
}

}  // namespace
}  // namespace jx::test
