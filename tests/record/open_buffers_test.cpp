// Buffers, transcoders and control strings after an open, by encodings and record length.
#include <gtest/gtest.h>

#include <algorithm>

#include "kernel/handle.hpp"
#include "support/instance.hpp"
#include "support/open.hpp"
#include "support/text_model.hpp"

namespace jx::test {
namespace {

class OpenBuffers : public InstanceTest {
 protected:
  std::string path = dir.file("file");
};

// The encodings, transcoders and buffers of a handle with records of 80.
TEST_F(OpenBuffers, Buffers) {
  struct Row {
    uint32_t format, access, buffered, flags, file_asked, record_asked;
    uint32_t file_encoding, record_encoding;
    bool reads, writes;               // has a transcoder
    uint32_t record_buffer, extra;    // bytes
    std::vector<uint32_t> sized_for;  // encodings that size the transcode buffer
  };
  const uint32_t in = JX_ACCESS_INPUT, out = JX_ACCESS_OUTPUT, both = JX_ACCESS_UPDATE;
  const Row rows[] = {
      {0, in, 1, 0, 0, 0, 62, 27, true, false, 8273, 1, {27}},
      {3, in, 1, 0, 0, 0, 62, 27, true, false, 8273, 1, {27}},
      {0, out, 1, 0, 0, 0, 62, 27, false, true, 8192, 3, {62}},
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
    EXPECT_EQ(handle->encodings.file, row.file_encoding);
    EXPECT_EQ(handle->encodings.record, row.record_encoding);
    EXPECT_EQ(handle->read_transcoder != nullptr, row.reads);
    EXPECT_EQ(handle->write_transcoder != nullptr, row.writes);
    EXPECT_EQ(handle->buffer.size_bytes, row.record_buffer);
    EXPECT_EQ(handle->control_extra_bytes, row.extra);
    uint32_t largest = 0;
    for (const uint32_t encoding : row.sized_for) {
      largest = std::max(largest, max_bytes_of(encoding) * (80 + row.extra));
    }
    EXPECT_EQ(handle->transcode_buffer.size_bytes, largest);
    EXPECT_EQ(handle->buffer.block_bytes, 8192u);
    EXPECT_EQ(handle->buffer.free_bytes, row.access == in ? 0 : row.record_buffer);
  }
}

// A record length that needs an impossible buffer is refused before memory is touched.
TEST_F(OpenBuffers, HugeRecordLength) {
  write_file(path, "");
  for (const uint32_t buffered : {0u, 1u}) {
    for (const uint32_t format : {JX_FORMAT_VARIABLE, JX_FORMAT_BINARY, JX_FORMAT_STREAM}) {
      for (const uint32_t length : {0xFFFFFFFFu, 0xFFFFDFFFu, 0x40000000u}) {
        JXOpenOptions options = open_options(JX_ACCESS_INPUT, buffered, format);
        options.record_length = length;
        EXPECT_EQ(File(instance, path, options).status, JX_E_NOMEM) << length;
      }
    }
  }
  // Without a record buffer, the one for conversions is that large.
  JXOpenOptions options = open_options(JX_ACCESS_INPUT, 0, JX_FORMAT_STREAM);
  options.open_flags = JX_OPEN_DIRECT_TRANSFER;
  options.file_encoding = JX_ENCODING_UTF8;
  options.record_encoding = JX_ENCODING_UTF32LE;
  options.record_length = 0x40000001u;
  EXPECT_EQ(File(instance, path, options).status, JX_E_NOMEM);
}

TEST_F(OpenBuffers, ControlStrings) {
  const std::u32string_view outbound[2][9] = {
      {U"\n", U"\n\n", U"\n\n\n", U"\n\f", U"\r", U"\r", U"", U"\f", U" "},
      {U"\r\n", U"\r\n\r\n", U"\r\n\r\n\r\n", U"\r\n\f", U"\r", U"\r", U"", U"\f", U" "}};
  const std::u32string_view inbound[3] = {U"\n", U"\f", U"\r"};
  const auto text = [](const ControlCopy &copy) {
    return std::string(reinterpret_cast<const char *>(copy.text), copy.bytes);
  };
  for (const uint32_t encoding : {62u, 20u, 24u, 25u, 26u, 27u}) {
    JXOpenOptions options = open_options(JX_ACCESS_UPDATE);
    options.file_encoding = encoding;
    const File file(instance, path, options);
    ASSERT_TRUE(file) << encoding;
    const FileHandle *handle = handle_of(file);
    for (const uint32_t group : {1u, 2u}) {
      SCOPED_TRACE(testing::Message() << encoding << " group " << group);
      if (group == 2) {
        ASSERT_EQ(setupCCTable(file, 0, 2), JX_OK);
        EXPECT_EQ(handle->control_extra_bytes, 2 * unit_bytes_of(encoding));
        ASSERT_EQ(setupCCTable(file, 1, 2), JX_OK);
      }
      EXPECT_EQ(handle->control_extra_bytes, 3 * group * unit_bytes_of(encoding));
      for (size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(text(handle->controls.outbound[i]), encode(encoding, outbound[group - 1][i]));
      }
      for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(text(handle->controls.inbound[i]), encode(encoding, inbound[i]));
      }
    }
    EXPECT_EQ(setupCCTable(file, 2, 1), JXWEM_E_FAILED);
    EXPECT_EQ(setupCCTable(file, 0, 3), JXWEM_E_FAILED);
  }
  // A line feed of no bytes would end every record before it began.
  JXOpenOptions options = open_options();
  options.file_encoding = JX_ENCODING_UTF32LE;
  const uint32_t bytes = std::exchange(sk_inbound_cc[0].bytes, 0u);
  EXPECT_EQ(File(instance, path, options).status, JXWEM_E_FAILED);
  sk_inbound_cc[0].bytes = bytes;
}

}  // namespace
}  // namespace jx::test
