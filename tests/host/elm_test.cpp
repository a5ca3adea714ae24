#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>
#include <tuple>

#include "host/test_host.hpp"
#include "support/files.hpp"
#include "support/path_fixture.hpp"

namespace jx::test {
namespace {

constexpr uint32_t kWait = JXELM_LOCK_WAIT;

class Elm : public testing::Test {
 protected:
  void TearDown() override {
    auto *extension = reinterpret_cast<JXExtension *>(elm);
    EXPECT_EQ(extension->release_extension(extension), JX_OK);
    EXPECT_EQ(open_descriptors(), descriptors);
  }

  JXOpenFile *open_file(const JXString &name, uint32_t flags, uint32_t lock_word,
                        uint32_t permissions = 0777) {
    const JXOpenRequest request = {name.data(), chars(name), permissions, flags, {}};
    return elm->open_file(elm, &request, 1, lock_word, host.journal(), &status);
  }
  // Opens and closes.
  JXStatus try_open(const std::string &name, uint32_t flags, uint32_t lock_word) {
    JXOpenFile *file = open_file(jx(name), flags, lock_word);
    EXPECT_EQ(file != nullptr, status == JX_OK);
    if (file) close_file(file);
    return status;
  }
  void close_file(JXOpenFile *file) {
    constexpr uint32_t kZeros[8] = {};
    EXPECT_EQ(file->close_file(file, kZeros, host.journal()), JX_OK);
  }

  TempDir dir;
  const std::string path = dir.file("file");
  uint32_t descriptors = open_descriptors();
  TestHost host;
  JXElm *elm = reinterpret_cast<JXElm *>(host.extension("jxelm"));
  JXStatus status = 1;
};

TEST_F(Elm, OpensEveryByteName) {
  JXString name = jx(dir.file(""));
  for (JXChar byte = 1; byte < 256; ++byte) {
    if (byte != '/') name.push_back(byte);
  }
  JXOpenFile *file = open_file(name, O_RDWR | O_CREAT, JXELM_LOCK_EXCLUSIVE);
  ASSERT_NE(file, nullptr) << std::hex << status;
  EXPECT_EQ(fcntl(*file->descriptor, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(access(narrow(name).c_str(), R_OK | W_OK | X_OK), 0);
  close_file(file);
  for (const JXChar bad : {0u, 0x100u, 0xFFFFFFFFu}) {
    EXPECT_EQ(open_file(name + bad, O_RDWR | O_CREAT, 2), nullptr);
    EXPECT_EQ(status, JXELM_E_REFUSED) << bad;
  }
}

TEST_F(Elm, RefusesWithAStatusForEachReason) {
  write_file(path, "data");
  ASSERT_EQ(symlink("loop", dir.file("loop").c_str()), 0);
  ASSERT_EQ(symlink("nowhere/x", dir.file("dangling").c_str()), 0);
  ASSERT_EQ(mkfifo(dir.file("fifo").c_str(), 0600), 0);
  // Names are in the folder, or absolute.
  const std::tuple<std::string, uint32_t, uint32_t, JXStatus> rows[] = {
      {"missing", O_RDONLY, 1, JXELM_E_NOTFOUND},
      {"dangling", O_RDONLY, 1, JXELM_E_NOTFOUND},
      {"none/missing//", O_RDONLY, 1, JXELM_E_NOPATH},
      {"file/", O_RDONLY, 1, JXELM_E_NOPATH},
      {".", O_RDONLY, 1, JXELM_E_REFUSED},
      {"loop", O_RDONLY, 1, JXELM_E_LOOP},
      {std::string(5000, '/'), O_RDONLY, 1, JXELM_E_TOOLONG},
      {"file", O_RDWR | O_CREAT | O_EXCL, 2, JXELM_E_EXISTS},
      {"fifo", O_WRONLY | O_NONBLOCK, 2, JXELM_E_NODEVICE},
      {"file", O_WRONLY, 1, JXELM_E_BADARG},
      {"file", O_RDONLY, 2 | kWait, JXELM_E_BADARG},
      {"file", O_RDONLY | O_TRUNC, 0, JXELM_E_BADARG},
      {"file", O_RDWR, 3, JXELM_E_BADARG},
      {"file", O_RDWR, kWait, JXELM_E_BADARG},
      // Anything but a regular file opens without a lock.
      {"/dev/null", O_WRONLY | O_TRUNC, 2, JX_OK},
  };
  for (const auto &[name, flags, lock_word, expected] : rows) {
    EXPECT_EQ(try_open(name[0] == '/' ? name : dir.file(name), flags, lock_word), expected)
        << name.substr(0, 80) << " flags " << flags << " lock " << lock_word;
  }
  EXPECT_EQ(try_open("a name in the current folder", O_RDONLY, 1), JXELM_E_NOTFOUND);
  EXPECT_EQ(open_file(jx(dir.file("new")), O_RDWR | O_CREAT, 2, 04755), nullptr);
  EXPECT_EQ(status, JXELM_E_BADARG);
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  run_unprivileged([&] { EXPECT_EQ(try_open(path, O_RDONLY, 1), JXELM_E_ACCESS); });
  // Only errors without a status of their own reach the journal.
  EXPECT_EQ(host.take_lines().front(), "4 JXELM_E_LOOP Too many levels of symbolic links");
}

TEST_F(Elm, LocksExcludeOtherOpenings) {
  const std::tuple<uint32_t, uint32_t, JXStatus> rows[] = {
      {0, 2, JX_OK},          {1, 1, JX_OK},          {1, 0, JX_OK}, {1, 2, JXELM_E_LOCKED},
      {2, 1, JXELM_E_LOCKED}, {2, 2, JXELM_E_LOCKED}, {2, 0, JX_OK}, {1, 1 | kWait, JX_OK}};
  for (const auto &[held, asked, expected] : rows) {
    JXOpenFile *holder = open_file(jx(path), O_RDWR | O_CREAT, held);
    EXPECT_EQ(try_open(path, O_RDWR, asked), expected) << held << " " << asked;
    close_file(holder);
    EXPECT_EQ(try_open(path, O_RDWR, 2), JX_OK) << "the lock went with the close";
  }
}

TEST_F(Elm, EmptiesTheFileOnlyUnderTheLock) {
  write_file(path, "precious");
  JXOpenFile *reader = open_file(jx(path), O_RDONLY, JXELM_LOCK_SHARED);
  EXPECT_EQ(try_open(path, O_WRONLY | O_CREAT | O_TRUNC, JXELM_LOCK_EXCLUSIVE), JXELM_E_LOCKED);
  EXPECT_EQ(read_file(path), "precious");
  close_file(reader);
  EXPECT_EQ(try_open(path, O_WRONLY | O_CREAT | O_TRUNC, JXELM_LOCK_EXCLUSIVE), JX_OK);
  EXPECT_EQ(read_file(path), "");
}

// An offered descriptor is opened instead of a file of that name. The open empties and creates
// nothing, and the offset is shared.
TEST_F(Elm, HandsOutAnOfferedDescriptor) {
  write_file(path, "content");
  const int offered = open(path.c_str(), O_WRONLY);
  ASSERT_EQ(lseek(offered, 3, SEEK_SET), 3);
  const std::string name = dir.file("$nothing\xFF");
  ASSERT_EQ(jxhost_offer_descriptor(host.get(), name.c_str(), offered), JX_OK);
  JXOpenFile *file = open_file(jx(name), O_WRONLY | O_CREAT | O_TRUNC, JXELM_LOCK_EXCLUSIVE);
  ASSERT_NE(file, nullptr) << std::hex << status;
  EXPECT_EQ(fcntl(*file->descriptor, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(write(*file->descriptor, "!", 1), 1);
  EXPECT_EQ(try_open(path, O_RDWR, JXELM_LOCK_SHARED), JXELM_E_LOCKED);
  close_file(file);
  EXPECT_EQ(try_open(name, O_RDONLY, 0), JXELM_E_ACCESS) << "the descriptor only writes";
  EXPECT_EQ(lseek(offered, 0, SEEK_CUR), 4);
  EXPECT_EQ(read_file(path), "con!ent");
  jxhost_withdraw_descriptor(host.get(), name.c_str());
  EXPECT_EQ(try_open(name, O_RDONLY, 0), JXELM_E_NOTFOUND);
  EXPECT_EQ(jxhost_offer_descriptor(host.get(), "", offered), JX_E_BADARG);
  EXPECT_EQ(jxhost_offer_descriptor(host.get(), "/x", -1), JX_E_BADARG);
  EXPECT_EQ(close(offered), 0);
}

TEST_F(Elm, WaitsThroughSignals) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};  // without SA_RESTART: the waiting call is interrupted
  ASSERT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);
  JXOpenFile *holder = open_file(jx(path), O_RDWR | O_CREAT, JXELM_LOCK_EXCLUSIVE);
  std::atomic<bool> is_released{false};
  std::thread waiter([&] {
    EXPECT_EQ(try_open(path, O_RDWR, JXELM_LOCK_EXCLUSIVE | kWait), JX_OK);
    EXPECT_TRUE(is_released);
  });
  for (int i = 0; i < 10; ++i) {
    usleep(5000);
    EXPECT_EQ(pthread_kill(waiter.native_handle(), SIGUSR1), 0);
  }
  is_released = true;
  close_file(holder);
  waiter.join();
}

// Errors that the system cannot be made to raise here, raised for it.
TEST_F(Elm, ErrnosOfOpen) {
  const std::pair<int, JXStatus> rows[] = {
      {EPERM, JXELM_E_ACCESS},   {ENXIO, JXELM_E_NODEVICE}, {EAGAIN, JXELM_E_BUSY5},
      {ENOMEM, JXELM_E_NOMEM},   {EBUSY, JXELM_E_BUSY2},    {EMFILE, JXELM_E_LIMIT},
      {ENFILE, JXELM_E_LIMIT},   {ETXTBSY, JXELM_E_BUSY1},  {EFBIG, JXELM_E_TOOBIG},
      {ENOSPC, JXELM_E_NOSPACE}, {EROFS, JXELM_E_ACCESS},   {EDEADLK, JXELM_E_BUSY3},
      {EDQUOT, JXELM_E_NOSPACE}, {EIO, JXELM_E_SYSTEM},     {EINTR, JX_OK}};
  for (const auto &[error, expected] : rows) {
    arm_syscalls(syscalls(Syscall::open64), {.error = error});
    EXPECT_EQ(try_open(path, O_RDWR | O_CREAT, JXELM_LOCK_EXCLUSIVE), expected) << error;
    EXPECT_TRUE(disarm_syscalls());
  }
}

}  // namespace
}  // namespace jx::test
