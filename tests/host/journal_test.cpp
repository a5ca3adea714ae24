#include <fcntl.h>
#include <unistd.h>

#include <sstream>
#include <thread>

#include "host/test_host.hpp"
#include "jx/runtime.h"
#include "support/files.hpp"

namespace jx::test {
namespace {

// A host whose journal goes to a file.
struct FileJournal {
  FileJournal() {
    JXHostConfig config = JXHOST_CONFIG_INIT;
    fd = config.journal_fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    host = jxhost_create(&config);
  }
  ~FileJournal() {
    EXPECT_EQ(jxhost_destroy(host), 0u);
    close(fd);
  }
  JXJournal *get() { return jxhost_journal(host); }

  TempDir dir;
  std::string path = dir.file("journal");
  int fd;
  JXHost *host;
};

// The same texts for the descriptor, which gets whole lines, and for a sink, which gets the text.
TEST(Journal, ShowsEveryTextOnOneLine) {
  constexpr JXChar kNone[] = {0}, kPlain[] = {'a', 0xE9, 0x20AC, 0x1F600, 0},
                   kBad[] = {0xD800, 0xDFFF, 0x110000, 0xFFFFFFFF, 'z', 0},
                   kControls[] = {'a', '\n', 0x1B, 0x7F, 0x85, 0x2028, 0};
  struct Row {
    uint32_t level;
    JXStatus status;
    const JXChar *text;
    const char *prefix;
    const char *shown;
  };
  const Row rows[] = {
      {4, JXWEM_E_SYSTEM, kPlain,
       "error: JXWEM_E_SYSTEM 0x80bfe815: system error: ", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {3, JXELM_E_LOOP, kBad, "warning: JXELM_E_LOOP 0x80ffe00a: too many links on the path: ",
       "\\u{d800}\\u{dfff}\\u{110000}\\u{ffffffff}z"},
      {2, JX_OK, kControls,
       "note: JX_OK 0x00000000: success: ", "a\\u{a}\\u{1b}\\u{7f}\\u{85}\\u{2028}"},
      {0, 0x12345678, kPlain + 3, "level 0: status 0x12345678: ", "\xF0\x9F\x98\x80"},
      {99, JX_E_NOMEM, nullptr, "level 99: JX_E_NOMEM 0x803fc002: ", "out of memory"},
      {5, JX_E_NOMEM, kNone, "fatal: JX_E_NOMEM 0x803fc002: ", "out of memory"},
  };
  TestHost host;
  for (const Row &row : rows) {
    FileJournal file;
    EXPECT_EQ(jxlStatusToJnl(file.get(), row.level, row.status, row.text), JX_OK);
    EXPECT_EQ(read_file(file.path), std::string(row.prefix) + row.shown + "\n");
    EXPECT_EQ(jxlStatusToJnl(host.journal(), row.level, row.status, row.text), JX_OK);
    const auto lines = host.take_lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].ends_with(std::string(" ") + row.shown)) << lines[0];
  }
}

TEST(Journal, RendersMessagesAndFillsBuffers) {
  TestHost host;
  const JXString a = jx("one"), b = jx("two");
  EXPECT_EQ(jxlMessageToJnl(host.journal(), 2, 77, 2, a.c_str(), b.c_str()), JX_OK);
  EXPECT_EQ(jxlMessageToJnl(host.journal(), 4, JXWEM_E_EXISTS, 1, a.c_str()), JX_OK);
  EXPECT_EQ(jxlMessageToJnl(host.journal(), 4, 77, 17), JX_E_BADARG);
  const auto lines = host.take_lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "2 77 message 77: one, two");
  EXPECT_EQ(lines[1], "4 JXWEM_E_EXISTS the target exists already: one");

  const std::string kMessage = "message 5: one, two";
  const std::string kStatus = "JX_E_NOMEM 0x803fc002: out of memory: one";
  for (uint32_t room = 0; room <= 50; ++room) {
    JXChar buffer[51];
    const auto word = reinterpret_cast<uintptr_t>(buffer);
    uint32_t length = 99;
    const auto length_word = reinterpret_cast<uintptr_t>(&length);
    buffer[room] = 0xABCD;
    EXPECT_EQ(jxlMessageToBuf(host.journal(), word, room, length_word, 5, 2, a.c_str(), b.c_str()),
              room < kMessage.size() ? JX_E_TRUNCATED : JX_OK);
    EXPECT_EQ(narrow(buffer, length), kMessage.substr(0, room));
    EXPECT_EQ(jxlStatusToBuf(host.journal(), word, room, length_word, JX_E_NOMEM, a.c_str()),
              room < kStatus.size() ? JX_E_TRUNCATED : JX_OK);
    EXPECT_EQ(narrow(buffer, length), kStatus.substr(0, room));
    EXPECT_EQ(buffer[room], 0xABCDu);
  }
  EXPECT_EQ(jxlStatusToBuf(host.journal(), 0, 1, 0, JX_E_NOMEM, nullptr), JX_E_BADARG);
}

TEST(Journal, CutsALongTextVisiblyWithinOnePipeWrite) {
  FileJournal file;
  const JXString text(5000, 0x1F600);
  EXPECT_EQ(jxlStatusToJnl(file.get(), 4, JX_E_NOMEM, text.c_str()), JX_OK);
  const std::string line = read_file(file.path);
  EXPECT_GT(line.size(), 3900u);
  EXPECT_LE(line.size(), 4096u);
  EXPECT_TRUE(line.ends_with("\xF0\x9F\x98\x80\xE2\x80\xA6\n"));
}

TEST(Journal, SaysWhenItCannotWrite) {
  JXHostConfig config = JXHOST_CONFIG_INIT;
  config.journal_fd = open("/dev/full", O_WRONLY | O_CLOEXEC);
  JXHost *host = jxhost_create(&config);
  EXPECT_EQ(jxlStatusToJnl(jxhost_journal(host), 4, JX_E_NOMEM, nullptr), JXHOST_E_OUTPUT);
  EXPECT_EQ(jxhost_destroy(host), 0u);
  close(config.journal_fd);
}

TEST(Journal, ThreadsWriteWholeLines) {
  FileJournal file;
  constexpr int kLines = 500;
  const auto write_lines = [&](char mark) {
    const JXString text(200, static_cast<JXChar>(mark));
    for (int i = 0; i < kLines; ++i) {
      EXPECT_EQ(jxlStatusToJnl(file.get(), 4, 0x1, text.c_str()), JX_OK);
    }
  };
  std::thread first(write_lines, 'a'), second(write_lines, 'b');
  first.join();
  second.join();
  std::istringstream lines(read_file(file.path));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    ASSERT_EQ(line, "error: status 0x00000001: " + std::string(200, line.back()));
  }
  EXPECT_EQ(count, 2 * kLines);
}

}  // namespace
}  // namespace jx::test
