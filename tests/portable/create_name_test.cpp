// Unique names.
#include <gtest/gtest.h>

#include <thread>
#include <unordered_set>

#include "support/path_fixture.hpp"

namespace jx::test {
namespace {

class CreateName : public PathTest {
 protected:
  void SetUp() override {
    PathTest::SetUp();
    ASSERT_EQ(jxhost_set_option(host.reference(), "host.process_id", 1234), JX_OK);
  }

  void set_host_name(std::string_view name) {
    const JXString text = jx(name);
    std::copy(text.begin(), text.end(), instance->host_name);
    instance->host_name_chars = chars(text);
  }

  JXStatus create(const JXString &directory, const JXString &prefix, const JXString &extension,
                  uint32_t flags, std::string *name) {
    const JXCreateName request = {prefix.data(), chars(prefix), extension.data(), chars(extension),
                                  flags};
    JXChar *path = nullptr;
    uint32_t path_chars = 77;
    const JXStatus status = instance->create_name(instance, directory.data(), chars(directory),
                                                  &request, &path, &path_chars);
    EXPECT_EQ(path != nullptr, status == JX_OK);
    EXPECT_EQ(path_chars == 77u, !path);
    if (path) {
      name->assign(narrow(path, path_chars));
      instance->create_name_release(instance, path);
    }
    return status;
  }
};

TEST_F(CreateName, Forms) {
  struct Row {
    uint32_t flags, counter;  // the counter before the call
    std::string prefix, extension;
    JXStatus status;
    std::string name;
    int32_t process = 1234;
    const char *directory = "/d";
    std::string host_name = "node7";
  };
  const std::string most(1014, 'p');  // with the ten digits: not too long to format
  const Row rows[] = {
      {4, 0, "", "", JX_OK, "/d/ZOR_util0001000004D2_node7"},
      {6, 0xFFFC, "tmp", "x", JX_OK, "/d/ZOR_utilFFFD000004D2_node7"},
      {5, 9, "", "dat", JX_OK, "/d/ZOR_util000A000004D2_node7.dat"},
      {4, 0, "", "", JX_OK, "/d/ZOR_util0001000004D2_", 1234, "/d/", ""},
      {4, 0, "", "", JX_OK, "/d/ZOR_util0001FFFFFFFE_  ab", -2, "/d", {'a', 'b', 0, 0}},
      {2, 0, "tmp", "x", JX_OK, "/d/tmp04D2000001"},
      {3, 0, "tmp", "dat", JX_OK, "/d/tmp04D2000001.dat"},
      {1, 0xAB, "tmp", "dat", JX_OK, "/d/tmp04D20000AC.dat"},
      {2, 0, "", "", JX_OK, "/d/04D2000001"},
      {2, 0, "t", "", JX_OK, "/d/tFFFE000001", -2},
      {2, 0, "t", "", JX_OK, dir.file("t04D2000001"), 1234, ""},
      {3, 0, "a b", "", JX_OK, "/d/a b04D2000001"},
      {0, 0, "tmp", "dat", JXWEM_E_BADOPTIONS, ""},
      {8, 0, "tmp", "dat", JXWEM_E_BADOPTIONS, ""},
      {2, 0, most + std::string(9, 'p'), "", JX_E_TRUNCATED, ""},
      {2, 0, most, "", JXWEM_E_NAMETOOLONG, ""},
      {2, 0, most + std::string(10, 'p'), "", JXWEM_E_NAMETOOLONG, ""},
      {2, 0xFFFD, "t", "", JX_OK, "/d/t04D200FFFE"},
      {2, 0xFFFE, "t", "", JX_OK, "/d/t04D2000000"},
  };
  const WorkingDirectory here(dir.path());
  for (const Row &row : rows) {
    instance->name_counter = row.counter;
    set_host_name(row.host_name);
    ASSERT_EQ(jxhost_set_option(host.reference(), "host.process_id", row.process), JX_OK);
    std::string name;
    EXPECT_EQ(create(jx(row.directory), jx(row.prefix), jx(row.extension), row.flags, &name),
              row.status)
        << row.flags << row.prefix;
    EXPECT_EQ(name, row.name);
    EXPECT_EQ(instance->name_counter, (row.counter + 1) % 0xFFFF);
  }
}

TEST_F(CreateName, Failures) {
  const JXCreateName request = {nullptr, 9, nullptr, 9, JX_NAME_PREFIX};
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  EXPECT_EQ(jxwemcreatename(nullptr, nullptr, 0, &request, &path, &path_chars), JXWEM_E_NOHANDLE);
  EXPECT_EQ(jxwemcreatename(instance, nullptr, 0, nullptr, &path, &path_chars), JXWEM_E_FAILED);
  std::string name;
  host.arm(calls(Call::get_option), 0, 0x803fc123u);
  EXPECT_EQ(create(jx("/d"), jx("t"), {}, 2, &name), 0x803fc123u);
  EXPECT_TRUE(host.disarm());
  EXPECT_EQ(instance->name_counter, 1u);
  EXPECT_EQ(create(jx(std::string(1025, 'd')), jx("t"), {}, 2, &name), 1u);
  EXPECT_EQ(instance->name_counter, 2u);
}

TEST_F(CreateName, OneCycle) {
  std::unordered_set<std::string> names;
  std::string name;
  for (int i = 1; i <= 0xFFFF; ++i) {
    ASSERT_EQ(create(jx("/d"), jx("t"), {}, 2, &name), JX_OK);
    EXPECT_TRUE(names.insert(name).second) << name;
  }
  EXPECT_EQ(name, "/d/t04D2000000");
  EXPECT_EQ(create(jx("/d"), jx("t"), {}, 2, &name), JX_OK);
  EXPECT_EQ(name, "/d/t04D2000001");
}

TEST_F(CreateName, EightThreads) {
  constexpr int kThreads = 8;
  constexpr int kNamesEach = 6250;
  std::unordered_set<std::string> names;
  // Two rounds of 50,000 names, each within one cycle and with a prefix of its own.
  for (const char *prefix : {"a", "b"}) {
    instance->name_counter = 0;
    std::vector<std::vector<std::string>> made(kThreads);
    std::vector<std::thread> threads;
    for (auto &mine : made) {
      threads.emplace_back([&mine, prefix, this] {
        std::string name;
        for (int i = 0; i < kNamesEach; ++i) {
          if (create(jx("/d"), jx(prefix), {}, 2, &name) == JX_OK) mine.push_back(name);
        }
      });
    }
    for (auto &thread : threads) thread.join();
    for (const auto &mine : made) names.insert(mine.begin(), mine.end());
  }
  EXPECT_EQ(names.size(), 2u * kThreads * kNamesEach);
}

}  // namespace
}  // namespace jx::test
