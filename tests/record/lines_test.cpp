// Text lines: the ends of records, line ends at the edge of a block, and the number of transfers.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>

#include "jx/jxhost.h"
#include "kernel/handle.hpp"
#include "support/instance.hpp"
#include "support/open.hpp"
#include "support/syscalls.hpp"
#include "support/text_model.hpp"

namespace jx::test {
namespace {

class Lines : public InstanceTest {
 protected:
  // Options for lines of one encoding, file and records alike.
  static JXOpenOptions options(uint32_t access, uint32_t buffered, uint32_t encoding,
                               uint32_t length) {
    JXOpenOptions options = open_options(access, buffered);
    options.record_length = length;
    options.lock_mode = JX_LOCK_NONE;
    options.file_encoding = options.record_encoding = encoding;
    return options;
  }

  const std::string path = dir.file("lines");
};

// A line of exactly the record length, with and without a mark before it, starts at every offset
// where the line, its line end or its mark crosses the end of a block.
TEST_F(Lines, FullLineAtTheEndOfABlock) {
  constexpr uint32_t kChars = 8;
  for (const uint32_t encoding : {20u, 24u, 25u, 26u, 27u}) {
    const auto text = [=](std::u32string_view t) { return encode(encoding, t); };
    const uint32_t unit = unit_bytes_of(encoding);
    const std::string full = text(U"12345678");
    for (uint32_t places = 0; places < (kChars + 6) * 3; ++places) {
      const uint32_t before_edge = places / 3 * unit;
      const std::string end = text(places % 3 == 0 ? U"\n" : U"\r\n");
      const std::string mark = places % 3 == 2 ? bom_of(encoding) : "";
      std::string content;
      uint32_t lines = 0;
      for (const uint32_t bytes = 8192 - before_edge; content.size() < bytes; ++lines) {
        const size_t units = std::min<size_t>(kChars, (bytes - content.size()) / unit);
        content += text(std::u32string(units - 1, U'x') + U"\n");
      }
      write_file(path, content + mark + full + end + text(U"z\n"));
      File file(instance, path, options(JX_ACCESS_INPUT, 1, encoding, kChars * unit));
      for (; lines > 0; --lines) ASSERT_EQ(read_record(file).status, JX_OK);
      EXPECT_EQ(read_records(file), full + "|" + text(U"z") + "|")
          << "encoding " << encoding << ", " << before_edge << " bytes before the edge, "
          << places % 3;
    }
  }
}

TEST_F(Lines, Transfers) {
  std::string content;
  while (content.size() < 3 * 8192) content += "0123456789abcde\n";
  write_file(path, content);
  // One read for each block and one that finds the end, for every record length.
  for (const uint32_t length : {15u, 80u, 8192u, 1u << 20}) {
    File file(instance, path, options(JX_ACCESS_INPUT, 1, JX_ENCODING_UTF8, length));
    const uint64_t reads = syscall_count(Syscall::read);
    EXPECT_EQ(read_records(file).size(), content.size());
    EXPECT_EQ(syscall_count(Syscall::read) - reads, 4u) << length;
    write_file(path, content + "more\n");
    EXPECT_EQ(read_record(file).status, JXWEM_E_EOF) << "the end stays where it was seen";
    EXPECT_EQ(syscall_count(Syscall::read) - reads, 4u) << length;
    write_file(path, content);
  }
  // Unbuffered: a read and a seek for each record; a write for each, and one for the mark.
  File file(instance, path, options(JX_ACCESS_UPDATE, 0, JX_ENCODING_UTF8, 80));
  uint64_t calls = syscall_count(Syscall::read) + syscall_count(Syscall::lseek64);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(read_record(file).data, "0123456789abcde");
  EXPECT_EQ(syscall_count(Syscall::read) + syscall_count(Syscall::lseek64) - calls, 20u);
  int64_t start = 0;
  EXPECT_EQ(file->point(file, &start, JX_POINT_START), JX_OK);
  calls = syscall_count(Syscall::write);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(write_record(file, "abc"), JX_OK);
  EXPECT_EQ(syscall_count(Syscall::write) - calls, 11u);
}

// A host's encoding may have a line feed of any length: units of that length are compared one by
// one.
TEST_F(Lines, LineFeedsOfThreeBytes) {
  write_file(path, "abc<L>defghi<L><L>jk<L>l");
  const File file(instance, path, options(JX_ACCESS_INPUT, 1, JX_ENCODING_UTF8, 12));
  ASSERT_TRUE(file);
  uint8_t line_feed[] = {'<', 'L', '>'};
  ControlCopy &control = handle_of(file)->controls.inbound[kLineFeed];
  const ControlCopy own = std::exchange(control, {line_feed, 3});
  // One that begins inside a unit is none.
  EXPECT_EQ(read_records(file), "abc|defghi|null|jk<L>l|");
  control = own;
}

// A read that fails while the bytes in hand do not decide the line; what only begins like a mark.
TEST_F(Lines, ReadsThatFailBeforeALineIsDecided) {
  for (const char *content : {"\xEF", "abc"}) {
    write_file(path, content);
    const File failing(instance, path, options(JX_ACCESS_INPUT, 1, JX_ENCODING_UTF8, 3));
    arm_syscalls(syscalls(Syscall::read), {.n = 1, .error = EIO});
    EXPECT_EQ(read_record(failing).status, JXWEM_E_SYSTEM);
    EXPECT_TRUE(disarm_syscalls());
    const File file(instance, path, options(JX_ACCESS_INPUT, 1, JX_ENCODING_UTF8, 3));
    EXPECT_EQ(read_records(file), std::string(content) + "|");
  }
  // A write that takes nothing and gives no reason.
  const File out(instance, path, options(JX_ACCESS_OUTPUT, 0, JX_ENCODING_NATIVE, 9));
  arm_syscalls(syscalls(Syscall::write), {.most_bytes = 0});
  EXPECT_EQ(write_record(out, "abc"), JXWEM_E_SYSTEM);
  disarm_syscalls();
}

// A direct reader reads on when a short read ends inside a character.
TEST_F(Lines, ShortReadsInsideACharacter) {
  write_file(path, "ab\xC3\xA4\nc\xC3");
  JXOpenOptions both = options(JX_ACCESS_INPUT, 0, JX_ENCODING_UTF8, 20);
  both.record_encoding = JX_ENCODING_UTF16LE;
  const File file(instance, path, both);
  ASSERT_TRUE(file);
  arm_syscalls(syscalls(Syscall::read), {.most_bytes = 3});
  EXPECT_EQ(read_record(file).data, encode(JX_ENCODING_UTF16LE, U"ab\u00E4"));
  EXPECT_EQ(read_record(file).status, JXHOST_E_MALFORMED);
  disarm_syscalls();
}

// Records are delivered as they arrive; the file ends when the writer closes the pipe.
TEST_F(Lines, Fifo) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int fd = ::open(path.c_str(), O_RDWR);
  const auto send = [fd](std::string_view text) {
    EXPECT_EQ(::write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  };
  File file(instance, path, options(JX_ACCESS_INPUT, 1, JX_ENCODING_UTF8, 10));
  ASSERT_TRUE(file);
  send("abc\nde");
  EXPECT_EQ(read_record(file).data, "abc");
  send("f\n0123456789\r");
  EXPECT_EQ(read_record(file).data, "def");
  send("\n");
  EXPECT_EQ(read_record(file).data, "0123456789");
  // A record that the bytes in hand decide does not wait for more; a read would fail here.
  ASSERT_EQ(fcntl(jx::handle_of(file)->host_file->descriptor, F_SETFL, O_NONBLOCK), 0);
  const std::array<const char *, 2> rows[] = {
      {"0123456789\n", "0123456789"},
      {"0123456789x", "0123456789"},
      {"\n", "x"},
      {"0123456789\ry", "0123456789"},
      {"\n", "\ry"},
      {"\xEFz\n", "\xEFz"},
  };
  for (const auto &[sent, record] : rows) {
    send(sent);
    EXPECT_EQ(read_record(file).data, record) << sent;
  }
  send("last");
  ::close(fd);
  EXPECT_EQ(read_records(file), "last|");
}

// A direct writer's limit is in characters; where these cannot be counted cheaply, only the buffer
// size limits a record.
TEST_F(Lines, LongRecordOfAnotherEncoding) {
  for (const bool is_single : {true, false}) {
    JXOpenOptions output = options(JX_ACCESS_OUTPUT, 0, JX_ENCODING_UTF32LE, 2);
    output.record_encoding = jxhost_encoding_by_name(is_single ? "cp1252" : "shift_jis");
    output.open_flags = JX_OPEN_NO_BOM;
    File file(instance, path, output);
    for (uint32_t length = 1; length < 40; ++length) {
      const JXStatus refused = is_single ? JXWEM_E_TOOLONG : JXHOST_E_NOROOM;
      EXPECT_EQ(write_record(file, std::string(length, 'x')),
                length <= (is_single ? 2 : 13) ? JX_OK : refused)
          << length;
    }
  }
}

// In UTF-7 a form feed is longer than a line feed: it has no text lines.
TEST_F(Lines, EncodingWithoutLines) {
  for (const uint32_t access : {JX_ACCESS_OUTPUT, JX_ACCESS_INPUT, JX_ACCESS_UPDATE}) {
    JXOpenOptions utf7 = options(access, 1, jxhost_encoding_by_name("utf-7"), 80);
    utf7.record_encoding = JX_ENCODING_UTF8;
    EXPECT_EQ(File(instance, path, utf7).status, JXHOST_E_NOROOM);
  }
}

}  // namespace
}  // namespace jx::test
