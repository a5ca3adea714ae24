// Unique names.
#include <thread>
#include <unordered_set>

#include "support/path_fixture.hpp"
#include "support/path_text.hpp"

namespace jx::test {
namespace {

using CreateName = PathTest;

TEST_F(CreateName, Forms) {
  struct Row {
    uint32_t flags, counter;  // the counter before the call
    std::string prefix, extension;
    JXStatus status;
    std::string name;
    int32_t process = 1234;
    const char *directory = "/d";
    std::string host_name = "node7";
    uint32_t claimed_chars = 0;  // in place of its length
  };
  const std::string most(1014, 'p');  // with the ten digits: not too long to format
  const Row rows[] = {
      {4, 0, "", "", JX_OK, "/d/ZOR_util0001000004D2_node7"},
      {4, 0, "", "", JX_OK, "/d/ZOR_util0001000004D2_node7", 1234, "/d", "node7", ~0u},
      {4, 0, "", "", JX_E_TRUNCATED, "", 1234, "/d", "node7", ~0u >> 1},
      {4, 0, "", "", JX_E_TRUNCATED, "", 1234, "/d", "node7", 1u << 31},
      {4, 0, "", "", JX_OK, "/d/ZOR_util0001000004D2_node7", 1234, "/d", "node7", ~0u - 998},
      {6, 0xFFFC, "tmp", "x", JX_OK, "/d/ZOR_utilFFFD000004D2_node7"},
      {5, 9, "", "dat", JX_OK, "/d/ZOR_util000A000004D2_node7.dat"},
      {4, 0, "", "", JX_OK, "/d/ZOR_util0001000004D2_", 1234, "/d/", ""},
      {4, 0, "", "", JX_OK, "/d/ZOR_util0001FFFFFFFE_  ab", -2, "/d", {'a', 'b', 0, 0}},
      {3, 0, "tmp", "dat", JX_OK, "/d/tmp04D2000001.dat"},
      {1, 0xAB, "tmp", "dat", JX_OK, "/d/tmp04D20000AC.dat"},
      {2, 0, "", "x", JX_OK, "/d/04D2000001"},
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
  fs::current_path(dir.path());
  for (const Row &row : rows) {
    instance->name_counter = row.counter;
    const JXString host_name = jx(row.host_name);
    std::copy(host_name.begin(), host_name.end(), instance->host_name);
    instance->host_name_chars = row.claimed_chars ? row.claimed_chars : chars(host_name);
    ASSERT_EQ(jxhost_set_option(host.reference(), "host.process_id", row.process), JX_OK);
    std::string name;
    EXPECT_EQ(create_name(instance, jx(row.directory), jx(row.prefix), jx(row.extension), row.flags,
                          &name),
              row.status)
        << row.flags << row.prefix;
    EXPECT_EQ(name, row.name);
    EXPECT_EQ(instance->name_counter, (row.counter + 1) % 0xFFFF);
  }
}

TEST_F(CreateName, Failures) {
  std::string name;
  host.arm(calls(Call::get_option), 0, 0x803fc123u);
  EXPECT_EQ(create_name(instance, jx("/d"), jx("t"), {}, 2, &name), 0x803fc123u);
  EXPECT_TRUE(host.disarm());
  EXPECT_EQ(create_name(instance, jx(std::string(1025, 'd')), jx("t"), {}, 2, &name), 1u);
  EXPECT_EQ(instance->name_counter, 2u);
  jxextent(nullptr);
  EXPECT_EQ(create_name(instance, jx("/d"), jx("t"), {}, 2, &name), JXWEM_E_NOHANDLE);
  jxextent(host.host());
}

TEST_F(CreateName, OneCycle) {
  std::unordered_set<std::string> names;
  std::string name;
  for (int i = 1; i <= 0xFFFF; ++i) {
    ASSERT_EQ(create_name(instance, jx("/d"), jx("t"), {}, 2, &name), JX_OK);
    EXPECT_TRUE(names.insert(name).second) << name;
  }
  EXPECT_TRUE(name.ends_with("000000")) << name;
  EXPECT_EQ(create_name(instance, jx("/d"), jx("t"), {}, 2, &name), JX_OK);
  EXPECT_TRUE(name.ends_with("000001")) << name;
}

TEST_F(CreateName, EightThreads) {
  std::unordered_set<std::string> names;
  // Two rounds of 50,000 names, each within one cycle and with a prefix of its own.
  for (const char *prefix : {"a", "b"}) {
    instance->name_counter = 0;
    std::vector<std::string> made(50'000);
    std::vector<std::thread> threads;
    for (size_t first = 0; first < made.size(); first += made.size() / 8) {
      threads.emplace_back([&made, first, prefix, this] {
        for (size_t i = first; i < first + made.size() / 8; ++i) {
          EXPECT_EQ(create_name(instance, jx("/d"), jx(prefix), {}, 2, &made[i]), JX_OK);
        }
      });
    }
    for (auto &thread : threads) thread.join();
    names.insert(made.begin(), made.end());
  }
  EXPECT_EQ(names.size(), 100'000u);
}

}  // namespace
}  // namespace jx::test
