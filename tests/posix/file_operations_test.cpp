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
  struct Row {
    const char *from, *to;
    int error;
  };
  for (const auto &[from, to, error] :
       {Row{"two words  ", "folder", EISDIR}, Row{"empty", "folder", ENOTEMPTY},
        Row{"folder", "folder/inner/x", EINVAL}, Row{"nothing", "x", ENOENT}}) {
    EXPECT_EQ(rename(at(from), at(to)), JXWEM_E_SYSTEM) << from;
    expect_journal({error});
  }
  instance->journal = nullptr;  // without one the status stays
  EXPECT_EQ(rename(at("nothing"), at("x")), JXWEM_E_SYSTEM);
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
  for (JXInstance *none : {static_cast<JXInstance *>(nullptr), instance.get()}) {
    // Without an instance that is what is told; with one it is the missing path.
    const JXStatus status = none ? JXWEM_E_BADNAME : JXWEM_E_NOHANDLE;
    EXPECT_EQ(bkwemexist(none, nullptr, 4), status);
    EXPECT_EQ(bkwemisdir(none, nullptr, 4), status);
    EXPECT_EQ(bkwemremove(none, nullptr, 4, 0), status);
    EXPECT_EQ(bkwemrename(none, text, length, nullptr, 4), status);
    EXPECT_EQ(bkwemmakedirectory(none, nullptr, 4), status);
    EXPECT_EQ(bkwemcopy(none, text, length, nullptr, 4), status);
    EXPECT_EQ(bkwemcopy(none, text, 0, text, length), status);
  }
}

using Rows = std::map<int, JXStatus>;

// What one system call's errno becomes in one operation.
struct CallTable {
  const char *name;
  PathCall call;
  uint32_t n;  // which such call of the operation
  Rows rows;
  std::function<JXStatus()> run;
  JXStatus other = JXWEM_E_SYSTEM;
  bool reports_other = true;
};

constexpr JXStatus kAccess = JXWEM_E_ACCESS;
constexpr JXStatus kMissing = JXWEM_E_NOTFOUND;
constexpr JXStatus kNoPath = JXWEM_E_NOPATH;
constexpr JXStatus kTooLong = JXWEM_E_NAMETOOLONG;
constexpr JXStatus kInUse = JXWEM_E_INUSE;
constexpr JXStatus kFull = JXWEM_E_DISKFULL;
constexpr JXStatus kFailed = JXWEM_E_FAILED;
constexpr JXStatus kSystem = JXWEM_E_SYSTEM;

class ErrnoTables : public FileOperations {
 protected:
  // Walks every errno number through a table; fail(error) arms and met() ends that.
  void walk(const CallTable &table, const std::function<void(int)> &fail,
            const std::function<bool()> &met) {
    for (int error = 1; error < 134; ++error) {
      const auto row = table.rows.find(error);
      const bool is_other = row == table.rows.end();
      fail(error);
      EXPECT_EQ(table.run(), is_other ? table.other : row->second) << table.name << error;
      EXPECT_TRUE(met()) << table.name;
      expect_journal(is_other && table.reports_other ? std::vector{error} : std::vector<int>{});
    }
  }
  void walk(const CallTable &table) {
    walk(
        table, [&](int error) { fail_path_call(table.call, table.n, error); }, disarm_path_calls);
  }
  void walk(const CallTable &table, Syscall call) {
    walk(
        table, [&](int error) { arm_syscalls(syscalls(call), {.error = error}); },
        [] { return disarm_syscalls().has_value(); });
  }

  JXStatus read_status(bool as_list) {
    JXStatus status = 0;
    JXDirectory *directory = open(at("folder"), 0, &status);
    JXChar name[256];
    uint32_t length = 256;
    uint64_t count = 9;
    if (as_list) {
      EXPECT_FALSE(directory->member_list(directory, instance->pool, 0, &count, &status));
      EXPECT_EQ(count, 0u);
    } else {
      status = directory->read(directory, name, &length);
    }
    directory->close(directory);
    return status;
  }
};

TEST_F(ErrnoTables, EveryNumber) {
  const auto info = [&] {
    JXStatus status = 0;
    const JXString path = at("file");
    EXPECT_FALSE(instance->info(instance, instance->pool, path.data(), chars(path), &status));
    return status;
  };
  const auto file_system_info = [&] {
    JXStatus status = 0;
    EXPECT_FALSE(call(instance->file_system_info, at("file"), &status));
    return status;
  };
  const auto remove_file = [&] { return remove(at("file")); };
  const auto remove_empty = [&] { return remove(at("empty")); };
  const auto remove_folder = [&] {
    make_folder("folder/inner");
    return remove(at("folder"), JX_REMOVE_CONTENTS);
  };
  const auto list = [&] { return list_status(at("folder"), JX_DIRECTORY_NAMED); };
  const auto copy_file = [&] {
    fs::remove(dir.file("copy"));
    return copy(at("file"), at("copy"));
  };
  const Rows stat = {{ENOENT, kMissing}, {EACCES, kAccess}};
  const Rows open = {
      {ENOENT, kMissing}, {EACCES, kAccess}, {ENOTDIR, kMissing}, {ENAMETOOLONG, kTooLong}};
  const Rows removal = {{EPERM, kAccess},
                        {ENOENT, kMissing},
                        {EACCES, kAccess},
                        {ENOTDIR, kMissing},
                        {ETXTBSY, kInUse},
                        {EROFS, kAccess},
                        {ENOTEMPTY, JXWEM_E_NOTEMPTY}};
  const Rows renaming = {
      {EPERM, kAccess}, {ENOMEM, JX_E_NOMEM}, {EACCES, kAccess}, {ENOSPC, kFull}, {EROFS, kAccess}};
  const Rows making = {{EPERM, kAccess},         {ENOENT, kNoPath},  {EACCES, kAccess},
                       {EEXIST, JXWEM_E_EXISTS}, {ENOTDIR, kNoPath}, {ETXTBSY, kInUse},
                       {ENOSPC, kFull},          {EROFS, kAccess}};
  const Rows copying = {{EACCES, kAccess}, {ENOTDIR, kNoPath}, {ETXTBSY, kInUse}, {EROFS, kAccess}};
  const Rows writing = {{ENXIO, JXWEM_E_NOTSUPPORTED}, {ENOSPC, kFull}};
  Rows space = open;
  space[ENOLINK] = kMissing;
  const CallTable tables[] = {
      {"exist", PathCall::stat, 0, stat, [&] { return exist(at("file")); }},
      {"isdir",
       PathCall::fstatat,
       0,
       {{ENOENT, kNoPath}, {EACCES, kAccess}},
       [&] { return is_dir(at("file")); }},
      {"removal: test",
       PathCall::fstatat,
       0,
       {{ENOENT, kMissing}, {EACCES, kMissing}},
       remove_file,
       kMissing},
      {"unlink", PathCall::unlinkat, 0, removal, remove_file},
      {"rmdir", PathCall::unlinkat, 0, removal, remove_empty},
      {"removal: open", PathCall::openat, 0, open, remove_folder},
      {"removal: stream", PathCall::fdopendir, 0, open, remove_folder},
      {"removal: read", PathCall::readdir, 0, {}, remove_folder},
      {"rmdir of a tree", PathCall::rmdir, 0, removal, remove_folder},
      {"rename", PathCall::rename, 0, renaming, [&] { return rename(at("file"), at("x")); }},
      {"mkdir", PathCall::mkdir, 0, making, [&] { return make(at("new")); }},
      {"info", PathCall::stat, 0, stat, info},
      {"fsinfo", PathCall::statvfs, 0, space, file_system_info},
      {"directory open", PathCall::opendir, 0, open, [&] { return open_status(at("folder")); }},
      {"read", PathCall::readdir, 0, {}, [&] { return read_status(false); }, kSystem, false},
      {"member list: read", PathCall::readdir, 1, {}, [&] { return read_status(true); }},
      {"directory list", PathCall::opendir, 0, open, list},
      {"directory list: read", PathCall::readdir, 1, {}, list},
      {"copy: source", PathCall::stat, 1, stat, copy_file},
      {"copy: source open", PathCall::open, 0, copying, copy_file, kFailed},
      {"copy: target open", PathCall::open, 1, copying, copy_file, kFailed},
      {"copy: close", PathCall::close, 0, writing, copy_file, kFailed},
  };
  for (const CallTable &table : tables) walk(table);
  walk({"copy: read", {}, 0, {{EINTR, JX_OK}}, copy_file, kFailed}, Syscall::read);
  walk({"copy: write", {}, 0, writing, copy_file, kFailed}, Syscall::write);
}

}  // namespace
}  // namespace jx::test
