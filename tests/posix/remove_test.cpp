// Removal of files, links and trees of any shape, also while an attacker changes them.
#include <sys/resource.h>
#include <sys/syscall.h>

#include <thread>

#include "support/path_fixture.hpp"
#include "support/small_stack.hpp"

namespace jx::test {
namespace {

class Remove : public PathTest {
 protected:
  JXStatus remove_tree(std::string_view name) { return remove(at(name), JX_REMOVE_CONTENTS); }

  // A folder outside the removed tree, with a file that must stay.
  void make_outside() {
    make_folder("outside/sub");
    make_file("outside/sub/keep");
  }
  bool outside_is_whole() { return exists("outside/sub/keep"); }

  // A chain of folders, made without a path longer than its last name.
  void make_chain(std::string_view name, uint32_t levels) {
    make_folder(name);
    int fd = open64(dir.file(name).c_str(), O_RDONLY | O_DIRECTORY);
    for (uint32_t i = 1; i < levels; ++i) {
      ASSERT_EQ(mkdirat(fd, "deeper", 0755), 0);
      const int below = openat64(fd, "deeper", O_RDONLY | O_DIRECTORY);
      ASSERT_GE(below, 0);
      close(fd);
      fd = below;
    }
    close(fd);
  }
};

TEST_F(Remove, OneName) {
  make_outside();
  make_file("file");
  for (const char *folder : {"empty", "full/sub", "linking", "dangling", "with_file"})
    make_folder(folder);
  make_link("linking/link", dir.file("outside"));
  make_link("dangling/link", "nothing");
  make_link("with_file/link", "../outside/sub/keep");
  make_link("to_file", "file");
  make_link("to_folder", "outside");
  make_link("to_nothing", "nothing");
  make_link("loop", "loop");
  struct Row {
    const char *name;
    uint32_t flags;
    JXStatus status;
    bool stays = false;
    std::vector<int> errors = {};  // in the journal
  };
  const Row rows[] = {
      {"to_file", 0, JX_OK},
      {"to_folder", 0, JXWEM_E_NOTFOUND, true},
      {"to_folder", JX_REMOVE_CONTENTS, JXWEM_E_NOTFOUND, true},
      {"to_nothing", 0, JXWEM_E_NOTFOUND, true},
      {"loop", 0, JXWEM_E_NOTFOUND, true, {ELOOP}},
      {"full", 0, JXWEM_E_NOTEMPTY, true},
      {"full", 0xFFFFFFFEu, JXWEM_E_NOTEMPTY, true},
      {"full", 0xFFFFFFFFu, JX_OK},
      {"linking", JX_REMOVE_CONTENTS, JXWEM_E_NOTFOUND, true},
      {"dangling", JX_REMOVE_CONTENTS, JXWEM_E_NOTFOUND, true},
      {"with_file", JX_REMOVE_CONTENTS, JX_OK},
      {"file/below", 0, JXWEM_E_NOTFOUND, false, {ENOTDIR}},
      {"file", JX_REMOVE_CONTENTS, JX_OK},
      {"empty/", 0, JX_OK},
      {"nothing", 0, JXWEM_E_NOTFOUND},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(remove(at(row.name), row.flags), row.status) << row.name;
    EXPECT_EQ(exists(row.name), row.stays) << row.name;
    expect_journal(row.errors);
  }
  EXPECT_EQ(remove({}), JXWEM_E_BADNAME);
  EXPECT_TRUE(outside_is_whole());
}

TEST_F(Remove, AnEntrySwappedForALinkDoesNotLeadOutside) {
  make_outside();
  // When the swap happens: before the first removal of the tree's root, before its open, before the
  // removal and the open of the folder in it, before that folder's final removal.
  const std::pair<Syscall, uint32_t> rows[] = {{Syscall::rmdir, 0},    {Syscall::openat64, 0},
                                               {Syscall::unlinkat, 0}, {Syscall::openat64, 1},
                                               {Syscall::unlinkat, 2}, {Syscall::rmdir, 1}};
  for (const char *swapped : {"tree", "tree/sub"}) {
    for (const auto &[swap_call, n] : rows) {
      SCOPED_TRACE(std::string(swapped) + " " + syscall_name(swap_call) + std::to_string(n));
      make_folder("tree/sub");
      make_file("tree/sub/keep");
      const auto swap = [&] {
        if (!exists(swapped)) return;
        fs::rename(dir.file(swapped), dir.file("aside"));
        make_link(swapped, dir.file("outside"));
      };
      arm_syscalls(syscalls(swap_call), {.n = n, .before = swap});
      const JXStatus status = remove_tree("tree");
      disarm_syscalls();
      EXPECT_TRUE(status == JX_OK || status == JXWEM_E_NOTFOUND) << std::hex << status;
      EXPECT_TRUE(outside_is_whole());
      fs::remove_all(dir.file("tree"));
      fs::remove_all(dir.file("aside"));
    }
  }
}

TEST_F(Remove, AFolderMovedAwayIsNotFollowedUp) {
  make_outside();
  make_chain("tree", 40);
  // When the walk is at the bottom the upper levels are closed; then the way back up leads
  // elsewhere.
  const auto move = [&] {
    fs::rename(dir.file("tree/deeper/deeper/deeper/deeper"), dir.file("outside/sub/deeper"));
  };
  arm_syscalls(syscalls(Syscall::readdir64_r), {.n = 3 * 39 + 1, .before = move});
  EXPECT_EQ(remove_tree("tree"), JXWEM_E_NOTFOUND);
  EXPECT_TRUE(disarm_syscalls());
  EXPECT_TRUE(outside_is_whole());
}

TEST_F(Remove, AnAttackerWhoSwapsAFolderAndALink) {
  make_outside();
  const std::string tree = dir.file("tree");
  const std::string first = tree + "/d", second = tree + "/link";
  const std::jthread attacker([&](const std::stop_token &stop) {
    while (!stop.stop_requested()) {
      syscall(SYS_renameat2, AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), 2);
    }
  });
  uint32_t removed = 0;
  std::error_code error;
  for (int round = 0; round < 1000; ++round) {
    for (const std::string &folder : {tree, first, first + "/sub"}) mkdir(folder.c_str(), 0755);
    close(open64((first + "/sub/keep").c_str(), O_WRONLY | O_CREAT, 0644));
    fs::create_directory_symlink(dir.file("outside"), second, error);
    // The link ends the removal; a second attempt without it starts afresh.
    for (int attempt = 0; attempt < 2; ++attempt) {
      if (remove_tree("tree") == JX_OK) ++removed;
      ASSERT_TRUE(outside_is_whole()) << round;
      unlink(first.c_str());
      unlink(second.c_str());
    }
  }
  EXPECT_GT(removed, 0u);
  journal.take_lines();  // failures that the attacker caused
}

TEST_F(Remove, DeepAndWideTreesWithLittleStackAndFewDescriptors) {
  make_chain("deep", 6000);
  make_wide_folder("wide");
  // Branches on many levels: the walk resumes levels that it had closed.
  make_folder("bushy");
  for (int i = 0; i < 3; ++i) {
    make_chain("bushy/chain" + std::to_string(i), 50);
    make_file("bushy/file" + std::to_string(i));
  }
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit few = {16, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
  run_on_small_stack([&] {
    for (const char *name : {"deep", "wide", "bushy"}) {
      EXPECT_EQ(remove_tree(name), JX_OK) << name;
      EXPECT_FALSE(exists(name));
    }
  });
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace
}  // namespace jx::test
