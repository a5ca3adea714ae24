#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <numeric>
#include <tuple>

#include "host/test_host.hpp"
#include "jx/runtime.h"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

TEST(Journal, ShowsEveryTextOnOneLine) {
  constexpr JXChar kPlain[] = {'a', 0xE9, 0x20AC, 0x1F600, 0};
  constexpr JXChar kBad[] = {0xD800, 0x110000, 0xFFFFFFFF, '\n',   0x1B,   0x7F,
                             0x85,   0x2028,   0xAD,       0x200B, 0x2010, 0x202E,
                             0x2066, 0xFEFF,   0xE0041,    'z',    0};
  const JXString long_text(5000, 'x');
  const std::tuple<uint32_t, JXStatus, const JXChar *, std::string> rows[] = {
      {4, JXWEM_E_SYSTEM, kPlain,
       "error: JXWEM_E_SYSTEM 0x80bfe815: system error: a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {0, 0x12345678, kBad,
       "level 0: status 0x12345678: \\u{d800}\\u{110000}\\u{ffffffff}"
       "\\u{a}\\u{1b}\\u{7f}\\u{85}\\u{2028}"
       "\\u{ad}\\u{200b}\xE2\x80\x90\\u{202e}\\u{2066}\\u{feff}\\u{e0041}z"},
      {99, JX_E_NOMEM, nullptr, "level 99: JX_E_NOMEM 0x803fc002: out of memory"},
      {1, 1, long_text.c_str(),
       "trace: status 0x00000001: " + std::string(993, 'x') + "\xE2\x80\xA6"},
  };
  int ends[2];  // a read gives what one write has put there
  ASSERT_EQ(pipe2(ends, O_DIRECT | O_CLOEXEC | O_NONBLOCK), 0);
  JXHostConfig config = JXHOST_CONFIG_INIT;
  config.journal_fd = ends[1];
  TestHost host(config);
  for (const auto &[level, status, text, line] : rows) {
    EXPECT_EQ(jxlStatusToJnl(host.journal(), level, status, text), JX_OK);
    char written[PIPE_BUF];
    const ssize_t bytes = read(ends[0], written, sizeof written);
    EXPECT_EQ(std::string(written, bytes > 0 ? static_cast<size_t>(bytes) : 0), line + "\n");
  }
  // The rest of what is written in part follows.
  arm_syscalls(syscalls(Syscall::write), {.most_bytes = 5});
  EXPECT_EQ(jxlMessageToJnl(host.journal(), 2, 77, 0), JX_OK);
  EXPECT_TRUE(disarm_syscalls());
  char written[PIPE_BUF] = "";
  EXPECT_EQ(read(ends[0], written, sizeof written), 5);
  EXPECT_GT(read(ends[0], written, sizeof written), 0);
  EXPECT_STREQ(written, " message 77\n");
  for (const int end : ends) close(end);
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

  JXChar meaning[80] = {};
  uint32_t chars = 0;
  EXPECT_EQ(jxlStatusToBuf(host.journal(), reinterpret_cast<uintptr_t>(meaning), 80,
                           reinterpret_cast<uintptr_t>(&chars), JXWEM_E_EXISTS, a.c_str()),
            JX_OK);
  EXPECT_EQ(narrow(meaning, chars), "JXWEM_E_EXISTS 0x80bfe81e: the target exists already: one");
  const std::string message = "message 5: one, two";
  for (uint32_t room = 0; room < 25; ++room) {
    JXChar buffer[25] = {};
    uint32_t length = 99;
    EXPECT_EQ(jxlMessageToBuf(host.journal(), reinterpret_cast<uintptr_t>(buffer), room,
                              reinterpret_cast<uintptr_t>(&length), 5, 2, a.c_str(), b.c_str()),
              room < message.size() ? JX_E_TRUNCATED : JX_OK);
    EXPECT_EQ(narrow(buffer, length), message.substr(0, room));
    EXPECT_EQ(buffer[room], 0u) << room;
  }
  // Of all characters and one too large, 6292 are not to be shown; a backslash is.
  JXString all(0x110000, 0), shown(0x120000, 0);
  std::iota(all.begin(), all.end(), 1);
  EXPECT_EQ(jxlMessageToBuf(host.journal(), reinterpret_cast<uintptr_t>(shown.data()), shown.size(),
                            0, 5, 1, all.c_str()),
            JX_OK);
  EXPECT_EQ(std::ranges::count(shown, '\\'), 6292 + 1);
}

}  // namespace
}  // namespace jx::test
