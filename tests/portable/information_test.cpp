// Information tables of files and of file systems.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include "support/path_fixture.hpp"

namespace jx::test {
namespace {

class Information : public PathTest {
 protected:
  void SetUp() override {
    PathTest::SetUp();
    pool = host.host()->create_pool(host.host(), 0, 0, 0, nullptr, "caller");
    host.host()->time_zone = 0;
  }
  void TearDown() override {
    EXPECT_EQ(pool->destroy_pool(pool), JX_OK);
    PathTest::TearDown();
  }

  JXTable *info(const JXString &path, JXStatus *status) {
    return instance->info(instance, pool, path.data(), chars(path), status);
  }
  JXStatus info_status(const JXString &path) {
    JXStatus status = 0;
    JXTable *table = info(path, &status);
    EXPECT_EQ(table != nullptr, status == JX_OK);
    if (table) table->destroy_table(table);
    return status;
  }

  uint64_t size_of(std::string_view name) const {
    struct stat64 info;
    EXPECT_EQ(stat64(dir.file(name).c_str(), &info), 0);
    return static_cast<uint64_t>(info.st_size);
  }

  struct Item {
    const char *name;
    uint32_t type, format;
  };
  static void expect_items(const JXTable *table, JXPool *from, const std::vector<Item> &items) {
    const auto values = FaultHost::values(table);
    ASSERT_EQ(values.size(), items.size());
    for (size_t i = 0; i < items.size(); ++i) {
      const auto &item = *static_cast<JXInfoItem *>(values[i]);
      EXPECT_EQ(FaultHost::find(table, items[i].name), &item) << "the key";
      EXPECT_EQ(narrow(item.name, item.name_chars), items[i].name);
      EXPECT_EQ(item.type, items[i].type);
      EXPECT_EQ(item.format, items[i].format);
      EXPECT_TRUE(!item.second_block && item.reserved == 0 && item.pool == from);
    }
  }

  JXPool *pool = nullptr;
};

struct FileRow {
  const char *name;
  uint64_t size;
  int64_t modified;  // seconds since 1970
  int32_t time_zone;
  double expected;
};

TEST_F(Information, SizeTimeAndKind) {
  const FileRow rows[] = {
      {"epoch", 0, 0, 0, 315619200.0},
      {"1969", 1, -86400, 0, 315532800.0},
      {"2038", 2, 2147483647, 0, 2463102847.0},
      {"2200", 3, 7258118400, 0, 7573737600.0},
      {"west", 4, 0, 18000, 315601200.0},
      {"east", 5, 7258118400, -3600, 7573741200.0},
      {"5 GiB", uint64_t{5} << 30, 1, 0, 315619201.0},
      {"blanks  ", uint64_t{0xFFFFFFFF}, 1, 0, 315619201.0},
  };
  for (const FileRow &row : rows) {
    const std::string path = dir.file(row.name);
    make_file(row.name);
    ASSERT_EQ(truncate64(path.c_str(), static_cast<off64_t>(row.size)), 0);
    const timespec times[2] = {{static_cast<time_t>(row.modified), 999'999'999},
                               {static_cast<time_t>(row.modified), 999'999'999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    host.host()->time_zone = row.time_zone;
    JXStatus status = 0;
    JXTable *table = info(at(row.name), &status);
    ASSERT_TRUE(table) << row.name << std::hex << status;
    expect_items(table, pool, {{"FILESIZE", 3, 1}, {"MODTIME", 9, 2}, {"ISDIR", 13, 3}});
    const auto values = FaultHost::values(table);
    EXPECT_EQ(static_cast<JXInfoItem *>(values[0])->value.bytes, row.size) << row.name;
    EXPECT_EQ(static_cast<JXInfoItem *>(values[1])->value.time, row.expected) << row.name;
    EXPECT_EQ(static_cast<JXInfoItem *>(values[2])->value.bytes, 0u) << row.name;
    EXPECT_EQ(table->destroy_table(table), JX_OK);
  }
}

TEST_F(Information, Directory) {
  make_folder("folder");
  make_link("link", "folder");
  for (const char *name : {"folder", "link"}) {
    JXStatus status = 0;
    JXTable *table = info(at(name), &status);
    const auto values = FaultHost::values(table);
    EXPECT_EQ(static_cast<JXInfoItem *>(values[0])->value.bytes, size_of("folder"));
    EXPECT_EQ(static_cast<JXInfoItem *>(values[2])->value.bytes, 1u);
    table->destroy_table(table);
  }
}

TEST_F(Information, Failures) {
  make_link("to_nothing", "nothing");
  EXPECT_EQ(info_status(at("nothing")), JXWEM_E_NOTFOUND);
  EXPECT_EQ(info_status(at("to_nothing")), JXWEM_E_NOTFOUND);
  const JXChar text = '/';
  const auto status_of = [](auto operation, auto... arguments) {
    JXStatus status = 0;
    EXPECT_FALSE(operation(arguments..., 1, &status));
    return status;
  };
  EXPECT_EQ(status_of(jxweminfo, instance.get(), nullptr, &text), JXWEM_E_FAILED);
  EXPECT_EQ(status_of(jxweminfo, instance.get(), pool, nullptr), JXWEM_E_FAILED);
  EXPECT_EQ(status_of(jxweminfo, nullptr, pool, &text), JXWEM_E_NOHANDLE);
  EXPECT_EQ(status_of(jxwemfsinfo, instance.get(), nullptr), JXWEM_E_FAILED);
  EXPECT_EQ(status_of(jxwemfsinfo, nullptr, &text), JXWEM_E_NOHANDLE);
  jxextent(nullptr);
  make_file("file");
  EXPECT_EQ(info_status(at("file")), JXWEM_E_NOHANDLE);
  jxextent(host.host());
}

TEST_F(Information, FileSystem) {
  struct statvfs64 expected;
  ASSERT_EQ(statvfs64(dir.path().c_str(), &expected), 0);
  struct Row {
    uint32_t fragment_bytes, block_bytes;
    uint64_t blocks, space;
  };
  constexpr Row kRows[] = {{4096, 512, 3, 12288},
                           {0, 512, 3, 1536},
                           {4096, 1, uint64_t{1} << 31, uint64_t{1} << 43},
                           {0x80000000u, 1, 0xFFFFFFFFu, uint64_t{0x80000000u} * 0xFFFFFFFFu}};
  const JXString path = jx(dir.path());
  for (const Row &row : kRows) {
    report_space(row.fragment_bytes, row.block_bytes, row.blocks);
    JXStatus status = 0;
    JXTable *table = call(instance->file_system_info, path, &status);
    disarm_path_calls();
    ASSERT_TRUE(table);
    expect_items(table, instance->pool, {{"FREESPACE", 4, 0}, {"FILESYSID", 6, 0}});
    const auto values = FaultHost::values(table);
    EXPECT_EQ(static_cast<JXInfoItem *>(values[0])->value.bytes, row.space);
    EXPECT_EQ(static_cast<JXInfoItem *>(values[1])->value.bytes,
              static_cast<uint32_t>(expected.f_fsid));
    table->destroy_table(table);
  }
  JXStatus status = 0;
  EXPECT_FALSE(call(instance->file_system_info, at("nothing/below"), &status));
  EXPECT_EQ(status, JXWEM_E_NOTFOUND);
}

}  // namespace
}  // namespace jx::test
