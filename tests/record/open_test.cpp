// Opening and closing: every option and its status, what a handle holds for every format, buffering
// and encoding.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <span>

#include "kernel/handle.hpp"
#include "support/instance.hpp"
#include "support/journal.hpp"
#include "support/open.hpp"

namespace jx::test {
namespace {

constexpr uint32_t kHuge = std::numeric_limits<uint32_t>::max();

class Open : public InstanceTest {
 protected:
  std::string path = dir.file("file");
};

TEST_F(Open, Arguments) {
  const JXString name = jx(path);
  const JXOpenOptions options = open_options(JX_ACCESS_OUTPUT);
  JXStatus status = 1;
  const auto open = [&](JXInstance *through, const JXChar *text, uint32_t length,
                        const JXOpenOptions *given, JXStatus *out) {
    status = 1;
    return jxwemopen(through, text, length, given, 0, nullptr, nullptr, out);
  };
  EXPECT_EQ(open(instance, nullptr, 4, &options, &status), nullptr);
  EXPECT_EQ(status, JX_OK);
  EXPECT_EQ(open(instance, name.data(), 0, &options, &status), nullptr);
  EXPECT_EQ(status, JX_OK);
  EXPECT_EQ(open(instance, name.data(), chars(name), nullptr, &status), nullptr);
  EXPECT_EQ(status, JX_OK);
  EXPECT_EQ(open(instance, name.data(), chars(name), &options, nullptr), nullptr);
  EXPECT_EQ(open(nullptr, name.data(), chars(name), &options, &status), nullptr);
  EXPECT_EQ(status, JXWEM_E_NOHANDLE);
  EXPECT_EQ(host.count(Call::open_file), 0u);
}

TEST_F(Open, NameLength) {
  struct Row {
    size_t chars;
    JXStatus status;
  };
  for (const uint32_t flags : {0u, JX_OPEN_LITERAL_NAME}) {
    for (const Row &row : {Row{1024, JX_OK}, Row{1025, JXWEM_E_NAMETOOLONG}}) {
      std::string name = dir.path();
      name += std::string(row.chars - name.size() - 4, '/') + "file";
      JXOpenOptions options = open_options(JX_ACCESS_OUTPUT);
      options.open_flags = flags;
      const File file(instance, name, options);
      EXPECT_EQ(file.status, row.status) << row.chars << " flags " << flags;
      EXPECT_EQ(file != nullptr, row.status == JX_OK);
    }
  }
  for (const uint32_t length : {uint32_t{1} << 31, kHuge}) {
    const JXOpenOptions options = open_options();
    const JXString name = jx(path);
    JXStatus status = JX_OK;
    EXPECT_EQ(jxwemopen(instance, name.data(), length, &options, 0, nullptr, nullptr, &status),
              nullptr);
    EXPECT_EQ(status, JXWEM_E_NAMETOOLONG);
  }
}

TEST_F(Open, OptionErrors) {
  struct Row {
    uint32_t JXOpenOptions::*field;
    uint32_t first_bad;
    JXStatus status;
  };
  // In the order of the checks: with all of them bad, the first is the one reported.
  const Row rows[] = {
      {&JXOpenOptions::access_mode, 4, JXWEM_E_BADACCESS},
      {&JXOpenOptions::buffered, 2, JXWEM_E_BADBUFFERING},
      {&JXOpenOptions::record_format, 5, JXWEM_E_BADRECFORMAT},
      {&JXOpenOptions::reserved_switch, 2, JXWEM_E_BADSWITCH},
      {&JXOpenOptions::lock_mode, 5, JXWEM_E_BADLOCKMODE},
      {&JXOpenOptions::record_format, 2, JXWEM_E_BADRECFORMAT},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    for (const uint32_t value : {rows[i].first_bad, kHuge, 0x80000000u}) {
      JXOpenOptions options = open_options(JX_ACCESS_OUTPUT);
      options.*rows[i].field = value;
      EXPECT_EQ(File(instance, path, options).status, rows[i].status) << i << " value " << value;
    }
  }
  JXOpenOptions all_bad = open_options(JX_ACCESS_OUTPUT);
  for (size_t i = std::size(rows) - 1; i-- > 0;) {
    all_bad.*rows[i].field = rows[i].first_bad;
    EXPECT_EQ(File(instance, path, all_bad).status, rows[i].status) << "from row " << i;
  }
  for (const uint32_t format : {JX_FORMAT_VARIABLE, JX_FORMAT_VARIABLE_3}) {
    for (const uint32_t buffered : {0u, 1u}) {
      JXOpenOptions options = open_options(JX_ACCESS_OUTPUT, buffered, format);
      options.open_flags = JX_OPEN_DIRECT_TRANSFER;
      EXPECT_EQ(File(instance, path, options).status, JXWEM_E_BADOPTIONS);
    }
  }
  EXPECT_EQ(host.count(Call::open_file), 0u);
}

TEST_F(Open, HandleAndAttributes) {
  RecordingJournal journal;
  JXOpenOptions options = open_options(JX_ACCESS_UPDATE, 1, JX_FORMAT_STREAM);
  options.not_read = 77;
  options.reserved_switch = 1;
  options.lock_mode = JX_LOCK_EXCLUSIVE;
  options.journal = journal.journal();
  for (uint32_t i = 0; i < JX_USER_VALUE_COUNT; ++i) options.user_values[i] = 100 + i;
  struct Row {
    int32_t given;
    uint32_t held;
  };
  for (const Row &row : {Row{-1, 0}, Row{0, 0}, Row{2, 2}, Row{32, 32}, Row{33, 32},
                         Row{std::numeric_limits<int32_t>::min(), 0}}) {
    options.user_value_count = row.given;
    File file(instance, jx(path), options, "tag");
    ASSERT_TRUE(file) << row.given;
    EXPECT_EQ(std::memcmp(file->eye_catcher, JX_EYE_CATCHER, 4), 0);
    EXPECT_STREQ(file->caller_tag, "tag");
    const JXFileAttributes &attributes = file->attributes;
    EXPECT_EQ(narrow(attributes.name, attributes.name_chars), path);
    EXPECT_EQ(attributes.name[path.size()], 0u);
    EXPECT_EQ(attributes.access_mode, JX_ACCESS_UPDATE);
    EXPECT_EQ(attributes.buffered, 0u);
    EXPECT_EQ(attributes.record_length, 80u);
    EXPECT_EQ(attributes.zero, 0u);
    EXPECT_EQ(attributes.record_format, JX_FORMAT_STREAM);
    EXPECT_EQ(attributes.reserved_switch, 1u);
    EXPECT_EQ(attributes.lock_mode, JX_LOCK_EXCLUSIVE);
    EXPECT_EQ(attributes.user_value_count, row.held);
    for (uint32_t i = 0; i < row.held; ++i) EXPECT_EQ(attributes.user_values[i], 100 + i);
    EXPECT_EQ(handle_of(file)->journal, journal.journal());
  }
  const File untagged(instance, path, options);
  ASSERT_TRUE(untagged);
  EXPECT_EQ(untagged->caller_tag, nullptr);
}

TEST_F(Open, ByteOrderMarks) {
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
TEST_F(Open, Buffers) {
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
TEST_F(Open, HugeRecordLength) {
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

TEST_F(Open, ControlStrings) {
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

TEST_F(Open, FlagsAndLockWords) {
  struct Row {
    uint32_t access, lock, flags, lock_word;
  };
  const Row rows[] = {
      {0, 0, 0x41, 2},  {0, 1, 0x41, 0},  {0, 2, 0x42, 1},  {0, 3, 0x41, 2},  {0, 4, 0x41, 10},
      {1, 0, 0, 1},     {1, 1, 0, 0},     {1, 2, 0, 1},     {1, 3, 2, 2},     {1, 4, 0, 9},
      {2, 0, 0x241, 2}, {2, 1, 0x241, 0}, {2, 2, 0x242, 1}, {2, 3, 0x241, 2}, {2, 4, 0x241, 10},
      {3, 0, 0x42, 2},  {3, 1, 0x42, 0},  {3, 2, 0x42, 1},  {3, 3, 0x42, 2},  {3, 4, 0x42, 10},
  };
  RecordingJournal journal;
  write_file(path, "");
  for (const Row &row : rows) {
    SCOPED_TRACE("row " + std::to_string(&row - rows));
    JXOpenOptions options = open_options(row.access);
    options.lock_mode = row.lock;
    options.journal = journal.journal();
    const File file(instance, path, options);
    EXPECT_EQ(file.status, JX_OK);
    const OpenCall call = host.last_open();
    EXPECT_EQ(call.path, path);
    EXPECT_EQ(call.flags, row.flags);
    EXPECT_EQ(call.lock_word, row.lock_word);
    EXPECT_EQ(call.permissions, 0x1FFu);
    EXPECT_EQ(call.one, 1u);
    EXPECT_TRUE(call.zeros_are_zero);
    EXPECT_EQ(call.journal, journal.journal());
  }
  EXPECT_TRUE(journal.take_lines().empty());
}

TEST_F(Open, LiteralNames) {
  ASSERT_EQ(setenv("JX_TEST_DIR", dir.path().c_str(), 1), 0);
  JXOpenOptions options = open_options(JX_ACCESS_OUTPUT);
  EXPECT_EQ(File(instance, "$JX_TEST_DIR/a", options).status, JX_OK);
  EXPECT_EQ(host.last_open().path, dir.file("a"));
  options.open_flags = JX_OPEN_LITERAL_NAME;
  EXPECT_EQ(File(instance, "$JX_TEST_DIR/a", options).status, JXWEM_E_NOPATH);
  EXPECT_EQ(host.last_open().path, "$JX_TEST_DIR/a");
  EXPECT_EQ(File(instance, "~/jx", options).status, JXWEM_E_NOPATH);
  EXPECT_EQ(host.last_open().path, "~/jx");
}

TEST_F(Open, StatusesOfTheOpenFileExtension) {
  for (JXStatus code = 0x80ffe000u; code <= 0x80ffe017u; ++code) {
    JXStatus expected = JXWEM_E_SYSTEM;
    if (code == 0x80ffe001u) expected = JX_E_NOMEM;
    if (code == 0x80ffe006u) expected = JXWEM_E_NOTFOUND;
    if (code == 0x80ffe007u) expected = JXWEM_E_NOPATH;
    if (code == 0x80ffe009u) expected = JXWEM_E_ACCESS;
    if (code == 0x80ffe00eu) expected = JXWEM_E_OPENREFUSED;
    if ((code >= 0x80ffe00fu && code <= 0x80ffe013u) || code == 0x80ffe016u) {
      expected = JXWEM_E_INUSE;
    }
    host.arm(calls(Call::open_file), 0, code);
    EXPECT_EQ(File(instance, path, open_options()).status, expected) << std::hex << code;
  }
}

TEST_F(Open, WithoutTheOpenFileExtension) {
  FaultHost bare(JXHOST_ALL & ~JXHOST_ELM);
  const Instance other(bare);
  EXPECT_EQ(File(other, path, open_options()).status, JXWEM_E_SYSTEM);
  jxextent(host.host());
}

TEST_F(Open, AppendStandsAtTheEnd) {
  write_file(path, "12345");
  const File file(instance, path, open_options(JX_ACCESS_APPEND, 0));
  ASSERT_TRUE(file);
  int64_t offset = 0;
  EXPECT_EQ(file->note(file, &offset), JX_OK);
  EXPECT_EQ(offset, 5);
}

TEST_F(Open, AttachJournal) {
  RecordingJournal journal;
  EXPECT_EQ(jxwemattachjnl(nullptr, journal.journal()), JXWEM_E_NOHANDLE);
  EXPECT_EQ(jxwemclose(nullptr), JXWEM_E_NOHANDLE);
  const File file(instance, path, open_options(JX_ACCESS_OUTPUT));
  ASSERT_TRUE(file);
  host.arm(calls(Call::lock_acquire), 0);
  EXPECT_EQ(file->attach_journal(file, journal.journal()), kFaultStatus);
  EXPECT_EQ(handle_of(file)->journal, nullptr);
  host.arm(calls(Call::lock_release), 0);
  EXPECT_EQ(file->attach_journal(file, journal.journal()), kFaultStatus);
  EXPECT_EQ(handle_of(file)->journal, journal.journal());
  EXPECT_EQ(file->attach_journal(file, nullptr), JX_OK);
  EXPECT_EQ(handle_of(file)->journal, nullptr);
}

}  // namespace
}  // namespace jx::test
