// The command "cp": what it refuses, and what is left when it fails.
#include <sys/socket.h>
#include <sys/un.h>

#include "cli/program.hpp"

namespace jx::test {
namespace {

class Copying : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    std::filesystem::create_directories(at("tree/a"));
    put("tree/a/one", "1");
    put("tree/a/two", "2");
  }
  // Runs a shell command line that ends with jxfile's arguments.
  Outcome shell(const std::string &line) const {
    return run({"/bin/sh", "-c", "jxfile='" JX_BINARY_DIR "/jxfile'; " + line});
  }
};

TEST_F(Copying, RefusesWhatIsNoFile) {
  for (const char *folder : {"fifo", "dangling", "loop", "linked"}) {
    std::filesystem::create_directories(at(folder) + "/in");
  }
  ASSERT_EQ(::mkfifo(at("fifo/in/pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("none", at("dangling/in/link"));
  std::filesystem::create_symlink("..", at("loop/in/up"));
  std::filesystem::create_symlink("../../fifo/in/pipe", at("linked/in/link"));
  const std::string before = names();
  const char *special = ": a FIFO, socket or device is not copied (JXWEM_E_NOTSUPPORTED";
  const std::string named = std::string("cp: fifo/in/pipe -> x") + special;
  const std::string inside = std::string("cp: fifo/in/pipe") + special;
  const std::string linked = std::string("cp: linked/in/link") + special;
  check({
      {1, "cp fifo/in/pipe x", "", named.c_str()},
      {1, "cp /dev/null x", "", special},
      {1, "cp fifo x", "", inside.c_str()},
      {1, "cp linked x", "", linked.c_str()},
      {1, "cp dangling x", "", "cp: dangling/in/link: file or directory not found"},
      {1, "cp loop x", "", "cp: loop/in/up: the tree has no end"},
      {1, "cp tree/a/one x/", "", "a directory on the path is missing"},
      {1, "cp tree dangling/in/link", "", "the target exists already"},
      {1, "cp -T missing tree", "", "the target exists already"},
  });
  EXPECT_EQ(names(), before);
  if (::geteuid() != 0) return;
  ASSERT_EQ(::chmod(at("tree/a/two").c_str(), 0600), 0);
  check({{1, "cp tree x", "", "cp: tree/a/two: access denied"}}, true);
}

// A signal, a full device, a directory whose reading fails: nothing is left under any name.
TEST_F(Copying, IsWholeOrNothing) {
  put("tree/large", "");
  std::filesystem::resize_file(at("tree/large"), 1 << 20);
  const Outcome full = shell("ulimit -f 100; exec $jxfile cp tree x");
  EXPECT_EQ(full.code, 1);
  EXPECT_NE(full.err.find("cp: tree/large -> x/large: "), full.err.npos) << full.err;
  EXPECT_NE(full.err.find("nothing of the copy was left"), full.err.npos) << full.err;

  for (int at = 0; at < 99; ++at) {
    const Outcome cut =
        shell("ASAN_OPTIONS=verify_asan_link_order=0:$ASAN_OPTIONS FAIL_CALL=readdir64 FAIL_AT=" +
              std::to_string(at) + " LD_PRELOAD=" JX_FAIL_CALLS " exec $jxfile cp tree/a x");
    if (cut.code == 0) break;
    EXPECT_TRUE(cut.err.starts_with("jxfile: cp: tree/a: system error")) << at << cut.err;
    EXPECT_EQ(names(), "tree ") << at;
  }
  EXPECT_EQ(names(), "tree x ");
  std::filesystem::remove_all(at("x"));

  std::filesystem::resize_file(at("tree/large"), 1 << 28);
  const std::string copy =
      "$jxfile cp tree x & until [ -d .jxfile-*/content ] || [ -e x ]; do :; done; kill -";
  EXPECT_EQ(shell(copy + "TERM $!; wait $!").code, 128 + SIGTERM);
  EXPECT_EQ(names(), "tree ");
  EXPECT_EQ(shell("trap '' HUP; " + copy + "HUP $!; wait $!").code, 0);
  EXPECT_EQ(names(), "tree x ");
  EXPECT_EQ(get("x/a/two"), "2");
}

// Permissions by the umask or in full, times, links as links; directories closed to their owner; a
// name that could be no path of its own.
TEST_F(Copying, KeepsWhatIsAskedFor) {
  const std::string odd = "/$" + std::string(130, 'x');
  put("tree" + odd, "");
  std::filesystem::create_directories(at("tree/shut/in"));
  std::filesystem::create_symlink("nothing", at("tree/dangling"));
  check({{1, "cp tree/none tree/dangling .", "", "tree/dangling -> ./dangling: file or dir"}});
  const std::string owner = ::geteuid() == 0 ? "chown -R 65534 tree; setpriv --reuid 65534 " : "";
  const Outcome kept = shell(
      "umask 022; cd tree; touch -hd 2001-02-03 a/one shut dangling a .; chmod 4646 a/one; "
      "chmod 555 shut; chmod 700 a; cd ..; " +
      owner + "$jxfile cp -P tree x; " + owner +
      "$jxfile cp -pP tree y; for tree in x y; do cd $tree; find . ! -name 'two' ! -name '*xx' "
      "! -name in -printf '%P %M %l' $(test $tree = x || echo -printf %TY) -printf '\n' | sort; "
      "cd ..; done; chmod -R u+w tree x y");
  EXPECT_EQ(kept.out + kept.err,
            " drwxr-xr-x \na drwx------ \na/one -rw-r--r-- \ndangling lrwxrwxrwx nothing\n"
            "shut dr-xr-xr-x \n drwxr-xr-x 2001\na drwx------ 2001\na/one -rw-r--rw- 2001\n"
            "dangling lrwxrwxrwx nothing2001\nshut dr-xr-xr-x 2001\n");
  EXPECT_TRUE(std::filesystem::exists(at("x" + odd)));
}

}  // namespace
}  // namespace jx::test
