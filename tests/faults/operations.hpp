// Everything a caller asks of the module, as a list: what the fault tests make fail.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "faults/record_life.hpp"
#include "jx/runtime.h"
#include "support/directory_fixture.hpp"
#include "support/path_text.hpp"

namespace jx::test {

// Each operation succeeds on prepared input, releases its results and returns its status.
struct Operation {
  const char *name;
  std::string way;  // of records; else empty
  std::function<void()> prepare;
  std::function<JXStatus()> run;
};

class FaultTest : public DirectoryTest {
 protected:
  void SetUp() override {
    DirectoryTest::SetUp();
    fs::current_path(dir.path());
    for (const Way &way : kWays) add_record_operations(way);
  }
  void TearDown() override {
    setenv("HOME", home_.c_str(), 1);
    DirectoryTest::TearDown();
  }

  // The input of the path operations; their output is removed. Single members make the order of
  // the calls that walk a tree certain.
  void restore() const {
    for (const char *name : {"new", "copy", "other"}) {
      if (exists(name)) fs::remove_all(dir.file(name));
    }
    for (const char *name : {"chain", "chain/sub", "links", "empty", "folder", "folder/sub"}) {
      mkdir(dir.file(name).c_str(), 0777);
    }
    for (const char *name : {"chain/sub/file", "file", "folder/one", "folder/blanks  "}) {
      const int fd = open64(dir.file(name).c_str(), O_WRONLY | O_CREAT, 0666);
      EXPECT_EQ(::write(fd, "content", 7), 7);
      ::close(fd);
    }
    EXPECT_TRUE(symlink("../file", dir.file("links/link").c_str()) == 0 || errno == EEXIST);
    setenv("HOME", "/", 1);
  }

  JXStatus start() {
    const Instance another(host);
    return another ? JX_OK : JX_E_NOMEM;
  }
  JXStatus remove_tree(const char *name) {
    const JXStatus status = remove(at(name), JX_REMOVE_CONTENTS);
    EXPECT_EQ(exists(name), status != JX_OK);
    return status;
  }
  // What a path expands to differs from it, or it is missing.
  JXStatus expand(const char *path) {
    JXChar *result = nullptr;
    uint32_t length = 0;
    const JXStatus status = call(bkwemexpand_path, jx(path), &result, &length);
    const bool is_same = narrow(result, length) == path;
    EXPECT_EQ(bkwemexpand_path_free(instance->pool, result), JX_OK);
    return status == JX_OK && is_same ? JXWEM_E_NOTFOUND : status;
  }
  JXStatus build_status() {
    JXStatus status = 0;
    build(instance, {}, jx("x"), jx("e"), &status);
    return status;
  }

  std::vector<Operation> operations = {
      path_operation("start", [this] { return start(); }),
      path_operation("split", [this] { return split(instance, jx("/a/b.c"), &parts_); }),
      path_operation("build", [this] { return build_status(); }),
      path_operation("expand a relative path", [this] { return expand("a"); }),
      path_operation("expand a user", [this] { return expand("~root"); }),
      path_operation("expand without HOME", [this] { return unsetenv("HOME"), expand("~"); }),
      path_operation("exist", [this] { return exist(at("file")); }),
      path_operation("is directory", [this] { return is_dir(at("folder")); }),
      path_operation("information", [this] { return info_status(at("file")); }),
      path_operation("file system", [this] { return space_status(at("file")); }),
      path_operation("make", [this] { return make(at("new")); }),
      path_operation("rename", [this] { return rename(at("file"), at("other")); }),
      path_operation("remove a file", [this] { return remove(at("file")); }),
      path_operation("remove a directory", [this] { return remove(at("empty")); }),
      path_operation("remove a tree", [this] { return remove_tree("chain"); }),
      path_operation("remove a link in a tree", [this] { return remove_tree("links"); }),
      path_operation("copy a file", [this] { return copy(at("file"), at("copy")); }),
      path_operation("copy a tree", [this] { return copy(at("chain"), at("copy")); }),
      path_operation("read a directory", [this] { return read_status(at("folder")); }),
      path_operation("member list", [this] { return members_status(at("chain/sub")); }),
      path_operation("member names", [this] { return members_status(at("chain/sub"), 0); }),
      path_operation("list of names",
                     [this] { return list_status(at("folder"), JX_DIRECTORY_NAMED); }),
      path_operation("directory list",
                     [this] { return list_status(at("folder/one"), JX_DIRECTORY_PARENT, 1); }),
      path_operation("list with attributes",
                     [this] { return list_status(at("folder"), JX_DIRECTORY_NAMED, 3); }),
      path_operation(
          "create a name",
          [this] { return create_name(instance, {}, {}, {}, JX_NAME_HOST, &made_name_); }),
      path_operation("time of day", [] { return tell_time(); }),
  };

 private:
  Operation path_operation(const char *name, std::function<JXStatus()> run) {
    return {name, "", [this] { restore(); }, std::move(run)};
  }

  // Every operation has a file of its own, which is written anew when its length has changed.
  void add_record_operation(const char *name, const Way &way, JXStatus (RecordLife::*phase)()) {
    const auto life = std::make_shared<RecordLife>(
        instance.get(), way, dir.file(std::string(name) + " " + way.name), journal.journal());
    const auto bytes = std::make_shared<uintmax_t>(0);
    const auto prepare = [life, bytes] {
      std::error_code error;
      if (fs::file_size(life->path(), error) == *bytes) return;
      EXPECT_EQ(life->write(), JX_OK);
      *bytes = fs::file_size(life->path());
    };
    operations.push_back({name, way.name, prepare, [life, phase] { return (*life.*phase)(); }});
  }

  void add_record_operations(const Way &way) {
    const bool is_stream = way.format == JX_FORMAT_STREAM;
    const bool is_direct = way.buffered == 0 || (way.flags & JX_OPEN_DIRECT_TRANSFER) != 0;
    const char *read = is_stream && is_direct ? "read a stream directly" : "read";
    add_record_operation("write", way, &RecordLife::write);
    add_record_operation("append", way, &RecordLife::append);
    add_record_operation(read, way, &RecordLife::read);
    add_record_operation(is_stream ? "update a stream" : "update", way, &RecordLife::update);
    add_record_operation(is_stream ? "use offsets of a stream" : "use offsets", way,
                         &RecordLife::use_offsets);
  }

  static JXStatus tell_time() {
    uint32_t hour = 99, minute = 99;
    double seconds = 99;
    jxztime(&hour, &minute, &seconds);
    EXPECT_TRUE(hour < 24 && minute < 60 && seconds < 62) << hour << ":" << minute;
    return JX_OK;
  }

  const std::string home_ = std::getenv("HOME") ? std::getenv("HOME") : "/";
  std::array<std::string, 4> parts_;
  std::string made_name_;
};

}  // namespace jx::test
