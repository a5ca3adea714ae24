// Conversions there and back, and what a failed one leaves.
#include "cli/program.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

class Text : public ProgramTest {};

TEST_F(Text, ThereAndBackGivesTheSameBytes) {
  std::string lines;
  for (int i = 0; i < 3000; ++i)
    lines += "äöü 漢字 \U0001f600 " + std::string(static_cast<size_t>(i) % 97, 'x') + "\n";
  const std::string mark = "\xef\xbb\xbf";
  const std::vector<std::string> texts = {"",
                                          "\n",
                                          "no line end",
                                          "a\nb\n",
                                          "a\r\nb\r\n",
                                          "mixed\r\nand\nlast",
                                          mark + "marked\n",
                                          mark,
                                          "inside\n" + mark + "mark\n",
                                          "nul\0inside\n"s,
                                          lines,
                                          lines + "\xe6\xbc\xa2"};
  for (size_t i = 0; i < texts.size(); ++i) {
    const std::string chunk =
        texts[i].size() > 1000 ? " --record-length 4096" : " --record-length 7";
    for (const std::string encoding : {"utf-16le", "utf-16be", "utf-32le", "utf-32be", "utf-8"}) {
      put("in", texts[i]);
      const Outcome there = jxfile("convert in there --to " + encoding + chunk);
      const Outcome back = jxfile("convert there back --to utf-8 --from " + encoding + chunk);
      EXPECT_EQ(there.code + back.code, 0) << there.err << back.err;
      EXPECT_EQ(get("back"), texts[i]) << "text " << i << " through " << encoding;
    }
  }
}

TEST_F(Text, MarksLineEndsAndPipes) {
  put("in", "a\r\nb");
  EXPECT_EQ(jxfile("convert in out --to utf-16be --bom").code, 0);
  EXPECT_EQ(get("out"), "\xfe\xff\0a\0\r\0\n\0b"s);
  EXPECT_EQ(jxfile("lines out").out, "a\nb");
  EXPECT_EQ(jxfile("convert out plain --no-bom --records text").code, 0);
  EXPECT_EQ(get("plain"), "a\nb\n");
  EXPECT_EQ(jxfile("convert - out --to latin1", "ä").code, 0);
  EXPECT_EQ(get("out"), "\xe4");
  EXPECT_EQ(jxfile("lines --from latin1 out").out, "ä");
  EXPECT_EQ(jxfile("lines -",
                   "\xff\xfe"
                   "a\0\n\0"s)
                .out,
            "a\n");
  // An append adds no second mark.
  EXPECT_EQ(jxfile("convert in sum --bom").code, 0);
  EXPECT_EQ(jxfile("convert in sum --bom --append").code, 0);
  EXPECT_EQ(get("sum"),
            "\xef\xbb\xbf"
            "a\r\nba\r\nb");
}

struct FaultRow {
  std::string_view bytes;
  const char *from;
  const char *to;
  const char *place;
};

TEST_F(Text, FaultsAreNamedAndLeaveTheTarget) {
  std::string shifted = "\n\x1b$B";  // a line that is checked in parts
  while (shifted.size() < 200000) shifted += "04";
  shifted += '0';
  const FaultRow rows[] = {
      {"ok\nx\xc3(\n", "utf-8", "utf-16le", "record 2, byte offset 4, bytes c3 28 "},
      {"ok\nx\xc3(\n", "utf-8", "utf-8", "record 2, byte offset 4, bytes c3 28 "},
      {"ok\nx\xe6\xbc", "utf-8", "utf-16le", "bytes e6 bc, cut off by the end of the file"},
      {"\xef\xbb\xbf\n\xff", "utf-8", "utf-16le", "record 2, byte offset 4, bytes ff "},
      {"a\n\n\xe6\xbc\xa2", "utf-8", "latin1",
       "record 3, byte offset 3, bytes e6 bc a2 (JXHOST_E_UNMAPPABLE"},
      {{"a\0\n\0\0", 5}, "utf-16le", "utf-8", "record 2, byte offset 4, bytes 00, cut off"},
      {{"a\0\0\0\n\0\0\0\0\0\x11\0", 12},
       "utf-32le",
       "utf-8",
       "record 2, byte offset 8, bytes 00 00 11"},
      {shifted, "iso-2022-jp", "utf-8", "record 2, byte offset 200000, bytes 30, cut off"},
      {{"\0a\xd8\x00\0b", 6}, "utf-16be", "utf-8", "record 1, byte offset 2, bytes d8 00 "},
  };
  for (const FaultRow &row : rows) {
    put("in", row.bytes);
    put("out", "old");
    const std::string from = " --from "s + row.from;
    const std::string from_to = from + " --to " + row.to;
    expect_failure(jxfile("convert in out" + from_to), row.place);
    expect_failure(jxfile("convert - out" + from_to, row.bytes), row.place);
    expect_failure(jxfile("convert in out --records text" + from_to), row.place);
    EXPECT_EQ(get("out"), "old") << row.place;
    if (row.to != "latin1"s) {
      expect_failure(jxfile("lines in" + from), row.place);
      expect_failure(jxfile("lines -" + from, row.bytes), row.place);
    }
  }
  EXPECT_EQ(names(), "in out ");
  // Text appended before the fault stays.
  put("in", "one\ntwo\n\xff\nthree\n");
  expect_failure(jxfile("convert in out --append"), "record 3, byte offset 8, bytes ff");
  EXPECT_EQ(get("out"), "oldone\ntwo\n");
  expect_failure(jxfile("write --append out", "1\n\xff\n"), "record 2, byte offset 2");
  EXPECT_EQ(get("out"), "oldone\ntwo\n1\n");
  expect_failure(jxfile("write --append fresh", "\xff\n"), "record 1, byte offset 0");
  std::string chunks;
  while (chunks.size() < 300000) chunks += "a line\n";
  expect_failure(jxfile("write --append out", chunks + "2\n\xff\n3\n"), "record 42860");
  EXPECT_TRUE(get("out").ends_with("a line\n2\n"));
  // An endless line is refused as soon as it is too long.
  const std::string endless = "yes | tr -d '\\n' | " JX_BINARY_DIR "/jxfile write fresh";
  expect_failure(run({"/bin/sh", "-c", endless}), "record 1 (JXWEM_E_TOOLONG");
  EXPECT_EQ(names(), "in out ");
}

TEST_F(Text, ExamplesRun) {
  const char *const lines = "1: first line\n2: zweite Zeile: äöü\n3: 第三行\n3 records\n";
  for (const char *example : {"example_c", "example_cpp"}) {
    const Outcome outcome = run({JX_BINARY_DIR "/examples/"s + example, JXWEM_PATH, at("text")});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_TRUE(outcome.out.starts_with(lines)) << outcome.out;
    EXPECT_EQ(get("text").substr(0, 4),
              "\xff\xfe"
              "f\0"s);
  }
}

}  // namespace
}  // namespace jx::test
