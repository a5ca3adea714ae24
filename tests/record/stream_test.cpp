// Stream records: byte-order marks, in front of chunks and on their way to the file.
#include <gtest/gtest.h>

#include <vector>

#include "support/instance.hpp"
#include "support/open.hpp"
#include "support/records.hpp"

namespace {

using namespace jx::test;

class Stream : public InstanceTest {
 protected:
  static JXOpenOptions options(uint32_t access, uint32_t buffered, uint32_t encoding,
                               uint32_t flags = 0) {
    JXOpenOptions options = open_options(access, buffered, JX_FORMAT_STREAM);
    options.file_encoding = options.record_encoding = encoding;
    options.open_flags = flags;
    return options;
  }

  const std::string path = dir.file("stream");
};

// The mark is written before the first data and wherever data goes to offset 0 by name.
TEST_F(Stream, MarksWritten) {
  struct Write {
    const char *data;
    int64_t offset;        // -1: none
    int64_t offset_after;  // what the caller's offset is then
  };
  struct Row {
    uint32_t buffered;
    uint32_t flags;
    std::vector<Write> writes;
    std::string file;
  };
  using namespace std::string_literals;
  const Row rows[] = {
      {1,
       0,
       {{"abc", -1, -1}, {"d", -1, -1}},
       "\xEF\xBB\xBF"
       "abcd"},
      {1, JX_OPEN_NO_BOM, {{"abc", -1, -1}}, "abc"},
      {1, 0, {{"", -1, -1}}, "\xEF\xBB\xBF"},
      {0,
       0,
       {{"abc", -1, -1}, {"d", -1, -1}},
       "\xEF\xBB\xBF"
       "abcd"},
      {0,
       0,
       {{"abcdef", 0, 3}},
       "\xEF\xBB\xBF"
       "abcdef"},
      {0,
       0,
       {{"abcdef", 0, 3}, {"x", 0, 3}},
       "\xEF\xBB\xBF"
       "xbcdef"},
      {0,
       0,
       {{"a", 2, 2}, {"b", -1, -1}},
       "\xEF\xBB\xBF"
       "b"},
      {0, JX_OPEN_NO_BOM, {{"a", 0, 0}, {"b", 1, 1}}, "ab"},
      {1,
       JX_OPEN_DIRECT_TRANSFER,
       {{"a", 4, 4}, {"b", 0, 3}},
       "\xEF\xBB\xBF"
       "ba"},
  };
  for (const Row &row : rows) {
    File file(instance, path, options(JX_ACCESS_OUTPUT, row.buffered, JX_ENCODING_UTF8, row.flags));
    for (const Write &write : row.writes) {
      int64_t offset = write.offset;
      EXPECT_EQ(write_record(file, write.data, offset < 0 ? nullptr : &offset), JX_OK);
      EXPECT_EQ(offset, write.offset_after) << "row " << &row - rows;
    }
    EXPECT_EQ(file.close(), JX_OK);
    EXPECT_EQ(read_file(path), row.file) << "row " << &row - rows;
  }
}

// A mark in front of a chunk is replaced by the bytes that follow the chunk.
TEST_F(Stream, MarksRead) {
  const std::string mark = "\xEF\xBB\xBF";
  struct Row {
    std::string content;
    const char *buffered;
    const char *direct;
  };
  const Row rows[] = {
      {mark + "0123456789ab", "0123456789|ab|", "0123456789|ab|"},
      {mark + "0123456", "0123456|", "0123456"},
      {mark, "|", ""},
      {"abcdefghij" + mark + "k", "abcdefghij|k|", "abcdefghij|k"},
      {"abcdefghi" + mark + "k",
       "abcdefghi\xEF|\xBB\xBF"
       "k|",
       "abcdefghi\xEF|\xBB\xBF"
       "k|"},
  };
  for (const Row &row : rows) {
    write_file(path, row.content);
    for (const uint32_t buffered : {0u, 1u}) {
      File file(instance, path, options(JX_ACCESS_INPUT, buffered, JX_ENCODING_UTF8));
      EXPECT_EQ(read_records(file, 10), buffered ? row.buffered : row.direct) << row.content;
    }
  }
}

// With an offset, what follows the chunk is read from the file behind it; the end of the file is
// told together with the bytes that came.
TEST_F(Stream, MarkAtAnOffset) {
  write_file(path,
             "xy\xEF\xBB\xBF"
             "abcdef");
  File file(instance, path, options(JX_ACCESS_INPUT, 0, JX_ENCODING_UTF8));
  int64_t offset = 2;
  const Record whole = read_record(file, 5, &offset);
  EXPECT_EQ(whole.status, JX_OK);
  EXPECT_EQ(whole.data, "abcde");
  const Record last = read_record(file, 9, &offset);
  EXPECT_EQ(last.status, JXWEM_E_EOF);
  EXPECT_EQ(last.data, "abcdef");
  EXPECT_EQ(read_record(file, 2).data, "xy") << "the descriptor has not moved";
}

}  // namespace
