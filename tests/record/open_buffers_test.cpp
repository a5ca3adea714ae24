// What an open prepares for the encodings and the length of records: byte-order marks, buffers,
// transcoders and control strings.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "kernel/handle.hpp"
#include "support/instance.hpp"
#include "support/open.hpp"

namespace jx::test {
namespace {

constexpr uint32_t kHuge = std::numeric_limits<uint32_t>::max();

class OpenBuffers : public InstanceTest {
 protected:
  std::string path = dir.file("file");
};

TEST_F(OpenBuffers, ByteOrderMarks) {
  const uint32_t latin1 = jxhost_encoding_by_name("latin1");
  struct Row {
    uint32_t encoding;
    std::string mark;
  };
  using namespace std::string_literals;
  const Row rows[] = {{20, "\xEF\xBB\xBF"},  {24, "\xFE\xFF"},      {25, "\xFF\xFE"}, {62, ""},
                      {26, "\0\0\xFE\xFF"s}, {27, "\xFF\xFE\0\0"s}, {0, ""},          {latin1, ""}};
  for (const Row &row : rows) {
    JXOpenOptions options = open_options(JX_ACCESS_OUTPUT);
    options.file_encoding = row.encoding;
    options.open_flags = JX_OPEN_NO_BOM;
    const File file(instance, path, options);
    ASSERT_TRUE(file) << row.encoding;
    const FileHandle *handle = handle_of(file);
    const auto *mark = reinterpret_cast<const char *>(handle->bom);
    EXPECT_EQ(std::string(mark, handle->bom_bytes), row.mark) << row.encoding;
    EXPECT_EQ(handle->bom_pending, row.mark.empty() ? 0 : 1) << row.encoding;
    EXPECT_EQ(handle->open_flags, row.mark.empty() ? 0u : JX_OPEN_NO_BOM) << row.encoding;
  }
}

// The encodings, transcoders and buffers of a handle with records of 80.
TEST_F(OpenBuffers, Buffers) {
  struct Row {
    uint32_t format, access, buffered, flags, file_asked, record_asked;
    uint32_t file_encoding, record_encoding;
    bool reads, writes;               // has a transcoder
    uint32_t record_buffer, extra;    // bytes
    std::vector<uint32_t> sized_for;  // encodings that size the transcode buffer
  };
  const uint32_t in = JX_ACCESS_INPUT, out = JX_ACCESS_OUTPUT, add = JX_ACCESS_APPEND,
                 both = JX_ACCESS_UPDATE;
  const Row rows[] = {
      {0, in, 1, 0, 0, 0, 62, 27, true, false, 8273, 1, {27}},
      {3, in, 1, 0, 0, 0, 62, 27, true, false, 8273, 1, {27}},
      {0, out, 1, 0, 0, 0, 62, 27, false, true, 8192, 3, {62}},
      {0, add, 1, 0, 0, 0, 62, 27, false, true, 8192, 3, {62}},
      {0, both, 1, 0, 0, 0, 62, 27, true, true, 83, 3, {27, 62}},
      {0, in, 1, 0, 62, 62, 62, 62, false, false, 8273, 1, {}},
      {0, in, 1, 0, 27, 27, 27, 27, false, false, 8276, 4, {}},
      {0, out, 1, 0, 27, 27, 27, 27, false, false, 8192, 12, {}},
      {0, in, 0, 0, 20, 0, 20, 27, true, false, 84, 1, {27}},
      {0, out, 0, 0, 25, 0, 25, 27, false, true, 88, 6, {25}},
      {0, both, 0, 0, 24, 20, 24, 20, true, true, 88, 6, {24, 20}},
      {0, in, 0, 0, 26, 0, 26, 27, true, false, 88, 4, {27}},
      {1, in, 1, 0, 20, 27, 0, 0, false, false, 8272, 0, {}},
      {1, out, 1, 0, 20, 27, 0, 0, false, false, 8192, 0, {}},
      {1, in, 0, 0, 20, 27, 0, 0, false, false, 80, 0, {}},
      {1, in, 1, 1, 0, 0, 0, 0, false, false, 0, 0, {}},
      {4, in, 1, 0, 0, 0, 62, 62, false, false, 8272, 0, {}},
      {4, in, 1, 0, 20, 27, 20, 27, true, false, 8272, 0, {27}},
      {4, in, 1, 1, 20, 27, 20, 27, true, false, 0, 0, {27, 20}},
      {4, in, 0, 0, 20, 27, 20, 27, true, false, 83, 0, {27}},
      {4, out, 0, 1, 27, 20, 27, 20, false, true, 0, 0, {27}},
      {4, both, 1, 0, 25, 20, 25, 20, true, true, 82, 0, {20, 25}},
  };
  write_file(path, "");
  for (const Row &row : rows) {
    SCOPED_TRACE("row " + std::to_string(&row - rows));
    JXOpenOptions options = open_options(row.access, row.buffered, row.format);
    options.open_flags = row.flags;
    options.file_encoding = row.file_asked;
    options.record_encoding = row.record_asked;
    const File file(instance, path, options);
    ASSERT_TRUE(file) << std::hex << file.status;
    const FileHandle *handle = handle_of(file);
    EXPECT_EQ(handle->file_encoding, row.file_encoding);
    EXPECT_EQ(handle->record_encoding, row.record_encoding);
    EXPECT_EQ(handle->read_transcoder != nullptr, row.reads);
    EXPECT_EQ(handle->write_transcoder != nullptr, row.writes);
    EXPECT_EQ(handle->record_buffer_bytes, row.record_buffer);
    EXPECT_EQ(handle->record_buffer != nullptr, row.record_buffer != 0);
    EXPECT_EQ(handle->control_extra_bytes, row.extra);
    uint32_t largest = 0;
    for (const uint32_t encoding : row.sized_for) {
      JXEncodingInfo info = {};
      EXPECT_EQ(instance->nls->encoding_info(instance->nls, encoding, &info), JX_OK);
      const auto max_bytes = static_cast<uint32_t>(info.max_bytes_per_char);
      largest = std::max(largest, max_bytes * (80 + row.extra));
    }
    EXPECT_EQ(handle->transcode_buffer_bytes, largest);
    EXPECT_EQ(handle->transcode_buffer != nullptr, largest != 0);
    EXPECT_EQ(handle->block_bytes, 8192u);
    EXPECT_EQ(handle->buffer_count, row.access == in ? 0 : row.record_buffer);
    EXPECT_EQ(handle->buffer_offset, 0u);
    EXPECT_EQ(handle->tracked_position, 0u);
  }
}

// A length that makes a buffer larger than can be is refused before memory is touched.
TEST_F(OpenBuffers, HugeRecordLength) {
  write_file(path, "");
  for (const uint32_t buffered : {0u, 1u}) {
    for (const uint32_t format : {JX_FORMAT_VARIABLE, JX_FORMAT_BINARY, JX_FORMAT_STREAM}) {
      for (const uint32_t length : {kHuge, kHuge - 8192, 0x40000000u}) {
        JXOpenOptions options = open_options(JX_ACCESS_INPUT, buffered, format);
        options.record_length = length;
        EXPECT_EQ(File(instance, path, options).status, JX_E_NOMEM) << length;
      }
    }
  }
}

// Text of a file in an encoding with units of so many bytes.
std::string encode(std::string_view ascii, uint32_t unit_bytes, bool big_endian) {
  std::string bytes;
  for (const char letter : ascii) {
    std::string unit(unit_bytes, '\0');
    unit[big_endian ? unit_bytes - 1 : 0] = letter;
    bytes += unit;
  }
  return bytes;
}

TEST_F(OpenBuffers, ControlStrings) {
  struct Row {
    uint32_t encoding, unit_bytes;
    bool big_endian;
  };
  const char *const outbound[2][9] = {
      {"\n", "\n\n", "\n\n\n", "\n\f", "\r", "\r", "", "\f", " "},
      {"\r\n", "\r\n\r\n", "\r\n\r\n\r\n", "\r\n\f", "\r", "\r", "", "\f", " "}};
  const char *const inbound[3] = {"\n", "\f", "\r"};
  const auto text = [](const ControlCopy &copy) {
    return std::string(reinterpret_cast<const char *>(copy.text), copy.bytes);
  };
  for (const Row &row : {Row{62, 1, false}, Row{20, 1, false}, Row{24, 2, true}, Row{25, 2, false},
                         Row{26, 4, true}, Row{27, 4, false}}) {
    JXOpenOptions options = open_options(JX_ACCESS_UPDATE);
    options.file_encoding = row.encoding;
    const File file(instance, path, options);
    ASSERT_TRUE(file) << row.encoding;
    const FileHandle *handle = handle_of(file);
    for (const uint32_t group : {1u, 2u}) {
      SCOPED_TRACE(testing::Message() << row.encoding << " group " << group);
      if (group == 2) {
        ASSERT_EQ(setupCCTable(file, 0, 2), JX_OK);
        EXPECT_EQ(handle->control_extra_bytes, 2 * row.unit_bytes);
        ASSERT_EQ(setupCCTable(file, 1, 2), JX_OK);
      }
      EXPECT_EQ(handle->control_extra_bytes, 3 * group * row.unit_bytes);
      for (size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(text(handle->outbound[i]),
                  encode(outbound[group - 1][i], row.unit_bytes, row.big_endian));
      }
      for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(text(handle->inbound[i]), encode(inbound[i], row.unit_bytes, row.big_endian));
      }
    }
    EXPECT_EQ(setupCCTable(file, 2, 1), JXWEM_E_FAILED);
  }
  EXPECT_EQ(setupCCTable(nullptr, 0, 1), JXWEM_E_NOHANDLE);
}

}  // namespace
}  // namespace jx::test
