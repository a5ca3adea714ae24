// Copies of files and trees.
#include "support/path_fixture.hpp"
#include "support/small_stack.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

class Copy : public PathTest {
 protected:
  JXStatus copy_names(std::string_view from, std::string_view to) { return copy(at(from), at(to)); }
  // All names below a folder.
  std::set<std::string> names_below(std::string_view name) const {
    std::set<std::string> names;
    const std::string root = dir.file(name);
    for (const auto &entry : fs::recursive_directory_iterator(root)) {
      names.insert(entry.path().string().substr(root.size() + 1));
    }
    return names;
  }
};

TEST_F(Copy, Files) {
  const mode_t mask = umask(027);
  std::string content;
  for (int i = 0; i < 100'001; ++i) content += static_cast<char>(i * 7);
  for (const uint32_t size : {0u, 1u, 4095u, 4096u, 4097u, 100'001u}) {
    make_file("source", content.substr(0, size));
    fs::permissions(dir.file("source"), fs::perms{0400});
    EXPECT_EQ(copy_names("source", "target"), JX_OK) << size;
    EXPECT_TRUE(read_file(dir.file("target")) == content.substr(0, size)) << size;
    EXPECT_EQ(fs::status(dir.file("target")).permissions(), fs::perms{0750});
    fs::remove(dir.file("source"));
    fs::remove(dir.file("target"));
  }
  umask(mask);
  make_file("source", content);
  arm_syscalls(syscalls(Syscall::write), {.n = 0, .most_bytes = 1001, .to_the_end = true});
  EXPECT_EQ(copy_names("source", "target"), JX_OK);
  EXPECT_TRUE(disarm_syscalls());
  EXPECT_TRUE(read_file(dir.file("target")) == content) << "after short writes";
  fs::remove(dir.file("target"));
  // Copied in blocks of the source's size; data written before a fault stays.
  struct stat64 facts;
  ASSERT_EQ(stat64(dir.file("source").c_str(), &facts), 0);
  arm_syscalls(syscalls(Syscall::write), {.n = 1, .error = ENOSPC});
  EXPECT_EQ(copy_names("source", "target"), JXWEM_E_DISKFULL);
  EXPECT_TRUE(disarm_syscalls());
  EXPECT_EQ(fs::file_size(dir.file("target")), static_cast<uint64_t>(facts.st_blksize));
}

TEST_F(Copy, Refusals) {
  make_file("file");
  make_folder("folder");
  make_file("folder/inside");
  make_link("to_nothing", "nothing");
  make_link("to_new", "made");
  make_link("loop", "loop");
  struct Row {
    const char *from, *to;
    JXStatus status;
    std::vector<int> errors = {};  // in the journal
  };
  const Row rows[] = {
      {"file", "folder", JXWEM_E_EXISTS},
      {"folder", "file", JXWEM_E_EXISTS},
      {"nothing", "file", JXWEM_E_EXISTS},
      {"nothing", "new", JXWEM_E_NOTFOUND},
      {"to_nothing", "new", JXWEM_E_NOTFOUND},
      {"loop", "new", JXWEM_E_SYSTEM, {ELOOP}},
      {"file", "nothing/new", JXWEM_E_FAILED, {ENOENT}},
      {"file", "file/new", JXWEM_E_NOPATH, {ENOTDIR}},
      {"folder", "nothing/new", JXWEM_E_NOPATH},
      {"folder", "file/new", JXWEM_E_SYSTEM, {ENOTDIR}},
      {"folder", "to_nothing", JXWEM_E_EXISTS},
      {"file", "to_new", JX_OK},  // creates the target of the link
  };
  for (const Row &row : rows) {
    EXPECT_EQ(copy_names(row.from, row.to), row.status) << row.from << " " << row.to;
    EXPECT_FALSE(exists("new"));
    expect_journal(row.errors);
  }
  EXPECT_EQ(read_file(dir.file("made")), "content");
  // Climbing above the root is refused, unless the target exists.
  fs::current_path("/");
  EXPECT_EQ(copy(jx("../.."), at("new")), JXWEM_E_FAILED);
  EXPECT_EQ(copy(jx("../.."), at("file")), JXWEM_E_EXISTS);
  EXPECT_EQ(copy(at("file"), jx("../..")), JXWEM_E_FAILED);
}

// The caller's paths are expanded, the names in the tree are not, also when the copy is removed.
TEST_F(Copy, TreeOfHardNames) {
  setenv("HOME", dir.path().c_str(), 1);
  setenv("A", "/nowhere", 1);
  setenv("JX_TEST_TO", "copy", 1);
  make_folder("outside");
  make_file("outside/file");
  for (const std::string &name : kHardNames) {
    make_folder("tree/" + name + "/sub/empty");
    for (const std::string &inner : kHardNames) make_file("tree/" + name + "/" + inner, inner);
  }
  make_link("tree/to_file", "../outside/file");
  make_link("tree/to_folder", "../outside");
  fs::current_path(dir.path());
  EXPECT_EQ(copy(jx("~/tree/"), jx("./$JX_TEST_TO//")), JX_OK);
  auto expected = names_below("tree");
  expected.insert("to_folder/file");  // links are followed
  EXPECT_EQ(names_below("copy"), expected);
  EXPECT_EQ(read_file(dir.file("copy/$HOME/blanks  ")), "blanks  ");
  EXPECT_FALSE(fs::is_symlink(dir.file("copy/to_file")));
  EXPECT_EQ(remove(at("copy"), JX_REMOVE_CONTENTS), JX_OK);
  EXPECT_FALSE(exists("copy"));
  EXPECT_EQ(names_below("tree").size() + 1, expected.size());
  // The answer of a close slot that a host replaced is the outcome of the copy.
  instance->directory_open = [](auto... arguments) {
    JXDirectory *directory = jxwemdirectoryopen(arguments...);
    EXPECT_EQ(directory->options, JX_DIRECTORY_OPEN_ALL);
    directory->close = [](JXDirectory *closed) { return jxwemdirectoryclose(closed) + 77; };
    return directory;
  };
  EXPECT_EQ(copy_names("tree/plain/sub", "copy"), 77u);
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
  const std::string link(200, 'l');
  make_folder("circle");
  make_link("circle/" + link, ".");
  EXPECT_EQ(copy_names("circle", "copy"), JXWEM_E_NAMETOOLONG);
  fs::rename(dir.file("circle/" + link), dir.file("circle/l"));
  EXPECT_EQ(copy_names("circle", "copy2"), JXWEM_E_SYSTEM);  // the system follows 40 links
  expect_journal({ELOOP});
}

TEST_F(Copy, MembersUpTo1024Characters) {
  const std::string folder = make_long_folder("long", 1000);
  const std::pair<size_t, JXStatus> rows[] = {{22, JX_OK}, {23, JX_OK}, {24, JXWEM_E_NAMETOOLONG}};
  for (const auto &[name_chars, status] : rows) {
    fs::current_path(folder);
    write_file(std::string(name_chars, 'f'), "content");
    for (const std::string &named : {folder, std::string(".")}) {
      EXPECT_EQ(copy(jx(named), at("copy")), status) << name_chars;
      fs::remove_all(dir.file("copy"));
    }
  }
  // The target's path counts too, and so does the caller's spelling.
  make_folder("tree");
  make_file("tree/" + std::string(30, 'f'));
  EXPECT_EQ(copy(at("tree"), jx(folder + "/c")), JXWEM_E_NAMETOOLONG);
  const std::string slashes(1000 - dir.path().size(), '/');
  EXPECT_EQ(copy(jx(dir.path() + slashes + "tree"), at("copy")), JXWEM_E_NAMETOOLONG);
}

TEST_F(Copy, DeepTreeWithLittleStack) {
  make_long_folder("tree", 1000);
  run_on_small_stack([&] { EXPECT_EQ(copy_names("tree", "copy"), JX_OK); });
  EXPECT_EQ(names_below("copy"), names_below("tree"));
}

}  // namespace
}  // namespace jx::test
