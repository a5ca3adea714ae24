// Every path operation with each call of the host and each system call failing in turn.
#include <gtest/gtest.h>

#include "support/path_fixture.hpp"
#include "support/sweep.hpp"

namespace jx::test {
namespace {

struct Operation {
  const char *name;
  std::function<JXStatus()> run;
};

class PathSweep : public PathTest {
 protected:
  // Makes what the operations need and takes away what they made.
  void restore() {
    for (const char *name : {"new", "copy", "other"}) fs::remove_all(dir.file(name));
    make_folder("tree/sub/deeper");
    make_file("tree/file");
    make_file("tree/blanks");
    make_file("tree/blanks  ");
    make_file("tree/sub/$HOME");
  }

  // The operations, each from a restored folder and without a trace in the host.
  std::vector<Operation> operations() {
    const auto split = [this] {
      JXChar *part[4] = {};
      int32_t length[4];
      const JXString path = jx("/a/b.c");
      const JXStatus status =
          instance->split_path(instance, path.data(), chars(path), &part[0], &length[0], &part[1],
                               &length[1], &part[2], &length[2], &part[3], &length[3]);
      instance->split_path_release(instance, part[0], part[1], part[2], part[3]);
      return status;
    };
    const auto member_list = [this] {
      JXPool *pool = host.host()->create_pool(host.host(), 0, 0, 0, nullptr, "caller");
      if (!pool) return JX_E_NOMEM;
      JXStatus status = 0;
      JXDirectory *directory = open(at("tree"), JX_DIRECTORY_ALL, &status);
      if (directory) {
        uint64_t count = 0;
        JXTable *table = directory->member_list(directory, pool, 3, &count, &status);
        EXPECT_EQ(table != nullptr, status == JX_OK);
        if (table) table->destroy_table(table);
        directory->close(directory);
      }
      pool->destroy_pool(pool);
      return status;
    };
    const auto information = [this](bool of_file_system) {
      JXStatus status = 0;
      const JXString path = at("tree");
      JXTable *table = of_file_system ? call(instance->file_system_info, path, &status)
                                      : instance->info(instance, instance->pool, path.data(),
                                                       chars(path), &status);
      EXPECT_EQ(table != nullptr, status == JX_OK);
      if (table) table->destroy_table(table);
      return status;
    };
    const auto read = [this] {
      JXStatus status = 0;
      JXDirectory *directory = open(at("tree"), 0, &status);
      if (!directory) return status;
      JXChar name[255];
      uint32_t length = 255;
      while ((status = directory->read(directory, name, &length)) == JX_OK) length = 255;
      directory->close(directory);
      return status == JXWEM_E_EOF ? JX_OK : status;
    };
    const auto create = [this] {
      const JXCreateName request = {nullptr, 0, nullptr, 0, JX_NAME_HOST};
      JXChar *path = nullptr;
      uint32_t path_chars = 0;
      const JXStatus status =
          instance->create_name(instance, nullptr, 0, &request, &path, &path_chars);
      instance->create_name_release(instance, path);
      return status;
    };
    return {
        {"split", split},
        {"build",
         [this] {
           JXStatus status = 0;
           build({}, jx("x"), jx("e"), &status);
           return status;
         }},
        {"exist", [this] { return exist(at("tree")); }},
        {"isdir", [this] { return is_dir(at("tree")); }},
        {"info", [=] { return information(false); }},
        {"fsinfo", [=] { return information(true); }},
        {"make", [this] { return make(at("new")); }},
        {"rename", [this] { return rename(at("tree"), at("other")); }},
        {"remove",
         [this] {
           const JXStatus status = remove(at("tree"), JX_REMOVE_CONTENTS);
           EXPECT_EQ(exists("tree"), status != JX_OK);
           return status;
         }},
        {"copy", [this] { return copy(at("tree"), at("copy")); }},
        {"read", read},
        {"member list", member_list},
        {"list", [this] { return list_status(at("tree/file"), JX_DIRECTORY_PARENT, 3); }},
        {"list with attributes", [this] { return list_status(at("tree"), 0, 2); }},
        {"create name", create},
    };
  }
};

TEST_F(PathSweep, EachHostCall) {
  for (const Operation &operation : operations()) {
    SCOPED_TRACE(operation.name);
    const auto arm = [&](uint32_t n) {
      restore();
      host.arm(kAllFailing, n);
    };
    const auto disarm = [&] {
      const auto failed = host.disarm();
      return std::string(failed ? call_name(*failed) : "");
    };
    for (const SweepRun &run : sweep_with(host, arm, disarm, operation.run)) {
      // Memory has a status of its own; a prefix that could not be had is done without.
      if (run.failed == "pool_allocate" || run.failed == "create_pool") {
        EXPECT_TRUE(run.status == JX_E_NOMEM || run.status == JX_OK) << run.n;
      }
      if (run.failed == "create_table") {
        EXPECT_EQ(run.status, JXWEM_E_NOHANDLE) << run.n;
      }
    }
    journal.take_lines();
  }
}

TEST_F(PathSweep, EachSystemCall) {
  constexpr PathCall kCalls[] = {
      PathCall::stat,   PathCall::fstatat, PathCall::fstat,   PathCall::statvfs,   PathCall::rmdir,
      PathCall::rename, PathCall::mkdir,   PathCall::opendir, PathCall::fdopendir, PathCall::open,
      PathCall::openat, PathCall::readdir, PathCall::unlinkat};
  const std::vector<Operation> all = operations();
  for (const PathCall call : kCalls) {
    for (const Operation &operation : all) {
      SCOPED_TRACE(std::string(operation.name) + ": " + path_call_name(call));
      sweep_with(
          host,
          [&](uint32_t n) {
            restore();
            fail_path_call(call, n, EIO);
          },
          [&] { return std::string(disarm_path_calls() ? path_call_name(call) : ""); },
          operation.run);
      journal.take_lines();
    }
  }
}

}  // namespace
}  // namespace jx::test
