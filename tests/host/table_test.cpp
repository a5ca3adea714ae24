#include <chrono>
#include <cstring>

#include "host/test_host.hpp"

namespace jx::test {
namespace {

int32_t insert(JXTable *table, void *value, const std::string &key,
               JXTableEntry **entry_out = nullptr) {
  return table->table_insert(table, 0, 0, value, entry_out, key.empty() ? nullptr : key.data(),
                             static_cast<uint32_t>(key.size()), 0);
}

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
  const std::string keys[] = {std::string("k\0a", 3), "", std::string("k\0b", 3), ""};
  for (int i = 0; i < 4; ++i) {
    JXTableEntry *entry = nullptr;
    ASSERT_NE(insert(table, &values[i], keys[i], &entry), 0) << i;
    void *words[3];  // a destructor finds the value in the third word
    std::memcpy(words, entry, sizeof words);
    EXPECT_EQ(words[1], table);
    EXPECT_EQ(words[2], &values[i]);
  }
  JXTableEntry *refused = reinterpret_cast<JXTableEntry *>(table);
  EXPECT_EQ(insert(table, &values[3], keys[2], &refused), 0) << "a second value under a key";
  EXPECT_EQ(refused, nullptr);
  EXPECT_EQ(table->table_insert(table, 0, 0, &values[0], nullptr, nullptr, 4, 0), 0);

  EXPECT_EQ(jxhost_table_count(table), 4u);
  int place = 0;
  for (auto *entry = jxhost_table_first(table); entry; entry = jxhost_table_next(entry), ++place) {
    uint32_t key_bytes = 9;
    const void *key = jxhost_table_key(entry, &key_bytes);
    EXPECT_EQ(entry->value, &values[place]);
    EXPECT_EQ(std::string(static_cast<const char *>(key ? key : ""), key_bytes), keys[place]);
  }
  EXPECT_EQ(place, 4);
  EXPECT_EQ(jxhost_table_find(table, "k\0b", 3)->value, &values[2]);
  EXPECT_EQ(jxhost_table_find(table, "k\0b", 2), nullptr);
  EXPECT_EQ(jxhost_table_find(table, nullptr, 0), nullptr);

  EXPECT_EQ(table->table_set_entry_destructor(table, 0, note_destroyed), JX_OK);
  destroyed.clear();
  EXPECT_EQ(table->destroy_table(table), JX_E_BADARG) << "the destructor's first failure";
  EXPECT_EQ(destroyed, (std::vector<int>{1, 2, 3, 4}));
}

TEST(Table, HundredThousandKeysStayFast) {
  TestHost host;
  JXTable *table = host.table();
  const auto start = std::chrono::steady_clock::now();
  for (uint32_t i = 0; i < 100000; ++i) {
    ASSERT_NE(table->table_insert(table, 0, 0, nullptr, nullptr, &i, sizeof i, 0), 0);
  }
  for (uint32_t i = 0; i < 100000; ++i) {
    ASSERT_NE(jxhost_table_find(table, &i, sizeof i), nullptr) << i;
    ASSERT_EQ(table->table_insert(table, 0, 0, nullptr, nullptr, &i, sizeof i, 0), 0);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(jxhost_table_count(table), 100000u);
  EXPECT_EQ(table->destroy_table(table), JX_OK);
}

}  // namespace
}  // namespace jx::test
