// Opening and closing: every option and its status, the attributes of a handle, and the request to
// "jxelm".
#include <gtest/gtest.h>

#include <algorithm>
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
  struct Row {
    JXInstance *through;
    const JXChar *text;
    uint32_t length;
    const JXOpenOptions *options;
    JXStatus status;
  };
  const Row rows[] = {{instance, nullptr, 4, &options, JX_OK},
                      {instance, name.data(), 0, &options, JX_OK},
                      {instance, name.data(), 4, nullptr, JX_OK},
                      {nullptr, name.data(), 4, &options, JXWEM_E_NOHANDLE},
                      {instance, name.data(), 1025, &options, JXWEM_E_NAMETOOLONG},
                      {instance, name.data(), 1u << 31, &options, JXWEM_E_NAMETOOLONG},
                      {instance, name.data(), kHuge, &options, JXWEM_E_NAMETOOLONG}};
  for (const Row &row : rows) {
    JXStatus status = 1;
    EXPECT_EQ(
        jxwemopen(row.through, row.text, row.length, row.options, 0, nullptr, nullptr, &status),
        nullptr);
    EXPECT_EQ(status, row.status) << "row " << &row - rows;
  }
  EXPECT_EQ(jxwemopen(instance, name.data(), 4, &options, 0, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(host.count(Call::open_file), 0u);
}

TEST_F(Open, OptionErrors) {
  struct Row {
    uint32_t JXOpenOptions::*field;
    uint32_t first_bad;
    JXStatus status;
  };
  // In the order of the checks: the first invalid option is reported.
  const Row rows[] = {
      {&JXOpenOptions::access_mode, 4, JXWEM_E_BADACCESS},
      {&JXOpenOptions::buffered, 2, JXWEM_E_BADBUFFERING},
      {&JXOpenOptions::record_format, 5, JXWEM_E_BADRECFORMAT},
      {&JXOpenOptions::reserved_switch, 2, JXWEM_E_BADSWITCH},
      {&JXOpenOptions::lock_mode, 5, JXWEM_E_BADLOCKMODE},
      {&JXOpenOptions::record_format, 2, JXWEM_E_BADRECFORMAT},
  };
  JXOpenOptions all_bad = open_options(JX_ACCESS_OUTPUT);
  for (size_t i = std::size(rows); i-- > 0;) {
    for (const uint32_t value : {rows[i].first_bad, kHuge, 0x80000000u}) {
      JXOpenOptions options = open_options(JX_ACCESS_OUTPUT);
      options.*rows[i].field = value;
      EXPECT_EQ(File(instance, path, options).status, rows[i].status) << i << " value " << value;
    }
    all_bad.*rows[i].field = rows[i].first_bad;
    EXPECT_EQ(File(instance, path, all_bad).status, rows[i].status) << "from row " << i;
  }
  JXOpenOptions transfer = open_options(JX_ACCESS_OUTPUT, 1, JX_FORMAT_VARIABLE_3);
  transfer.open_flags = JX_OPEN_DIRECT_TRANSFER;
  EXPECT_EQ(File(instance, path, transfer).status, JXWEM_E_BADOPTIONS);
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
  for (const int32_t given : {-1, 0, 2, 32, 33, std::numeric_limits<int32_t>::min()}) {
    options.user_value_count = given;
    const auto held = static_cast<uint32_t>(std::clamp(given, 0, 32));
    File file(instance, jx(path), options, "tag");
    ASSERT_TRUE(file) << given;
    EXPECT_EQ(std::memcmp(file->eye_catcher, JX_EYE_CATCHER, 4), 0);
    EXPECT_STREQ(file->caller_tag, "tag");
    const JXFileAttributes &attributes = file->attributes;
    EXPECT_EQ(narrow(attributes.name, attributes.name_chars), path);
    EXPECT_EQ(attributes.name[path.size()], 0u);
    const uint32_t *words = &attributes.access_mode;
    EXPECT_EQ(
        std::vector(words, words + 7),
        (std::vector{JX_ACCESS_UPDATE, 0u, 80u, 0u, JX_FORMAT_STREAM, 1u, JX_LOCK_EXCLUSIVE}));
    EXPECT_EQ(attributes.user_value_count, held);
    EXPECT_EQ(std::memcmp(attributes.user_values, options.user_values, held * 4), 0);
    EXPECT_EQ(handle_of(file)->journal, journal.journal());
  }
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
    const OpenCall call = host.last_open();
    EXPECT_EQ(call.path, path);
    EXPECT_EQ(call.words, (std::vector<uint32_t>{0x1FF, row.flags, 0, 0, 0, 0, 1, row.lock_word}));
    EXPECT_EQ(call.journal, journal.journal());
  }
  EXPECT_TRUE(journal.take_lines().empty());
}

TEST_F(Open, Names) {
  ASSERT_EQ(setenv("JX_TEST_DIR", dir.path().c_str(), 1), 0);
  const std::string long_name = dir.path() + std::string(1020 - dir.path().size(), '/') + "file";
  JXOpenOptions options = open_options(JX_ACCESS_OUTPUT);
  for (const uint32_t flags : {0u, JX_OPEN_LITERAL_NAME}) {
    options.open_flags = flags;
    EXPECT_EQ(File(instance, long_name, options).status, JX_OK) << flags;
    EXPECT_EQ(File(instance, long_name + "x", options).status, JXWEM_E_NAMETOOLONG) << flags;
    EXPECT_EQ(File(instance, "$JX_TEST_DIR/a", options).status, flags ? JXWEM_E_NOPATH : JX_OK);
    EXPECT_EQ(host.last_open().path, flags ? "$JX_TEST_DIR/a" : dir.file("a"));
  }
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
  // Nor without a host to make the lock.
  jxextent(nullptr);
  EXPECT_EQ(File(instance, path, open_options()).status, JXWEM_E_FAILED);
  jxextent(host.host());
}

TEST_F(Open, AttachJournal) {
  RecordingJournal journal;
  const File file(instance, path, open_options(JX_ACCESS_OUTPUT));
  ASSERT_TRUE(file);
  for (JXJournal *attached : {journal.journal(), static_cast<JXJournal *>(nullptr)}) {
    EXPECT_EQ(file->attach_journal(file, attached), JX_OK);
    EXPECT_EQ(handle_of(file)->journal, attached);
  }
}

}  // namespace
}  // namespace jx::test
