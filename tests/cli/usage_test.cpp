// Command lines, help, colours, and the generated documents.
#include "cli/program.hpp"

namespace jx::test {
namespace {

class Usage : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    put("text", "one\ntwo\n");
    std::filesystem::create_directories(at("dir/sub"));
    put("dir/plain", "");
  }
};

TEST_F(Usage, CatalogueAndUsage) {
  check({
      {0, "status 0x80bfe801", "~JXWEM_E_NOTFOUND +file or directory not found\n"},
      {0, "status jxwem_e_eof", "~^0x80bfe80a "},
      {0, "status --json notempty", "~\"code\":\"0x80bfe81d\""},
      {0, "status", "~JX_E_NOMEM(.|\n)*JXWEM_E_NOMEMBER(.|\n)*JXHOST_E_MALFORMED"},
      {0, "encodings latin1 utf-16be",
       "ISO-8859-1       28591 1    -    8859_1 CP819 CSISOLATIN1 IBM819 ISO-IR-100 "
       "ISO_8859-1:1987 L1 LATIN1 OSF00010001\n"
       "UTF-16BE         24    2-4  mark CP1201 UCS-2BE UNICODEBIG\n"},
      {0, "encodings --json utf8 gb18030",
       "{\"name\":\"UTF-8\",\"number\":20,\"aliases\":[\"CP65001\",\"ISO-10646/UTF-8\","
       "\"ISO-IR-193\",\"OSF05010001\"],\"min_bytes\":1,\"max_bytes\":4,\"mark\":true}\n"
       "{\"name\":\"GB18030\",\"number\":54936,\"aliases\":[],\"min_bytes\":1,"
       "\"max_bytes\":4,\"mark\":false}\n"},
      {0, "encodings", "~UTF-8 (.|\n)*\nTSCII            not converted: it reorders"},
      {2, "encodings ISO2022-KR", "", "is not converted: it begins with a header"},
      {2, "encodings csISO2022KR", "", "is not converted: it begins with a header"},
      {1, "status 0x12345", "", "hint: list every status"},
      {2, "status nonsense", "", "neither a number nor a known name"},
      {0, "version", "~jxwem 3\\.2\\.1(.|\n)*/jxwem\\.so\n"},
      {1, "--module missing.so version", "", "missing.so: --module takes a path"},
      {1, "--module missing.so format %d 1", "", "hint: a file of that name"},
      {0, "check-host .",
       "~(skipped: .*\n)*[0-9]+ checks: [0-9]+ passed, 0 findings, [0-9]+ skipped\n"},
      {0, "check-host --tap", "~TAP version 13\nok 1 - (.|\n)*"},
      {1, "check-host text", "", "text: "},
      {2, "check-host --tap --json", "", "--json excludes --tap"},
      {1, "version --module ./missing.so", "", "/missing.so: file or directory not found"},
      {1, "version --module ./text", "", "cannot load the module: /"},
      {0, "--help", "~lines .*\n.*convert "},
      {0, "--version", "~jxwem 3"},
      {2, "", "", "a command is required"},
      {2, "--frobnicate", "", "jxfile: '--frobnicate' is not an option\nhint: jxfile --help"},
      {2, "frobnicate", "", "'frobnicate' is not a command\nhint: jxfile --help\n"},
      {2, "lnies text", "", "'lnies' is not a command\nhint: did you mean lines?\n"},
      {2, "conv text", "", "hint: did you mean convert?\n"},
      {2, "lines --nubmer text", "", "hint: did you mean --number?\n"},
      {2, "ls --colour=never", "", "hint: did you mean --color?\n"},
      {2, "--verison", "", "hint: did you mean --version?\n"},
      {2, "x text", "", "'x' is not a command\nhint: jxfile --help\n"},
      {2, "help tree", "", "jxfile: help: 'tree' is not a command"},
      {2, "help ls cp", "", "jxfile: help: "},
      {0, "help", "~lines .*\n.*convert "},
      {0, "help cp", "~OLD\\.\\.\\. NEW"},
      {0, "ls --color always dir", "plain\n\033[1;34msub\033[0m\n"},
      {1, "info --color always none", "", "\033[1;31mjxfile:\033[0m info: none: "},
      {2, "ls --color x", "", "--color is auto, always or never"},
      {2, "lines --frobnicate", "", "jxfile: lines: '--frobnicate' is not an option"},
  });
}

// What takes long shows on a terminal how far it is, and takes that away again.
TEST_F(Usage, ProgressIsShown) {
  put("large", std::string(400000, 'x'));
  const char *line =
      "script -qec \"'" JX_BINARY_DIR "/jxfile' lines large | (sleep 0.8; wc -c >&2)\" /dev/null";
  const std::string out = run({"/bin/sh", "-c", line}).out;
  EXPECT_TRUE(matches(out, "~\r\\[[#-]{40}\\] +[0-9]+%  [0-9.]+ [kM]?B/s  0:[0-9]{2} left")) << out;
  EXPECT_NE(out.find("\r\033[K"), out.npos) << out;
  EXPECT_NE(out.find("400000"), out.npos) << out;

  // Of a removal, members of the first directory with several.
  for (int i = 0; i < 80; ++i) {
    std::filesystem::create_directories(at("tree/only"));
    put("tree/only/" + std::to_string(i), "");
  }
  line =
      "export ASAN_OPTIONS=verify_asan_link_order=0:$ASAN_OPTIONS; script -qec "
      "\"SLOW_CALL=unlinkat "
      "LD_PRELOAD='" JX_FAIL_CALLS "' '" JX_BINARY_DIR "/jxfile' rm -r tree\" /dev/null";
  const std::string shown = run({"/bin/sh", "-c", line}).out;
  EXPECT_TRUE(matches(shown, "~\r\\[#{10}[#-]{29}-\\] +[0-9]+%  0:[0-9]{2} left")) << shown;
  EXPECT_TRUE(shown.ends_with("\r\033[K")) << shown;
  EXPECT_FALSE(std::filesystem::exists(at("tree")));
}

// A build folder of a checkout elsewhere is removed and configured anew; any other is kept.
TEST_F(Usage, MovedCheckoutIsConfiguredAnew) {
  std::filesystem::create_directories(at("build/i386"));
  put("CMakePresets.json", "");
  put("cmake", "#!/bin/sh\necho configured >>\"$root/log\"\n");
  std::filesystem::permissions(at("cmake"), std::filesystem::perms::owner_all);
  const auto configure = [this](const std::string &home) {
    put("build/i386/CMakeCache.txt", "CMAKE_HOME_DIRECTORY:INTERNAL=" + home + "\n");
    put("build/i386/build.ninja", "");
    put("log", "");
    const char *line =
        "export root=$PWD PATH=$PWD:$PATH; . '" JX_SOURCE_DIR "/tools/setup.sh'; configure i386";
    EXPECT_EQ(run({"/bin/bash", "-c", line}).code, 0);
    return get("log") + (std::filesystem::exists(at("build/i386/build.ninja")) ? "kept" : "gone");
  };
  EXPECT_EQ(configure("/elsewhere"), "configured\ngone");
  EXPECT_EQ(configure(std::filesystem::canonical(at("."))), "kept");
}

// Each help has an example, and every generated document is current.
TEST_F(Usage, DocumentsAreCurrent) {
  const std::string page = jxfile("generate man").out;
  EXPECT_EQ(page, read_all(JX_SOURCE_DIR "/docs/man/jxfile.1"));
  for (const auto &[shell, name] :
       {std::pair{"bash", "jxfile.bash"}, {"zsh", "_jxfile"}, {"fish", "jxfile.fish"}}) {
    EXPECT_EQ(jxfile(std::string("generate ") + shell).out,
              read_all(std::string(JX_SOURCE_DIR "/docs/completion/") + name));
  }
  const std::string section = "\n.SS \\fBjxfile ";
  int count = 0;
  for (size_t at = page.find(section); at != page.npos; at = page.find(section, at + 1), ++count) {
    const size_t start = at + section.size();
    std::string name = page.substr(start, page.find("\\f", start) - start);
    std::erase(name, '\\');
    const Outcome help = jxfile(name + " --help");
    EXPECT_EQ(help.code, 0) << name;
    EXPECT_NE(help.out.find("Example:\n  "), help.out.npos) << name;
  }
  EXPECT_EQ(count, 24);
}

}  // namespace
}  // namespace jx::test
