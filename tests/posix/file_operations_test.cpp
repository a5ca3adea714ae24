// Existence, the directory test, renaming and making directories, and the errno tables of every
// operation that works on a path.
#include <algorithm>
#include <map>

#include "support/directory_fixture.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

constexpr JXStatus kAccess = JXWEM_E_ACCESS;
constexpr JXStatus kMissing = JXWEM_E_NOTFOUND;
constexpr JXStatus kNoPath = JXWEM_E_NOPATH;
constexpr JXStatus kTooLong = JXWEM_E_NAMETOOLONG;
constexpr JXStatus kInUse = JXWEM_E_INUSE;
constexpr JXStatus kFull = JXWEM_E_DISKFULL;
constexpr JXStatus kFailed = JXWEM_E_FAILED;
constexpr JXStatus kSystem = JXWEM_E_SYSTEM;

// The errno values in a call's table, by status.
using Rows = std::map<JXStatus, std::set<int>>;
const Rows kNone;
const Rows kStat = {{kMissing, {ENOENT}}, {kAccess, {EACCES}}};
const Rows kStatFolder = {{kNoPath, {ENOENT}}, {kAccess, {EACCES}}};
const Rows kRemovalTest = {{kMissing, {ENOENT, EACCES}}};
const Rows kOpen = {{kMissing, {ENOENT, ENOTDIR}}, {kAccess, {EACCES}}, {kTooLong, {ENAMETOOLONG}}};
const Rows kSpace = {
    {kMissing, {ENOENT, ENOTDIR, ENOLINK}}, {kAccess, {EACCES}}, {kTooLong, {ENAMETOOLONG}}};
const Rows kRemoval = {{kAccess, {EPERM, EACCES, EROFS}},
                       {kMissing, {ENOENT, ENOTDIR}},
                       {kInUse, {ETXTBSY}},
                       {JXWEM_E_NOTEMPTY, {ENOTEMPTY}}};
const Rows kRenaming = {
    {kAccess, {EPERM, EACCES, EROFS}}, {JX_E_NOMEM, {ENOMEM}}, {kFull, {ENOSPC}}};
const Rows kMaking = {{kAccess, {EPERM, EACCES, EROFS}},
                      {kNoPath, {ENOENT, ENOTDIR}},
                      {JXWEM_E_EXISTS, {EEXIST}},
                      {kInUse, {ETXTBSY}},
                      {kFull, {ENOSPC}}};
const Rows kCopying = {{kAccess, {EACCES, EROFS}}, {kNoPath, {ENOTDIR}}, {kInUse, {ETXTBSY}}};
const Rows kReading = {{JX_OK, {EINTR}}};
const Rows kClosing = {{JX_OK, {EINTR}}, {JXWEM_E_NOTSUPPORTED, {ENXIO}}, {kFull, {ENOSPC}}};
const Rows kWriting = {{JXWEM_E_NOTSUPPORTED, {ENXIO}}, {kFull, {ENOSPC}}};

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

// The status and journal line of an operation for each errno of its n-th system call of a kind.
TEST_F(FileOperations, ErrnoTables) {
  const auto remove_file = [&] { return remove(at("file")); };
  const auto remove_folder = [&] {
    make_folder("folder/inner");
    return remove(at("folder"), JX_REMOVE_CONTENTS);
  };
  const auto list = [&] { return list_status(at("folder"), JX_DIRECTORY_NAMED); };
  const auto copy_file = [&] {
    fs::remove(dir.file("copy"));
    return copy(at("file"), at("copy"));
  };
  const struct {
    const char *name;
    std::string_view call;
    uint32_t n;
    const Rows &rows;
    std::function<JXStatus()> run;
    JXStatus other = JXWEM_E_SYSTEM;
    bool reports_other = true;
    Syscalls transfer = 0;  // in place of the call
  } tables[] = {
      {"exist", "stat64", 0, kStat, [&] { return exist(at("file")); }},
      {"isdir", "stat64", 0, kStatFolder, [&] { return is_dir(at("file")); }},
      {"removal: test", "stat64", 0, kRemovalTest, remove_file, kMissing},
      {"unlink", "unlink", 0, kRemoval, remove_file},
      {"rmdir", "rmdir", 0, kRemoval, [&] { return remove(at("empty")); }},
      {"removal: open", "openat64", 0, kOpen, remove_folder},
      {"removal: stream", "fdopendir", 0, kOpen, remove_folder},
      {"removal: read", "readdir64_r", 0, kNone, remove_folder},
      {"rmdir of a tree", "rmdir", 1, kRemoval, remove_folder},
      {"rename", "rename", 0, kRenaming, [&] { return rename(at("file"), at("x")); }},
      {"mkdir", "mkdir", 0, kMaking, [&] { return make(at("new")); }},
      {"info", "stat64", 0, kStat, [&] { return info_status(at("file")); }},
      {"fsinfo", "statvfs64", 0, kSpace, [&] { return space_status(at("file")); }},
      {"directory open", "opendir", 0, kOpen, [&] { return open_status(at("folder")); }},
      {"read", "readdir64_r", 0, kNone, [&] { return read_status(at("folder")); }, kSystem, false},
      {"member list: read", "readdir64_r", 1, kNone, [&] { return members_status(at("folder")); }},
      {"directory list", "opendir", 0, kOpen, list},
      {"directory list: read", "readdir64_r", 1, kNone, list},
      {"copy: source", "stat64", 1, kStat, copy_file},
      {"copy: source open", "open64", 0, kCopying, copy_file, kFailed},
      {"copy: target open", "open64", 1, kCopying, copy_file, kFailed},
      {"copy: close", "close", 0, kClosing, copy_file, kFailed},
      {"copy: read", "", 0, kReading, copy_file, kFailed, true, syscalls(Syscall::read)},
      {"copy: write", "", 0, kWriting, copy_file, kFailed, true, syscalls(Syscall::write)},
  };
  for (const auto &table : tables) {
    for (int error = 1; error < 134; ++error) {
      SCOPED_TRACE(table.name + std::to_string(error));
      const auto row = std::find_if(table.rows.begin(), table.rows.end(),
                                    [&](const auto &each) { return each.second.count(error); });
      const bool is_other = row == table.rows.end();
      arm_path_call(table.call, table.n, error);
      arm_syscalls(table.transfer, {.error = error});
      EXPECT_EQ(table.run(), is_other ? table.other : row->first);
      EXPECT_TRUE(disarm_syscalls() ? table.transfer != 0 : disarm_path_calls());
      expect_journal(is_other && table.reports_other ? std::vector{error} : std::vector<int>{});
    }
  }
}

}  // namespace
}  // namespace jx::test
