// Records of one length, and records after their length.
#include "cli/program.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

class Records : public ProgramTest {};

TEST_F(Records, AreThoseBytes) {
  const std::pair<const char *, std::string> rows[] = {
      {"fixed:3", "ab c     "},
      {"rdw", "\0\6\0\0ab\0\5\0\0c\0\4\0\0"s},
      {"bdw", "\0\x13\0\0\0\6\0\0ab\0\5\0\0c\0\4\0\0"s},
      {"be32", "\0\0\0\2ab\0\0\0\1c\0\0\0\0"s},
      {"le32", "\2\0\0\0ab\1\0\0\0c\0\0\0\0"s},
  };
  for (const auto &[form, bytes] : rows) {
    SCOPED_TRACE(form);
    for (const char *text : {"ab\nc\n\n", "ab\r\nc\r\n\r\n", "ab\nc\r\n"}) {
      const bool has_third = std::string_view(text).ends_with("\n\n") || text[5] == '\r';
      if (!has_third && form[0] != 'f') continue;
      const Outcome made = jxfile("convert --to-records "s + form, text);
      EXPECT_EQ(made.code, 0) << made.err;
      EXPECT_EQ(made.out, has_third ? bytes : "ab c  ");
    }
    const Outcome read = jxfile("convert --strip-blanks --records "s + form, bytes);
    EXPECT_EQ(read.out, "ab\nc\n\n") << read.err;
  }
}

// Records that chunks cut anywhere, in one process and through files, in place too.
TEST_F(Records, ThereAndBackInAnyEncoding) {
  std::string text;
  for (unsigned i = 0; text.size() < 300000; ++i) {
    text += std::string(i % 61, static_cast<char>('a' + i % 26)) + (i % 7 ? "\xC3\xBC\n" : "\n");
  }
  put("text", text);
  for (const char *form : {"fixed:84", "fixed:128", "rdw", "bdw", "be32", "le32"}) {
    for (const char *encoding : {"utf-8", "ibm1047", "utf-16be", "utf-32le", "ibm939"}) {
      SCOPED_TRACE(std::string(form) + " " + encoding);
      const std::string to = " --to "s + encoding + " --to-records " + form;
      const std::string from = " --from "s + encoding + " --strip-blanks --records " + form;
      const bool is_wide = encoding[4] == '3' && std::string_view(form).starts_with("fixed");
      if (is_wide) continue;  // four bytes a character
      const Outcome made = jxfile("convert text records" + to);
      EXPECT_EQ(made.code, 0) << made.err;
      EXPECT_EQ(jxfile("convert records" + from).out, text);
      EXPECT_EQ(jxfile("convert" + from, get("records")).out, text);
      EXPECT_EQ(jxfile("convert --in-place records" + from).code, 0);
      EXPECT_EQ(get("records"), text);
    }
  }
}

TEST_F(Records, FaultsNameRecordAndOffset) {
  struct Row {
    const char *options;
    std::string bytes;
    const char *message;
  };
  const Row rows[] = {
      {"--records fixed:3", "abcde", "record 2, byte offset 3"},
      {"--records fixed:3", "abcd\nf", "a line end in it"},
      {"--records fixed:3", "abcd\xff" "f", "record 2, byte offset 4, bytes ff"},
      {"--records fixed:3 --to latin1", "abcd\xE2\x82\xAC", "the last record has 1 of 3"},
      {"--records rdw", "\0\5\0\0a\0\3\0\0"s, "record 2, byte offset 5"},
      {"--records rdw", "\0\5\0\0a\0\6\0\0a"s, "the file ends in a record"},
      {"--records rdw", "\0\5\1\0a"s, "a segment of a record"},
      {"--records bdw", "\0\x09\0\0\0\6\0\0ab"s, "longer than its block"},
      {"--records bdw", "\0\x0e\0\0\0\5\0\0a"s, "the file ends in a block"},
      {"--records bdw", "\x80\x09\0\0\0\5\0\0a"s, "no length of a block"},
      {"--records be32", "\x7f\0\0\0a"s, "no length of a record"},
      {"--to-records fixed:3", "abc\nabcd\n", "record 2"},
      {"--to-records rdw", std::string(32753, 'x') + "\n", "room for 32752"},
  };
  put("out", "old");
  for (const Row &row : rows) {
    SCOPED_TRACE(row.options + std::string(" ") + row.message);
    put("in", row.bytes);
    expect_failure(jxfile("convert in out "s + row.options), row.message);
    expect_failure(jxfile("convert - out "s + row.options, row.bytes), row.message);
    EXPECT_EQ(get("out"), "old");
  }
  const char *const kept[][2] = {{"pad", "abc\nd  \n"}, {"keep", "abc\nd\n"}};
  for (const auto &[how, text] : kept) {
    EXPECT_EQ(jxfile("convert --records fixed:3 --short-last "s + how, "abcd").out, text);
  }
  const Outcome replaced =
      jxfile("convert --records rdw --on-error replace", "\0\5\0\0a\0\6\0\0b\xff"s);
  EXPECT_EQ(replaced.out, "a\nb\xEF\xBF\xBD\n");
  EXPECT_NE(replaced.err.find("record 2, byte offset 10, bytes ff"), std::string::npos)
      << replaced.err;
}

}  // namespace
}  // namespace jx::test
