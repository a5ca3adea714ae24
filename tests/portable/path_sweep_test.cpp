// Every path operation with each call of the host and each system call failing in turn.
#include "support/directory_fixture.hpp"
#include "support/path_text.hpp"
#include "support/sweep.hpp"

namespace jx::test {
namespace {

class PathSweep : public DirectoryTest {
 protected:
  using Operation = std::pair<const char *, std::function<JXStatus()>>;

  // Creates the operations' input and removes their output.
  void restore() {
    for (const char *name : {"new", "copy", "other"}) fs::remove_all(dir.file(name));
    make_folder("tree/sub/deeper");
    for (const char *name : {"file", "blanks", "blanks  ", "sub/$HOME"}) {
      make_file(std::string("tree/") + name);
    }
  }

  JXStatus build_status() {
    JXStatus status = 0;
    build(instance, {}, jx("x"), jx("e"), &status);
    return status;
  }
  JXStatus remove_all() {
    const JXStatus status = remove(at("tree"), JX_REMOVE_CONTENTS);
    EXPECT_EQ(exists("tree"), status != JX_OK);
    return status;
  }

  std::array<std::string, 4> parts;
  std::string made_name;
  // Each starts from a restored folder and leaves nothing in the host.
  const std::vector<Operation> operations = {
      {"split", [this] { return split(instance, jx("/a/b.c"), &parts); }},
      {"build", [this] { return build_status(); }},
      {"exist", [this] { return exist(at("tree")); }},
      {"isdir", [this] { return is_dir(at("tree")); }},
      {"info", [this] { return info_status(at("tree")); }},
      {"fsinfo", [this] { return space_status(at("tree")); }},
      {"make", [this] { return make(at("new")); }},
      {"rename", [this] { return rename(at("tree"), at("other")); }},
      {"remove", [this] { return remove_all(); }},
      {"remove file", [this] { return remove(at("tree/file")); }},
      {"copy", [this] { return copy(at("tree"), at("copy")); }},
      {"read", [this] { return read_status(at("tree")); }},
      {"member list", [this] { return members_status(at("tree")); }},
      {"member names", [this] { return members_status(at("tree"), 0); }},
      {"list of names", [this] { return list_status(at("tree"), 0, 0); }},
      {"list", [this] { return list_status(at("tree/file"), JX_DIRECTORY_PARENT, 1); }},
      {"list with attributes", [this] { return list_status(at("tree"), 0, 3); }},
      {"create name",
       [this] { return create_name(instance, {}, {}, {}, JX_NAME_HOST, &made_name); }},
  };
};

TEST_F(PathSweep, EachHostCall) {
  for (const auto &[name, operation] : operations) {
    SCOPED_TRACE(name);
    const auto run = [this, &run_it = operation] {
      restore();
      return run_it();
    };
    for (const SweepRun &met : sweep(host, kAllFailing, run)) {
      // Out of memory has its own status; a member whose information fails stays in the list.
      if (met.failed == "pool_allocate" || met.failed == "create_pool") {
        const bool may_go_on = name == std::string_view("list with attributes");
        EXPECT_TRUE(met.status == JX_E_NOMEM || (may_go_on && met.status == JX_OK)) << met.n;
      }
      if (met.failed == "create_table") {
        EXPECT_EQ(met.status, JXWEM_E_NOHANDLE) << met.n;
      }
    }
    journal.take_lines();
  }
}

TEST_F(PathSweep, EachSystemCall) {
  for (const char *call : kPathCalls) {
    size_t met = 0;
    const auto arm = [&](uint32_t n) {
      restore();
      arm_path_call(call, n, EIO);
    };
    const auto disarm = [&] { return std::string(disarm_path_calls() ? call : ""); };
    for (const auto &[name, operation] : operations) {
      SCOPED_TRACE(std::string(name) + ": " + call);
      met += sweep_with(host, arm, disarm, operation).size();
    }
    EXPECT_NE(met, 0u) << call;
    journal.take_lines();
  }
}

}  // namespace
}  // namespace jx::test
