// Files in tests: a folder of the test's own, whole files in and out.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace jx::test {

// A new empty folder in that of the environment variable JX_TEST_FOLDER, or else on a file system
// in memory if there is one; removed with its content.
class TempDir {
 public:
  TempDir();
  TempDir(const TempDir &) = delete;
  TempDir &operator=(const TempDir &) = delete;
  ~TempDir();

  const std::string &path() const { return path_; }
  std::string file(std::string_view name) const { return path_ + "/" + std::string(name); }

 private:
  std::string path_;
};

// The content of a file; fails the test and gives "" when it cannot be read.
std::string read_file(const std::string &path);
// Creates or replaces a file.
void write_file(const std::string &path, std::string_view content);

// Descriptors that the process has open.
uint32_t open_descriptors();

// Runs the body as a user who owns nothing.
void run_unprivileged(const std::function<void()> &body);

}  // namespace jx::test
