// Input of commands: descriptors, live pipes, byte orders and shift states.
#include <algorithm>

#include "cli/program.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

class Input : public ProgramTest {
 protected:
  // The output of a script in which $J is jxfile, or "timeout".
  std::string script(const std::string &text) {
    const std::string program = "J=" JX_BINARY_DIR "/jxfile\n" + text;
    const Outcome outcome = run({"/usr/bin/timeout", "10", "/bin/sh", "-c", program});
    return outcome.code == 124 ? "timeout" : outcome.out + outcome.err;
  }

  void expect_refused(const std::string &arguments, const std::string &message) {
    const Outcome outcome = jxfile(arguments);
    EXPECT_EQ(outcome.code, 1) << arguments;
    EXPECT_NE(outcome.err.find(message), outcome.err.npos) << arguments << outcome.err;
  }
};

struct MarkRow {
  std::string_view bytes;
  const char *arguments;
  std::string_view expected;
};

// A missing return to the initial state at the end of a text is not a cut character.
TEST_F(Input, ShiftingEncodingsNeedNoLineEnd) {
  std::string longer = "a\n";
  while (longer.size() < 200000) longer += "\u4e00b\u4e00";
  for (const std::string encoding : {"iso-2022-jp", "utf-7", "930", "933", "935", "937", "939",
                                     "1364", "1371", "1388", "1390", "1399"}) {
    for (const std::string &text : {"\u4e00"s, longer}) {
      put("in", text);
      const Outcome there = jxfile("convert in there --to " + encoding);
      const Outcome back = jxfile("convert there back --from " + encoding);
      EXPECT_EQ(there.err + back.err, "") << encoding;
      EXPECT_TRUE(get("back") == text) << encoding;
      if (encoding == "utf-7") continue;
      EXPECT_TRUE(jxfile("lines - --from " + encoding, get("there")).out == text) << encoding;
    }
  }
}

TEST_F(Input, MarksDecideTheByteOrder) {
  const MarkRow rows[] = {
      {"\xfe\xff\0a"sv, "--from utf-16 --no-bom", "a"},
      {"\xff\xfe\x61\0"sv, "--from UTF16 --no-bom --records text", "a\n"},
      {"a\0"sv, "--from utf_16", "a"},
      {"\0\0\xfe\xff\0\0\0a"sv, "--from utf-32 --to utf-16be", "\xfe\xff\0a"sv},
      {"a", "--to utf-16", "\xff\xfe\x61\0"sv},
      {"a", "--to utf-32", "\xff\xfe\0\0a\0\0\0"sv},
      {"a", "--to utf-16 --no-bom", "a\0"sv},
  };
  for (const MarkRow &row : rows) {
    put("in", row.bytes);
    EXPECT_EQ(jxfile("convert in out "s + row.arguments).err, "");
    EXPECT_EQ(get("out"), row.expected) << row.arguments;
  }
  // An append keeps the byte order of the file.
  put("out", "\xfe\xff\0a"sv);
  EXPECT_EQ(jxfile("convert in out --append --to utf-16").err, "");
  EXPECT_EQ(jxfile("write out --append --records stream --to utf-16", "b").err, "");
  EXPECT_EQ(get("out"), "\xfe\xff\0a\0a\0b"sv);
}

// Each line is printed as it comes: the script sends the next one only after that.
TEST_F(Input, PipesAreReadAsTheyCome) {
  const std::string half = "; { echo a; cat go; } | $J ";
  const std::string other = " - | { read line; echo b > go; echo \"$line\"; cat; }";
  for (const std::string command :
       {"lines", "lines -n", "lines --mark", "lines --json", "lines --direct", "bytes --raw",
        "lines --from ibm1047 --records fixed:2"}) {
    const std::string both = script("rm -f go; mkfifo go" + half + command + other);
    EXPECT_EQ(std::count(both.begin(), both.end(), '\n'), 2) << command << "\n" << both;
    EXPECT_NE(script("yes | $J " + command + " - | head -c 99"), "timeout") << command;
  }
}

// The open descriptor is read, from its current offset and no further than needed.
TEST_F(Input, StandardInput) {
  put("in", "0123\n56\n");
  const std::string_view rows[][2] = {
      {"{ read x; $J lines --mark -; } < in", "[2 lf] 56\n"},
      {"{ read x; $J lines --direct /dev/fd/0; } < in", "56\n"},
      {"{ read x; $J convert --records text - out; cat out; } < in", "56\n"},
      {"{ $J bytes --raw --offset 1 --count 2 /dev/stdin; cat; } < in", "123\n56\n"},
      {"cat in | { $J bytes --raw --offset 1 --count 2 -; cat; }", "123\n56\n"},
      {"$J lines /proc/self/fd/7 7< in", "0123\n56\n"},
      {"{ sleep 0.1; echo a; sleep 0.1; echo b; } | { dd iflag=nonblock count=0 status=none; "
       "$J write out; cat out; }",
       "a\nb\n"},
  };
  for (const auto &[text, expected] : rows) EXPECT_EQ(script(std::string(text)), expected) << text;
  const bool as_nobody = ::geteuid() == 0 && jxfile("status", {}, true).code == 0;
  for (const char *command : {"lines -", "bytes -", "convert - new"}) {
    expect_refused(command + " <&-"s, "standard input: the descriptor is not open");
    EXPECT_EQ(jxfile(command, "x", as_nobody).err, "") << "another user's pipe";
  }
  for (const char *command : {"lines in >> in", "lines - < in >> in", "bytes in >> in"}) {
    expect_refused(command, "input and output are the same file");
  }
  expect_refused("lines - < .", "hint: a directory cannot be opened as a file");
  EXPECT_EQ(get("in"), "0123\n56\n");
}

}  // namespace
}  // namespace jx::test
