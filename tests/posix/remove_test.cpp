// Removal of files, links and trees, whatever the tree looks like and whoever changes it meanwhile.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <atomic>
#include <thread>

#include "support/path_fixture.hpp"

namespace jx::test {
namespace {

class Remove : public PathTest {
 protected:
  JXStatus remove_tree(std::string_view name) { return remove(at(name), JX_REMOVE_CONTENTS); }

  // A folder outside every tree that is removed, and a file in it that must stay.
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
  make_folder("empty");
  for (const char *folder : {"full/sub", "linking", "dangling"}) make_folder(folder);
  make_link("linking/link", dir.file("outside"));
  make_link("dangling/link", "nothing");
  make_link("to_file", "file");
  make_link("to_folder", "outside");
  make_link("to_nothing", "nothing");
  make_link("loop", "loop");
  struct Row {
    const char *name;
    uint32_t flags;
    JXStatus status;
    int error;  // in the journal
    bool stays;
  };
  const Row rows[] = {
      {"to_file", 0, JX_OK, 0, false},
      {"to_folder", 0, JXWEM_E_NOTFOUND, 0, true},
      {"to_folder", JX_REMOVE_CONTENTS, JXWEM_E_NOTFOUND, 0, true},
      {"to_nothing", 0, JXWEM_E_NOTFOUND, 0, true},
      {"loop", 0, JXWEM_E_NOTFOUND, ELOOP, true},
      {"full", 0, JXWEM_E_NOTEMPTY, 0, true},
      {"full", 0xFFFFFFFEu, JXWEM_E_NOTEMPTY, 0, true},
      {"full", 0xFFFFFFFFu, JX_OK, 0, false},
      {"linking", JX_REMOVE_CONTENTS, JXWEM_E_NOTFOUND, 0, true},
      {"linking/link", 0, JXWEM_E_NOTFOUND, 0, true},
      {"dangling", JX_REMOVE_CONTENTS, JXWEM_E_NOTFOUND, 0, true},
      {"dangling/link", 0, JXWEM_E_NOTFOUND, 0, true},
      {"file/below", 0, JXWEM_E_NOTFOUND, ENOTDIR, false},
      {"file", JX_REMOVE_CONTENTS, JX_OK, 0, false},
      {"empty/", 0, JX_OK, 0, false},
      {"nothing", 0, JXWEM_E_NOTFOUND, 0, false},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(remove(at(row.name), row.flags), row.status) << row.name;
    EXPECT_EQ(exists(row.name), row.stays) << row.name;
    expect_journal(row.error ? std::vector{row.error} : std::vector<int>{});
  }
  EXPECT_EQ(remove({}), JXWEM_E_BADNAME);
  EXPECT_TRUE(outside_is_whole());
}

TEST_F(Remove, TreeOfHardNames) {
  setenv("HOME", dir.file("outside").c_str(), 1);
  make_outside();
  for (const std::string &name : kHardNames) {
    make_folder("tree/" + name);
    for (const std::string &inner : kHardNames) make_file("tree/" + name + "/" + inner);
    make_folder("tree/" + name + "/sub/" + name);
  }
  make_file("tree/target");
  make_link("tree/to_target", "../outside/sub/keep");
  EXPECT_EQ(remove_tree("tree"), JX_OK);
  EXPECT_FALSE(exists("tree"));
  EXPECT_TRUE(outside_is_whole());
}

TEST_F(Remove, WhatMayNotBeRemovedEndsTheRemoval) {
  make_folder("tree/closed");
  make_file("tree/closed/file");
  chmod(dir.path().c_str(), 0777);
  chmod(dir.file("tree").c_str(), 0777);
  struct Row {
    mode_t mode;
    JXStatus status;
  };
  // The folder's owner is another user. Without the right to search, the test of the entry fails.
  for (const Row &row :
       {Row{0755, JXWEM_E_ACCESS}, Row{0744, JXWEM_E_NOTFOUND}, Row{0711, JXWEM_E_ACCESS}}) {
    chmod(dir.file("tree/closed").c_str(), row.mode);
    run_unprivileged([&] { EXPECT_EQ(remove_tree("tree"), row.status) << std::oct << row.mode; });
    EXPECT_TRUE(exists("tree/closed/file"));
  }
}

TEST_F(Remove, AnEntrySwappedForALinkDoesNotLeadOutside) {
  make_outside();
  // Before the first removal of the tree's root, before its opening, before the removal and the
  // opening of the folder in it, before that folder is removed at last.
  const std::pair<PathCall, uint32_t> rows[] = {{PathCall::unlinkat, 0}, {PathCall::openat, 0},
                                                {PathCall::unlinkat, 1}, {PathCall::openat, 1},
                                                {PathCall::unlinkat, 3}, {PathCall::rmdir, 0}};
  for (const char *swapped : {"tree", "tree/sub"}) {
    for (const auto &[swap_call, n] : rows) {
      make_folder("tree/sub");
      make_file("tree/sub/keep");
      precede_path_call(swap_call, n, [&] {
        if (!exists(swapped)) return;
        fs::rename(dir.file(swapped), dir.file("aside"));
        make_link(swapped, dir.file("outside"));
      });
      const JXStatus status = remove_tree("tree");
      disarm_path_calls();
      EXPECT_TRUE(status == JX_OK || status == JXWEM_E_NOTFOUND)
          << swapped << " " << path_call_name(swap_call) << n << std::hex << status;
      EXPECT_TRUE(outside_is_whole()) << swapped << " " << path_call_name(swap_call) << n;
      fs::remove_all(dir.file("tree"));
      fs::remove_all(dir.file("aside"));
    }
  }
}

TEST_F(Remove, AFolderMovedAwayIsNotFollowedUp) {
  make_outside();
  make_chain("tree", 40);
  std::string below = "tree";
  for (int i = 0; i < 4; ++i) below += "/deeper";
  // When the walk is at the bottom the upper levels are closed; the way back up leads elsewhere.
  precede_path_call(PathCall::readdir, 3 * 39 + 1,
                    [&] { fs::rename(dir.file(below), dir.file("outside/sub/deeper")); });
  EXPECT_EQ(remove_tree("tree"), JXWEM_E_NOTFOUND);
  EXPECT_TRUE(disarm_path_calls());
  EXPECT_TRUE(outside_is_whole());
}

TEST_F(Remove, AnAttackerWhoSwapsAFolderAndALink) {
  make_outside();
  const std::string tree = dir.file("tree");
  const std::string first = tree + "/d", second = tree + "/link";
  std::atomic<bool> stop = false;
  std::thread attacker([&] {
    while (!stop) {
      syscall(SYS_renameat2, AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), 2);
    }
  });
  uint32_t removed = 0;
  std::error_code error;
  for (int round = 0; round < 1000; ++round) {
    mkdir(tree.c_str(), 0755);
    mkdir(first.c_str(), 0755);
    mkdir((first + "/sub").c_str(), 0755);
    close(open64((first + "/sub/keep").c_str(), O_WRONLY | O_CREAT, 0644));
    fs::create_directory_symlink(dir.file("outside"), second, error);
    if (remove_tree("tree") == JX_OK) ++removed;
    ASSERT_TRUE(outside_is_whole()) << round;
    // The link ends the removal; the next round starts afresh.
    unlink(first.c_str());
    unlink(second.c_str());
    if (remove_tree("tree") == JX_OK) ++removed;
    ASSERT_TRUE(outside_is_whole()) << round;
  }
  stop = true;
  attacker.join();
  EXPECT_GT(removed, 0u);
  journal.take_lines();  // what the attacker made fail
}

TEST_F(Remove, DeepAndWideTreesWithLittleStackAndFewDescriptors) {
  make_chain("deep", 6000);
  make_folder("wide");
  const int wide = open64(dir.file("wide").c_str(), O_RDONLY | O_DIRECTORY);
  for (int i = 0; i < 100'000; ++i) {
    close(openat64(wide, std::to_string(i).c_str(), O_WRONLY | O_CREAT, 0644));
  }
  close(wide);
  // Branches on many levels: closed levels are read on when the walk is back.
  make_folder("bushy");
  for (int i = 0; i < 3; ++i) {
    make_chain("bushy/chain" + std::to_string(i), 50);
    make_file("bushy/file" + std::to_string(i));
  }
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit few = {64, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
  run_on_small_stack([&] {
    for (const char *name : {"deep", "wide", "bushy"}) {
      EXPECT_EQ(remove_tree(name), JX_OK) << name;
      EXPECT_FALSE(exists(name));
    }
  });
  setrlimit(RLIMIT_NOFILE, &limit);
}

TEST_F(Remove, KeepsAtMost32DirectoriesOpen) {
  make_chain("deep", 100);
  const uint32_t before = open_descriptors();
  uint32_t during = 0;
  precede_path_call(PathCall::fdopendir, 60, [&] { during = open_descriptors() - before; });
  EXPECT_EQ(remove_tree("deep"), JX_OK);
  disarm_path_calls();
  EXPECT_EQ(during, 32u);
}

}  // namespace
}  // namespace jx::test
