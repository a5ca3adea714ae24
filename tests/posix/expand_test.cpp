// Path expansion: every rule as rows, every bound at its edge, every failure of the host.
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "support/instance.hpp"
#include "support/sweep.hpp"

namespace jx::test {
namespace {

// What an expansion gave: its status and the path as bytes.
struct Expanded {
  JXStatus status;
  std::string path;
  bool operator==(const Expanded &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Expanded &expanded) {
  return out << std::hex << expanded.status << " '" << expanded.path << "'";
}

Expanded expand(JXInstance *instance, std::string_view path) {
  const JXString text = jx(path);
  JXChar *result = nullptr;
  uint32_t length = 0;
  const JXStatus status = bkwemexpand_path(instance, text.data(), chars(text), &result, &length);
  Expanded expanded = {status, narrow(result, length)};
  if (result) {
    EXPECT_EQ(bkwemexpand_path_free(instance->pool, result), JX_OK);
  }
  return expanded;
}

std::string repeat(size_t count, char character) { return std::string(count, character); }

// Environment and current directory of one test, put back afterwards.
class ExpandTest : public InstanceTest {
 protected:
  void SetUp() override {
    InstanceTest::SetUp();
    set("HOME", "/home/u");
  }
  void TearDown() override {
    EXPECT_EQ(chdir("/"), 0);
    for (const auto &[name, value] : saved_) {
      value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }
    InstanceTest::TearDown();
  }
  void set(const std::string &name, const std::optional<std::string> &value) {
    const char *old = std::getenv(name.c_str());
    saved_.try_emplace(name, old ? std::optional<std::string>(old) : std::nullopt);
    value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
  }
  // Makes a directory below the test's own and enters it.
  std::string enter(const std::string &name) {
    const std::string path = dir.file(name);
    EXPECT_EQ(mkdir(path.c_str(), 0777), 0);
    EXPECT_EQ(chdir(path.c_str()), 0);
    return path;
  }

 private:
  std::map<std::string, std::optional<std::string>> saved_;
};

TEST_F(ExpandTest, Rules) {
  set("A", "name");
  set("B", "x$C");
  set("C", "y");
  set("D", "$D2/tail");
  set("D2", "/abs");
  set("EMPTY", "");
  set("A-x", "dash");
  set("{HOME}", std::nullopt);
  set("UNSET", std::nullopt);
  const std::string here = enter("u");
  const std::string above = dir.path();
  const passwd *me = getpwuid(getuid());
  const struct {
    int line;
    std::optional<std::string> home;
    std::string path;
    std::string expected;
  } rows[] = {
      {__LINE__, "/home/u", "~", "/home/u"},
      {__LINE__, "/home/u", "~/", "/home/u"},
      {__LINE__, "/home/u", "~/a/", "/home/u/a"},
      {__LINE__, "/home/u", "$HOME/x", "/home/u/x"},
      {__LINE__, "/home/u/", "~//x", "/home/u/x"},
      {__LINE__, "/", "~/x", "//x"},
      {__LINE__, "///", "~/x", "////x"},
      {__LINE__, "h//", "~/x", "h///x"},
      {__LINE__, "", "~/x", "/x"},
      {__LINE__, "", "~", ""},
      {__LINE__, std::nullopt, "~/x", std::string(me->pw_dir) + "/x"},
      {__LINE__, "/home/u", std::string("~") + me->pw_name + "/x", std::string(me->pw_dir) + "/x"},
      {__LINE__, "/home/u", std::string("~") + me->pw_name, me->pw_dir},
      {__LINE__, "/home/u", "~nosuchuser/x", "~nosuchuser/x"},
      {__LINE__, "/home/u", "./a", here + "/a"},
      {__LINE__, "/home/u", "../a", above + "/a"},
      {__LINE__, "/home/u", ".", here},
      {__LINE__, "/home/u", "./", here},
      {__LINE__, "/home/u", ".//.//a", here + "/a"},
      {__LINE__, "/home/u", "./.x", here + "/.x"},
      {__LINE__, "/home/u", ".x", here + "/.x"},
      {__LINE__, "/home/u", "..x/y", here + "/..x/y"},
      {__LINE__, "/home/u", "..", above},
      {__LINE__, "/home/u", ".././u/../v", above + "/u/../v"},
      {__LINE__, "/home/u", "a/./b", here + "/a/./b"},
      {__LINE__, "/home/u", "/a/../b/.", "/a/../b/."},
      {__LINE__, "/home/u", "", here},
      {__LINE__, "/home/u", "/a//", "/a"},
      {__LINE__, "/home/u", "//", "/"},
      {__LINE__, "/home/u", "/", "/"},
      {__LINE__, "/home/u", "$A.txt", here + "/name.txt"},
      {__LINE__, "/home/u", "/$A$A", "/namename"},
      {__LINE__, "/home/u", "/$A-x", "/dash"},
      {__LINE__, "/home/u", "${HOME}/x", here + "/${HOME}/x"},
      {__LINE__, "/home/u", "/$B", "/xy"},
      {__LINE__, "/home/u", "$D", "/abs/tail"},
      {__LINE__, "/home/u", "/$EMPTY", "/"},
      {__LINE__, "/home/u", "$UNSET/x", here + "/$UNSET/x"},
      {__LINE__, "/home/u", "/$", "/$"},
      {__LINE__, "/home/u", "/$/$.$", "/$/$.$"},
      {__LINE__, "/home/u", "/\xe4 b", "/\xe4 b"},
  };
  for (const auto &row : rows) {
    set("HOME", row.home);
    EXPECT_EQ(expand(instance, row.path), (Expanded{JX_OK, row.expected})) << "row " << row.line;
  }
}

TEST_F(ExpandTest, NearTheRoot) {
  ASSERT_EQ(chdir("/usr"), 0);
  EXPECT_EQ(expand(instance, "../x"), (Expanded{JX_OK, "//x"}));
  EXPECT_EQ(expand(instance, ".."), (Expanded{JX_OK, "/"}));
  EXPECT_EQ(expand(instance, "../../x"), (Expanded{JXWEM_E_FAILED, ""}));
  ASSERT_EQ(chdir("/"), 0);
  EXPECT_EQ(expand(instance, ".."), (Expanded{JXWEM_E_FAILED, ""}));
  EXPECT_EQ(expand(instance, "x"), (Expanded{JX_OK, "//x"}));
  EXPECT_EQ(expand(instance, "."), (Expanded{JX_OK, "/"}));
}

TEST_F(ExpandTest, CurrentDirectoryGone) {
  const std::string path = enter("gone");
  ASSERT_EQ(rmdir(path.c_str()), 0);
  for (const char *needs : {"x", ".", "../x", ""}) {
    EXPECT_EQ(expand(instance, needs), (Expanded{JXWEM_E_FAILED, ""})) << needs;
  }
  EXPECT_EQ(expand(instance, "/x"), (Expanded{JX_OK, "/x"}));
  EXPECT_EQ(expand(instance, "~/x"), (Expanded{JX_OK, "/home/u/x"}));
  EXPECT_EQ(expand(instance, "~nosuchuser"), (Expanded{JX_OK, "~nosuchuser"}));
}

TEST_F(ExpandTest, Bounds) {
  const Expanded too_long = {JXWEM_E_NAMETOOLONG, ""};
  // The platform form and the work area.
  const std::string longest = "/" + repeat(1023, 'p');
  EXPECT_EQ(expand(instance, longest), (Expanded{JX_OK, longest}));
  EXPECT_EQ(expand(instance, longest + "p"), too_long);
  // Prefix, slash and remainder, with two characters to spare.
  set("HOME", "/" + repeat(499, 'h'));
  const std::string rest = repeat(522, 'r');
  EXPECT_EQ(expand(instance, "~/" + rest), (Expanded{JX_OK, "/" + repeat(499, 'h') + "/" + rest}));
  EXPECT_EQ(expand(instance, "~/" + rest + "r"), too_long);
  // A value that runs past the work area is cut there.
  set("V", repeat(2000, 'v'));
  EXPECT_EQ(expand(instance, "/$V/x"), (Expanded{JX_OK, "/" + repeat(1023, 'v')}));
  // The rest of a value that is expanded in turn.
  set("REST", "$UNSET" + repeat(1017, 'r'));
  set("UNSET" + repeat(1017, 'r'), std::nullopt);
  EXPECT_EQ(expand(instance, "/$REST").status, JXWEM_E_NAMETOOLONG);  // the name is too long
  set("REST", "$/" + repeat(1021, 'r'));
  EXPECT_EQ(expand(instance, "/$REST"), (Expanded{JX_OK, "/$/" + repeat(1021, 'r')}));
  set("REST", "$/" + repeat(1022, 'r'));
  EXPECT_EQ(expand(instance, "/$REST"), too_long);
  // A variable's name.
  set(repeat(126, 'N'), "value");
  EXPECT_EQ(expand(instance, "/$" + repeat(126, 'N')), (Expanded{JX_OK, "/value"}));
  EXPECT_EQ(expand(instance, "/$" + repeat(127, 'N')), too_long);
  // A character that is no byte.
  const JXChar wide[] = {'/', 0x100};
  JXChar *result = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(bkwemexpand_path(instance, wide, 2, &result, &length), JXWEM_E_FAILED);
  EXPECT_EQ(result, nullptr);
}

TEST_F(ExpandTest, ValuesNestSixteenDeep) {
  for (int i = 1; i < 17; ++i) {
    set("N" + std::to_string(i), "$N" + std::to_string(i + 1));
  }
  set("N17", "end");
  EXPECT_EQ(expand(instance, "/$N2"), (Expanded{JX_OK, "/end"}));
  EXPECT_EQ(expand(instance, "/$N1").status, JXWEM_E_NAMETOOLONG);
  set("SELF", "a$SELF");
  EXPECT_EQ(expand(instance, "/$SELF").status, JXWEM_E_NAMETOOLONG);
  // Values that refer to many others must not hold the caller up.
  for (int i = 1; i < 16; ++i) {
    std::string value;
    for (int k = 0; k < 100; ++k) value += "$M" + std::to_string(i + 1);
    set("M" + std::to_string(i), value);
  }
  set("M16", "");
  EXPECT_EQ(expand(instance, "/$M1").status, JXWEM_E_NAMETOOLONG);
}

TEST_F(ExpandTest, EveryHostCallFailing) {
  const auto runs = sweep(host, kAllFailing, [&] { return expand(instance, "~/x").status; });
  ASSERT_EQ(runs.size(), 4u);
  for (const SweepRun &run : runs) {
    EXPECT_EQ(run.status, run.failed == "pool_allocate" ? JX_E_NOMEM : JXWEM_E_FAILED) << run.n;
  }
}

}  // namespace
}  // namespace jx::test
