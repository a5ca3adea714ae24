// Path expansion: the rules as rows, the bounds at their edges, the failures of the host.
#include <pwd.h>

#include "support/path_fixture.hpp"
#include "support/syscalls.hpp"

namespace jx::test {
namespace {

class Expand : public PathTest {
 protected:
  void SetUp() override {
    PathTest::SetUp();
    setenv("HOME", "/home/u", 1);
  }
  // The expanded path, or the status as a number.
  std::string expand(const JXString &path) {
    JXChar *result = nullptr;
    uint32_t length = 0;
    const JXStatus status = call(bkwemexpand_path, path, &result, &length);
    const std::string expanded = narrow(result, length);
    EXPECT_EQ(bkwemexpand_path_free(instance->pool, result), JX_OK);
    return status == JX_OK ? expanded : std::to_string(status);
  }
  std::string expand(const std::string &path) { return expand(jx(path)); }

  const std::string too_long = std::to_string(JXWEM_E_NAMETOOLONG);
  const std::string failed = std::to_string(JXWEM_E_FAILED);
};

TEST_F(Expand, Rules) {
  for (const char *variable :
       {"A|name", "B|x$C", "C|y", "D|$D2/tail", "D2|/abs", "EMPTY|", "A-x|dash"}) {
    const auto [name, value] = cells<2>(variable);
    setenv(name.c_str(), value.c_str(), 1);
  }
  make_folder("u");
  fs::current_path(dir.file("u"));
  // Paths and their expansions, in which "@" is the parent of the current directory.
  const auto check = [&](std::initializer_list<const char *> rows) {
    for (const char *row : rows) {
      const auto [path, expected] = cells<2>(row);
      const bool is_below = expected.starts_with('@');
      EXPECT_EQ(expand(path), is_below ? dir.path() + expected.substr(1) : expected) << row;
    }
  };
  check({"~|/home/u", "~/|/home/u", "~/a/|/home/u/a", "~//x|/home/u/x", "$HOME/x|/home/u/x",
         "~nosuchuser/x|~nosuchuser/x", "/a/../b/.|/a/../b/.", "/a//|/a", "//|/", "/|/",
         "/\xe4 b|/\xe4 b"});
  check({"./a|@/u/a", "../a|@/a", ".|@/u", "./|@/u", ".//.//a|@/u/a", "./.x|@/u/.x", ".x|@/u/.x",
         "..x/y|@/u/..x/y", "..|@", ".././u/../v|@/u/../v", "a/./b|@/u/a/./b", "|@/u"});
  check({"$A.txt|@/u/name.txt", "/$A$A|/namename", "/$A-x|/dash", "${HOME}/x|@/u/${HOME}/x",
         "/$B|/xy", "$D|/abs/tail", "/$EMPTY|/", "$UNSET/x|@/u/$UNSET/x", "/$|/$",
         "/$/$.$|/$/$.$"});
}

TEST_F(Expand, Homes) {
  const passwd *me = getpwuid(getuid());
  const std::string name = std::string("~") + me->pw_name;
  const std::string home = me->pw_dir;
  EXPECT_EQ(expand(name), home);
  EXPECT_EQ(expand(name + "/x"), home + "/x");
  unsetenv("HOME");
  EXPECT_EQ(expand("~/x"), home + "/x");
  for (const char *row : {"/home/u/|/home/u/x", "/|//x", "///|////x", "h//|h///x", "|/x"}) {
    const auto [value, expected] = cells<2>(row);
    setenv("HOME", value.c_str(), 1);
    EXPECT_EQ(expand("~/x"), expected) << row;
  }
  EXPECT_EQ(expand("~"), "");
  // Users that nobody knows, or that nobody can be asked about.
  unsetenv("HOME");
  for (const int error : {ENOENT, EIO}) {
    for (const std::string &path : {std::string("~/x"), name + "/x"}) {
      arm_syscalls(syscalls(path[1] == '/' ? Syscall::getpwuid_r : Syscall::getpwnam_r),
                   {.error = error});
      EXPECT_EQ(expand(path), path) << error;
      EXPECT_TRUE(disarm_syscalls());
    }
  }
}

TEST_F(Expand, CurrentDirectoryAtTheRootOrGone) {
  // Working directory, path, expansion.
  fs::current_path("/");
  for (const char *row : {"/usr|../x|//x", "/usr|..|/", "/usr|../../x|!", "/|..|!", "/|x|//x",
                          "/|.|/", "gone|x|!", "gone|.|!", "gone|../x|!", "gone||!", "gone|/x|/x",
                          "gone|~/x|/home/u/x", "gone|~nosuchuser|~nosuchuser"}) {
    const auto [working, path, expected] = cells<3>(row);
    make_folder("gone");
    fs::current_path(working == "gone" ? dir.file(working) : working);
    fs::remove(dir.file("gone"));
    EXPECT_EQ(expand(path), expected == "!" ? failed : expected) << row;
  }
}

TEST_F(Expand, Bounds) {
  const auto text = [](size_t count) { return std::string(count, 't'); };
  setenv("HOME", ("/" + text(499)).c_str(), 1);
  setenv("V", text(2000).c_str(), 1);
  setenv("REST", ("$UNSET" + text(1017)).c_str(), 1);
  setenv("FITS", ("$/" + text(1021)).c_str(), 1);
  setenv("LONG", ("$/" + text(1022)).c_str(), 1);
  setenv(text(126).c_str(), "value", 1);
  const std::pair<std::string, std::string> rows[] = {
      // The platform form and the work area.
      {"/" + text(1023), "/" + text(1023)},
      {"/" + text(1024), too_long},
      // Prefix, slash and remainder, two characters below the bound.
      {"~/" + text(522), "/" + text(499) + "/" + text(522)},
      {"~/" + text(523), too_long},
      // A value that runs past the work area is cut there; what it refers to is not.
      {"/$V/x", "/" + text(1023)},
      {"/$REST", too_long},
      {"/$FITS", "/$/" + text(1021)},
      {"/$LONG", too_long},
      // A variable's name.
      {"/$" + text(126), "/value"},
      {"/$" + text(127), too_long},
      // A character that would terminate the platform form.
      {std::string("/a\0b", 4), failed},
  };
  for (const auto &[path, expected] : rows) EXPECT_EQ(expand(path), expected) << path;
  EXPECT_EQ(expand(JXString{'/', 0x100}), failed);  // a character above 255
  // A length without a path, and an impossible length: refused before memory is allocated.
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  const JXChar root = '/';
  const uint64_t asked = host.count(Call::pool_allocate);
  EXPECT_EQ(bkwemexpand_path(instance, nullptr, 1, &path, &path_chars), JXWEM_E_FAILED);
  EXPECT_EQ(bkwemexpand_path(instance, &root, 1u << 30, &path, &path_chars), JXWEM_E_NAMETOOLONG);
  EXPECT_EQ(host.count(Call::pool_allocate), asked);
}

TEST_F(Expand, ValuesNestSixteenDeep) {
  const auto set = [](const char *name, int number, const std::string &value) {
    setenv((name + std::to_string(number)).c_str(), value.c_str(), 1);
  };
  for (int i = 1; i < 17; ++i) {
    const std::string next = std::to_string(i + 1);
    set("N", i, "$N" + next);
    // Values that refer to many others must not take exponential time.
    std::string many;
    for (int k = 0; k < 100; ++k) many += "$M" + next;
    set("M", i, many);
  }
  set("N", 17, "end");
  set("M", 16, "");
  setenv("SELF", "a$SELF", 1);
  EXPECT_EQ(expand("/$N2"), "/end");
  for (const char *path : {"/$N1", "/$SELF", "/$M1"}) EXPECT_EQ(expand(path), too_long) << path;
}

}  // namespace
}  // namespace jx::test
