#include <cstring>

#include "host/test_host.hpp"

namespace jx::test {
namespace {

// Numbers that an entry destructor was given, in order.
std::vector<int> destroyed;

JXStatus note_destroyed(JXTableEntry *entry) {
  destroyed.push_back(*static_cast<int *>(entry->value));
  return destroyed.back() == 2 ? JX_E_BADARG : JX_OK;
}

TEST(Table, KeepsOrderFindsKeysAndDestroysInOrder) {
  TestHost host;
  JXTable *table = host.table();
  int values[] = {1, 2, 3, 4};
  const std::string_view keys[] = {{"k\0a", 3}, {}, {"k\0b", 3}, {}};
  JXTableEntry *entry = nullptr;
  for (int i = 0; i < 4; ++i) {
    const auto key_bytes = static_cast<uint32_t>(keys[i].size());
    ASSERT_NE(table->table_insert(table, 0, 0, &values[i], &entry, keys[i].data(), key_bytes, 0),
              0);
    void *words[3];  // a destructor finds the value in the third word
    std::memcpy(words, entry, sizeof words);
    EXPECT_EQ(words[1], table);
    EXPECT_EQ(words[2], &values[i]);
  }
  EXPECT_EQ(table->table_insert(table, 0, 0, values, &entry, "k\0b", 3, 0), 0) << "same key";
  EXPECT_EQ(entry, nullptr);
  EXPECT_EQ(table->table_insert(table, 0, 0, values, nullptr, nullptr, 4, 0), 0) << "no key";

  EXPECT_EQ(jxhost_table_count(table), 4u);
  int place = 0;
  for (auto *at = jxhost_table_first(table); at; at = jxhost_table_next(at), ++place) {
    uint32_t key_bytes = 9;
    const void *key = jxhost_table_key(at, &key_bytes);
    EXPECT_EQ(at->value, &values[place]);
    EXPECT_EQ(std::string_view(static_cast<const char *>(key), key_bytes), keys[place]);
  }
  EXPECT_EQ(place, 4);
  EXPECT_EQ(jxhost_table_find(table, "k\0b", 3)->value, &values[2]);
  EXPECT_EQ(jxhost_table_find(table, "k\0b", 2), nullptr);

  EXPECT_EQ(table->table_set_entry_destructor(table, 0, note_destroyed), JX_OK);
  destroyed.clear();
  EXPECT_EQ(table->destroy_table(table), JX_E_BADARG) << "the destructor's first failure";
  EXPECT_EQ(destroyed, (std::vector<int>{1, 2, 3, 4}));
}

// With a cost that grows with the table this would run into the time limit.
TEST(Table, ManyKeysStayFast) {
  TestHost host;
  JXTable *table = host.table();
  for (uint32_t repeat = 0; repeat < 2; ++repeat) {
    for (uint32_t i = 0; i < 300000; ++i) {
      ASSERT_EQ(table->table_insert(table, 0, 0, nullptr, nullptr, &i, sizeof i, 0), repeat == 0);
    }
  }
  EXPECT_EQ(table->destroy_table(table), JX_OK);
}

}  // namespace
}  // namespace jx::test
