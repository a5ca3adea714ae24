// Directory handles, and the lists of their members.
#include "support/directory_fixture.hpp"
#include "support/path_text.hpp"

namespace jx::test {
namespace {

class Directory : public DirectoryTest {
 protected:
  Owned<JXDirectory> open_all(const JXString &path, uint32_t options = JX_DIRECTORY_OPEN_ALL) {
    JXStatus status = 1;
    return open(path, options, &status);
  }
  static Owned<JXTable> members(const Owned<JXDirectory> &directory, JXPool *pool, uint32_t flags,
                                uint64_t *count, JXStatus *status) {
    return Owned<JXTable>(directory->member_list(directory.get(), pool, flags, count, status));
  }
};

TEST_F(Directory, ReadsEveryName) {
  std::set<std::string> visible;
  std::set<std::string> all = {".", ".."};
  for (const std::string &name : kHardNames) {
    make_file(name);
    if (name[0] != '.') visible.insert(name);
    all.insert(name);
  }
  fs::current_path(dir.path());
  setenv("HOME", dir.path().c_str(), 1);
  EXPECT_TRUE(open_all(jx("~"), ~0u)) << "no option keeps a path from being expanded";
  const auto some = open_all(jx("."), 0);
  const auto every = open_all(jx("."));
  ASSERT_TRUE(some && every);
  EXPECT_EQ(std::string(every->eye_catcher, 4), "nevo");
  EXPECT_STREQ(every->name, "tag");
  EXPECT_EQ(narrow(every->path, every->path_chars), ".");
  EXPECT_EQ(every->pool, every->working_pool);
  EXPECT_NE(every->pool, instance->pool);
  // The handle keeps the directory that was current at the open.
  fs::current_path("/");
  for (const auto &[directory, expected] : {std::pair(&some, visible), std::pair(&every, all)}) {
    std::set<std::string> names;
    EXPECT_EQ(read_names(*directory, &names), JX_OK);
    EXPECT_EQ(names, expected);
  }
}

TEST_F(Directory, ANameThatDoesNotFitIsLost) {
  make_file("abcd");
  make_file("wxyz");
  const auto directory = open_all(at(""), 0);
  JXChar name[4] = {7, 7, 7, 7};
  uint32_t length = 3;
  EXPECT_EQ(directory->read(directory.get(), name, &length), JXWEM_E_NOROOM);
  EXPECT_EQ(name[0], 7u);
  length = 4;
  EXPECT_EQ(directory->read(directory.get(), name, &length), JX_OK);
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(directory->read(directory.get(), name, &length), JXWEM_E_EOF);
  // The length is that of the name even if the decoder produces less.
  const auto again = open_all(at(""), 0);
  JXTranscoder idle = {[](auto, auto, auto, auto, auto, uint32_t *produced_bytes, auto) {
    return JXStatus{*produced_bytes = 0};
  }};
  JXTranscoder *decoder = std::exchange(instance->native_decoder, &idle);
  EXPECT_EQ(again->read(again.get(), name, &length), JX_OK);
  instance->native_decoder = decoder;
  EXPECT_EQ(length, 4u);
}

TEST_F(Directory, MemberExist) {
  setenv("JX_TEST_A", "a", 1);
  make_file("a");
  const auto directory = open_all(at(""));
  const std::pair<const char *, JXStatus> rows[] = {
      {"a", JX_OK},           {"a  ", JX_OK},          {"$JX_TEST_A", JX_OK},
      {"  ", JX_OK},          {"", JXWEM_E_BADMEMBER}, {"b", JXWEM_E_NOTFOUND},
      {"a/b", JXWEM_E_SYSTEM}};
  for (const auto &[name, status] : rows) {
    const JXString text = jx(name);
    EXPECT_EQ(directory->member_exist(directory.get(), text.data(), chars(text)), status) << name;
  }
  expect_journal({ENOTDIR});
  const JXChar text = 'a';
  EXPECT_EQ(jxwemdirectorymemberexist(directory.get(), nullptr, 1), JXWEM_E_BADMEMBER);
  EXPECT_EQ(jxwemdirectorymemberexist(directory.get(), &text, 0x80000001u), JXWEM_E_NAMETOOLONG);
}

TEST_F(Directory, Refusals) {
  make_file("file");
  // A failed open frees its blocks before its pool; a failed list frees leftover records before the
  // table.
  host.start_trace();
  EXPECT_EQ(open_status(at("file")), JXWEM_E_NOTFOUND);
  const auto trace = host.take_trace();
  EXPECT_TRUE(trace.at(trace.size() - 3).starts_with("pool_free pool jxwemd"));
  host.start_trace();
  host.arm(calls(Call::table_insert), 0);
  EXPECT_EQ(list_status(at(""), JX_DIRECTORY_NAMED), JXWEM_E_FAILED);
  EXPECT_TRUE(host.take_trace().back().starts_with("destroy_table"));
  EXPECT_EQ(open_status({}), JXWEM_E_BADNAME);
  const JXChar text = '/';
  JXStatus status = 9;
  EXPECT_FALSE(jxwemdirectoryopen(instance, &text, 0xC0000000u, 0, 0, nullptr, nullptr, &status));
  EXPECT_EQ(status, JXWEM_E_NAMETOOLONG);
  // The instance or handle is checked before other arguments; a closed handle does not count as
  // one.
  uint64_t count = 7;
  EXPECT_EQ(bkwemdirectorylist(nullptr, nullptr, 0, 9, 0, nullptr, &count), JXWEM_E_NOHANDLE);
  EXPECT_EQ(count, 0u);
  const auto closed = open_all(at(""));
  EXPECT_EQ(bkwemclosedir(closed.get()), JX_OK);
  EXPECT_EQ(bkwemreaddir(closed.get(), nullptr, nullptr), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemdirectorymemberlist(instance, closed.get(), pool, 0, nullptr, &count),
            JXWEM_E_NOHANDLE);
  std::set<std::string> names;
  EXPECT_EQ(bkwemopendir(closed.get()), JX_OK) << "and is a handle again";
  EXPECT_EQ(read_names(closed, &names), JX_OK);
  EXPECT_TRUE(names.contains("file"));
}

// Each full path of a member list equals the path built from the handle's path and the name, for
// every spelling of the handle's path and every name.
TEST_F(Directory, FullPathsAreBuiltPaths) {
  setenv("HOME", dir.file("home").c_str(), 1);
  setenv("JX_TEST_DIR", dir.path().c_str(), 1);
  setenv("JX_TEST_D", "a/$JX_TEST_E", 1);
  setenv("JX_TEST_E", "b", 1);
  // A value that the work area cuts: no member's name fits after it, with any last character of the
  // value.
  const std::string cut = dir.file("a/b/x");
  setenv("JX_TEST_CUT", (cut + std::string(1022 - cut.size(), '/')).c_str(), 1);
  for (const char *folder : {"home", "a/b", "a/b/x", "a/x y", "$JX_TEST_UNSET"}) {
    make_folder(folder);
    for (const std::string &name : kHardNames) make_file(std::string(folder) + "/" + name);
  }
  for (const std::string &working : {dir.file("a/b"), std::string("/")}) {
    fs::current_path(working);
    for (const char *path : {".", "./", "..", "../b//", "../x y", "~", "~/", "$JX_TEST_D/..",
                             "../../$JX_TEST_D", "../../$JX_TEST_UNSET/", "$JX_TEST_DIR/a//b///",
                             "/", "//", "/proc/self/fdinfo  ", "/$JX_TEST_CUT"}) {
      SCOPED_TRACE(path);
      JXStatus status = 0;
      const auto directory = open(jx(path), JX_DIRECTORY_OPEN_ALL, &status);
      if (!directory) continue;
      std::set<std::string> names;
      EXPECT_EQ(read_names(open_all(jx(path)), &names), JX_OK);
      std::set<std::string> expected;
      for (auto name = names.begin(); name != names.end() && status == JX_OK; ++name) {
        expected.insert(build(instance, jx(path), jx(*name), {}, &status));
      }
      uint64_t count = 0;
      JXStatus list_status = 0;
      const auto table = members(directory, pool, JX_LIST_FULL_PATH, &count, &list_status);
      EXPECT_EQ(list_status, status);
      if (!table) continue;
      std::set<std::string> found;
      for (const auto &[name, record] : by_name<JXMember>(table)) found.insert(name);
      EXPECT_EQ(found, expected);
      EXPECT_EQ(count, names.size());
      EXPECT_FALSE(members(directory, pool, 0, &count, &list_status)) << "a second list is empty";
      EXPECT_EQ(list_status, JX_OK);
    }
  }
}

TEST_F(Directory, MemberList) {
  make_folder("sub");
  make_file(".profile", "123");
  make_file("name", "12345");
  JXStatus status = 0;
  uint64_t count = 0;
  {
    const auto directory = open_all(at(""));
    const auto table = members(directory, pool, JX_LIST_INFORMATION, &count, &status);
    ASSERT_TRUE(table) << std::hex << status;
    std::set<std::string> found;
    for (const auto &[name, record] : by_name<JXMember>(table)) {
      const auto items = FaultHost::values(record->information);
      const auto &item = *static_cast<JXInfoItem *>(items.at(name.ends_with('e') ? 0 : 2));
      found.insert(name.substr(dir.path().size()) + "=" + std::to_string(item.value.bytes));
      EXPECT_EQ(record->pool, pool);
    }
    EXPECT_EQ(found, (std::set<std::string>{"/.=1", "/..=1", "/.profile=3", "/name=5", "/sub=1"}));
    EXPECT_EQ(count, 5u);
  }
  // Information with neither a table nor a failure ends the list; the members before it are valid.
  instance->info = [](auto... arguments) {
    static int calls = 0;
    return ++calls == 2 ? nullptr : jxweminfo(arguments...);
  };
  EXPECT_TRUE(members(open_all(at("")), pool, JX_LIST_INFORMATION, &count, &status));
  EXPECT_EQ(count, 1u);
  // No names: no table and no failure. A member whose information fails ends the list.
  EXPECT_FALSE(members(open_all(at("sub"), 0), pool, 0, &count, &status));
  EXPECT_EQ(status, JX_OK);
  EXPECT_EQ(count, 0u);
  make_link("dangling", "nothing");
  EXPECT_EQ(members_status(at("")), JXWEM_E_NOTFOUND);
}

}  // namespace
}  // namespace jx::test
