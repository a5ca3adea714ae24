// Characters that a record or a chunk cuts off, in one encoding for each way to detect it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "jx/jxhost.h"
#include "kernel/handle.hpp"
#include "support/instance.hpp"
#include "support/open.hpp"
#include "support/syscalls.hpp"
#include "support/text_model.hpp"

namespace jx::test {
namespace {

// A character that begins with the bytes of `cut` and ends with those of `rest`.
struct CutCharacter {
  const char *encoding;
  std::string cut, rest;
  std::string line_end = "\n", letters = "def";
};
const CutCharacter kCutCharacters[] = {
    {"utf-8", "\xE6\x9D", "\xB1"},
    {"utf-16le", std::string("\x3D\xD8", 2), std::string("\x00\xDE", 2), std::string("\n\0", 2),
     std::string("d\0e\0f\0", 6)},
    {"shift_jis", "\x93", "\x8C"},
    {"euc-jp", "\xC5", "\xEC"},
    {"gb18030", "\x81\x30", "\x81\x30"},
    {"iso-2022-jp", "\x1B$BE", "l\x1B(B"},
    {"ibm939", "\x0E\x45", "\x4E\x0F", "\x25", "\x84\x85\x86"},
};

// Buffered and direct input, and update; for writing, output replaces input.
constexpr std::pair<uint32_t, uint32_t> kModes[] = {{0, 1}, {0, 0}, {JX_ACCESS_UPDATE, 0}};

class Cut : public InstanceTest {
 protected:
  static JXOpenOptions options(uint32_t access, uint32_t buffered, uint32_t file, uint32_t record,
                               uint32_t format = JX_FORMAT_VARIABLE) {
    JXOpenOptions options = open_options(access, buffered, format);
    options.file_encoding = file;
    options.record_encoding = record;
    options.lock_mode = JX_LOCK_NONE;
    options.open_flags = JX_OPEN_NO_BOM;
    return options;
  }
  std::string path = dir.file("cut");
};

TEST_F(Cut, IsTheFaultOfTheLineItStandsIn) {
  for (const CutCharacter &row : kCutCharacters) {
    const uint32_t encoding = jxhost_encoding_by_name(row.encoding);
    const std::string whole = row.letters + row.cut + row.rest, next = row.letters + row.line_end;
    for (const auto &[access, buffered] : kModes) {
      SCOPED_TRACE(row.encoding + std::to_string(access) + std::to_string(buffered));
      const uint32_t mode = access ? access : JX_ACCESS_INPUT;
      const std::string cut = row.letters + row.cut;
      write_file(path, cut + row.line_end + next + cut);
      File file(instance, path, options(mode, buffered, encoding, JX_ENCODING_UTF16BE));
      ASSERT_EQ(file.status, JX_OK);
      EXPECT_EQ(read_record(file).status, JXHOST_E_MALFORMED);
      EXPECT_EQ(read_record(file).data, encode(JX_ENCODING_UTF16BE, U"def"));
      EXPECT_EQ(read_record(file).status, JXHOST_E_MALFORMED) << "at the end of the file";
      EXPECT_EQ(read_record(file).status, JXWEM_E_EOF);
      // Whole records cost one call each.
      write_file(path, whole + row.line_end + next + whole);
      File again(instance, path, options(mode, buffered, encoding, JX_ENCODING_UTF16BE));
      const uint64_t calls = host.count(Call::transcode);
      const std::string records = read_records(again);
      EXPECT_EQ(std::count(records.begin(), records.end(), '|'), 3) << records;
      EXPECT_EQ(records.find_first_of("\n\r"), std::string::npos);
      EXPECT_EQ(host.count(Call::transcode) - calls, 3u);
    }
  }
}

// The control character that is converted with such a record is dropped again, in any record
// encoding, also where the host makes something else of it than the module knows.
TEST_F(Cut, ControlsAreDropped) {
  const uint32_t le = JX_ENCODING_UTF16LE, be = JX_ENCODING_UTF16BE;
  const struct {
    const char *name;
    std::string def;
    uint32_t other;  // in which the control is not what it is in this encoding
  } rows[] = {{"utf-8", "def", JX_ENCODING_UTF32LE},
              {"euc-jp", "def", JX_ENCODING_UTF32LE},
              {"iso-8859-1", "def", JX_ENCODING_UTF32LE},
              {"ibm939", "\x84\x85\x86", JX_ENCODING_UTF32LE},
              {"utf-16le", encode(le, U"def"), be},
              {"utf-16be", encode(be, U"def"), le},
              {"utf-32le", encode(JX_ENCODING_UTF32LE, U"def"), be},
              {"utf-32be", encode(JX_ENCODING_UTF32BE, U"def"), le}};
  const uint32_t encoding = jxhost_encoding_by_name("shift_jis");
  write_file(path, "def\ndef\r\n\n\r\ndef");
  for (const auto &[name, def, other] : rows) {
    for (const uint32_t buffered : {1u, 0u}) {
      for (const bool is_known : {true, false}) {
        SCOPED_TRACE(testing::Message() << name << buffered << is_known);
        const File file(
            instance, path,
            options(JX_ACCESS_INPUT, buffered, encoding, jxhost_encoding_by_name(name)));
        ASSERT_EQ(file.status, JX_OK);
        if (!is_known) handle_of(file)->encodings.record = other;
        EXPECT_EQ(read_records(file), def + "|" + def + (buffered ? "|null|null|" : "|||") + def +
                                          (buffered ? "|" : "~|"));
      }
    }
  }
}

TEST_F(Cut, IsTheFaultOfTheRecordThatIsWritten) {
  for (const CutCharacter &row : kCutCharacters) {
    const uint32_t encoding = jxhost_encoding_by_name(row.encoding);
    for (const auto &[access, buffered] : kModes) {
      SCOPED_TRACE(row.encoding + std::to_string(access) + std::to_string(buffered));
      const uint32_t mode = access ? access : JX_ACCESS_OUTPUT;
      write_file(path, "");
      File file(instance, path, options(mode, buffered, JX_ENCODING_UTF16BE, encoding));
      ASSERT_EQ(file.status, JX_OK);
      EXPECT_EQ(write_record(file, row.letters + row.cut), JXHOST_E_MALFORMED);
      EXPECT_EQ(write_record(file, row.letters), JX_OK);
      EXPECT_EQ(write_record(file, row.cut + row.rest), JX_OK);
      EXPECT_EQ(write_record(file, row.letters + row.cut), JXHOST_E_MALFORMED);
      ASSERT_EQ(file.close(), JX_OK);
      const std::string content = read_file(path);
      EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 2) << content;
    }
  }
}

// A held start is dropped at a new position and after any failure, even one outside the transcoder.
TEST_F(Cut, IsDroppedWhereTheNextTextIsAnother) {
  for (const CutCharacter &row : kCutCharacters) {
    const uint32_t encoding = jxhost_encoding_by_name(row.encoding);
    const auto cut_bytes = static_cast<uint32_t>(row.cut.size());
    const std::string content = row.cut + row.rest + row.letters;
    write_file(path, content);
    File file(instance, path,
              options(JX_ACCESS_UPDATE, 0, encoding, JX_ENCODING_UTF16BE, JX_FORMAT_STREAM));
    const auto bytes = static_cast<uint32_t>(content.size());
    int64_t start = 0;
    const std::string whole = read_record(file, bytes, &start).data;
    ASSERT_FALSE(whole.empty()) << row.encoding;
    for (const char *way : {"point", "offset", "failure"}) {
      SCOPED_TRACE(row.encoding + std::string(" ") + way);
      ASSERT_EQ(file->point(file, &start, JX_POINT_START), JX_OK);
      EXPECT_EQ(read_record(file, cut_bytes).data, "");
      if (way[0] == 'f') {
        host.arm(calls(Call::transcode), 0, JXHOST_E_NOROOM);
        EXPECT_EQ(read_record(file, 1).status, JXHOST_E_NOROOM);
        ASSERT_TRUE(host.disarm());
        ASSERT_EQ(lseek64(handle_of(file)->host_file->descriptor, 0, SEEK_SET), 0);
      } else if (way[0] == 'p') {
        ASSERT_EQ(file->point(file, &start, JX_POINT_START), JX_OK);
      }
      EXPECT_EQ(read_record(file, bytes, way[0] == 'o' ? &start : nullptr).data, whole);
    }
  }
}

// The same for text that is written: its conversion fails, or the write after it.
TEST_F(Cut, IsDroppedByARecordThatCannotBeWritten) {
  for (const CutCharacter &row : kCutCharacters) {
    for (const auto &[access, buffered] : kModes) {
      for (const bool fails_in_write : {false, true}) {
        SCOPED_TRACE(testing::Message() << row.encoding << access << buffered << fails_in_write);
        const uint32_t encoding = jxhost_encoding_by_name(row.encoding);
        write_file(path, "");
        JXOpenOptions stream = options(access ? access : JX_ACCESS_OUTPUT, buffered,
                                       JX_ENCODING_UTF16BE, encoding, JX_FORMAT_STREAM);
        stream.record_length = 65536;
        File file(instance, path, stream);
        ASSERT_EQ(file.status, JX_OK);
        if (fails_in_write) {
          std::string long_text;
          while (long_text.size() < 60000) long_text += row.letters;
          arm_syscalls(syscalls(Syscall::write), {.error = ENOSPC});
          EXPECT_NE(write_record(file, long_text + row.cut), JX_OK);
          ASSERT_TRUE(disarm_syscalls());
        } else {
          EXPECT_EQ(write_record(file, row.cut), JX_OK);
          host.arm(calls(Call::transcode), 0, JXHOST_E_NOROOM);
          EXPECT_EQ(write_record(file, row.rest), JXHOST_E_NOROOM);
          ASSERT_TRUE(host.disarm());
        }
        EXPECT_EQ(write_record(file, row.letters), JX_OK);
        ASSERT_EQ(file.close(), JX_OK);
        EXPECT_TRUE(read_file(path).ends_with(encode(JX_ENCODING_UTF16BE, U"def")));
      }
    }
  }
}

// What a failed conversion leaves is no cut character at the end of the file.
TEST_F(Cut, FailuresAreNotTheFaultOfTheEnd) {
  write_file(path, "d\xE6\x9D\xB1");
  JXOpenOptions direct = options(JX_ACCESS_INPUT, 0, JX_ENCODING_UTF8, JX_ENCODING_UTF16BE);
  direct.record_length = 2;
  const File file(instance, path, direct);
  EXPECT_EQ(read_record(file).data, encode(JX_ENCODING_UTF16BE, U"d"));
  host.arm(calls(Call::transcode), 0, JXHOST_E_NOROOM);
  EXPECT_EQ(read_record(file).status, JXHOST_E_NOROOM);
  EXPECT_EQ(read_record(file).status, JXWEM_E_EOF);
  // Where every byte is a character there is nothing to cut.
  direct.file_encoding = JX_ENCODING_NATIVE;
  direct.record_length = 9;
  const File native(instance, path, direct);
  EXPECT_EQ(read_records(native), encode(JX_ENCODING_UTF16BE, U"d\u00E6\u009D\u00B1") + "~|");
}

}  // namespace
}  // namespace jx::test
