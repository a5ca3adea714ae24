// Runs jxcheck.so on a kernel and keeps what it reports.
#pragma once

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "jx/jxcheck.h"
#include "support/files.hpp"

namespace jx::test {

// A routine of jxcheck.so, which stays loaded.
template <typename Routine>
Routine *checker(const char *name) {
  void *library = dlopen(JXCHECK_PATH, RTLD_NOW | RTLD_LOCAL);
  void *address = library ? dlsym(library, name) : nullptr;
  EXPECT_NE(address, nullptr) << name;
  return reinterpret_cast<Routine *>(address);
}

struct Examination {
  JXStatus status = JX_OK;
  JXCheckCounts counts = {};
  std::vector<std::string> findings;  // "slot: asked; came: what came; promised: what is promised"
  std::vector<std::string> skipped;   // "slot: asked: why"
  std::set<std::string> headings;     // of the guide
  std::string report;                 // as written
};

// Examines a kernel in a folder of its own, which is left as it was.
inline Examination examine(JXHost *host, JXCheckConfig config) {
  Examination result;
  const TempDir folder;
  const int fd = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::string output = folder.file("report");
  config.folder_fd = fd;
  config.output_fd = open(output.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  config.context = &result;
  config.sink = [](void *context, const JXCheckLine *line) {
    auto &kept = *static_cast<Examination *>(context);
    kept.headings.insert(line->guide8);
    const std::string asked = std::string(line->slot8) + ": " + line->asked8;
    if (line->outcome == JXCHECK_SKIPPED) kept.skipped.push_back(asked + ": " + line->came8);
    if (line->outcome != JXCHECK_FINDING) return;
    kept.findings.push_back(asked + "; came: " + line->came8 + "; promised: " + line->promised8);
  };
  result.status = checker<decltype(jxcheck_run)>("jxcheck_run")(host, &config, &result.counts);
  close(config.output_fd);
  result.report = read_file(output);
  EXPECT_EQ(unlink(output.c_str()), 0);
  EXPECT_EQ(rmdir(folder.path().c_str()), 0) << "something was left in the folder";
  EXPECT_EQ(mkdir(folder.path().c_str(), 0700), 0);
  close(fd);
  return result;
}

}  // namespace jx::test
