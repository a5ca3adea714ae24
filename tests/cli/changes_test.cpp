// What convert changes in a text besides its encoding: line ends, and faults that are put up with.
#include <random>

#include "cli/program.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

class Changes : public ProgramTest {
 protected:
  // The same conversion of a file, of a pipe, and in place, in chunks of any size.
  std::string convert(const std::string &options, const std::string &text, std::string *err) const {
    const Outcome piped = jxfile("convert - " + options, text);
    *err = piped.err;
    for (const char *chunks : {"", " --record-length 4", " --record-length 5"}) {
      put("in", text);
      put("changed", text);
      const Outcome outcome = jxfile("convert in " + options + chunks);
      EXPECT_EQ(outcome.out, piped.out) << options << chunks;
      EXPECT_EQ(outcome.code, piped.code) << options << chunks;
      if (outcome.code != 0) continue;
      EXPECT_EQ(jxfile("convert --in-place changed " + options + chunks).code, 0);
      EXPECT_EQ(get("changed"), piped.out) << options << chunks;
    }
    return piped.out;
  }
};

TEST_F(Changes, LineEnds) {
  const struct {
    const char *options;
    std::string input, output;
  } rows[] = {
      {"--eol lf", "a\nb\r\nc\rd\u0085e\n\r\r\n\n", "a\nb\nc\nd\ne\n\n\n\n"},
      {"--eol crlf", "a\nb\r\nc\r\rd°\u0085\r", "a\r\nb\r\nc\r\n\r\nd°\r\n\r\n"},
      {"--eol cr", "\r\n°°\n", "\r°°\r"},
      {"--eol nel", "a\r\nb\xc2\xa0\n", "a\u0085b\xc2\xa0\u0085"},
      {"--eol keep", "a\r\nb\rc\u0085d", "a\r\nb\rc\u0085d"},
      {"--eol lf --final-eol add", "a\r\nb", "a\nb\n"},
      {"--eol lf --final-eol add", "a\r", "a\n"},
      {"--final-eol add", "a\r\nb\rc", "a\r\nb\rc\r"},
      {"--final-eol add", "a\u0085b", "a\u0085b\u0085"},
      {"--final-eol add", "a", "a\n"},
      {"--final-eol add", "a\r", "a\r"},
      {"--final-eol add", "", ""},
      {"--final-eol add", "\n", "\n"},
      {"--eol crlf",
       "\xef\xbb\xbf"
       "a\n",
       "\xef\xbb\xbf"
       "a\r\n"},
      {"--eol lf --from ibm1047", "\x81\x15\x82\x25\x0d", "a\nb\n\n"},
      {"--eol nel --to ibm1047", "a\r\nb\n", "\x81\x15\x82\x15"},
      {"--eol nel --final-eol add --to utf-16be", "a", "\xfe\xff\0a\0\x85"s.substr(2)},
      {"--eol crlf --to shift_jis", "表\n", "\x95\x5c\r\n"},
  };
  std::string err;
  for (const auto &row : rows) {
    EXPECT_EQ(convert(row.options, row.input, &err), row.output) << row.options;
    EXPECT_EQ(err, "");
  }
  // By characters or by bytes: the way through UTF-8 gives the same.
  const std::string mixed = "a\nbé\r\nc\r\rd\u0085\n\re";
  for (const char *to : {"utf-16le", "utf-32be", "latin1", "ibm500", "gb18030"}) {
    for (const char *eol : {"lf", "crlf", "cr", "nel"}) {
      const std::string target = " --to "s + to, changes = "--final-eol add --eol "s + eol;
      const std::string changed = jxfile("convert - " + changes, mixed).out;
      const std::string text = jxfile("convert -" + target, changed).out;
      EXPECT_EQ(jxfile("lines - --from "s + to, convert(changes + target, mixed, &err)).out,
                jxfile("lines - --from "s + to, text).out)
          << to << eol;
    }
  }
}

TEST_F(Changes, FaultsArePutUpWith) {
  const struct {
    const char *options;
    std::string input, output;
    const char *tally;
  } rows[] = {
      {"--on-error replace", "a\n\xc3(\xe6\xbc\n\xff\xf0\x9f\x98", "a\n\ufffd(\ufffd\n\ufffd\ufffd",
       ": 4 faults replaced: record 2, byte offset 2, bytes c3; record 2, byte offset 4, bytes e6 "
       "bc; "
       "record 3, byte offset 7, bytes ff; and 1 more\n"},
      {"--on-error skip", "\xef\xbb\xbf\xffx", "\xef\xbb\xbfx",
       ": 1 fault skipped: record 1, byte offset 3, bytes ff\n"},
      {"--on-error escape", "\\x{41} \xff{\\u{", "\\x\\u{7b}41} \\x{ff}{\\u\\u{7b}",
       ": 1 fault escaped: record 1, byte offset 7, bytes ff\n"},
      {"--on-error escape --to latin1", "é\n漢\U0001f600", "\xe9\n\\u{6f22}\\u{1f600}",
       ": 2 faults escaped: record 2, U+6F22; record 2, U+1F600\n"},
      {"--on-error replace --to ascii --eol crlf", "é\n\xffz", "?\r\n?z",
       ": 2 faults replaced: record 1, U+00E9; record 2, byte offset 3, bytes ff\n"},
      {"--on-error replace --to ascii --eol lf", "\u0085漢\r\n", "\n?\n", ": 1 fault replaced"},
      {"--from ibm1047 --to ascii --eol lf", "\xc1\x15", "A\n", ""},
      {"--on-error replace --to ibm037", "漢", "\x6f", "U+6F22\n"},
      {"--on-error escape --from utf-16be", "\xd8\0\0a\xdc\0\0"s,
       "\\x{d8}\\x{00}a\\x{dc}\\x{00}\\x{00}", "byte offset 6, bytes 00\n"},
      {"--on-error escape --from utf-32le", "a\0\0\0\0\0\x11\0b"s,
       "a\\x{00}\\x{00}\\x{11}\\x{00}\\x{62}", ": 2 faults"},
      {"--on-error escape --from shift_jis", "x\x81 \x82\xa0\x81", "x\\x{81} あ\\x{81}",
       ": 2 faults escaped: record 1, byte offset 1, bytes 81; record 1, byte offset 5, bytes "
       "81\n"},
      {"--on-error escape --from windows-1252", "\x81\x80", "\\x{81}€", "bytes 81\n"},
      // What was shifted stays so.
      {"--on-error escape --from iso-2022-jp",
       "x\n\x1b$B04\xff"
       "04\x1b(By\n",
       "x\n梓\\x{ff}梓y\n", "record 2, byte offset 7, bytes ff\n"},
      {"--translit --to ascii", "“a” €\n", "\"a\" EUR\n", ": 3 characters transliterated\n"},
      {"--translit --on-error skip --to ascii", "“漢\n", "\"\n",
       ": 1 fault skipped: record 1, U+6F22; 1 character transliterated\n"},
      {"--translit --to latin1", "e\u0301", "e", ": 1 character transliterated\n"},
      {"--translit --on-error escape --to latin1", "é", "\xe9", ""},
  };
  for (const auto &row : rows) {
    std::string err;
    EXPECT_EQ(convert(row.options, row.input, &err), row.output) << row.options;
    EXPECT_TRUE(*row.tally ? err.ends_with(row.tally) || err.find(row.tally) != err.npos
                           : err.empty())
        << err;
  }
  put("in", "a\n漢\n");
  put("out", "old");
  check({
      {1, "convert in out --to ascii --translit", "",
       "in: no such character in the target encoding: record 2, U+6F22"},
      {1, "convert in out --to ascii --eol crlf", "", "record 2, byte offset 2, bytes e6 bc a2"},
      {1, "convert --to ascii --eol lf", "~^$", "byte offset 3, bytes e6 bc a2", "a\u0085漢"},
      {1, "convert --in-place in --to ascii --eol crlf", "", "in: no such character in the target"},
      {1, "convert - --eol lf", "a\n", "byte offset 2, bytes ff", "a\n\xff"},
      {2, "convert in --to windows-1252 --eol nel", "", "--eol: windows-1252 has no such line end"},
      {2, "convert --in-place in --to ascii --eol nel", "", "--eol: US-ASCII has no such line end"},
      {2, "convert in --on-error ignore", "", "'ignore' is none of stop, replace, skip, escape"},
      {2, "convert in --records text --eol lf", "", "--records text changes nothing else"},
  });
  EXPECT_EQ(get("out"), "old");
}

// What an escaped text was.
std::string unescaped(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const bool is_escape = text.starts_with("\\x{") || text.starts_with("\\u{");
    if (!is_escape) {
      bytes += text[0];
      text.remove_prefix(1);
      continue;
    }
    const size_t end = text.find('}');
    const auto value = std::stoul(std::string(text.substr(3, end - 3)), nullptr, 16);
    const auto append = [&bytes](unsigned long byte) { bytes += static_cast<char>(byte); };
    if (text[1] == 'x' || value < 0x80) {
      append(value);
    } else {
      if (value < 0x800) append(0xc0 | value >> 6);
      if (value >= 0x800 && value < 0x10000) append(0xe0 | value >> 12);
      if (value >= 0x10000) append(0xf0 | value >> 18), append(0x80 | (value >> 12 & 63));
      if (value >= 0x800) append(0x80 | (value >> 6 & 63));
      append(0x80 | (value & 63));
    }
    text.remove_prefix(end + 1);
  }
  return bytes;
}

TEST_F(Changes, EscapesGiveBackTheBytes) {
  const std::string_view parts[] = {"\\",       "x",    "u",    "{",          "}",    "7b",
                                    "\n",       "é",    "漢",   "\U0001f600", "\xc3", "\xe6\xbc",
                                    "\xf0\x9f", "\x80", "\xff", "plain text "};
  std::mt19937 random(20261126);
  for (int round = 0; round < 20; ++round) {
    std::string text = "x";  // no byte-order mark
    const size_t count = round % 3 == 0 ? 12000 : 60;
    while (text.size() < count) text += parts[random() % (round % 2 ? 16 : 10)];
    put("in", text);
    const std::string chunk = " --record-length " + std::to_string(4 + random() % 40000);
    for (const char *to : {"utf-8", "ascii", "big5"}) {
      const Outcome escaped = jxfile("convert in --on-error escape --to "s + to + chunk);
      const std::string back = jxfile("convert - --from "s + to, escaped.out).out;
      EXPECT_TRUE(unescaped(back) == text) << to << chunk << "\n" << escaped.err;
    }
  }
}

}  // namespace
}  // namespace jx::test
