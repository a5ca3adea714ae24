// The file access routines: failures in a row, missing handles.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>

#include "kernel/handle.hpp"
#include "support/instance.hpp"
#include "support/open.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

class HostAccess : public InstanceTest {
 protected:
  std::string path = dir.file("file");
};

// A failed write does not stop the flush to the device.
TEST_F(HostAccess, FlushGoesOnAfterAFailedWrite) {
  File file(instance, path, open_options(JX_ACCESS_OUTPUT));
  ASSERT_TRUE(file);
  ASSERT_EQ(sk_buf_write(file, "pending", 7), JX_OK);
  const uint64_t syncs = syscall_count(Syscall::fsync);
  arm_syscalls(syscalls(Syscall::write), {.error = EIO});
  EXPECT_EQ(file->flush(file), JXWEM_E_SYSTEM);
  EXPECT_TRUE(disarm_syscalls());
  EXPECT_EQ(syscall_count(Syscall::fsync), syncs + 1);

  // Nor does it stop a close, whose own failure is less than that of the write.
  ASSERT_EQ(sk_buf_write(file, "pending", 7), JX_OK);
  arm_syscalls(syscalls(Syscall::write), {.error = ENOSPC});
  host.arm(calls(Call::close_file), 0, 0x803fc123u);
  EXPECT_EQ(file.close(), JXWEM_E_DISKFULL);
  EXPECT_TRUE(host.disarm());
  EXPECT_TRUE(disarm_syscalls());
}

// A mark that could not be written is still due, and the caller's offset has not moved.
TEST_F(HostAccess, AMarkThatFailsIsTriedAgain) {
  JXOpenOptions options = open_options(JX_ACCESS_OUTPUT, 0, JX_FORMAT_STREAM);
  options.file_encoding = options.record_encoding = JX_ENCODING_UTF16LE;
  for (const bool has_offset : {true, false}) {
    File file(instance, path, options);
    ASSERT_TRUE(file);
    int64_t offset = 0;
    for (const JXStatus status : {JXWEM_E_DISKFULL, JX_OK}) {
      const auto failing = syscalls(has_offset ? Syscall::pwrite64 : Syscall::write);
      if (status != JX_OK) arm_syscalls(failing, {.error = ENOSPC});
      EXPECT_EQ(file->write(file, "a\0b\0", 4, 0, has_offset ? &offset : nullptr), status);
      disarm_syscalls();
      EXPECT_EQ(offset, has_offset && status == JX_OK ? 2 : 0);
    }
    ASSERT_EQ(file.close(), JX_OK);
    EXPECT_EQ(read_file(path), std::string("\xFF\xFE"
                                           "a\0b\0",
                                           6));
  }
}

// The position that is kept counts the part of a record that was written before a failure.
TEST_F(HostAccess, APartOfARecordMovesThePosition) {
  JXOpenOptions options = open_options(JX_ACCESS_OUTPUT, 0);
  options.file_encoding = options.record_encoding = JX_ENCODING_UTF8;
  File file(instance, path, options);
  ASSERT_TRUE(file);
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit four_bytes = {4, limit.rlim_max};  // of a mark, a character and a line end
  setrlimit(RLIMIT_FSIZE, &four_bytes);
  EXPECT_EQ(file->write(file, "x", 1, 0, nullptr), JXWEM_E_DISKFULL);
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_EQ(handle_of(file)->tracked_position, 4u);
}

TEST_F(HostAccess, HandlesWithoutBlocks) {
  // An unbuffered handle has no block to fill.
  File direct(instance, path, open_options(JX_ACCESS_UPDATE, 0));
  ASSERT_TRUE(direct);
  EXPECT_EQ(sk_buf_write(direct, "x", 1), JXWEM_E_NOTSUPPORTED);
  ASSERT_EQ(direct.close(), JX_OK);
  File input(instance, path, open_options(JX_ACCESS_INPUT));
  EXPECT_EQ(sk_buf_write(input, "x", 1), JXWEM_E_READONLY);
}

}  // namespace
}  // namespace jx::test
