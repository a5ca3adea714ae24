// A test of operations on paths: their errors go to a journal, which is checked.
#pragma once

#include <cstring>

#include "support/journal.hpp"
#include "support/syscalls.hpp"
#include "support/tree_fixture.hpp"

namespace jx::test {

// The instance's errors go to a journal. The test may change the current directory.
class PathTest : public TreeTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(instance);
    instance->journal = journal.journal();
  }
  void TearDown() override {
    expect_journal();
    fs::current_path("/");
    InstanceTest::TearDown();
  }

  // Checks that the journal got the text of each errno, in order, and nothing else.
  void expect_journal(const std::vector<int> &errors = {}) {
    std::vector<std::string> expected;
    std::vector<std::string> found;
    for (const int error : errors) expected.emplace_back(std::strerror(error));
    for (const JournalLine &line : journal.take_lines()) {
      EXPECT_EQ(line.operation, "status_to_journal");
      EXPECT_EQ(line.words, (std::vector<uintptr_t>{4, JXWEM_E_SYSTEM}));
      found.push_back(line.text);
    }
    EXPECT_EQ(found, expected);
  }

  // Calls an operation that takes a path first.
  template <typename Operation, typename... Rest>
  auto call(Operation operation, const JXString &path, Rest... rest) {
    return operation(instance, path.data(), chars(path), rest...);
  }
  JXStatus exist(const JXString &path) { return call(instance->exist, path); }
  JXStatus is_dir(const JXString &path) { return call(bkwemisdir, path); }
  JXStatus make(const JXString &path) { return call(instance->make_directory, path); }
  JXStatus remove(const JXString &path, uint32_t flags = 0) {
    return call(instance->remove, path, flags);
  }
  JXStatus rename(const JXString &from, const JXString &to) {
    return call(instance->rename, from, to.data(), chars(to));
  }
  JXStatus copy(const JXString &from, const JXString &to) {
    return call(instance->copy, from, to.data(), chars(to));
  }

  RecordingJournal journal;
};

}  // namespace jx::test
