#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "host/test_host.hpp"

namespace jx::test {
namespace {

// Numbers passed to the entry destructor, in order.
std::vector<uint32_t> destroyed;

JXStatus note_destroyed(JXTableEntry *entry) {
  destroyed.push_back(*static_cast<uint32_t *>(entry->value));
  return destroyed.back() == 0 ? JX_OK : destroyed.back();
}

// So many entries that a cost per entry that grows with the table would exceed the time limit.
TEST(Table, KeepsOrderFindsKeysAndDestroysInOrder) {
  TestHost host;
  JXTable *table = host.table();
  std::vector<uint32_t> values(300000);
  std::iota(values.begin(), values.end(), 0);
  JXTableEntry *entry = nullptr;
  for (uint32_t &value : values) {
    const uint32_t key_bytes = value % 3 == 0 ? 0 : sizeof value;
    ASSERT_NE(table->table_insert(table, 0, 0, &value, &entry, &value, key_bytes, 0), 0);
    void *words[3];  // a destructor finds the value in the third word
    std::memcpy(words, entry, sizeof words);
    ASSERT_TRUE(words[1] == table && words[2] == &value) << value;
    ASSERT_EQ(jxhost_table_find(table, &value, sizeof value), key_bytes == 0 ? nullptr : entry);
  }
  EXPECT_EQ(table->table_insert(table, 0, 0, nullptr, &entry, &values[1], 4, 0), 0) << "same key";
  EXPECT_EQ(entry, nullptr);
  EXPECT_EQ(table->table_insert(table, 0, 0, nullptr, nullptr, nullptr, 4, 0), 0) << "no key";
  EXPECT_EQ(jxhost_table_find(table, &values[1], 3), nullptr);

  const JXTableEntry *at = jxhost_table_first(table);
  for (uint32_t &value : values) {
    uint32_t key_bytes = 9;
    const void *key = jxhost_table_key(at, &key_bytes);
    ASSERT_EQ(at->value, &value);
    ASSERT_EQ(key_bytes, value % 3 == 0 ? 0 : sizeof value);
    ASSERT_TRUE(key_bytes == 0 || std::memcmp(key, &value, key_bytes) == 0);
    at = jxhost_table_next(at);
  }
  EXPECT_EQ(at, nullptr);
  EXPECT_EQ(table->table_set_entry_destructor(table, 0, note_destroyed), JX_OK);
  destroyed.clear();
  EXPECT_EQ(table->destroy_table(table), 1u) << "the destructor's first failure";
  EXPECT_TRUE(destroyed == values);
}

TEST(Table, KeepsKeysOfAllLengths) {
  TestHost host;
  JXTable *table = host.table();
  const std::string text(200000, 'k');
  const uint32_t lengths[] = {1, 7, 9, 255, 300, 1, 65530, 3, 200000, 2, 70000};
  std::vector<JXTableEntry *> entries;
  for (const uint32_t bytes : lengths) {
    JXTableEntry *entry = nullptr;
    const bool is_new = !jxhost_table_find(table, text.data(), bytes);
    EXPECT_EQ(table->table_insert(table, 0, 0, nullptr, &entry, text.data(), bytes, 0) != 0,
              is_new);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(entry) % alignof(void *), 0u) << bytes;
    entries.push_back(is_new ? entry : entries[0]);
  }
  for (size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(jxhost_table_find(table, text.data(), lengths[i]), entries[i]) << lengths[i];
  }
  EXPECT_EQ(table->destroy_table(table), JX_OK);
}

}  // namespace
}  // namespace jx::test
