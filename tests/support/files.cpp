#include "support/files.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

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
  std::string content;
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat facts = {};
  if (fd >= 0 && fstat(fd, &facts) == 0) {
    content.resize(static_cast<size_t>(facts.st_size));
    EXPECT_EQ(pread(fd, content.data(), content.size(), 0), facts.st_size) << path;
  }
  EXPECT_TRUE(fd >= 0 && close(fd) == 0) << "cannot read " << path;
  return content;
}

void write_file(const std::string &path, std::string_view content) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  const ssize_t written = write(fd, content.data(), content.size());
  EXPECT_TRUE(fd >= 0 && written == static_cast<ssize_t>(content.size()) && close(fd) == 0)
      << "cannot write " << path;
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
