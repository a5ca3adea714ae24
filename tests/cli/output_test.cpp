// What commands lay out themselves: numbers, dumps, escapes, and lines that are checked in blocks.
#include <cstdio>
#include <cstdlib>

#include "cli/program.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

class Printed : public ProgramTest {};

// A row of a dump, in the plainest way.
std::string dump_row(unsigned long long offset, const std::string &bytes) {
  char text[40];
  std::snprintf(text, sizeof text, "%08llx ", offset);
  std::string row = text;
  std::string shown;
  for (size_t i = 0; i < 16; ++i) {
    const auto byte = static_cast<unsigned char>(i < bytes.size() ? bytes[i] : 0);
    std::snprintf(text, sizeof text, i < bytes.size() ? " %02x" : "   ", byte);
    row += (i == 8 ? " " : "") + std::string(text);
    if (i < bytes.size()) shown += byte >= 0x20 && byte < 0x7f ? static_cast<char>(byte) : '.';
  }
  return row + "  |" + shown + "|\n";
}

TEST_F(Printed, DumpsOfEveryLength) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i * 7);
  for (size_t length = 0; length <= bytes.size(); length += length < 34 ? 1 : 37) {
    put("in", bytes.substr(0, length));
    std::string dump;
    for (size_t at = 0; at < length; at += 16) {
      dump += dump_row(at, bytes.substr(at, std::min<size_t>(16, length - at)));
    }
    EXPECT_EQ(jxfile("bytes in").out, dump) << length;
  }
  // Offsets grow beyond their eight digits.
  std::filesystem::resize_file(at("in"), 0x100000003);
  EXPECT_EQ(jxfile("bytes --offset 0xfffffff8 in").out,
            dump_row(0xfffffff8, "\0\0\0\0\0\0\0\0\0\0\0"s));
  EXPECT_EQ(jxfile("bytes --offset 4G in").out, dump_row(0x100000000, "\0\0\0"s));
}

TEST_F(Printed, NumbersGrow) {
  put("in", std::string(1000001, '\n') + "x");
  for (const char *command : {"lines -n in", "lines -n --from ascii in", "lines -n - < in"}) {
    const std::string out = jxfile(command).out;
    EXPECT_TRUE(out.starts_with("     1  \n     2  \n")) << command;
    EXPECT_NE(out.find("\n     9  \n    10  \n"), out.npos) << command;
    EXPECT_NE(out.find("\n 99999  \n100000  \n"), out.npos) << command;
    EXPECT_TRUE(out.ends_with("\n999999  \n1000000  \n1000001  \n1000002  x")) << command;
  }
}

struct Escape {
  const char *text;
  const char *json;
};

TEST_F(Printed, EscapesInJson) {
  const Escape rows[] = {
      {"plain /~", "plain /~"},
      {"\"\\", R"(\"\\)"},
      {"\b\f\r\t", R"(\b\f\r\t)"},
      {"\x01\x1f\x7f", R"(\u0001\u001f\u007f)"},
      {"a\"b\x1b", R"(a\"b\u001b)"},
      {"\u0080\u00a0\u00ad", "\\u0080\u00a0\\u00ad"},
      {"\u07ff\u0800\u202e\u2030", "\u07ff\u0800\\u202e\u2030"},
      {"\ufdd0\ufffd\ufffe", "\\ufdd0\ufffd\\ufffe"},
      {"\U0001f600\U0001ffff\U000e0041\U00010fff",
       "\U0001f600\\ud83f\\udfff\\udb40\\udc41\U00010fff"},
  };
  for (const Escape &row : rows) {
    put("in", row.text + "x"s);
    const std::string start = R"({"file":"in","line":1,"text":")"s + row.json;
    const std::string out = jxfile("lines --json in").out;
    EXPECT_TRUE(out.starts_with(start + R"(x","length":)")) << out;
  }
  // Every character: 164 below 0x10000 that are not to be seen have one \u, 4128 above it two.
  std::u32string all;
  for (char32_t c = 0; c < 0x110000; c += c == 0xd7ff ? 0x801 : 1) {
    all.append(c % 1000 == 999 ? 2 : 1, U'\n').back() = c;
  }
  put("all", {reinterpret_cast<const char *>(all.data()), 4 * all.size()});
  const std::string out = jxfile("lines --json --from utf-32le all").out;
  size_t count = 0;
  for (size_t at = 0; (at = out.find("\\u", at)) != out.npos; ++at) ++count;
  EXPECT_EQ(count, 164u + 2 * 4128);
}

TEST_F(Printed, ColourOnATerminalOnly) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_EQ(::grantpt(terminal) | ::unlockpt(terminal), 0);
  const std::string failure = JX_BINARY_DIR "/jxfile info gone 2>"s + ::ptsname(terminal);
  for (const auto &[variables, start] :
       {std::pair("NO_COLOR= ", "\033[1;31mjxfile:\033[0m info: gone"),
        std::pair("NO_COLOR=1 ", "jxfile: info: gone")}) {
    run({"/bin/sh", "-c", variables + failure});
    std::array<char, 4096> shown = {};
    EXPECT_GT(::read(terminal, shown.data(), shown.size() - 1), 0);
    EXPECT_TRUE(std::string_view(shown.data()).starts_with(start)) << shown.data();
  }
  ::close(terminal);
}

struct Checked {
  std::string_view text;
  const char *options;
  std::string_view out;
  const char *place;  // of the fault; "" for none
};

// The text is checked after it was gathered: what comes before a fault is printed, and nothing
// else.
TEST_F(Printed, WhatComesBeforeAFault) {
  const std::string lines = [] {
    std::string text;
    while (text.size() < 200000) text += "z\xc3\xa4hlen\n";
    return text;
  }();
  const std::string faulty = lines + "\xff\nafter\n";
  const std::string cut = lines + "\xe6\xbc";
  const std::string joined = "\xe6\xbc\n\xa2\n";
  std::string each, numbered;  // lines of every length
  for (size_t length = 0; length <= 70; ++length) {
    const std::string line = std::string(length, 'x') + "\n", number = std::to_string(length + 1);
    each += line;
    numbered += std::string(6 - number.size(), ' ') + number + "  " + line;
  }
  const Checked rows[] = {
      {lines, "", lines, ""},
      {each, "-n", numbered, ""},
      {faulty, "", lines, "record 25001, byte offset 200000, bytes ff "},
      {cut, "", lines, "bytes e6 bc, cut off by the end of the file"},
      {joined, "", "", "record 1, byte offset 0, bytes e6 bc 0a "},
      {"a\n\xff\n", "-n", "     1  a\n", "record 2"},
      {"a\nbcd\xff\n", "--record-length 2", "a\nbc", "record 2, byte offset 5, bytes ff "},
      {"\xe6\xbc\xa2\xe6\xbc\xa2\nb", "--record-length 2", "\xe6\xbc\xa2\xe6\xbc\xa2\nb", ""},
      {"\xe6\xbc\xa2\xe6\xbc", "--record-length 4", "\xe6\xbc\xa2", "cut off"},
      {{"a\0b\0c\0d\0e\0\n\0", 12},
       "--mark --from utf-16le --record-length 5",
       "[4 part] abcd\n[1 lf] e\n",
       ""},
      {"\xef\xbb\xbf"
       "a\r\nb\r",
       "", "a\nb\r", ""},
  };
  for (const Checked &row : rows) {
    put("in", row.text);
    const Outcome outcome = jxfile("lines in "s + row.options);
    EXPECT_EQ(outcome.out, row.out) << row.place;
    EXPECT_EQ(outcome.code, *row.place ? 1 : 0) << row.place;
    EXPECT_NE(outcome.err.find(row.place), outcome.err.npos) << outcome.err;
  }
}

TEST_F(Printed, CommandLinesThatNeedTheParser) {
  put("in", "a\n");
  put("-n", "b\n");
  put("[x]", "c\n");
  check({
      {0, "lines -n in", "     1  a\n"},
      {0, "lines in --number --from utf-8", "     1  a\n"},
      {0, "lines -nn in", "     1  a\n"},
      {0, "lines -n -n --from=utf-8 in", "     1  a\n"},
      {0, "lines '[x]' in -- -n", "c\na\nb\n"},
      {0, "lines --color=never '[x]' in -- -n '[x]'", "c\na\nb\nc\n"},
      {2, "truncate in 1 -- 2", "", "'2' is one operand too many"},
      {2, "lines --from utf-8 --from latin1 in", "", "--from takes one value and is given once"},
      {2, "lines --from", "", "--from takes one value"},
      {2, "lines --number=1 in", "", "lines: --number takes no value"},
      {2, "bytes --count 1a in", "", "'1a' is not a number"},
      {2, "lines ''", "", "FILE is empty"},
      {2, "cp in", "", "NEW"},
      {1, "cp in new more", "", "more: it is not a directory"},
      {2, "lines --nope in", "", "'--nope' is not an option"},
      {0, "version --help", "~^Prints the module's versions"},
  });
}

}  // namespace
}  // namespace jx::test
