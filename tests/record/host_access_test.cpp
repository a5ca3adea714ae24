// The file access routines, one system call each: the status of each failure, and whether the
// journal gets a line.
#include <gtest/gtest.h>

#include <cerrno>

#include "support/instance.hpp"
#include "support/journal.hpp"
#include "support/open.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

class HostAccess : public InstanceTest {
 protected:
  std::string path = dir.file("file");
  RecordingJournal journal;
};

JXStatus do_read(JXFile *file, const int64_t *offset) {
  char memory[8];
  uint32_t count = 77;
  const JXStatus status = bkwem_read(file, memory, sizeof memory, &count, offset);
  EXPECT_EQ(count, 77u) << "stored by a read that failed";
  return status;
}

JXStatus do_write(JXFile *file, const int64_t *offset) {
  uint32_t count = 77;
  const JXStatus status = bkwem_write(file, "12345678", 8, &count, offset);
  EXPECT_EQ(count, 77u) << "stored by a write that failed";
  return status;
}

TEST_F(HostAccess, FaultsByNumber) {
  struct Row {
    Syscall call;
    int error;
    JXStatus status;
    size_t journal_lines;
  };
  const Row rows[] = {
      {Syscall::read, EIO, JXWEM_E_SYSTEM, 0},       {Syscall::read, EINTR, JXWEM_E_SYSTEM, 0},
      {Syscall::pread, EIO, JXWEM_E_SYSTEM, 0},      {Syscall::write, EFBIG, JXWEM_E_DISKFULL, 0},
      {Syscall::write, ENOSPC, JXWEM_E_DISKFULL, 0}, {Syscall::write, EDQUOT, JXWEM_E_DISKFULL, 0},
      {Syscall::write, EIO, JXWEM_E_SYSTEM, 0},      {Syscall::pwrite, EDQUOT, JXWEM_E_DISKFULL, 0},
      {Syscall::pwrite, EBADF, JXWEM_E_SYSTEM, 0},   {Syscall::seek, EINVAL, JXWEM_E_FAILED, 2},
      {Syscall::truncate, EROFS, JXWEM_E_SYSTEM, 1},
  };
  JXOpenOptions options = open_options(JX_ACCESS_UPDATE, 0);
  options.journal = journal.journal();
  File file(instance, path, options);
  ASSERT_TRUE(file);
  for (const Row &row : rows) {
    SCOPED_TRACE(syscall_name(row.call) + std::string(" ") + std::to_string(row.error));
    int64_t offset = 3;
    arm_syscalls(syscalls(row.call), {.error = row.error, .to_the_end = true});
    switch (row.call) {
      case Syscall::read:
        EXPECT_EQ(do_read(file, nullptr), row.status);
        break;
      case Syscall::pread:
        EXPECT_EQ(do_read(file, &offset), row.status);
        break;
      case Syscall::write:
        EXPECT_EQ(do_write(file, nullptr), row.status);
        break;
      case Syscall::pwrite:
        EXPECT_EQ(do_write(file, &offset), row.status);
        break;
      case Syscall::seek:
        EXPECT_EQ(bkwem_note(file, &offset), row.status);
        EXPECT_EQ(bkwem_point(file, &offset, 0), row.status);
        EXPECT_EQ(offset, -1);
        break;
      default:
        EXPECT_EQ(bkwemtruncate(file, &offset), row.status);
        break;
    }
    EXPECT_TRUE(disarm_syscalls());
    EXPECT_EQ(journal.take_lines().size(), row.journal_lines);
  }
}

// A failed write does not stop the flush to the device.
TEST_F(HostAccess, FlushGoesOnAfterAFailedWrite) {
  File file(instance, path, open_options(JX_ACCESS_OUTPUT));
  ASSERT_TRUE(file);
  ASSERT_EQ(sk_buf_write(file, "pending", 7), JX_OK);
  const uint64_t syncs = syscall_count(Syscall::sync);
  arm_syscalls(syscalls(Syscall::write), {.error = EIO});
  EXPECT_EQ(file->flush(file), JXWEM_E_SYSTEM);
  EXPECT_TRUE(disarm_syscalls());
  EXPECT_EQ(syscall_count(Syscall::sync), syncs + 1);
}

// A mark that could not be written is still due, and the caller's offset has not moved.
TEST_F(HostAccess, AMarkThatFailsIsTriedAgain) {
  JXOpenOptions options = open_options(JX_ACCESS_OUTPUT, 0, JX_FORMAT_STREAM);
  options.file_encoding = options.record_encoding = JX_ENCODING_UTF16LE;
  File file(instance, path, options);
  ASSERT_TRUE(file);
  int64_t offset = 0;
  for (const JXStatus status : {JXWEM_E_DISKFULL, JX_OK}) {
    if (status != JX_OK) arm_syscalls(syscalls(Syscall::pwrite), {.error = ENOSPC});
    EXPECT_EQ(file->write(file, "a\0b\0", 4, 0, &offset), status);
    disarm_syscalls();
    EXPECT_EQ(offset, status == JX_OK ? 2 : 0);
  }
  ASSERT_EQ(file.close(), JX_OK);
  EXPECT_EQ(read_file(path), std::string("\xFF\xFE"
                                         "a\0b\0",
                                         6));
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
