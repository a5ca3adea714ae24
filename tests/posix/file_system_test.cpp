// What a full file system and one that is only to be read answer: real ones, mounted for a child
// process.
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <functional>

#include "support/open.hpp"
#include "support/path_fixture.hpp"

namespace jx::test {
namespace {

// Mounts a file system in memory, for this process only. Returns whether the machine lets it.
bool mount_memory(const std::string &folder, const char *options) {
  const std::string uid = "0 " + std::to_string(getuid()) + " 1";
  const std::string gid = "0 " + std::to_string(getgid()) + " 1";
  if (unshare(CLONE_NEWNS) != 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    write_file("/proc/self/setgroups", "deny");
    write_file("/proc/self/uid_map", uid);
    write_file("/proc/self/gid_map", gid);
  }
  return mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("jx", folder.c_str(), "tmpfs", 0, options) == 0;
}

class FileSystem : public PathTest {
 protected:
  // Runs the body in a child with such a file system.
  void with_memory(const char *options, const std::function<void()> &body) {
    constexpr int kSkipped = 2;
    const pid_t child = fork();
    if (child == 0) {
      if (!mount_memory(dir.path(), options)) _exit(kSkipped);
      body();
      _exit(HasFailure());
    }
    int code = 0;
    ASSERT_EQ(waitpid(child, &code, 0), child);
    if (WIFEXITED(code) && WEXITSTATUS(code) == kSkipped) {
      GTEST_SKIP() << "file systems cannot be mounted here";
    }
    EXPECT_EQ(code, 0);
  }
};

// Room for sixteen pages of which the first file takes eleven.
TEST_F(FileSystem, Full) {
  with_memory("size=64k,nr_inodes=5", [this] {
    const std::string content(45'000, 'x');
    make_file("kept", content);
    EXPECT_EQ(copy(at("kept"), at("copy")), JXWEM_E_DISKFULL);
    EXPECT_EQ(read_file(dir.file("kept")), content);
    EXPECT_EQ(remove(at("copy")), JX_OK);
    for (const uint32_t buffered : {0u, 1u}) {
      std::string written;  // what a flush has answered for
      std::string pending;
      File file(instance, at("lines"), open_options(JX_ACCESS_OUTPUT, buffered));
      ASSERT_TRUE(file);
      JXStatus status = JX_OK;
      for (int i = 0; status == JX_OK && i < 10'000; ++i) {
        const std::string line = "line " + std::to_string(i);
        const JXString chars_of_line = jx(line);
        status = file->write(file, chars_of_line.data(), 4 * chars(chars_of_line), 0, nullptr);
        if (status == JX_OK) pending += line + "\n";
        if (i % 50 == 0 && status == JX_OK && (status = file->flush(file)) == JX_OK) {
          written = pending;
        }
      }
      EXPECT_EQ(status, JXWEM_E_DISKFULL);
      static_cast<void>(file.close());
      EXPECT_TRUE(read_file(dir.file("lines")).starts_with(written));
      EXPECT_GT(written.size(), 10'000u);
    }
    EXPECT_EQ(make(at("one")), JX_OK);
    EXPECT_EQ(make(at("two")), JX_OK);
    EXPECT_EQ(make(at("too many")), JXWEM_E_DISKFULL);
  });
}

TEST_F(FileSystem, OnlyToBeRead) {
  with_memory("size=64k", [this] {
    make_file("file");
    make_folder("folder");
    ASSERT_EQ(mount("jx", dir.path().c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr), 0);
    for (const uint32_t mode : {JX_ACCESS_OUTPUT, JX_ACCESS_APPEND, JX_ACCESS_UPDATE}) {
      EXPECT_EQ(File(instance, at("file"), open_options(mode)).status, JXWEM_E_ACCESS) << mode;
    }
    EXPECT_EQ(File(instance, at("file"), open_options()).status, JX_OK);
    EXPECT_EQ(make(at("new")), JXWEM_E_ACCESS);
    EXPECT_EQ(remove(at("file")), JXWEM_E_ACCESS);
    EXPECT_EQ(remove(at("folder"), JX_REMOVE_CONTENTS), JXWEM_E_ACCESS);
    EXPECT_EQ(rename(at("file"), at("other")), JXWEM_E_ACCESS);
    EXPECT_EQ(copy(at("file"), at("other")), JXWEM_E_ACCESS);
    EXPECT_EQ(read_file(dir.file("file")), "content");
    EXPECT_TRUE(exists("folder"));
  });
}

}  // namespace
}  // namespace jx::test
