// Every command once in its usual use and in its usual misuse.
#include "cli/program.hpp"

namespace jx::test {
namespace {

class Commands : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    put("text", "one\ntwo\n");
    put("crlf", "a\r\nb");
    put("bad", "ab\nc\n\xff\nd\n");
    put("dots", {"\xff\x00zz", 4});
    std::filesystem::create_directories(at("dir/sub"));
    put("dir/.hidden", "");
    put("dir/plain", "12345");
    put("dir/\xff", "");
    std::filesystem::create_symlink("nowhere", at("dir/link"));
  }
};

TEST_F(Commands, ReadingText) {
  check({
      {0, "lines text", "one\ntwo\n"},
      {0, "lines text crlf", "one\ntwo\na\nb"},
      {0, "lines -n text", "     1  one\n     2  two\n"},
      {0, "lines --direct crlf", "a\nb"},
      {0, "lines -n --range 2: text crlf", "     2  two\n     2  b"},
      {0, "lines --range 1 text crlf", "one\na\n"},
      {0, "lines --range :9 crlf", "a\nb"},
      {0, "lines --range 3:4 text", ""},
      {0, "lines --range 1:2 --record-length 2 text bad", "one\ntwo\nab\nc\n"},
      {0, "lines --range 1:2 --mark bad", "[2 lf] ab\n[1 lf] c\n"},
      {1, "lines --range 2:3 bad", "c\n", "record 3, byte offset 5"},
      {0, "lines --range 2:3 /dev/stdin --json < text | grep -c 'line.:2'", "1\n"},
      {0, "lines --range 1000000:1000001 -n - < /dev/null", ""},
      {2, "lines --range 2:1 text", "", "is no range of lines"},
      {2, "lines --range : text", "", "is no range of lines"},
      {2, "lines --range 0: text", "", "--range: '0' is not a number"},
      {0, "lines --mark --record-length 2 text", "[2 part] on\n[1 lf] e\n[2 part] tw\n[1 lf] o\n"},
      {0, "lines --record-length 2 text", "one\ntwo\n"},
      {0, "lines --mark crlf", "[1 crlf] a\n[1 none] b\n"},
      {0, "lines --json --mark crlf",
       "{\"file\":\"crlf\",\"line\":1,\"text\":\"a\",\"length\":1,\"partial\":false,"
       "\"end\":\"crlf\"}\n{\"file\":\"crlf\",\"line\":2,\"text\":\"b\",\"length\":1,"
       "\"partial\":false,\"end\":\"none\"}\n"},
      {1, "lines missing text", "one\ntwo\n",
       "jxfile: lines: missing: file or directory not found (JXWEM_E_NOTFOUND 0x80bfe801)\n"},
      {1, "lines dir", "", "jxfile: lines: dir: "},
      {0, "lines -", "x\ny", "", "x\ny"},
      {0, "lines --mark -", "[1 crlf] x\n[1 none] y\n", "", "x\r\ny"},
      {2, "lines --from nonsense text", "", "'nonsense' is not known"},
      {2, "lines", "", "FILE"},
  });
}

TEST_F(Commands, BytesAndWriting) {
  check({
      {0, "bytes dots", "00000000  ff 00 7a 7a                                       |..zz|\n"},
      {0, "bytes --raw --offset 1 --count 3 text", "ne\n"},
      {0, "bytes --json --record-length 3 dots",
       "{\"offset\":0,\"length\":3,\"hex\":\"ff007a\"}\n{\"offset\":3,\"length\":1,\"hex\":\"7a\"}"
       "\n"},
      {2, "bytes --offset x dots", "", "--offset"},
      {0, "write new", "", "", "p\nq"},
      {0, "write --append --records stream new", "", "", "rs"},
      {0, "write --at 1 --records binary new", "", "", "\xff"},
      {0, "bytes --json new", "~\"hex\":\"70ff710a7273\""},
      {0, "write --update new", "", "", "u"},
      {0, "truncate new 3", ""},
      {0, "bytes --raw new", "u\nq"},
      {1, "truncate missing 3", "", "missing: file or directory not found"},
      {2, "truncate new -3", "", "LENGTH: '-3' is not a number"},
      {2, "write --append --at 1 new", "", "--append"},
      {1, "write --record-length 2 new", "", "record 2", "ab\nabc\n"},
      {0, "bytes --raw -", "x", "", "x"},
      {0, "write -", "p\nq\n", "", "p\nq"},
      {1, "write --at 1 - >> text", "", "--update and --at need a file"},
      {0, "write --to utf-16le --bom marked", "", "", "a\nb"},
      {0, "write --append --bom marked", "", "", "c"},
      {0, "write --update marked", "", "", "d"},
      {0, "bytes --json marked", "~\"hex\":\"fffe64000a0062000a0063000a00\""},
      {1, "write --append --to utf-8 marked", "", "its byte-order mark is that of UTF-16LE"},
      {2, "write --append --bom new", "", "--bom: 'new' begins without a mark"},
      {2, "write --to latin1 --bom new", "", "--bom: ISO-8859-1 has no mark"},
      {2, "write --records binary --to utf-8 new", "", "neither --to nor --bom"},
      {1, "write new", "", "hint: other text than UTF-8 is written with", "\xff"},
  });
  EXPECT_EQ(get("new"), "u\nq");
}

TEST_F(Commands, Information) {
  check({
      {0, "info dir/plain", "~size +5 bytes\n +modified +20..-..-..T..:..:..\n +kind +file"},
      {1, "info --json dir missing", "~^\\{\"path\":\"dir\".*\"is_dir\":true\\}\n$",
       "missing: file or directory not found"},
      {0, "fsinfo --json .", "~\"free\":[0-9]+,\"id\":[0-9]+"},
      {0, "ls dir", "link\nplain\nsub\n\xff\n"},
      {0, "ls -a dir", ".\n..\n.hidden\nlink\nplain\nsub\n\xff\n"},
      {0, "ls --long --all dir", "~\n\\? +link\n- +5 .*  plain\nd .*  sub\n"},
      {0, "ls --full dir", "~^/.*/dir/link\n/.*/dir/plain\n"},
      {0, "ls --json dir", "~\\{\"name\":\"sub\"\\}\n\\{\"name_base64\":\"/w==\"\\}"},
      {0, "ls --parent dir/sub", "link\nplain\nsub\n\xff\n"},
      {1, "ls --parent /", "", "JXWEM_E_NOMEMBER"},
      {0, "ls --root", "~(^|\n)usr\n"},
      {2, "ls --root --home", "", "only one"},
      {1, "ls dir/sub none crlf dir/link dir/sub", "crlf\ndir/link\n\ndir/sub:\n\ndir/sub:\n",
       "ls: none: file or directory not found"},
      {0, "ls --json -l dir/sub dir/plain", "~^\\{\"name\":\"dir/plain\",\"size\":5,[^\n]*\n$"},
      {0, "ls --json dir . | grep -c directory", "9\n"},
      {1, "exists --json text/x missing text", "~false}\n.*true}\n",
       "exists: text/x: system error"},
      {1, "exists text missing", "", "missing: file or directory not found"},
      {0, "exists text", ""},
  });
  const char *zone =
      "export TZ=CET-1CEST,M3.5.0,M10.5.0/3; for date in 2026-01-15 2026-07-15; do "
      "touch -d $date\\ 14:00 text; " JX_BINARY_DIR "/jxfile ls -l; done";
  EXPECT_TRUE(matches(run({"/bin/sh", "-c", zone}).out,
                      "~ 2026-01-15T14:00:00  text(.|\n)* 2026-07-15T14:00:00  text"));
}

TEST_F(Commands, FilesAndPaths) {
  check({
      {0, "mkdir made made", ""},
      {1, "mkdir none/made", "", "hint: make the missing directory first"},
      {0, "cp text made/copy", ""},
      {1, "cp -T text made", "", "jxfile: cp: text -> made: the target exists already"},
      {0, "mkdir -p made/p/q/../r/ made/p made//s", ""},
      {1, "mkdir -p text/x", "", "mkdir: text/: the target exists already"},
      {1, "cp text none crlf made/p", "", "cp: none -> made/p/none: file or directory not found"},
      {1, "cp text crlf made/p/crlf", "", "cp: made/p/crlf: it is not a directory"},
      {1, "mv text crlf nowhere", "", "nowhere: it is not a directory"},
      {2, "mv -T text crlf made", "", "--no-target-directory takes one OLD"},
      {2, "mv text", "", "NEW is required"},
      {1, "mv made/p/text none made/p/crlf made/s/", "", "mv: none -> made/s/none: "},
      {0, "cp made/s/text made/s/crlf made/p/q", ""},
      {1, "mv made/s/text made/p/q/text made/p", "",
       "mv: made/p/q/text -> made/p/text: another file has just been moved there"},
      {1, "rm -r none made/s made/p", "", "rm: none: file or directory not found"},
      {0, "rm -f none text/x dir/link", ""},
      {0, "rm -rf", ""},
      {2, "rm -r", "", "PATH is required"},
      {1, "rm -f dir/sub/ dir none/..", "", "rm: none/..: '.' and '..' are not removed"},
      {0, "mkdir dir/sub", ""},
      {1, "cp made made/none/inner", "", "a directory cannot be copied into itself"},
      {0, "mv made/copy made/moved", ""},
      {1, "mv missing x", "", "system error: No such file or directory (JXWEM_E_SYSTEM"},
      {1, "rm made", "", "hint: remove a directory with everything in it"},
      {0, "rm -r made", ""},
      {0, "newname --prefix job --extension tmp --count 2 /tmp",
       "~^/tmp/job[0-9A-F]{4}000001.tmp\n/tmp/job[0-9A-F]{4}000002.tmp\n$"},
      {0, "newname --host", "~/ZOR_util0001"},
      {0, "newname --create --count 3 dir/sub | xargs stat -c '%a %s'", "600 0\n600 0\n600 0\n"},
      {1, "newname --create none", "", "none/tmp"},
      {0, "split /usr/lib/libx.so",
       "directory  /usr/lib\nmember     libx.so\nbase       libx\nextension  so\n"},
      {0, "split --json a/",
       "{\"directory\":\"a\",\"member\":null,\"base\":null,\"extension\":null}\n"},
      {2, "newname --count 65536", "", "from 1 to 65535"},
      {2, "split ''", "", "jxfile: split: PATH is empty\nhint: jxfile split --help\n"},
      {0, "build --directory /tmp/ --member x --extension txt", "/tmp/x.txt\n"},
      {0, "expand '/a/$JX_NOT_SET//'", "/a/$JX_NOT_SET\n"},
      {0, "expand --json '/\xff'", "{\"path_base64\":\"L/8=\"}\n"},
  });
}

TEST_F(Commands, Formatting) {
  check({
      {0, "format '%05d|%-4s|%q' -42 'ä'", "-0042|ä   |<<%q>>\n"},
      {0, "format '%2$s is %1$lld' 9223372036854775807 x", "x is 9223372036854775807\n"},
      {0, "format '%.3f %Lf %c %hs %.*S' 2.5 0.25 'ß' b 2 xyz", "2.500 0.250000 ß b xy\n"},
      {0, "format '%1$d %1$f' 2.5", "2 2.500000\n"},
      {0, "format '%#x %u' 0x1f 4294967295", "0x1f 4294967295\n"},
      {1, "format --capacity 5 abc%d 123", "abc\n", "6 characters, room for 5"},
      {0, "format --json %5d 7", "{\"text\":\"    7\",\"length\":5,\"truncated\":false}\n"},
      {0, "format -- '-%d %s' -3 --json", "--3 --json\n"},
      {2, "format --frobnicate %d 3", "", "--frobnicate"},
      {1, "format '%11$d'", "", "JX_E_BADFORMAT"},
      {2, "format %d abc", "", "argument 1: 'abc' is not a 32-bit integer"},
      {2, "format %d 4294967296", "", "is not a 32-bit integer"},
      {2, "format %c ab", "", "one character"},
      {2, "format '%d %d' 1", "", "FORMAT takes 2 arguments, 1 are given"},
      {2, "format %.5S abc", "", "has not 5 characters"},
      {2, "format '%1$s %1$d' x", "", "both as a string and otherwise"},
      {2, "format '%1$d %d' 1 2", "", "mixes"},
      {0, "format '%%'", "%\n"},
      {0, "format ''", "\n"},
      {0, "format '%*d|%p|%hc' 5 7 255 x", "    7|ff|x\n"},
      {0, "format '%3$*1$d|%3$.*2$d' 4 3 7", "   7|007\n"},
      {0, "format '%1$.2S%1$.3S|%2$.1hS' abcd ef", "ababc|e\n"},
      {0, "format '%d %d %lx' +5 0X1f 0x10", "5 31 10\n"},
      {0, "format '%hhd|%lc'", "<<%hh>>d|<<%lc>>\n"},
      {1, "format '%*2d' 1 2", "", "JX_E_BADFORMAT"},
      {2, "format %f x", "", "argument 1: 'x' is not a number"},
      {2, "format %Lf ''", "", "argument 1: '' is not a number"},
      {2, "format %c ''", "", "one character"},
      {2, "format %lld 5x", "", "is not a 64-bit integer"},
      {0, "format '%lld|%llu' -9223372036854775808 18446744073709551615",
       "-9223372036854775808|18446744073709551615\n"},
      {2, "format %d ''", "", "is not a 32-bit integer"},
      {2, "format '\xff'", "", "FORMAT is not UTF-8"},
      {2, "format %s '\xff'", "", "UTF-8"},
      // What cannot be given together.
      {2, "ls --root dir", "", "--root and --home take no PATH"},
      {2, "newname --host --prefix a", "", "--host and --prefix cannot be given together"},
      {2, "bytes --raw --json text", "", "--raw and --json cannot be given together"},
      {2, "convert --bom --no-bom text b", "", "--bom and --no-bom cannot be given together"},
      {2, "convert text b --records x", "", "'x' is none of stream text fixed:N"},
      {2, "generate x", "", "KIND is man, bash, zsh or fish"},
      {0, "bytes --count 0X1 text",
       "00000000  6f                                                |o|\n"},
      {0, "bytes --raw --count 1K text", "one\ntwo\n"},
      {2, "bytes --count 1x text", "", "'1x' is not a number"},
      {2, "bytes --count 99999999999G text", "", "is not a number"},
      {1, "status 0x99", "", "unknown status"},
      {2, "status x", "", "neither a number nor a known name"},
      {0, "status --json 0x80bfe801",
       "{\"code\":\"0x80bfe801\",\"name\":\"JXWEM_E_NOTFOUND\",\"text\":\"file or directory not "
       "found\"}\n"},
  });
}

#ifndef __SANITIZE_ADDRESS__  // which uses descriptors itself
// At each point where the program runs out of descriptors it says so.
TEST_F(Commands, OutOfDescriptors) {
  int failures = 0;
  for (int limit = 4; limit < 20; ++limit) {
    const std::string line = "ulimit -n " + std::to_string(limit) +
                             "; exec " JX_BINARY_DIR "/jxfile cp dir/sub copy" +
                             std::to_string(limit);
    const Outcome outcome = run({"/bin/sh", "-c", line});
    if (outcome.code == 0 || outcome.code == 127) continue;  // 127: the libraries did not load
    ++failures;
    EXPECT_TRUE(matches(outcome.err, "~too many open files \\(JXELM_E_LIMIT")) << outcome.err;
  }
  EXPECT_GT(failures, 2);
}
#endif

}  // namespace
}  // namespace jx::test
