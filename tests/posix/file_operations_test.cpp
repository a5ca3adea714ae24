// Existence, the directory test, renaming and making directories, and the errno tables of every
// operation that works on a path.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

#include "support/path_fixture.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

class FileOperations : public PathTest {
 protected:
  void SetUp() override {
    PathTest::SetUp();
    make_file("file");
    make_folder("folder/inner");
    make_folder("empty");
    make_link("to_file", "file");
    make_link("to_folder", "folder");
    make_link("to_nothing", "nothing");
    make_link("loop", "loop");
  }
};

struct TestRow {
  const char *name;
  JXStatus exists, is_dir;
  int error;  // what the journal gets from each
};

TEST_F(FileOperations, ExistAndIsDir) {
  const TestRow rows[] = {
      {"file", JX_OK, 1, 0},
      {"folder", JX_OK, JX_OK, 0},
      {"folder/", JX_OK, JX_OK, 0},
      {"to_file", JX_OK, 1, 0},
      {"to_folder", JX_OK, JX_OK, 0},
      {"to_nothing", JXWEM_E_NOTFOUND, JXWEM_E_NOPATH, 0},
      {"nothing", JXWEM_E_NOTFOUND, JXWEM_E_NOPATH, 0},
      {"nothing/below", JXWEM_E_NOTFOUND, JXWEM_E_NOPATH, 0},
      {"file/below", JXWEM_E_SYSTEM, JXWEM_E_SYSTEM, ENOTDIR},
      {"loop", JXWEM_E_SYSTEM, JXWEM_E_SYSTEM, ELOOP},
  };
  for (const TestRow &row : rows) {
    EXPECT_EQ(exist(at(row.name)), row.exists) << row.name;
    EXPECT_EQ(is_dir(at(row.name)), row.is_dir) << row.name;
    expect_journal(row.error ? std::vector{row.error, row.error} : std::vector<int>{});
  }
  for (const std::string &name : kHardNames) {
    if (name.find('$') != std::string::npos) continue;  // a path's variables are replaced
    make_file(name);
    EXPECT_EQ(exist(at(name)), JX_OK) << name;
    EXPECT_EQ(remove(at(name)), JX_OK) << name;
    EXPECT_FALSE(exists(name)) << name;
  }
  chmod(dir.file("folder").c_str(), 0);
  run_unprivileged([&] { EXPECT_EQ(exist(at("folder/inner")), JXWEM_E_ACCESS); });
  run_unprivileged([&] { EXPECT_EQ(is_dir(at("folder/inner")), JXWEM_E_ACCESS); });
}

TEST_F(FileOperations, LongPaths) {
  for (const size_t length : {1023u, 1024u}) {
    EXPECT_EQ(exist(jx(make_long_folder(length))), JX_OK) << length;
  }
  EXPECT_EQ(exist(jx(make_long_folder(1025))), JXWEM_E_NAMETOOLONG);
  EXPECT_EQ(exist(at(std::string(256, 'n'))), JXWEM_E_SYSTEM);
  expect_journal({ENAMETOOLONG});
  EXPECT_EQ(open_status(at(std::string(256, 'n'))), JXWEM_E_NAMETOOLONG);
}

TEST_F(FileOperations, Rename) {
  EXPECT_EQ(rename(at("file"), at("two words  ")), JX_OK);
  EXPECT_EQ(read_file(dir.file("two words  ")), "content");
  EXPECT_EQ(rename(at("two words  "), at("folder")), JXWEM_E_SYSTEM);
  expect_journal({EISDIR});
  EXPECT_EQ(rename(at("empty"), at("folder")), JXWEM_E_SYSTEM);
  expect_journal({ENOTEMPTY});
  EXPECT_EQ(rename(at("nothing"), at("x")), JXWEM_E_SYSTEM);
  expect_journal({ENOENT});
  EXPECT_EQ(rename({}, at("x")), JXWEM_E_BADNAME);
  EXPECT_EQ(rename(at("x"), {}), JXWEM_E_BADNAME);
  run_unprivileged([&] { EXPECT_EQ(rename(at("folder"), at("x")), JXWEM_E_ACCESS); });
}

TEST_F(FileOperations, MakeDirectory) {
  const mode_t mask = umask(027);
  EXPECT_EQ(make(at("new")), JX_OK);
  umask(mask);
  struct stat info;
  ASSERT_EQ(stat(dir.file("new").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode, static_cast<mode_t>(S_IFDIR | 0750));
  const std::pair<const char *, JXStatus> rows[] = {
      {"new", JX_OK},           {"to_folder", JX_OK},
      {"file", JXWEM_E_EXISTS}, {"to_nothing", JXWEM_E_EXISTS},
      {"a/b", JXWEM_E_NOPATH},  {"file/b", JXWEM_E_NOPATH},
  };
  for (const auto &[name, status] : rows) EXPECT_EQ(make(at(name)), status) << name;
  EXPECT_EQ(make({}), JXWEM_E_BADNAME);
  run_unprivileged([&] { EXPECT_EQ(make(at("refused")), JXWEM_E_ACCESS); });
}

TEST_F(FileOperations, NullArguments) {
  const JXString path = at("file");
  const JXChar *text = path.data();
  const uint32_t length = chars(path);
  EXPECT_EQ(bkwemexist(nullptr, text, length), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemisdir(nullptr, text, length), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemremove(nullptr, text, length, 0), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemrename(nullptr, text, length, text, length), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemmakedirectory(nullptr, text, length), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemcopy(nullptr, text, length, text, length), JXWEM_E_NOHANDLE);
  EXPECT_EQ(bkwemexist(instance, nullptr, 4), JXWEM_E_BADNAME);
  EXPECT_EQ(bkwemremove(instance, nullptr, 4, 0), JXWEM_E_BADNAME);
  EXPECT_EQ(bkwemrename(instance, text, length, nullptr, 4), JXWEM_E_BADNAME);
  EXPECT_EQ(bkwemmakedirectory(instance, nullptr, 4), JXWEM_E_BADNAME);
  EXPECT_EQ(bkwemcopy(instance, text, length, nullptr, 4), JXWEM_E_BADNAME);
  EXPECT_EQ(bkwemcopy(instance, text, 0, text, length), JXWEM_E_BADNAME);
}

// What one system call's errno becomes in one operation.
struct CallTable {
  const char *name;
  PathCall call;
  uint32_t n;  // which such call of the operation
  std::map<int, JXStatus> rows;
  JXStatus other;
  bool reports_other;
  std::function<JXStatus()> run;
};

constexpr JXStatus kAccess = JXWEM_E_ACCESS;
constexpr JXStatus kMissing = JXWEM_E_NOTFOUND;
constexpr JXStatus kNoPath = JXWEM_E_NOPATH;
constexpr JXStatus kTooLong = JXWEM_E_NAMETOOLONG;
constexpr JXStatus kSystem = JXWEM_E_SYSTEM;

// Walks every errno number through a table.
#define EXPECT_TABLE(table, arm, disarm)                                                         \
  for (int error = 1; error < 134; ++error) {                                                    \
    const auto row = (table).rows.find(error);                                                   \
    const bool is_other = row == (table).rows.end();                                             \
    arm;                                                                                         \
    EXPECT_EQ((table).run(), is_other ? (table).other : row->second)                             \
        << (table).name << ": " << std::strerror(error);                                         \
    EXPECT_TRUE(disarm) << (table).name;                                                         \
    expect_journal(is_other && (table).reports_other ? std::vector{error} : std::vector<int>{}); \
  }

TEST_F(FileOperations, ErrnoTables) {
  JXPool *pool = host.host()->create_pool(host.host(), 0, 0, 0, nullptr, "test");
  const auto info = [&] {
    JXStatus status = 0;
    EXPECT_FALSE(instance->info(instance, pool, at("file").data(), chars(at("file")), &status));
    return status;
  };
  const auto file_system_info = [&] {
    JXStatus status = 0;
    EXPECT_FALSE(
        instance->file_system_info(instance, at("file").data(), chars(at("file")), &status));
    return status;
  };
  const auto with_handle = [&](auto use) {
    JXStatus status = 0;
    JXDirectory *directory = open(at("folder"), 0, &status);
    status = use(directory);
    directory->close(directory);
    return status;
  };
  const auto read = [](JXDirectory *directory) {
    JXChar name[256];
    uint32_t length = 256;
    return directory->read(directory, name, &length);
  };
  const auto member_list = [&](JXDirectory *directory) {
    JXStatus status = 0;
    uint64_t count = 9;
    EXPECT_FALSE(directory->member_list(directory, pool, 0, &count, &status));
    EXPECT_EQ(count, 0u);
    return status;
  };
  const std::map<int, JXStatus> stat_rows = {{ENOENT, kMissing}, {EACCES, kAccess}};
  const std::map<int, JXStatus> open_rows = {
      {ENOENT, kMissing}, {EACCES, kAccess}, {ENOTDIR, kMissing}, {ENAMETOOLONG, kTooLong}};
  const std::map<int, JXStatus> remove_rows = {{EPERM, kAccess},
                                               {ENOENT, kMissing},
                                               {EACCES, kAccess},
                                               {ENOTDIR, kMissing},
                                               {ETXTBSY, JXWEM_E_INUSE},
                                               {EROFS, kAccess},
                                               {ENOTEMPTY, JXWEM_E_NOTEMPTY}};
  const std::map<int, JXStatus> copy_open_rows = {
      {EACCES, kAccess}, {ENOTDIR, kNoPath}, {ETXTBSY, JXWEM_E_INUSE}, {EROFS, kAccess}};
  const auto copy_file = [&] {
    fs::remove(dir.file("copy"));
    return copy(at("file"), at("copy"));
  };
  const CallTable tables[] = {
      {"exist", PathCall::stat, 0, stat_rows, kSystem, true, [&] { return exist(at("file")); }},
      {"isdir",
       PathCall::fstatat,
       0,
       {{ENOENT, kNoPath}, {EACCES, kAccess}},
       kSystem,
       true,
       [&] { return is_dir(at("file")); }},
      {"remove: test",
       PathCall::fstatat,
       0,
       {{ENOENT, kMissing}, {EACCES, kMissing}},
       kMissing,
       true,
       [&] { return remove(at("file")); }},
      {"unlink", PathCall::unlinkat, 0, remove_rows, kSystem, true,
       [&] { return remove(at("file")); }},
      {"rmdir", PathCall::unlinkat, 0, remove_rows, kSystem, true,
       [&] { return remove(at("empty")); }},
      {"remove: open", PathCall::openat, 0, open_rows, kSystem, true,
       [&] { return remove(at("folder"), JX_REMOVE_CONTENTS); }},
      {"remove: stream", PathCall::fdopendir, 0, open_rows, kSystem, true,
       [&] { return remove(at("folder"), JX_REMOVE_CONTENTS); }},
      {"remove: read",
       PathCall::readdir,
       0,
       {},
       kSystem,
       true,
       [&] { return remove(at("folder"), JX_REMOVE_CONTENTS); }},
      {"rmdir of a tree", PathCall::rmdir, 0, remove_rows, kSystem, true,
       [&] {
         make_folder("folder/inner");
         return remove(at("folder"), JX_REMOVE_CONTENTS);
       }},
      {"rename",
       PathCall::rename,
       0,
       {{EPERM, kAccess},
        {ENOMEM, JX_E_NOMEM},
        {EACCES, kAccess},
        {ENOSPC, JXWEM_E_DISKFULL},
        {EROFS, kAccess}},
       kSystem,
       true,
       [&] { return rename(at("file"), at("x")); }},
      {"mkdir",
       PathCall::mkdir,
       0,
       {{EPERM, kAccess},
        {ENOENT, kNoPath},
        {EACCES, kAccess},
        {EEXIST, JXWEM_E_EXISTS},
        {ENOTDIR, kNoPath},
        {ETXTBSY, JXWEM_E_INUSE},
        {ENOSPC, JXWEM_E_DISKFULL},
        {EROFS, kAccess}},
       kSystem,
       true,
       [&] { return make(at("new")); }},
      {"info", PathCall::stat, 0, stat_rows, kSystem, true, info},
      {"fsinfo",
       PathCall::statvfs,
       0,
       {{ENOENT, kMissing},
        {EACCES, kAccess},
        {ENOTDIR, kMissing},
        {ENAMETOOLONG, kTooLong},
        {ENOLINK, kMissing}},
       kSystem,
       true,
       file_system_info},
      {"directory open", PathCall::opendir, 0, open_rows, kSystem, true,
       [&] { return open_status(at("folder")); }},
      {"directory list", PathCall::opendir, 0, open_rows, kSystem, true,
       [&] { return list_status(at("folder"), JX_DIRECTORY_NAMED); }},
      {"directory list: read",
       PathCall::readdir,
       1,
       {},
       kSystem,
       true,
       [&] { return list_status(at("folder"), JX_DIRECTORY_NAMED); }},
      {"member list: read",
       PathCall::readdir,
       1,
       {},
       kSystem,
       true,
       [&] { return with_handle(member_list); }},
      {"read", PathCall::readdir, 0, {}, kSystem, false, [&] { return with_handle(read); }},
      {"copy: source", PathCall::stat, 1, stat_rows, kSystem, true, copy_file},
      {"copy: source open", PathCall::open, 0, copy_open_rows, JXWEM_E_FAILED, true, copy_file},
      {"copy: target open", PathCall::open, 1, copy_open_rows, JXWEM_E_FAILED, true, copy_file},
      {"copy: close",
       PathCall::close,
       0,
       {{ENXIO, JXWEM_E_NOTSUPPORTED}, {ENOSPC, JXWEM_E_DISKFULL}},
       JXWEM_E_FAILED,
       true,
       copy_file},
  };
  for (const CallTable &table : tables) {
    EXPECT_TABLE(table, fail_path_call(table.call, table.n, error), disarm_path_calls());
  }
  CallTable transfer = {"copy: read", {}, 0, {{EINTR, JX_OK}}, JXWEM_E_FAILED, true, copy_file};
  EXPECT_TABLE(transfer, arm_syscalls(syscalls(Syscall::read), {.error = error}),
               disarm_syscalls().has_value());
  transfer.name = "copy: write";
  transfer.rows = {{ENXIO, JXWEM_E_NOTSUPPORTED}, {ENOSPC, JXWEM_E_DISKFULL}};
  EXPECT_TABLE(transfer, arm_syscalls(syscalls(Syscall::write), {.error = error}),
               disarm_syscalls().has_value());
  EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
}

TEST_F(FileOperations, WithoutJournalTheStatusStays) {
  instance->journal = nullptr;
  EXPECT_EQ(exist(at("file/below")), JXWEM_E_SYSTEM);
}

}  // namespace
}  // namespace jx::test
