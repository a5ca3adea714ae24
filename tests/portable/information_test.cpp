// Information tables of files and of file systems.
#include <fcntl.h>
#include <sys/stat.h>

#include <bit>

#include "support/directory_fixture.hpp"

namespace jx::test {
namespace {

class Information : public DirectoryTest {
 protected:
  struct Item {
    const char *name;
    uint32_t type, format;
    uint64_t value;
  };
  static void expect_items(const Owned<JXTable> &table, JXPool *from,
                           const std::vector<Item> &items) {
    const auto values = FaultHost::values(table.get());
    ASSERT_EQ(values.size(), items.size());
    for (size_t i = 0; i < items.size(); ++i) {
      const auto &item = *static_cast<JXInfoItem *>(values[i]);
      EXPECT_EQ(FaultHost::find(table.get(), items[i].name), &item) << "the key";
      EXPECT_EQ(narrow(item.name, item.name_chars), items[i].name);
      EXPECT_EQ(item.type, items[i].type);
      EXPECT_EQ(item.format, items[i].format);
      EXPECT_EQ(item.value.bytes, items[i].value) << items[i].name;
      EXPECT_TRUE(!item.second_block && item.reserved == 0 && item.pool == from);
    }
  }
};

TEST_F(Information, SizeTimeAndKind) {
  struct Row {
    const char *name;
    uint64_t size;
    time_t modified;  // seconds since 1970
    int32_t time_zone;
    double expected;
  };
  const Row rows[] = {
      {"epoch", 0, 0, 0, 315619200.0},
      {"1969", 1, -86400, 0, 315532800.0},
      {"2038", 2, 2147483647, 0, 2463102847.0},
      {"2200", 3, 7258118400, 0, 7573737600.0},
      {"1901", 4, -2147483648, 0, -1831864448.0},
      {"2446", uint64_t{6} << 30, 15032385535, 0, 15348004735.0},
      {"west", 4, 0, 18000, 315601200.0},
      {"east", 5, 7258118400, -3600, 7573741200.0},
      {"5 GiB", uint64_t{5} << 30, 1, 0, 315619201.0},
      {"blanks  ", uint64_t{0xFFFFFFFF}, 1, 0, 315619201.0},
  };
  for (const Row &row : rows) {
    const std::string path = dir.file(row.name);
    make_file(row.name);
    ASSERT_EQ(truncate64(path.c_str(), static_cast<off64_t>(row.size)), 0);
    const timespec time = {row.modified, 999'999'999};
    const timespec times[] = {time, time};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    host.host()->time_zone = row.time_zone;
    JXStatus status = 0;
    const auto table = info(at(row.name), &status);
    ASSERT_TRUE(table) << row.name << std::hex << status;
    expect_items(table, pool,
                 {{"FILESIZE", 3, 1, row.size},
                  {"MODTIME", 9, 2, std::bit_cast<uint64_t>(row.expected)},
                  {"ISDIR", 13, 3, 0}});
  }
}

TEST_F(Information, Failures) {
  make_link("to_nothing", "nothing");
  EXPECT_EQ(info_status(at("to_nothing")), JXWEM_E_NOTFOUND);
  EXPECT_EQ(space_status(at("nothing/below")), JXWEM_E_NOTFOUND);
  for (const uint32_t n : {0u, 1u, 2u}) {
    host.arm(calls(Call::table_insert), n);
    EXPECT_EQ(info_status(at("")), JXWEM_E_FAILED) << n;
  }
  jxextent(nullptr);
  EXPECT_EQ(info_status(at("")), JXWEM_E_NOHANDLE);
  jxextent(host.host());
}

// The table attributes that each list requests from the host.
TEST_F(Information, Tables) {
  const std::pair<const char *, std::function<JXStatus()>> rows[] = {
      {"create_table 1 536870912 JXWEM Info", [this] { return info_status(at("")); }},
      {"create_table 1 536870912 JXWEM FSInfo", [this] { return space_status(at("")); }},
      {"create_table 2 1 JXWEM MemberList", [this] { return members_status(at("")); }},
      {"create_table 2 1 JXWEM DirectoryList",
       [this] { return list_status(at(""), JX_DIRECTORY_NAMED); }},
  };
  make_file("member");
  for (const auto &[expected, ask] : rows) {
    host.start_trace();
    EXPECT_EQ(ask(), JX_OK);
    const auto trace = host.take_trace();
    EXPECT_EQ(std::count(trace.begin(), trace.end(), expected), 1) << expected;
  }
}

TEST_F(Information, FileSystem) {
  constexpr struct {
    uint32_t fragment_bytes, block_bytes;
    uint64_t blocks, space;
  } kRows[] = {{4096, 512, 3, 12288},
               {0, 512, 3, 1536},
               {4096, 1, uint64_t{1} << 31, uint64_t{1} << 43},
               {0x80000000u, 1, 0xFFFFFFFFu, uint64_t{0x80000000u} * 0xFFFFFFFFu}};
  for (const auto &row : kRows) {
    amend_space = [&](struct statvfs64 *space) {
      space->f_frsize = row.fragment_bytes;
      space->f_bsize = row.block_bytes;
      space->f_bavail = row.blocks;
      space->f_fsid = 0x87654321u;
    };
    JXStatus status = 0;
    const Owned<JXTable> table(call(instance->file_system_info, jx(dir.path()), &status));
    amend_space = nullptr;
    ASSERT_TRUE(table);
    expect_items(table, instance->pool,
                 {{"FREESPACE", 4, 0, row.space}, {"FILESYSID", 6, 0, 0x87654321u}});
  }
}

}  // namespace
}  // namespace jx::test
