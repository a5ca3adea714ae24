// Existence, the directory test, renaming and making directories.
#include "support/directory_fixture.hpp"

namespace jx::test {
namespace {

constexpr JXStatus kAccess = JXWEM_E_ACCESS;
constexpr JXStatus kMissing = JXWEM_E_NOTFOUND;

class FileOperations : public DirectoryTest {
 protected:
  void SetUp() override {
    DirectoryTest::SetUp();
    make_file("file");
    make_folder("folder/inner");
    make_folder("empty");
    make_link("to_file", "file");
    make_link("to_folder", "folder");
    make_link("to_nothing", "nothing");
    make_link("loop", "loop");
  }
};

// Refusals to a user with read access only, and in a folder without search permission.
TEST_F(FileOperations, RightsOfAnotherUser) {
  ASSERT_EQ(chmod(dir.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(dir.file("folder").c_str(), 0), 0);
  make_folder("public/listed");
  make_file("public/listed/inner");
  ASSERT_EQ(chmod(dir.file("public").c_str(), 0777), 0);
  ASSERT_EQ(chmod(dir.file("public/listed").c_str(), 0744), 0);
  run_unprivileged([&] {
    EXPECT_EQ(exist(at("folder/inner")), kAccess);
    EXPECT_EQ(is_dir(at("folder/inner")), kAccess);
    EXPECT_EQ(info_status(at("folder/inner")), kAccess);
    EXPECT_EQ(space_status(at("folder/inner")), kAccess);
    EXPECT_EQ(open_status(at("folder")), kAccess);
    EXPECT_EQ(list_status(at("folder"), JX_DIRECTORY_NAMED), kAccess);
    EXPECT_EQ(remove(at("folder/inner")), kMissing);
    // Its names can be listed, but not examined.
    EXPECT_EQ(remove(at("public/listed"), JX_REMOVE_CONTENTS), kMissing);
    EXPECT_EQ(remove(at("file")), kAccess);
    EXPECT_EQ(rename(at("file"), at("x")), kAccess);
    EXPECT_EQ(make(at("x")), kAccess);
    EXPECT_EQ(copy(at("file"), at("x")), kAccess);
  });
  ASSERT_EQ(chmod(dir.file("folder").c_str(), 0700), 0);
}

TEST_F(FileOperations, ExistAndIsDir) {
  const struct {
    const char *name;
    JXStatus exists, is_dir;
    std::vector<int> errors = {};  // what the journal gets
  } rows[] = {
      {"file", JX_OK, 1},
      {"folder/", JX_OK, JX_OK},
      {"to_file", JX_OK, 1},
      {"to_folder", JX_OK, JX_OK},
      {"to_nothing", JXWEM_E_NOTFOUND, JXWEM_E_NOPATH},
      {"nothing/below", JXWEM_E_NOTFOUND, JXWEM_E_NOPATH},
      {"file/below", JXWEM_E_SYSTEM, JXWEM_E_SYSTEM, {ENOTDIR, ENOTDIR}},
      {"loop", JXWEM_E_SYSTEM, JXWEM_E_SYSTEM, {ELOOP, ELOOP}},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(exist(at(row.name)), row.exists) << row.name;
    EXPECT_EQ(is_dir(at(row.name)), row.is_dir) << row.name;
    expect_journal(row.errors);
  }
}

TEST_F(FileOperations, LongPaths) {
  for (const size_t length : {1023u, 1024u, 1025u}) {
    const JXStatus status = length <= 1024 ? JX_OK : JXWEM_E_NAMETOOLONG;
    EXPECT_EQ(exist(jx(make_long_folder("long", length))), status) << length;
  }
  EXPECT_EQ(exist(at(std::string(256, 'n'))), JXWEM_E_SYSTEM);
  expect_journal({ENAMETOOLONG});
  EXPECT_EQ(open_status(at(std::string(256, 'n'))), JXWEM_E_NAMETOOLONG);
}

TEST_F(FileOperations, Rename) {
  EXPECT_EQ(rename(at("file"), at("two words  ")), JX_OK);
  EXPECT_EQ(read_file(dir.file("two words  ")), "content");
  EXPECT_EQ(rename(at("empty"), at("folder")), JXWEM_E_SYSTEM);
  expect_journal({ENOTEMPTY});
  instance->journal = nullptr;  // without one the status stays
  EXPECT_EQ(rename(at("nothing"), at("x")), JXWEM_E_SYSTEM);
  EXPECT_EQ(rename({}, at("x")), JXWEM_E_BADNAME);
  EXPECT_EQ(rename(at("x"), {}), JXWEM_E_BADNAME);
}

TEST_F(FileOperations, MakeDirectory) {
  const mode_t mask = umask(027);
  EXPECT_EQ(make(at("new")), JX_OK);
  umask(mask);
  EXPECT_EQ(fs::status(dir.file("new")).permissions(), fs::perms{0750});
  const std::pair<const char *, JXStatus> rows[] = {
      {"new", JX_OK},           {"to_folder", JX_OK},
      {"file", JXWEM_E_EXISTS}, {"to_nothing", JXWEM_E_EXISTS},
      {"a/b", JXWEM_E_NOPATH},  {"file/b", JXWEM_E_NOPATH},
  };
  for (const auto &[name, status] : rows) EXPECT_EQ(make(at(name)), status) << name;
  EXPECT_EQ(make({}), JXWEM_E_BADNAME);
}

}  // namespace
}  // namespace jx::test
