// Copies of files and trees.
#include <fcntl.h>
#include <gtest/gtest.h>

#include "support/path_fixture.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

class Copy : public PathTest {
 protected:
  JXStatus copy_names(std::string_view from, std::string_view to) { return copy(at(from), at(to)); }
  mode_t mode_of(std::string_view name) const {
    struct stat info;
    EXPECT_EQ(stat(dir.file(name).c_str(), &info), 0) << name;
    return info.st_mode & 07777;
  }
};

TEST_F(Copy, Files) {
  const mode_t mask = umask(027);
  std::string content;
  for (int i = 0; i < 100'001; ++i) content += static_cast<char>(i * 7);
  for (const size_t size :
       {size_t{0}, size_t{1}, size_t{4095}, size_t{4096}, size_t{4097}, content.size()}) {
    make_file("source", content.substr(0, size));
    chmod(dir.file("source").c_str(), 0400);
    EXPECT_EQ(copy_names("source", "target"), JX_OK) << size;
    EXPECT_TRUE(read_file(dir.file("target")) == content.substr(0, size)) << size;
    EXPECT_EQ(mode_of("target"), 0750u);
    fs::remove(dir.file("source"));
    fs::remove(dir.file("target"));
  }
  umask(mask);
}

TEST_F(Copy, Refusals) {
  make_file("file");
  make_file("closed");
  chmod(dir.file("closed").c_str(), 0);
  make_folder("folder");
  make_file("folder/inside");
  make_link("to_nothing", "nothing");
  make_link("loop", "loop");
  struct Row {
    const char *from, *to;
    JXStatus status;
    std::vector<int> errors;  // in the journal
  };
  const Row rows[] = {
      {"file", "folder", JXWEM_E_EXISTS, {}},
      {"folder", "file", JXWEM_E_EXISTS, {}},
      {"nothing", "file", JXWEM_E_EXISTS, {}},
      {"nothing", "new", JXWEM_E_NOTFOUND, {}},
      {"to_nothing", "new", JXWEM_E_NOTFOUND, {}},
      {"loop", "new", JXWEM_E_SYSTEM, {ELOOP}},
      {"file", "nothing/new", JXWEM_E_FAILED, {ENOENT}},
      {"file", "file/new", JXWEM_E_NOPATH, {ENOTDIR}},
      {"folder", "nothing/new", JXWEM_E_NOPATH, {}},
      {"folder", "file/new", JXWEM_E_SYSTEM, {ENOTDIR}},
      {"folder", "to_nothing", JXWEM_E_EXISTS, {}},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(copy_names(row.from, row.to), row.status) << row.from << " " << row.to;
    EXPECT_FALSE(exists("new"));
    expect_journal(row.errors);
  }
  // Climbing above the root is refused, unless the target is there anyway.
  const WorkingDirectory here("/");
  EXPECT_EQ(copy(jx("../.."), at("new")), JXWEM_E_FAILED);
  EXPECT_EQ(copy(jx("../.."), at("file")), JXWEM_E_EXISTS);
  EXPECT_EQ(copy(at("file"), jx("../..")), JXWEM_E_FAILED);
  run_unprivileged([&] {
    EXPECT_EQ(copy_names("closed", "new"), JXWEM_E_ACCESS);
    EXPECT_EQ(copy_names("file", "new"), JXWEM_E_ACCESS);
    EXPECT_EQ(copy_names("folder", "new"), JXWEM_E_ACCESS);
  });
}

TEST_F(Copy, ThroughADanglingLinkMakesItsTarget) {
  make_file("file");
  make_link("to_new", "new");
  EXPECT_EQ(copy_names("file", "to_new"), JX_OK);
  EXPECT_EQ(read_file(dir.file("new")), "content");
}

TEST_F(Copy, TreeOfHardNames) {
  setenv("HOME", "/nowhere", 1);
  setenv("A", "/nowhere", 1);
  make_folder("outside");
  make_file("outside/file");
  for (const std::string &name : kHardNames) {
    for (const std::string &inner : kHardNames) {
      make_folder("tree/" + name);
      make_file("tree/" + name + "/" + inner, inner);
    }
    make_folder("tree/" + name + "/sub/empty");
  }
  make_link("tree/to_file", "../outside/file");
  make_link("tree/to_folder", "../outside");
  EXPECT_EQ(copy_names("tree", "copy"), JX_OK);
  auto expected = names_below("tree");
  expected.insert("to_folder/file");  // links are copied as what they point to
  EXPECT_EQ(names_below("copy"), expected);
  EXPECT_EQ(read_file(dir.file("copy/$HOME/blanks  ")), "blanks  ");
  EXPECT_FALSE(fs::is_symlink(dir.file("copy/to_file")));
}

TEST_F(Copy, ThePathGivenIsExpanded) {
  make_folder("home/tree/sub");
  make_file("home/tree/sub/$HOME");
  setenv("HOME", dir.file("home").c_str(), 1);
  setenv("JX_TEST_TO", "copy", 1);
  const WorkingDirectory here(dir.path());
  EXPECT_EQ(copy(jx("~/tree/"), jx("./$JX_TEST_TO//")), JX_OK);
  EXPECT_TRUE(exists("copy/sub/$HOME"));
}

TEST_F(Copy, ATreeIntoItselfEnds) {
  make_folder("tree/sub/inner");
  make_file("tree/file");
  for (const char *target : {"tree/new", "tree/sub/new", "tree/sub/inner/new"}) {
    EXPECT_EQ(copy_names("tree", target), JXWEM_E_NAMETOOLONG) << target;
    EXPECT_FALSE(exists(std::string(target) + "/new/new/new")) << target;
    fs::remove_all(dir.file(target));
  }
  EXPECT_EQ(copy_names("tree/sub", "tree/sub2"), JX_OK);
}

TEST_F(Copy, ALinkBackIntoTheTreeEnds) {
  const std::string link(200, 'l');
  make_folder("tree");
  make_link("tree/" + link, ".");
  EXPECT_EQ(copy_names("tree", "copy"), JXWEM_E_NAMETOOLONG);
  fs::remove(dir.file("tree/" + link));
  make_link("tree/l", ".");
  EXPECT_EQ(copy_names("tree", "copy2"), JXWEM_E_SYSTEM);  // the system follows 40 links
  expect_journal({ELOOP});
}

TEST_F(Copy, MembersUpTo1024Characters) {
  const std::string folder = make_long_folder(1000);
  struct Row {
    size_t name_chars;
    JXStatus status;
  };
  for (const Row &row : {Row{22, JX_OK}, Row{23, JX_OK}, Row{24, JXWEM_E_NAMETOOLONG}}) {
    const WorkingDirectory here(folder);
    write_file(std::string(row.name_chars, 'f'), "content");
    EXPECT_EQ(copy(jx(folder), at("copy")), row.status) << row.name_chars;
    fs::remove(std::string(row.name_chars, 'f'));
    fs::remove_all(dir.file("copy"));
  }
  // The target's side counts as well, and so does what the caller wrote.
  make_folder("tree");
  make_file("tree/" + std::string(30, 'f'));
  EXPECT_EQ(copy(at("tree"), jx(folder + "/c")), JXWEM_E_NAMETOOLONG);
  const std::string slashes(1000 - dir.path().size(), '/');
  EXPECT_EQ(copy(jx(dir.path() + slashes + "tree"), at("copy")), JXWEM_E_NAMETOOLONG);
}

TEST_F(Copy, DeepTreeWithLittleStack) {
  std::string path = dir.file("tree");
  while (path.size() < 1000) path += "/d";
  make_deep(path);
  run_on_small_stack([&] { EXPECT_EQ(copy_names("tree", "copy"), JX_OK); });
  EXPECT_EQ(names_below("copy"), names_below("tree"));
}

TEST_F(Copy, ShortWritesAreContinued) {
  make_file("source", std::string(3000, 's') + "end");
  arm_syscalls(syscalls(Syscall::write), {.n = 0, .most_bytes = 7, .to_the_end = true});
  EXPECT_EQ(copy_names("source", "target"), JX_OK);
  EXPECT_TRUE(disarm_syscalls());
  EXPECT_EQ(read_file(dir.file("target")), std::string(3000, 's') + "end");
}

TEST_F(Copy, WhatWasCopiedBeforeAFailureStays) {
  make_folder("tree");
  make_file("tree/a");
  make_file("tree/b");
  arm_syscalls(syscalls(Syscall::write), {.n = 1, .error = ENOSPC});
  EXPECT_EQ(copy_names("tree", "copy"), JXWEM_E_DISKFULL);
  EXPECT_TRUE(disarm_syscalls());
  EXPECT_EQ(names_below("copy").size(), 2u);
}

}  // namespace
}  // namespace jx::test
