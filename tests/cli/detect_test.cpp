// Encodings and line ends told from the bytes.
#include "cli/program.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

class Detect : public ProgramTest {
 protected:
  // The value of a key in the output of detect.
  std::string told(const std::string &name, const std::string &key, std::string_view input = {}) {
    return value_in(jxfile("detect --json " + name, input).out, key);
  }
  static std::string value_in(const std::string &row, const std::string &key) {
    const size_t at = row.find("\"" + key + "\":");
    if (at == row.npos) return "no such key in " + row;
    const size_t start = at + key.size() + 3;
    return row.substr(start, row.find_first_of(",}", start) - start);
  }
};

const char *const kGerman =
    "Übergrößenträger hören süße Lieder über die schönen Mädchen, während drüben am Fluß die "
    "Kühe grün gefärbte Äpfel äßen und über die Böschung gehen könnten. Für größere Mühen fehlt "
    "ihnen natürlich die Lust.\n";
const char *const kPolish =
    "Użytkownik może określić, które pliki są kopiowane, a które należy pominąć. Jeżeli ścieżka "
    "nie istnieje, wyświetlony zostanie błąd i działanie się zakończy; następną próbę można podjąć "
    "później, gdy urządzenie będzie znów dostępne.\n";
const char *const kRussian =
    "Если файл не найден, программа сообщает об ошибке и завершает работу. Пользователь может "
    "указать другой каталог или создать новый.\n";
const char *const kGreek =
    "Το αρχείο δεν βρέθηκε στον κατάλογο που ορίσατε, και η εντολή δεν μπορεί να συνεχίσει. "
    "Δοκιμάστε πάλι με άλλο όνομα.\n";
const char *const kJapanese =
    "指定されたファイルが見つかりませんでした。名前を確認してから、もう一度実行してください。\n";
const char *const kSimplified = "无法打开指定的文件，请检查文件名是否正确，然后重新运行该命令。\n";
const char *const kTraditional =
    "無法開啟指定的檔案，請檢查檔案名稱是否正確，然後重新執行這個命令。\n";
const char *const kKorean =
    "지정한 파일을 찾을 수 없습니다. 이름을 확인하고 명령을 다시 실행하십시오.\n";

struct Told {
  const char *encoding;  // that the text is converted to
  const char *text;
  const char *name;  // what is told
  bool is_certain = false;
};

TEST_F(Detect, TellsTheEncodingOfTextsAndAutoUsesIt) {
  const Told rows[] = {
      {"ascii", "plain\n", "US-ASCII", true},
      {"utf-8", kGerman, "UTF-8", true},
      {"utf-16", kGerman, "UTF-16LE", true},
      {"utf-16le", kGreek, "UTF-16LE", true},
      {"utf-16be", kJapanese, "UTF-16BE", true},
      {"utf-32le", kRussian, "UTF-32LE", true},
      {"utf-32be", "a b", "UTF-32BE", true},
      {"iso-2022-jp", kJapanese, "ISO-2022-JP", true},
      {"latin1", kGerman, "windows-1252"},
      {"cp850", kGerman, "IBM850"},
      {"macintosh", kGerman, "macintosh"},
      {"latin2", kPolish, "ISO-8859-2"},
      {"cp1250", kPolish, "windows-1250"},
      {"cp852", kPolish, "IBM852"},
      {"cp1251", kRussian, "windows-1251"},
      {"koi8-r", kRussian, "KOI8-R"},
      {"iso-8859-5", kRussian, "ISO-8859-5"},
      {"cp866", kRussian, "IBM866"},
      {"cp1253", kGreek, "windows-1253"},
      {"cp737", kGreek, "CP737"},
      {"shift_jis", kJapanese, "Shift_JIS"},
      {"euc-jp", kJapanese, "EUC-JP"},
      {"gb18030", kSimplified, "GB18030"},
      {"big5", kTraditional, "Big5"},
      {"euc-kr", kKorean, "EUC-KR"},
  };
  for (const Told &row : rows) {
    SCOPED_TRACE(row.encoding);
    put("text", row.text);
    ASSERT_EQ(jxfile("convert text coded --to "s + row.encoding).code, 0);
    const std::string bytes = get("coded");
    const std::string detected = jxfile("detect --json coded").out;
    EXPECT_EQ(value_in(detected, "encoding"), "\""s + row.name + "\"");
    EXPECT_EQ(value_in(detected, "certain"), row.is_certain ? "true" : "false");
    EXPECT_EQ(value_in(detected, "line_ends"), row.text == "a b"s ? "\"none\"" : "\"lf\"");
    EXPECT_EQ(jxfile("lines --from auto coded").out, row.text);
    EXPECT_EQ(jxfile("lines --from auto -", bytes).out, row.text);
    EXPECT_EQ(jxfile("convert --no-bom --from auto coded").out, row.text);
    EXPECT_EQ(jxfile("convert --no-bom --from auto -", bytes).out, row.text);
    EXPECT_EQ(jxfile("convert --no-bom --from auto --in-place coded").code, 0);
    EXPECT_EQ(get("coded"), row.text);
    // What tells the encoding may come late in a file.
    const std::string ascii(row.is_certain ? 0 : 300000, '\n');
    put("late", ascii + bytes);
    EXPECT_EQ(jxfile("lines --from auto late").out, ascii + row.text);
  }
}

// What cannot be told is never taken for something.
TEST_F(Detect, AutoStopsWhereItIsNotSure) {
  std::string random;
  for (uint32_t i = 0, state = 1; i < 5000; ++i, state = state * 1664525 + 1013904223) {
    random += static_cast<char>(state >> 24);
  }
  const std::string german =
      "Die Firma Schr\xf6"
      "der in K\xf6ln.\n";
  const std::pair<std::string, const char *> rows[] = {
      {"na\xefve\n", "it reads like no language"},
      {"H\xe4user\n", "windows-1252 "},
      {random, "it reads like no language"},
      {kPolish + "\xff"s + kPolish, "it is UTF-8 with damage: at 1 place, first at byte offset "},
      {std::string(100000, ' ') + kPolish + "\xff\xff", "at 2 places, first at byte offset 100263"},
      {"\x40\xc8\x85\x93\x93\x96\x6b\x40\xa6\x96\x99\x93\x84\x4b\x15", "IBM037 90 %"},
      // Hebrew, which is not known, reads somewhat like Russian.
      {"\xeb\xec \xe1\xf0\xe9 \xe4\xe0\xe3\xed \xf0\xe5\xec\xe3\xe5 \xe1\xf0\xe9 "
       "\xe7\xe5\xf8\xe9\xef "
       "\xe5\xf9\xe5\xe5\xe9\xed \xe1\xf2\xf8\xeb\xed",
       "it reads like Russian in this encoding: "},
      {"\xf9\xec\xe5\xed \xf2\xe5\xec\xed, \xee\xe4 \xf9\xec\xe5\xee\xea \xe4\xe9\xe5\xed",
       " 90 %"},
      // Two names, each ended by a zero.
      {"one name\0two\0"s + "\xe4", "cannot be told"},
      // A word without a blank, and the same cut off.
      {"h\0i\0"s, "it may be wide units: UTF-16LE ("},
      // Wide units, the last one cut.
      {"a\0 \0b"s, "it may be wide units: "},
      {"\4\x1f\4"s, "it may be wide units: UTF-16LE, UTF-16BE ("},
  };
  for (const auto &[bytes, reason] : rows) {
    put("in", bytes);
    put("out", "old");
    for (const char *line : {"lines --from auto in", "convert --from auto in out",
                             "convert --from auto --in-place in"}) {
      const Outcome outcome = jxfile(line);
      expect_failure(outcome, "the encoding cannot be told: ");
      if (reason != "cannot be told"s) expect_failure(outcome, reason);
      EXPECT_EQ(outcome.out, "");
    }
    expect_failure(jxfile("convert --from auto -", bytes), "JXHOST_E_");
    EXPECT_EQ(get("out"), "old");
  }
  // A pipe goes on after a long start of ASCII, and stops where it must.
  const std::string ascii(300000, '\n');
  EXPECT_EQ(jxfile("lines --from auto -", ascii + kPolish).out, ascii + kPolish);
  expect_failure(jxfile("lines --from auto -", ascii + german), "byte offset 300014, bytes f6");
  check({{2, "convert --to auto in", "", "the encoding 'auto' is not known"}});
}

struct Lines {
  const char *encoding;
  std::string_view text;
  const char *expected;  // from the kind of line ends on
};

TEST_F(Detect, CountsLinesAndZeros) {
  const Lines rows[] = {
      {"ascii", "",
       R"("none","lf":0,"crlf":0,"cr":0,"nel":0,"final_line_end":true,"lines":0,)"
       R"("longest_line":0,"longest_bytes":0,"nuls":0})"},
      {"ascii", "a\nbcd",
       R"("lf","lf":1,"crlf":0,"cr":0,"nel":0,"final_line_end":false,"lines":2,)"
       R"("longest_line":2,"longest_bytes":3,"nuls":0})"},
      {"ascii", "ab\r\rc\r\n\n\r",
       R"("mixed","lf":1,"crlf":1,"cr":3,"nel":0,"final_line_end":true,"lines":5,)"
       R"("longest_line":1,"longest_bytes":2,"nuls":0})"},
      {"utf-16be", "ä\r\nb c\r\n",
       R"("crlf","lf":0,"crlf":2,"cr":0,"nel":0,"final_line_end":true,"lines":2,)"
       R"("longest_line":2,"longest_bytes":6,"nuls":0})"},
      {"utf-8", "ä\u0085Ж\u0085",
       R"("nel","lf":0,"crlf":0,"cr":0,"nel":2,"final_line_end":true,)"
       R"("lines":2,"longest_line":1,"longest_bytes":2,"nuls":0})"},
      {"utf-8",
       {"\0\0\xc3\xa4\0", 5},
       R"("none","lf":0,"crlf":0,"cr":0,"nel":0,"final_line_end":false,"lines":1,)"
       R"("longest_line":1,"longest_bytes":5,"nuls":3})"},
      {"ibm037", "The house stands beside the river and the\u0085other one is in the town.\u0085",
       R"("nel","lf":0,"crlf":0,"cr":0,"nel":2,"final_line_end":true,"lines":2,)"
       R"("longest_line":1,"longest_bytes":41,"nuls":0})"},
  };
  for (const Lines &row : rows) {
    put("text", row.text);
    ASSERT_EQ(jxfile("convert text coded --to "s + row.encoding).code, 0);
    const std::string expected = "\"line_ends\":"s + row.expected + "\n";
    const std::string json = jxfile("detect --json coded").out;
    EXPECT_TRUE(json.ends_with(expected)) << json << expected;
  }
  put("text", "\xef\xbb\xbfGr\xc3\xbc\xc3\x9f\x65\r\n\n\xe2\x82");
  check({
      {0, "detect text",
       "text\n  encoding    unknown\n  reason      it begins with the byte-order mark ef bb bf, up "
       "to byte offset 13 with the bytes e2 82, cut off by the end of the file\n"
       "  candidate   UTF-8\n  mark        yes\n  line ends   lf 1, crlf 1; none at the end\n"
       "  longest     10 bytes, line 1\n"},
      {0, "detect -",
       "standard input\n  encoding    US-ASCII, certain\n  reason      every byte is ASCII\n"
       "  mark        no\n  line ends   none; none at the end\n  longest     1 bytes, line 1\n",
       "", "x"},
      {1, "detect missing text", "~^text\n", "missing: file or directory not found"},
  });
}

}  // namespace
}  // namespace jx::test
