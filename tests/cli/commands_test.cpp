// Every command once in its usual use and in its usual misuse, and the generated documents.
#include <regex.h>

#include "cli/program.hpp"

namespace {

using jx_test::Outcome;
using jx_test::ProgramTest;

struct Row {
  std::vector<std::string> arguments;
  int code;
  const char *out;  // the whole output; after "~" a pattern to be found in it
  const char *err;  // a part of the messages; "" for none at all
  std::string_view input = {};
};

bool matches(const std::string &text, const char *expected) {
  if (expected[0] != '~') return text == expected;
  regex_t pattern;
  if (::regcomp(&pattern, expected + 1, REG_EXTENDED | REG_NOSUB) != 0) return false;
  const bool is_found = ::regexec(&pattern, text.c_str(), 0, nullptr, 0) == 0;
  ::regfree(&pattern);
  return is_found;
}

class Commands : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    put("text", "one\ntwo\n");
    put("crlf", "a\r\nb");
    put("dots", {"\xff\x00zz", 4});
    std::filesystem::create_directories(at("dir/sub"));
    put("dir/.hidden", "");
    put("dir/plain", "12345");
    put("dir/\xff", "");
    std::filesystem::create_symlink("nowhere", at("dir/link"));
  }

  void check(const std::vector<Row> &rows) {
    for (const Row &row : rows) {
      std::string shown;
      for (const std::string &word : row.arguments) shown += word + " ";
      const Outcome outcome = jxfile(row.arguments, row.input);
      EXPECT_EQ(outcome.code, row.code) << shown << "\n" << outcome.err;
      EXPECT_TRUE(matches(outcome.out, row.out)) << shown << "\n" << outcome.out;
      const bool is_expected =
          *row.err ? outcome.err.find(row.err) != outcome.err.npos : outcome.err.empty();
      EXPECT_TRUE(is_expected) << shown << "\n" << outcome.err;
    }
  }
};

TEST_F(Commands, ReadingText) {
  check({
      {{"lines", "text"}, 0, "one\ntwo\n", ""},
      {{"lines", "text", "crlf"}, 0, "one\ntwo\na\nb", ""},
      {{"lines", "-n", "text"}, 0, "     1  one\n     2  two\n", ""},
      {{"lines", "--direct", "crlf"}, 0, "a\nb", ""},
      {{"lines", "--mark", "--record-length", "2", "text"},
       0,
       "[2 part] on\n[1 lf] e\n[2 part] tw\n[1 lf] o\n",
       ""},
      {{"lines", "--record-length", "2", "text"}, 0, "one\ntwo\n", ""},
      {{"lines", "--mark", "crlf"}, 0, "[1 crlf] a\n[1 none] b\n", ""},
      {{"lines", "--json", "--mark", "crlf"},
       0,
       "{\"file\":\"crlf\",\"line\":1,\"text\":\"a\",\"length\":1,\"partial\":false,"
       "\"end\":\"crlf\"}\n{\"file\":\"crlf\",\"line\":2,\"text\":\"b\",\"length\":1,"
       "\"partial\":false,\"end\":\"none\"}\n",
       ""},
      {{"lines", "missing", "text"},
       1,
       "one\ntwo\n",
       "jxfile: lines: missing: file or directory not found (JXWEM_E_NOTFOUND 0x80bfe801)\n"},
      {{"lines", "dir"}, 1, "", "jxfile: lines: dir: "},
      {{"lines", "-"}, 0, "x\ny", "", "x\ny"},
      {{"lines", "--mark", "-"}, 0, "[1 crlf] x\n[1 none] y\n", "", "x\r\ny"},
      {{"lines", "--from", "nonsense", "text"}, 2, "", "'nonsense' is not known"},
      {{"lines"}, 2, "", "FILE"},
  });
}

TEST_F(Commands, BytesAndWriting) {
  check({
      {{"bytes", "dots"},
       0,
       "00000000  ff 00 7a 7a                                       |..zz|\n",
       ""},
      {{"bytes", "--raw", "--offset", "1", "--count", "3", "text"}, 0, "ne\n", ""},
      {{"bytes", "--json", "--record-length", "3", "dots"},
       0,
       "{\"offset\":0,\"length\":3,\"hex\":\"ff007a\"}\n{\"offset\":3,\"length\":1,\"hex\":\"7a\"}"
       "\n",
       ""},
      {{"bytes", "--offset", "x", "dots"}, 2, "", "--offset"},
      {{"write", "new"}, 0, "", "", "p\nq"},
      {{"write", "--append", "--records", "stream", "new"}, 0, "", "", "rs"},
      {{"write", "--at", "1", "--records", "binary", "new"}, 0, "", "", "\xff"},
      {{"bytes", "--json", "new"}, 0, "~\"hex\":\"70ff710a7273\"", ""},
      {{"write", "--update", "new"}, 0, "", "", "u"},
      {{"truncate", "new", "3"}, 0, "", ""},
      {{"bytes", "--raw", "new"}, 0, "u\nq", ""},
      {{"truncate", "missing", "3"}, 1, "", "missing: file or directory not found"},
      {{"truncate", "new", "-3"}, 2, "", "LENGTH: '-3' is not a number"},
      {{"write", "--append", "--at", "1", "new"}, 2, "", "--append"},
      {{"write", "--record-length", "2", "new"}, 1, "", "record 2", "ab\nabc\n"},
  });
  EXPECT_EQ(get("new"), "u\nq");
}

TEST_F(Commands, Information) {
  check({
      {{"info", "dir/plain"},
       0,
       "~size +5 bytes\n +modified +20..-..-..T..:..:..\n +kind +file",
       ""},
      {{"info", "--json", "dir", "missing"},
       1,
       "~^\\{\"path\":\"dir\".*\"is_dir\":true\\}\n$",
       "missing: file or directory not found"},
      {{"fsinfo", "--json", "."}, 0, "~\"free\":[0-9]+,\"id\":[0-9]+", ""},
      {{"ls", "dir"}, 0, "link\nplain\nsub\n\xff\n", ""},
      {{"ls", "-a", "dir"}, 0, ".\n..\n.hidden\nlink\nplain\nsub\n\xff\n", ""},
      {{"ls", "--long", "--all", "dir"}, 0, "~\n\\? +link\n- +5 .*  plain\nd .*  sub\n", ""},
      {{"ls", "--full", "dir"}, 0, "~^/.*/dir/link\n/.*/dir/plain\n", ""},
      {{"ls", "--json", "dir"}, 0, "~\\{\"name\":\"sub\"\\}\n\\{\"name_base64\":\"/w==\"\\}", ""},
      {{"ls", "--parent", "dir/sub"}, 0, "link\nplain\nsub\n\xff\n", ""},
      {{"ls", "--parent", "/"}, 1, "", "JXWEM_E_NOMEMBER"},
      {{"ls", "--root"}, 0, "~(^|\n)usr\n", ""},
      {{"ls", "--root", "--home"}, 2, "", "only one"},
      {{"exists", "text", "missing"}, 1, "", "missing: file or directory not found"},
      {{"exists", "text"}, 0, "", ""},
  });
}

TEST_F(Commands, FilesAndPaths) {
  check({
      {{"mkdir", "made", "made"}, 0, "", ""},
      {{"mkdir", "none/made"}, 1, "", "hint: make the missing directory first"},
      {{"cp", "text", "made/copy"}, 0, "", ""},
      {{"cp", "text", "made"}, 1, "", "jxfile: cp: made: the target exists already"},
      {{"mv", "made/copy", "made/moved"}, 0, "", ""},
      {{"mv", "missing", "x"}, 1, "", "system error: No such file or directory (JXWEM_E_SYSTEM"},
      {{"rm", "made"}, 1, "", "hint: remove a directory with everything in it"},
      {{"rm", "-r", "made"}, 0, "", ""},
      {{"newname", "--prefix", "job", "--extension", "tmp", "--count", "2", "/tmp"},
       0,
       "~^/tmp/job[0-9A-F]{4}000001.tmp\n/tmp/job[0-9A-F]{4}000002.tmp\n$",
       ""},
      {{"newname", "--host"}, 0, "~/ZOR_util0001", ""},
      {{"split", "/usr/lib/libx.so"},
       0,
       "directory  /usr/lib\nmember     libx.so\nbase       libx\nextension  so\n",
       ""},
      {{"split", "--json", "a/"},
       0,
       "{\"directory\":\"a\",\"member\":null,\"base\":null,\"extension\":null}\n",
       ""},
      {{"split", ""}, 1, "", "(0x00000001)"},
      {{"build", "--directory", "/tmp/", "--member", "x", "--extension", "txt"},
       0,
       "/tmp/x.txt\n",
       ""},
      {{"expand", "/a/$JX_NOT_SET//"}, 0, "/a/$JX_NOT_SET\n", ""},
      {{"expand", "--json", "/\xff"}, 0, "{\"path_base64\":\"L/8=\"}\n", ""},
  });
}

TEST_F(Commands, Formatting) {
  check({
      {{"format", "%05d|%-4s|%q", "-42", "ä"}, 0, "-0042|ä   |<<%q>>\n", ""},
      {{"format", "%2$s is %1$lld", "9223372036854775807", "x"},
       0,
       "x is 9223372036854775807\n",
       ""},
      {{"format", "%.3f %Lf %c %hs %.*S", "2.5", "0.25", "ß", "b", "2", "xyz"},
       0,
       "2.500 0.250000 ß b xy\n",
       ""},
      {{"format", "%1$d %1$f", "2.5"}, 0, "2 2.500000\n", ""},
      {{"format", "%#x %u", "0x1f", "4294967295"}, 0, "0x1f 4294967295\n", ""},
      {{"format", "--capacity", "5", "abc%d", "123"}, 1, "abc\n", "6 characters, room for 5"},
      {{"format", "--json", "%5d", "7"},
       0,
       "{\"text\":\"    7\",\"length\":5,\"truncated\":false}\n",
       ""},
      {{"format", "--", "-%d %s", "-3", "--json"}, 0, "--3 --json\n", ""},
      {{"format", "--frobnicate", "%d", "3"}, 2, "", "--frobnicate"},
      {{"format", "%11$d"}, 1, "", "JX_E_BADFORMAT"},
      {{"format", "%d", "abc"}, 2, "", "argument 1: 'abc' is not a 32-bit integer"},
      {{"format", "%d", "4294967296"}, 2, "", "is not a 32-bit integer"},
      {{"format", "%c", "ab"}, 2, "", "one character"},
      {{"format", "%d %d", "1"}, 2, "", "FORMAT takes 2 arguments, 1 are given"},
      {{"format", "%.5S", "abc"}, 2, "", "has not 5 characters"},
      {{"format", "%1$s %1$d", "x"}, 2, "", "both as a string and otherwise"},
      {{"format", "%1$d %d", "1", "2"}, 2, "", "mixes"},
  });
}

TEST_F(Commands, CatalogueAndUsage) {
  check({
      {{"status", "0x80bfe801"}, 0, "~JXWEM_E_NOTFOUND +file or directory not found\n", ""},
      {{"status", "jxwem_e_eof"}, 0, "~^0x80bfe80a ", ""},
      {{"status", "--json", "notempty"}, 0, "~\"code\":\"0x80bfe81d\"", ""},
      {{"status"}, 0, "~JX_E_NOMEM(.|\n)*JXWEM_E_NOMEMBER(.|\n)*JXHOST_E_MALFORMED", ""},
      {{"status", "0x12345"}, 1, "", "hint: list every status"},
      {{"status", "nonsense"}, 2, "", "neither a number nor a known name"},
      {{"version"}, 0, "~jxwem 3\\.2\\.1(.|\n)*/jxwem\\.so\n", ""},
      {{"--module", "missing.so", "version"}, 1, "", "the module cannot be loaded"},
      {{"--module", "missing.so", "format", "%d", "1"}, 1, "", "missing.so"},
      {{"version", "--module", "missing.so"}, 1, "", "missing.so"},
      {{"--help"}, 0, "~lines .*\n.*convert ", ""},
      {{}, 2, "", "a command is required"},
      {{"frobnicate"}, 2, "", "'frobnicate' is not a command"},
      {{"ls", "--frobnicate"}, 2, "", "--frobnicate"},
  });
}

// Each help names an example, and every document is the one that the table of commands gives.
TEST_F(Commands, DocumentsAreCurrent) {
  const std::string page = jxfile({"generate", "man"}).out;
  EXPECT_EQ(page, jx_test::read_all(JX_SOURCE_DIR "/docs/man/jxfile.1"));
  EXPECT_EQ(jxfile({"generate", "completion"}).out,
            jx_test::read_all(JX_SOURCE_DIR "/docs/completion/jxfile.bash"));
  const std::string section = "\n.SS \\fBjxfile ";
  int count = 0;
  for (size_t at = page.find(section); at != page.npos; at = page.find(section, at + 1), ++count) {
    const size_t start = at + section.size();
    const std::string name = page.substr(start, page.find('\\', start) - start);
    const Outcome help = jxfile({name, "--help"});
    EXPECT_EQ(help.code, 0) << name;
    EXPECT_NE(help.out.find("Example:\n  "), help.out.npos) << name;
  }
  EXPECT_EQ(count, 20);
}

}  // namespace
