// What a kernel that is right gets, in each form; the entry; the kernel of the examples.
#include <algorithm>

#include "check/examination.hpp"
#include "host/test_host.hpp"

extern "C" JXHost *kernel_host(void);  // of examples/own_kernel.c

namespace jx::test {
namespace {

using Lines = std::vector<std::string>;

Lines lines_of(const std::string &text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// A report as text, TAP and JSON: how it begins and ends, and what each line between begins with.
TEST(Report, ReferenceHostPasses) {
  struct Row {
    uint32_t format;
    uint32_t flags;
    uint32_t seconds;  // the fewer, the shorter threads are tried
    const char *first, *line, *last;
  };
  for (const Row &row : {Row{JXCHECK_TEXT, 0, 0, "", "skipped: ", "N checks: "},
                         {JXCHECK_TEXT, JXCHECK_SAME_PROCESS, 2, "", "skipped: ", "N checks: "},
                         {JXCHECK_TAP, 0, 2, "TAP version 13", "ok ", "1..N"},
                         {JXCHECK_JSON, 0, 2, "", "{\"check\":", "{\"checks\":N,\"passed\":"}}) {
    TestHost host;
    JXCheckConfig config = JXCHECK_CONFIG_INIT;
    config.journal = host.journal();
    config.format = row.format;
    config.flags = row.flags;
    config.seconds = row.seconds;
    const mode_t mask = umask(027);
    const Examination result = examine(host.get(), config);
    EXPECT_EQ(umask(mask), 027u);
    EXPECT_EQ(result.status, JX_OK) << result.report;
    EXPECT_GT(result.counts.passed, 120u) << result.report;
    const uint32_t total = result.counts.passed + result.counts.skipped;
    std::string last = row.last;
    last.replace(last.find('N'), 1, std::to_string(total));
    Lines lines = lines_of(result.report);
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(lines.back().starts_with(last)) << lines.back();
    lines.pop_back();
    if (*row.first) {
      EXPECT_EQ(lines.at(0), row.first);
      lines.erase(lines.begin());
    }
    EXPECT_EQ(lines.size(), row.format == JXCHECK_TEXT ? result.counts.skipped : total);
    for (const std::string &line : lines) EXPECT_TRUE(line.starts_with(row.line)) << line;
    EXPECT_EQ(jxhost_live_objects(host.get()), 0u);
    host.take_lines();
  }
}

// Every line names a heading of the guide, and a finding has all its parts in each form.
TEST(Report, FindingsInEachForm) {
  const std::string page = read_file(JX_SOURCE_DIR "/docs/host-guide.md");
  TestHost host;
  host->nls->needs_conversion = [](auto...) { return 0; };
  JXCheckConfig config = JXCHECK_CONFIG_INIT;
  config.seconds = 2;
  const char *const expected[] = {
      "finding: nls.needs_conversion: every pair of 0, 20, 24 to 27 and 62; came: 0 from 0 to 0; "
      "promised: 0 only where bytes can be copied unchanged, never for 0; guide: Conversions that "
      "the module needs\n",
      "nls.needs_conversion: every pair of 0, 20, 24 to 27 and 62; came: 0 from 0 to 0; promised: ",
      "\"outcome\":\"finding\",\"slot\":\"nls.needs_conversion\",\"asked\":\"every pair of 0, 20, "
      "24 "
      "to 27 and 62\",\"came\":\"0 from 0 to 0\",\"promised\":\"0 only where bytes can be copied "
      "unchanged, never for 0\",\"guide\":\"Conversions that the module needs\"}\n"};
  for (const uint32_t format : {JXCHECK_TEXT, JXCHECK_TAP, JXCHECK_JSON}) {
    config.format = format;
    const Examination result = examine(host.get(), config);
    EXPECT_NE(result.report.find(expected[format]), std::string::npos) << result.report;
    EXPECT_EQ(result.counts.findings, 1u);
    EXPECT_EQ(result.status, JXWEM_E_FAILED);
    EXPECT_TRUE(std::ranges::all_of(result.headings, [&](const std::string &heading) {
      return page.find("# " + heading + "\n") != page.npos;
    }));
    EXPECT_GE(result.headings.size(), 6u);
  }
}

TEST(Report, Arguments) {
  TestHost host;
  const auto run = checker<decltype(jxcheck_run)>("jxcheck_run");
  JXCheckCounts counts;
  JXCheckConfig config = JXCHECK_CONFIG_INIT;
  EXPECT_EQ(run(nullptr, &config, &counts), JX_E_BADARG);
  config.format = 3;
  EXPECT_EQ(run(host.get(), &config, &counts), JX_E_BADARG);
  config = JXCHECK_CONFIG_INIT;
  config.flags = 2;
  EXPECT_EQ(run(host.get(), &config, &counts), JX_E_BADARG);
  config = JXCHECK_CONFIG_INIT;
  config.folder_fd = 12345;
  EXPECT_EQ(run(host.get(), &config, nullptr), JXWEM_E_SYSTEM);
  config = JXCHECK_CONFIG_INIT;
  config.output_fd = open("/dev/full", O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(run(host.get(), &config, nullptr), JXWEM_E_SYSTEM);
  close(config.output_fd);
}

// Loaded in the place of the module, with the folder as an option or none.
TEST(Entry, TakesThePlaceOfTheModule) {
  for (const bool is_broken : {false, true}) {
    TestHost host;
    const TempDir folder;
    const int fd = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_EQ(jxhost_set_option(host.get(), JXCHECK_FOLDER_OPTION, fd), JX_OK);
    if (is_broken) host->nls->needs_conversion = nullptr;
    testing::internal::CaptureStderr();
    JXHostModule *module = nullptr;
    JXInstance *instance = jxhost_load(host.get(), JXCHECK_PATH, nullptr, &module, nullptr);
    const Lines lines = lines_of(testing::internal::GetCapturedStderr());
    EXPECT_EQ(lines.back().find(" 0 findings, ") != std::string::npos, !is_broken) << lines.back();
    ASSERT_EQ(instance == nullptr, is_broken);
    if (instance) {
      JXStatus status = JX_OK;
      EXPECT_EQ(instance->exist(instance, nullptr, 0), JX_E_UNSUPPORTED);
      EXPECT_EQ(instance->info(instance, nullptr, nullptr, 0, &status), nullptr);
      EXPECT_EQ(status, JX_E_UNSUPPORTED);
    }
    jxhost_unload(module);
    close(fd);
  }
}

// The kernel of the examples has no tables and no options, knows two encodings, locks nothing,
// takes the third letter for a name, and ends the program where it is asked for more.
TEST(ExampleKernel, HasItsLimitsNamed) {
  std::set<std::string> slots;
  for (const std::string &line : examine(kernel_host(), JXCHECK_CONFIG_INIT).findings) {
    slots.insert(line.substr(0, line.find(':')));
  }
  slots.erase("pool.pool_allocate");  // threads may or may not meet there
  const std::set<std::string> limits = {"handle.create_table",   "handle.get_option",
                                        "handle.load_extension", "pool.pool_free",
                                        "lock.lock_acquire",     "nls.encoding_info",
                                        "nls.create_transcoder", "nls.measure_conversion",
                                        "transcoder.transcode",  "jxelm.open_file"};
  EXPECT_EQ(slots, limits);
}

}  // namespace
}  // namespace jx::test
