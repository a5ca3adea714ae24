// Records of one length, and records after their length.
#include "cli/program.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

class Records : public ProgramTest {
 protected:
  // The same form in both options.
  static std::string to(const std::string &form) { return " --to-records " + form + " "; }
  static std::string from(const std::string &form) { return " --records " + form + " "; }
};

TEST_F(Records, AreThoseBytes) {
  const std::pair<std::string, std::string> forms[] = {
      {"fixed:3", "ab c     "},
      {"rdw", "\0\6\0\0ab\0\5\0\0c\0\4\0\0"s},
      {"bdw", "\0\x13\0\0\0\6\0\0ab\0\5\0\0c\0\4\0\0"s},
      {"be32", "\0\0\0\2ab\0\0\0\1c\0\0\0\0"s},
      {"le32", "\2\0\0\0ab\1\0\0\0c\0\0\0\0"s},
  };
  for (const auto &[form, bytes] : forms) {
    SCOPED_TRACE(form);
    for (const char *text : {"ab\nc\n\n", "ab\r\nc\r\n\r\n", "ab\r\nc\n\r\n"}) {
      EXPECT_EQ(jxfile("convert" + to(form), text).out, bytes);
      EXPECT_EQ(jxfile("write - --records " + form, text).out, bytes);
    }
    EXPECT_EQ(jxfile("convert --eol lf" + to(form), "ab\rc\xC2\x85\n").out, bytes);
    EXPECT_EQ(jxfile("convert --strip-blanks" + from(form), bytes).out, "ab\nc\n\n");
    EXPECT_EQ(jxfile("convert --strip-blanks --eol crlf" + from(form), bytes).out,
              "ab\r\nc\r\n\r\n");
    EXPECT_EQ(jxfile("bytes - --raw" + from(form), bytes).out, form[0] == 'f' ? bytes : "abc");
    for (const auto &[other, others] : forms) {
      EXPECT_EQ(jxfile("convert --strip-blanks" + from(form) + to(other), bytes).out, others);
    }
  }
  EXPECT_EQ(jxfile("convert --to utf-16 --to-records fixed:6", "ab\n").out, "a\0b\0 \0"s);
  EXPECT_EQ(
      jxfile("convert --from utf-16be --strip-blanks --records fixed:10", "\xFE\xFF\0a\0 \1 \0 "s)
          .out,
      "\xEF\xBB\xBF"
      "a \xC4\xA0\n");
}

// Records that chunks cut anywhere, in one process, through files and pipes, and in place.
TEST_F(Records, ThereAndBackInAnyEncoding) {
  std::string text;
  for (unsigned i = 0; i < 900; ++i) {
    text += std::string(i % 61, static_cast<char>('a' + i % 26)) + (i % 7 ? "\xC3\xBC" : "") +
            (i % 5 ? "\n" : "\xE6\xBC\xA2\n");
  }
  put("text", text);
  for (const std::string encoding : {"utf-8", "gb18030", "utf-16be", "utf-32le", "iso-2022-jp-2"}) {
    for (const char *form : {"fixed:280", "rdw", "bdw", "be32", "le32"}) {
      SCOPED_TRACE(form + (" " + encoding));
      const std::string read = " --from " + encoding + " --strip-blanks" + from(form);
      ASSERT_EQ(jxfile("convert text records --to " + encoding + to(form)).err, "");
      EXPECT_EQ(jxfile("convert" + read, get("records")).out, text);
      EXPECT_EQ(jxfile("lines records" + read).out, text);
      EXPECT_EQ(jxfile("convert --in-place records" + read).err, "");
      EXPECT_EQ(get("records"), text);
    }
  }
  for (const std::string form : {"fixed:3", "rdw", "bdw", "be32", "le32"}) {
    put("bytes", jxfile("convert" + to(form), "abc\n\ndef\ng\n").out);
    for (int chunk = 4; chunk < 13; ++chunk) {
      SCOPED_TRACE(form + " " + std::to_string(chunk));
      const std::string read =
          "convert bytes --strip-blanks --record-length " + std::to_string(chunk) + from(form);
      EXPECT_EQ(jxfile(read).out, "abc\n\ndef\ng\n");
      EXPECT_EQ(jxfile(read + to(form)).out, get("bytes"));
    }
  }
}

// Of IBM939, where two bytes between shifts are a character, and a blank is 0x40.
TEST_F(Records, EndWhereTheyBegan) {
  const std::string whole = "\x81\x0E\x4C\x9C\x0F\x40\x40";
  const std::string open = "\x0E\x4C\x9C\x40\x40\x4C\x9C";
  for (const std::string &bytes :
       {whole + open, whole + open + whole, whole + whole + open + open}) {
    put("in", bytes);
    const std::string record = bytes.size() > 21 ? "3, byte offset 21" : "2, byte offset 14";
    const Outcome outcome = jxfile("lines in --from ibm939 --strip-blanks --records fixed:7");
    expect_failure(outcome, "a shift is left open: record " + record);
    EXPECT_EQ(outcome.out,
              bytes.size() > 21 ? "a\xE7\xA4\x8E\na\xE7\xA4\x8E\n" : "a\xE7\xA4\x8E\n");
  }
}

// Lengths whose bytes differ, and the longest block.
TEST_F(Records, LengthsAndBlocks) {
  const struct {
    const char *form;
    size_t first, second;  // lengths of the records
    std::string head;
  } rows[] = {
      {"be32", 0x10203, 0, "\0\1\2\3"s},      {"le32", 0x10203, 0, "\3\2\1\0"s},
      {"rdw", 0x0200, 0, "\2\4\0\0"s},        {"bdw", 16374, 16374, "\x7f\xf8\0\0"s},
      {"bdw", 16374, 16375, "\x3f\xfe\0\0"s},
  };
  for (const auto &[form, first, second, head] : rows) {
    const std::string text = std::string(first, 'x') + "\n" + std::string(second, 'y') + "\n";
    const std::string bytes = jxfile("convert" + to(form), text).out;
    EXPECT_EQ(bytes.substr(0, 4), head) << form << second;
    EXPECT_TRUE(jxfile("convert" + from(form), bytes).out == text) << form << second;
  }
}

struct RecordFault {
  const char *options;
  std::string bytes;
  const char *message;
  const char *place;
  const char *before = nullptr;  // what comes out before it
};

std::string repeated(const char *text, size_t count) {
  std::string out;
  while (count-- > 0) out += text;
  return out;
}

const RecordFault kRecordFaults[] = {
    {"--records fixed:3", "abcde", "the last record has 2 of 3 bytes", "2, byte offset 3", "abc\n"},
    {"--records fixed:3", "abcd\nf", "a line end in it", "2, byte offset 4", "abc\n"},
    {"--records fixed:9 --record-length 4", "ab\ncdefgh", "a line end in it", "1, byte offset 2"},
    {"--records fixed:9 --record-length 4 --short-last keep", "ab\ncdefg", "a line end in it",
     "1, byte offset 2"},
    {"--records fixed:3",
     "abcd\xff"
     "f",
     "not valid", "2, byte offset 4, bytes ff", "abc\n"},
    {"--records fixed:2 --from utf-8", "ab\xC3\xBC\xC3", "1 of 2 bytes", "3, byte offset 4",
     "ab\n\xC3\xBC\n"},
    {"--records fixed:3", "ab \xE2\x82 ", "not valid", "2, byte offset 3, bytes e2 82 20", "ab \n"},
    {"--records fixed:3 --to latin1", "abc\xE2\x82\xAC", "no such character", "2, byte offset 3"},
    {"--records rdw", "\0\5\0\0a\0\3\0\0"s, "no length of a record", "2, byte offset 5", "a\n"},
    {"--records rdw", "\0\5\0\0\xff\0\3\0\0"s, "not valid", "1, byte offset 4, bytes ff", ""},
    {"--records rdw", "\0\5\0\0a\0\5\4\0"s, "no length of a record", "2, byte offset 5", "a\n"},
    {"--records rdw", "\0\5\0\0a\0\6\0\0a"s, "the file ends in a record", "2, byte offset 5",
     "a\n"},
    {"--records rdw", "\0\5\1\0a"s, "a segment of a record", "1, byte offset 0", ""},
    {"--records rdw --from utf-16le", "\0\6\0\0a\0\0\5\0\0a"s, "inside a character",
     "2, byte offset 10", "a\n"},
    {"--records bdw", "\0\x09\0\0\0\6\0\0ab"s, "longer than its block", "1, byte offset 4", ""},
    {"--records bdw", "\0\x0e\0\0\0\5\0\0a"s, "ends in a block", "2, byte offset 9", "a\n"},
    {"--records bdw", "\x80\x09\0\0\0\5\0\0a"s, "no length of a block", "1, byte offset 0", ""},
    {"--records bdw", "\0\x09\0\0\0\5\0\0a\0\7\0\0"s, "no length of a block", "2, byte offset 9",
     "a\n"},
    {"--records be32", "\x7f\0\0\0a"s, "no length of a record", "1, byte offset 0", ""},
    {"--to-records fixed:3", "abc\r\nabcd\n", "the 3 bytes of a record", "2, byte offset 5"},
    {"--to-records fixed:3", "abc\nabcd", "the 3 bytes of a record", "2, byte offset 4"},
    {"--to-records fixed:3", "a\n" + std::string(70000, 'x'), "the 3 bytes", "2, byte offset 2"},
    {"--from utf-16be --to-records fixed:3", "\0a\0\n\x0a\0\0b\0\n"s, "record", "2, byte offset 4"},
    {"--to-records fixed:3", repeated("a\n", 40000) + "abcd", "the 3 bytes",
     "40001, byte offset 80000"},
    {"--to-records fixed:3 --eol lf", "a\rabcd\n", "the 3 bytes of a record: record 2 ", "2 "},
    {"--from utf-16le --to-records le32 --record-length 7", "a\0\n\0\n\n\n\0b\0\0\xD8"s,
     "not valid", "3, byte offset 10, bytes 00 d8"},
    {"--from utf-16le --to-records fixed:1 --record-length 7", "a\0\n\0\n\0b\0\n\0b\0b\0"s,
     "the 1 bytes", "4, byte offset 10"},
    {"--records fixed:2 --to-records fixed:1", "a b " + repeated(" ", 70000), "the 1 bytes",
     "1, byte offset 0"},
    {"--records fixed:2 --strip-blanks --to-records fixed:1", "a\n"s + "cd", "a line end",
     "1, byte offset 1"},
    {"--records fixed:4 --strip-blanks --to-records fixed:1", repeated(" ", 80000) + "cd  ",
     "the 1 bytes", "20001, byte offset 80000"},
    {"--records fixed:4 --to-records fixed:3", "abc abcd", "the 3 bytes", "1, byte offset 0"},
    {"--to-records rdw", "a\n" + repeated("x", 32753) + "\n", "the 32752 bytes",
     "2, byte offset 2"},
    {"--to-records bdw", repeated("x", 32753), "the 32752 bytes", "1, byte offset 0"},
};

TEST_F(Records, FaultsNameRecordAndOffset) {
  put("out", "old");
  for (const RecordFault &fault : kRecordFaults) {
    SCOPED_TRACE(fault.options + std::string(" ") + fault.message);
    put("in", fault.bytes);
    for (const std::string command :
         {"convert in out ", "convert - out ", "convert --in-place in "}) {
      const bool is_piped = command[8] == '-' && command[9] == ' ';
      const Outcome outcome = jxfile(command + fault.options, is_piped ? fault.bytes : "");
      expect_failure(outcome, fault.message);
      expect_failure(outcome, (is_piped ? "standard input: " : "in: "));
      expect_failure(outcome, "record "s + fault.place);
    }
    EXPECT_EQ(get("out"), "old");
    EXPECT_EQ(get("in"), fault.bytes);
    if (!fault.before) continue;
    const Outcome printed = jxfile("lines in "s + fault.options);
    expect_failure(printed, "record "s + fault.place);
    EXPECT_EQ(printed.out, fault.before);
    EXPECT_EQ(jxfile("convert --append in added "s + fault.options).code, 1);
    EXPECT_EQ(get("added"), fault.before);
    std::filesystem::remove(at("added"));
  }
}

TEST_F(Records, OptionsOfTheCommands) {
  put("in", "ab c d\xFF");
  put("e", "\xC1\xC2\x40\x40\xC3\x15");
  put("long", "abc\n\xC3");
  put("rest", "\xBC\n");
  const std::string block = "\0\5\0\0"s + "a" + "\0\7\0\0\xC3\xBC"s + "c";
  check({
      {0, "convert --records fixed:4 --short-last pad --on-error skip in", "ab c\n d \n",
       "1 fault skipped: record 2, byte offset 6, bytes ff"},
      {0, "convert --records fixed:4 --short-last keep --on-error escape in", "ab c\n d\\x{ff}\n",
       "1 fault escaped: record 2, byte offset 6, bytes ff"},
      {0, "convert --records fixed:3 --on-error replace - --to-records fixed:2 --to ascii", "? ",
       "1 fault replaced: record 1, ", "\xE2\x82\xAC"},
      {0, "convert --records fixed:4 --from ibm1047 --on-error escape -",
       "A\\x{25}\\x{25}B\nCD E\nAB\\x{25}{\n",
       "3 faults escaped: record 1, byte offset 1, bytes 25; record 1, byte offset 2, bytes 25; "
       "record 3, byte offset 10, bytes 25",
       "\xC1\x25\x25\xC2\xC3\xC4\x40\xC5\xC1\xC2\x25\xC0"},
      {0, "convert --records fixed:3 --on-error skip - --to-records fixed:3", "ab cd efg",
       "2 faults skipped: record 1, byte offset 1, bytes 0a; record 2, byte offset 5, bytes ff",
       "a\nbcd\xff"
       "efg"},
      {1, "convert --records fixed:3 --on-error skip - --to-records fixed:2", "~",
       "the line is longer than the 2 bytes of a record: record 3, byte offset 6", "a\nbc\ndefg"},
      // The start of a character in the first is none of the second.
      {1, "convert --in-place --jobs 1 --to-records fixed:2 long rest", "",
       "rest: input is not valid in its encoding"},
      {0, "lines --records fixed:2 --from ibm1047 -n --range 2: e",
       "     2    \n     3  C\xC2\x85\n"},
      {0, "lines --records rdw --json --strip-blanks -",
       "{\"file\":\"standard input\",\"line\":1,\"text\":\"a\",\"length\":1,\"partial\":false}\n"
       "{\"file\":\"standard input\",\"line\":2,\"text\":\"\xC3\xBC"
       "c\",\"length\":2,"
       "\"partial\":false}\n",
       "", block},
      {0, "lines --records fixed:1 --range 9 e", ""},
      {0, "lines --records fixed:2 --range :1 in", "ab\n"},
      {0, "lines --records rdw --range 2 -",
       "\xC3\xBC"
       "c\n",
       "", block},
      {0, "bytes --records fixed:4 --range 2 in",
       "record 2: 3 bytes\n"
       "00000004  20 64 ff                                          | d.|\n"},
      {0, "bytes --records rdw --json -",
       "{\"record\":1,\"offset\":4,\"length\":1,\"hex\":\"61\"}\n"
       "{\"record\":2,\"offset\":9,\"length\":3,\"hex\":\"c3bc63\"}\n",
       "", block},
      {1, "bytes --records be32 in", "", "record 1, byte offset 0"},
      {0, "convert --dry-run --in-place --records fixed:2 --from ibm1047 e",
       "e: would change from 6 to 10 bytes\n"},
      {0, "write --append --records fixed:2 --to ibm1047 e", "", "", "d\n"},
      {0, "write --at 2 --records fixed:2 --to ibm1047 e", "", "", "x\n"},
      {0, "convert --records fixed:2 --from ibm1047 e - --to utf-16 | od -An -c | head -1",
       "~^ 377 376   A"},
      {0, "lines --records fixed:3 --from auto -", "\xEF\xBB\xBF\nabc\n", "",
       "\xEF\xBB\xBF"
       "abc"},
  });
  EXPECT_EQ(get("e"), "\xC1\xC2\xA7\x40\xC3\x15\x84\x40");
}

TEST_F(Records, WhatHasNoMeaningIsRefused) {
  put("in", "x");
  put("wide",
      "\xFF\xFE"
      "a");
  const std::pair<const char *, const char *> rows[] = {
      {"convert in --records fixed", "'fixed' is none of stream text fixed:N rdw bdw be32 le32"},
      {"convert in --records fixed:0", "'0' is not a number from 1"},
      {"convert in --to-records text", "'text' is none of lines fixed:N"},
      {"convert in --strip-blanks", "--strip-blanks needs --records"},
      {"convert in --records rdw --short-last pad", "--short-last needs --records fixed:N"},
      {"lines in --records fixed:1 --short-last x", "'x' is none of refuse, pad, keep"},
      {"convert in --records text --to-records rdw", "--records text changes nothing else"},
      {"convert in --to-records rdw --bom", "--bom: records begin without a mark"},
      {"convert in --to-records rdw --eol crlf", "is keep or lf"},
      {"convert in --records bdw --to-records rdw --eol lf", "no lines between records"},
      {"convert in --from auto --records bdw", "--from auto cannot tell the encoding from records"},
      {"convert in --from utf-16 --records fixed:3", "is no multiple of 2"},
      {"convert in --to utf-32 --to-records fixed:6", "that is no multiple of 4"},
      {"convert --in-place in --from utf-16le --records fixed:3", "is no multiple of 2"},
      {"lines in --records rdw --mark", "--mark is for lines"},
      {"bytes in --records rdw --count 1", "--range can"},
      {"bytes in --range 1:2", "--range needs --records"},
      {"write in --records rdw --bom", "--bom: records begin without a mark"},
      {"write in --records fixed:80 --record-length 80", "takes no --record-length"},
  };
  for (const auto &[arguments, message] : rows) check({{2, arguments, "", message}});
}

}  // namespace
}  // namespace jx::test
