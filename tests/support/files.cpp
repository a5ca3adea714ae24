#include "support/files.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace jx::test {

namespace fs = std::filesystem;

TempDir::TempDir() {
  std::error_code error;
  const char *asked = std::getenv("JX_TEST_FOLDER");
  const fs::path base = asked                                 ? fs::path(asked)
                        : fs::is_directory("/dev/shm", error) ? "/dev/shm"
                                                              : fs::temp_directory_path();
  path_ = base / "jxtest-XXXXXX";
  if (!mkdtemp(path_.data())) std::abort();
}

TempDir::~TempDir() {
  std::error_code error;
  fs::recursive_directory_iterator entries(path_, error), end;
  // Folders without permissions get them back, or their content could not be removed.
  for (; !error && entries != end; entries.increment(error)) {
    if (entries->is_symlink(error) || !entries->is_directory(error)) continue;
    fs::permissions(entries->path(), fs::perms::owner_all, fs::perm_options::add, error);
  }
  fs::remove_all(path_, error);
  EXPECT_FALSE(error) << path_ << ": " << error.message();
}

std::string read_file(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << "cannot read " << path;
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

void write_file(const std::string &path, std::string_view content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  EXPECT_TRUE(file) << "cannot write " << path;
}

uint32_t open_descriptors() {
  const fs::directory_iterator entries("/proc/self/fd");
  return static_cast<uint32_t>(std::distance(begin(entries), end(entries)));
}

void run_unprivileged(const std::function<void()> &body) {
  const uid_t user = geteuid();
  if (user == 0) {
    ASSERT_EQ(seteuid(65534), 0);
  }
  body();
  ASSERT_EQ(seteuid(user), 0);
}

}  // namespace jx::test
