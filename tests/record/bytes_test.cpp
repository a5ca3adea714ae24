// Binary records, and what all formats rely on: devices, pipes, offsets beyond 32 bits, the number
// and size of transfers.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "jx/jxhost.h"
#include "support/instance.hpp"
#include "support/open.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

class Bytes : public InstanceTest {
 protected:
  static JXOpenOptions options(uint32_t access, uint32_t buffered, uint32_t flags = 0,
                               uint32_t format = JX_FORMAT_BINARY) {
    JXOpenOptions options = open_options(access, buffered, format);
    options.open_flags = flags;
    options.lock_mode = JX_LOCK_NONE;
    return options;
  }

  const std::string path = dir.file("bytes");
};

// A block is written as soon as it is full, and once.
TEST_F(Bytes, Transfers) {
  struct Row {
    uint32_t buffered, flags;
    std::vector<uint32_t> pieces;
    uint64_t writes, all_writes;  // before the end and with it
  };
  const Row rows[] = {
      {1, 0, {8192}, 1, 1},   {1, 0, {8191}, 0, 1},         {1, 0, {8191, 1}, 1, 1},
      {1, 0, {10'000}, 1, 2}, {1, 0, {1, 8192, 1}, 1, 2},   {1, 0, {3 * 8192 + 1, 8191}, 4, 4},
      {1, 0, {0}, 0, 0},      {0, 0, {10'000, 1, 0}, 3, 3}, {1, 1, {10'000, 1}, 2, 2},
  };
  for (const Row &row : rows) {
    File file(instance, path, options(JX_ACCESS_OUTPUT, row.buffered, row.flags));
    const uint64_t writes = syscall_count(Syscall::write);
    std::string content;
    for (const uint32_t bytes : row.pieces) {
      const std::string piece(bytes, static_cast<char>('a' + content.size() % 26));
      EXPECT_EQ(write_record(file, piece), JX_OK);
      content += piece;
    }
    EXPECT_EQ(syscall_count(Syscall::write) - writes, row.writes) << "row " << &row - rows;
    EXPECT_EQ(file.close(), JX_OK);
    EXPECT_EQ(syscall_count(Syscall::write) - writes, row.all_writes) << "row " << &row - rows;
    EXPECT_EQ(read_file(path), content) << "row " << &row - rows;
  }
  // The two blocks, the rest and the end.
  write_file(path, std::string(2 * 8192 + 10, 'x'));
  File file(instance, path, options(JX_ACCESS_INPUT, 1));
  const uint64_t before = syscall_count(Syscall::read);
  EXPECT_EQ(read_records(file, 20).size(), 2u * 8192 + 10 + 820);
  EXPECT_EQ(syscall_count(Syscall::read) - before, 4u);
}

TEST_F(Bytes, DirectTransferNeedsADestination) {
  write_file(path, "text");
  for (const uint32_t format : {JX_FORMAT_BINARY, JX_FORMAT_STREAM}) {
    JXOpenOptions direct = options(JX_ACCESS_INPUT, 0, JX_OPEN_DIRECT_TRANSFER, format);
    direct.record_encoding = JX_ENCODING_UTF16LE;
    const File file(instance, path, direct);
    ASSERT_TRUE(file);
    EXPECT_EQ(read_record(file, 4).status, JXWEM_E_FAILED);
  }
}

TEST_F(Bytes, Devices) {
  for (const uint32_t format : {JX_FORMAT_VARIABLE, JX_FORMAT_BINARY, JX_FORMAT_STREAM}) {
    for (const uint32_t buffered : {0u, 1u}) {
      SCOPED_TRACE("format " + std::to_string(format) + " buffered " + std::to_string(buffered));
      File empty(instance, "/dev/null", options(JX_ACCESS_INPUT, buffered, 0, format));
      EXPECT_EQ(read_record(empty, 10).status, JXWEM_E_EOF);
      File zero(instance, "/dev/zero", options(JX_ACCESS_INPUT, buffered, 0, format));
      const Record zeros = read_record(zero, 10);
      const bool is_text = format == JX_FORMAT_VARIABLE;
      EXPECT_EQ(zeros.status, is_text ? JXWEM_E_PARTIAL : JX_OK);
      EXPECT_EQ(zeros.data.find_first_not_of('\0'), std::string::npos);
      EXPECT_GE(zeros.data.size(), 10u);

      File full(instance, "/dev/full", options(JX_ACCESS_OUTPUT, buffered, 0, format));
      const std::string record(40, '\0');
      EXPECT_EQ(write_record(full, record), buffered ? JX_OK : JXWEM_E_DISKFULL);
      if (buffered) {
        EXPECT_EQ(write_record(full, std::string(20'000, '\0')),
                  is_text ? JXHOST_E_NOROOM : JXWEM_E_DISKFULL);
        EXPECT_EQ(write_record(full, {"\1\0\0\0", 4}), JX_OK)
            << "the block is lost, the next is empty";
        EXPECT_EQ(full.close(), JXWEM_E_DISKFULL);
      }
    }
  }
}

// A pipe has no offsets; asking for one does no harm.
TEST_F(Bytes, Fifo) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int fd = ::open(path.c_str(), O_RDWR);
  ASSERT_GE(fd, 0);
  File in(instance, path, options(JX_ACCESS_INPUT, 0));
  File buffered(instance, path, options(JX_ACCESS_INPUT, 1, 0, JX_FORMAT_STREAM));
  File out(instance, path, options(JX_ACCESS_OUTPUT, 1, JX_OPEN_DIRECT_TRANSFER));
  EXPECT_EQ(write_record(out, "hello"), JX_OK);
  int64_t offset = 3;
  EXPECT_EQ(in->point(in, &offset, 0), JXWEM_E_FAILED);
  EXPECT_EQ(offset, -1);
  EXPECT_EQ(in->note(in, &offset), JXWEM_E_FAILED);
  offset = 0;
  EXPECT_EQ(read_record(in, 3, &offset).status, JXWEM_E_SYSTEM);
  EXPECT_EQ(write_record(out, "x", &offset), JXWEM_E_SYSTEM);
  EXPECT_EQ(read_record(in, 3).data, "hel");
  EXPECT_EQ(read_record(in, 80).data, "lo") << "a short read is not the end";
  EXPECT_EQ(write_record(out, "all"), JX_OK);
  EXPECT_EQ(read_record(buffered, 3).data, "all");
  EXPECT_EQ(write_record(out, "end"), JX_OK);
  EXPECT_EQ(out->flush(out), JXWEM_E_FAILED) << "a pipe cannot be made durable";
  EXPECT_EQ(out.close(), JXWEM_E_FAILED);
  ::close(fd);
  EXPECT_EQ(read_records(buffered, 80), "end|");
}

TEST_F(Bytes, BeyondFourGigabytes) {
  constexpr int64_t kFar = (int64_t{1} << 32) + 8191;
  for (const uint32_t format : {JX_FORMAT_VARIABLE, JX_FORMAT_BINARY, JX_FORMAT_STREAM}) {
    JXOpenOptions update = options(JX_ACCESS_UPDATE, 0, 0, format);
    update.record_encoding = JX_ENCODING_NATIVE;
    File file(instance, path, update);
    EXPECT_EQ(file->truncate(file, &kFar), JX_OK);
    int64_t offset = 0;
    EXPECT_EQ(file->point(file, &offset, JX_POINT_END), JX_OK);
    EXPECT_EQ(offset, kFar);
    EXPECT_EQ(write_record(file, "far"), JX_OK);
    EXPECT_EQ(file->note(file, &offset), JX_OK);
    const bool is_text = format == JX_FORMAT_VARIABLE;
    EXPECT_EQ(offset, kFar + 3 + is_text);
    offset = kFar;
    EXPECT_EQ(file->point(file, &offset, 0), JX_OK);
    EXPECT_EQ(read_record(file, 3).data, "far");
    offset = kFar + 1;
    if (!is_text) {
      EXPECT_EQ(write_record(file, "arther", &offset), JX_OK);
      EXPECT_EQ(read_record(file, 3, &offset).data, "art");
    }
    EXPECT_EQ(file.close(), JX_OK);
    File append(instance, path, options(JX_ACCESS_APPEND, 1));
    EXPECT_EQ(write_record(append, std::string(8193, '.')), JX_OK);
    EXPECT_EQ(append.close(), JX_OK);
    EXPECT_EQ(std::filesystem::file_size(path), kFar + (is_text ? 4u : 7u) + 8193);
    ASSERT_TRUE(std::filesystem::remove(path));
  }
}

}  // namespace
}  // namespace jx::test
