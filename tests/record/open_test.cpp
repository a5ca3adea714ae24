// Opening and closing: every option and its status, what a handle reports, and how its file is
// opened.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

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
    EXPECT_EQ(call.words, (std::vector<uint32_t>{0x1FF, row.flags, 0, 0, 0, 0, 1, row.lock_word}));
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
