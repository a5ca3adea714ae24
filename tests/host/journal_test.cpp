#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <thread>

#include "host/test_host.hpp"
#include "jx/runtime.h"
#include "support/files.hpp"

namespace jx::test {
namespace {

// A host whose journal goes to a file.
struct FileJournal {
  static JXHostConfig config_for(int fd) {
    JXHostConfig config = JXHOST_CONFIG_INIT;
    config.journal_fd = fd;
    return config;
  }
  ~FileJournal() { close(fd); }

  TempDir dir;
  std::string path = dir.file("journal");
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  TestHost host{config_for(fd)};
};

TEST(Journal, ShowsEveryTextOnOneLine) {
  constexpr JXChar kPlain[] = {'a', 0xE9, 0x20AC, 0x1F600, 0};
  constexpr JXChar kBad[] = {0xD800, 0x110000, 0xFFFFFFFF, 'z', 0};
  constexpr JXChar kControls[] = {'a', '\n', 0x1B, 0x7F, 0x85, 0x2028, 0};
  const JXString long_text(5000, 'x');
  const struct {
    uint32_t level;
    JXStatus status;
    const JXChar *text;
    std::string line;
  } rows[] = {
      {4, JXWEM_E_SYSTEM, kPlain,
       "error: JXWEM_E_SYSTEM 0x80bfe815: system error: a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {0, 0x12345678, kBad, "level 0: status 0x12345678: \\u{d800}\\u{110000}\\u{ffffffff}z"},
      {2, JX_OK, kControls,
       "note: JX_OK 0x00000000: success: a\\u{a}\\u{1b}\\u{7f}\\u{85}\\u{2028}"},
      {99, JX_E_NOMEM, nullptr, "level 99: JX_E_NOMEM 0x803fc002: out of memory"},
      {1, 1, long_text.c_str(),
       "trace: status 0x00000001: " + std::string(993, 'x') + "\xE2\x80\xA6"},
  };
  FileJournal file;
  std::string expected;
  for (const auto &row : rows) {
    EXPECT_EQ(jxlStatusToJnl(file.host.journal(), row.level, row.status, row.text), JX_OK);
    EXPECT_EQ(read_file(file.path), expected += row.line + "\n");
  }
}

TEST(Journal, RendersMessagesAndFillsBuffers) {
  TestHost host;
  const JXString a = jx("one"), b = jx("two");
  EXPECT_EQ(jxlMessageToJnl(host.journal(), 2, 77, 2, a.c_str(), b.c_str()), JX_OK);
  EXPECT_EQ(jxlMessageToJnl(host.journal(), 4, JXWEM_E_EXISTS, 1, a.c_str()), JX_OK);
  EXPECT_EQ(jxlMessageToJnl(host.journal(), 4, 77, 17), JX_E_BADARG);
  EXPECT_EQ(host.take_lines(),
            (std::vector<std::string>{"2 77 message 77: one, two",
                                      "4 JXWEM_E_EXISTS the target exists already: one"}));

  JXChar buffer[50];
  uint32_t length = 0;
  const auto word = reinterpret_cast<uintptr_t>(buffer);
  const auto length_word = reinterpret_cast<uintptr_t>(&length);
  const auto check = [&](JXStatus status, uint32_t room, const std::string &text) {
    EXPECT_EQ(status, room < text.size() ? JX_E_TRUNCATED : JX_OK) << room;
    EXPECT_EQ(narrow(buffer, length), text.substr(0, room));
    EXPECT_EQ(buffer[room], 0xBADu);
    std::ranges::fill(buffer, 0xBADu);
  };
  std::ranges::fill(buffer, 0xBADu);
  for (uint32_t room = 0; room < 50; ++room) {
    check(jxlMessageToBuf(host.journal(), word, room, length_word, 5, 2, a.c_str(), b.c_str()),
          room, "message 5: one, two");
    check(jxlStatusToBuf(host.journal(), word, room, length_word, JX_E_NOMEM, a.c_str()), room,
          "JX_E_NOMEM 0x803fc002: out of memory: one");
  }
}

TEST(Journal, ThreadsWriteWholeLines) {
  FileJournal file;
  const auto write_lines = [&](JXChar mark) {
    const JXString text(200, mark);
    for (int i = 0; i < 500; ++i) {
      EXPECT_EQ(jxlStatusToJnl(file.host.journal(), 4, 1, text.c_str()), JX_OK);
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
  EXPECT_EQ(count, 1000);
}

}  // namespace
}  // namespace jx::test
