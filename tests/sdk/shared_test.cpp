// One instance used by many threads, and one file used by several handles, processes and at once by
// a reader and a writer.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <tuple>
#include <vector>

#include "sdk/wrapper_support.hpp"
#include "support/scale.hpp"

namespace jx::test {
namespace {

using wem::OpenOptions;
using Shared = WrapperTest;

constexpr uint32_t kThreads = 16;

// Nothing here is the test framework's: it is called by threads.
bool works_alone(const wem::Instance &instance, const std::string &folder,
                 const std::vector<std::string> &lines) {
  const auto name = instance.create_name(folder, {});
  if (!name || !instance.copy(folder + "/common", *name).ok()) return false;
  {
    const auto options = OpenOptions::append().text().file_encoding(JX_ENCODING_UTF8);
    auto file = instance.open(*name, options);
    if (!file || !file->write_line(lines.back()).ok() || !file->close().ok()) return false;
  }
  const auto read = instance.read_lines(*name);
  auto expected = lines;
  expected.push_back(lines.back());
  if (!read || *read != expected) return false;
  const auto list = instance.directory_list(folder, JX_DIRECTORY_NAMED, JX_LIST_INFORMATION);
  if (!list || !instance.info(*name)) return false;
  return instance.rename(*name, folder + "/" + std::to_string(gettid())).ok() &&
         instance.remove(folder + "/" + std::to_string(gettid())).ok();
}

TEST_F(Shared, SixteenThreadsUseOneInstance) {
  const std::vector<std::string> lines = {"first", "gr\xc3\xbc\xc3\x9f", std::string(9000, 'x')};
  put("common", lines[0] + "\n" + lines[1] + "\n" + lines[2] + "\n");
  const uint32_t descriptors = open_descriptors();
  std::atomic<uint32_t> failures = 0;
  {
    std::vector<std::jthread> threads;
    for (uint32_t i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        for (auto round = scaled(40) + 2; round > 0; --round) {
          if (!works_alone(instance(), dir_.path(), lines)) ++failures;
        }
      });
    }
  }
  EXPECT_EQ(failures, 0u);
  EXPECT_EQ(open_descriptors(), descriptors);
}

// Another process opens and closes the file.
JXStatus open_elsewhere(const wem::Instance &instance, const std::string &name,
                        const OpenOptions &options) {
  const pid_t child = fork();
  if (child == 0) _exit(instance.open(name, options) ? 0 : 1);
  int code = 0;
  waitpid(child, &code, 0);
  return WIFEXITED(code) && WEXITSTATUS(code) == 0 ? JX_OK : JXWEM_E_INUSE;
}

TEST_F(Shared, LocksBetweenHandlesAndProcesses) {
  const OpenOptions input = OpenOptions::input(), output = OpenOptions::output();
  const OpenOptions update = OpenOptions::update(), append = OpenOptions::append();
  const std::tuple<OpenOptions, OpenOptions, JXStatus> rows[] = {
      {input, input, JX_OK},
      {input, output, JXWEM_E_INUSE},
      {input, output.lock(JX_LOCK_NONE), JX_OK},
      {input, update.lock(JX_LOCK_SHARED), JX_OK},
      {input.lock(JX_LOCK_EXCLUSIVE), input, JXWEM_E_INUSE},
      {input.lock(JX_LOCK_NONE), output, JX_OK},
      {output, input, JXWEM_E_INUSE},
      {append, append, JXWEM_E_INUSE},
      {append.lock(JX_LOCK_SHARED), append.lock(JX_LOCK_SHARED), JX_OK},
      {append.lock(JX_LOCK_NONE), update, JX_OK},
      {update, update, JXWEM_E_INUSE},
      {input.lock(JX_LOCK_WAIT), input.lock(JX_LOCK_WAIT), JX_OK},
  };
  for (const auto &[held, asked, expected] : rows) {
    put("file", "content");
    wem::File holder = *instance().open(at("file"), held);
    const auto row = std::to_string(&expected - &std::get<2>(rows[0]));
    EXPECT_EQ(instance().open(at("file"), asked).status(), expected) << row;
    EXPECT_EQ(open_elsewhere(instance(), at("file"), asked), expected) << row;
    EXPECT_TRUE(holder.close().ok());
    EXPECT_EQ(open_elsewhere(instance(), at("file"), output), JX_OK) << "after " << row;
  }
}

// What a reader sees of a growing file is a beginning of it, whole lines but for the last.
TEST_F(Shared, ReadsWhileAnotherAppends) {
  const auto line_count = static_cast<uint32_t>(scaled(20'000));
  put("log", "");
  const auto line = [](uint32_t i) { return "line " + std::to_string(i); };
  std::atomic<bool> has_failed = false;
  const std::jthread writer([&] {
    const auto options = OpenOptions::append().text().lock(JX_LOCK_NONE);
    auto file = instance().open(at("log"), options);
    for (uint32_t i = 0; file && i < line_count; ++i) {
      if (!file->write_line(line(i)).ok() || (i % 7 == 0 && !file->flush().ok())) has_failed = true;
    }
    if (!file || !file->close().ok()) has_failed = true;
  });
  for (const bool is_buffered : {true, false}) {
    for (size_t seen = 0, before = 0; seen < line_count && !has_failed; before = seen) {
      const auto options = OpenOptions::input().text().lock(JX_LOCK_NONE);
      auto file = instance().open(at("log"), is_buffered ? options : options.direct());
      const auto lines = file->read_lines();
      ASSERT_TRUE(lines);
      seen = lines->size();
      for (size_t i = 0; i + 1 < seen; ++i) ASSERT_EQ((*lines)[i], line(static_cast<uint32_t>(i)));
      if (seen != 0) {
        ASSERT_TRUE(line(static_cast<uint32_t>(seen - 1)).starts_with(lines->back()));
      }
      ASSERT_GE(seen, before);
    }
  }
  EXPECT_FALSE(has_failed);
}

}  // namespace
}  // namespace jx::test
