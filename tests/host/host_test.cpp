// The handle and its smaller objects: locks, options, the loader, leaks.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <tuple>

#include "host/test_host.hpp"
#include "jx/wem.h"
#include "support/files.hpp"

namespace jx::test {
namespace {

TEST(Lock, ExcludesAndAnswersMisuse) {
  TestHost host;
  JXLock *lock = host.lock();
  int counter = 0;
  on_threads([&](uint32_t) {
    for (int i = 0; i < 20000; ++i) {
      ASSERT_EQ(lock->lock_acquire(lock, 1, 1), JX_OK);
      ++counter;
      ASSERT_EQ(lock->lock_release(lock), JX_OK);
    }
  });
  EXPECT_EQ(counter, 80000);

  EXPECT_EQ(lock->lock_release(lock), JXHOST_E_LOCKSTATE);
  EXPECT_EQ(lock->lock_acquire(lock, 1, 1), JX_OK);
  EXPECT_EQ(lock->lock_acquire(lock, 1, 1), JXHOST_E_LOCKSTATE);
  std::thread([&] { EXPECT_EQ(lock->lock_release(lock), JXHOST_E_LOCKSTATE); }).join();
  EXPECT_EQ(lock->destroy_lock(lock), JXHOST_E_LOCKSTATE);
  EXPECT_EQ(lock->lock_release(lock), JX_OK);
  EXPECT_EQ(lock->destroy_lock(lock), JX_OK);
}

TEST(Option, AnswersByNameTypeAndRoom) {
  TestHost host;
  ASSERT_EQ(jxhost_set_option(host.get(), "test.answer", 41), JX_OK);
  ASSERT_EQ(jxhost_set_option(host.get(), "test.answer", 42), JX_OK);
  const std::tuple<std::string_view, uint32_t, uint32_t, JXStatus> rows[] = {
      {"test.answer", 3, 8, JX_OK},
      {"test.answer", 3, 3, JXHOST_E_NOROOM},
      {"test.answer", 2, 8, JXHOST_E_NOOPTION},
      {"test.answe", 3, 8, JXHOST_E_NOOPTION}};
  for (const auto &[name8, type, room, status] : rows) {
    const JXString name = jx(name8);
    int32_t value = -1;
    uint32_t size = room;
    EXPECT_EQ(host->get_option(host.get(), name.data(), chars(name), type, &value, &size), status);
    EXPECT_EQ(value, status == JX_OK ? 42 : -1) << name8;
    EXPECT_EQ(size, status == JXHOST_E_NOOPTION ? room : 4) << name8;
  }
}

TEST(Option, ProcessIdOfParentAndChild) {
  TestHost host;
  const auto is_right = [&] {
    const JXString name = jx("host.process_id");
    int32_t value = -1;
    uint32_t size = sizeof value;
    return host->get_option(host.get(), name.data(), chars(name), 3, &value, &size) == JX_OK &&
           value == ::getpid();
  };
  EXPECT_TRUE(is_right());
  const pid_t child = ::fork();
  if (child == 0) ::_exit(is_right() ? 0 : 1);
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(is_right());
}

TEST(Host, KnowsTheTimeZoneOfTheProcess) {
  setenv("TZ", "XXX3:30", 1);
  EXPECT_EQ(TestHost()->time_zone, 12600);
  unsetenv("TZ");
  tzset();
}

TEST(Host, FreesAndCountsWhatLeaked) {
  const uint32_t descriptors = open_descriptors();
  TestHost host;
  JXPool *pool = host.pool("forgotten");
  ASSERT_NE(pool->pool_allocate(pool, 100, 0), nullptr);
  JXTable *table = host.table();
  ASSERT_NE(table->table_insert(table, 0, 0, pool, nullptr, "key", 3, 0), 0);
  // The host must not call the destructor of a leaked table: its code may be unloaded.
  const JXEntryDestructor fail = [](JXTableEntry *) -> JXStatus { std::abort(); };
  ASSERT_EQ(table->table_set_entry_destructor(table, 0, fail), JX_OK);
  auto *elm = reinterpret_cast<JXElm *>(host.extension("jxelm"));
  const JXString path = jx("/dev/null");
  const JXOpenRequest request = {path.data(), chars(path), 0, O_RDONLY, {}};
  JXStatus status;
  ASSERT_NE(elm->open_file(elm, &request, 1, JXELM_LOCK_NONE, nullptr, &status), nullptr);
  ASSERT_NE(host->nls->create_decoder(host->nls, JX_ENCODING_UTF8, 0, 0), nullptr);
  EXPECT_EQ(jxhost_live_objects(host.get()), 5u);
  EXPECT_EQ(host.end(), 5u);
  EXPECT_EQ(host.take_lines().back(), "3 JXHOST_E_LEAKED pool \"forgotten\"");
  EXPECT_EQ(open_descriptors(), descriptors);
}

TEST(Loader, SaysWhyItRefuses) {
  TestHost host;
  const std::tuple<const char *, uintptr_t, const char *> rows[] = {
      {"", 0, "are needed"},
      {"/no/module.so", 0, "No such file"},
      {"libm.so.6", 0, "no routine \"jxextent\""},
      {JX_BAD_MODULE, 0, "entry failed"},
      {JX_BAD_MODULE, 1, "does not begin with \"nevo\""},
      {JX_BAD_MODULE, 2, "needs host version 3.2.2; this host is version 3.2.1"},
  };
  for (const auto &[path, owner, expected] : rows) {
    auto *module = reinterpret_cast<JXHostModule *>(&host);
    const char *error = nullptr;
    EXPECT_EQ(jxhost_load(host.get(), path, reinterpret_cast<JXOwner>(owner), &module, &error),
              nullptr);
    EXPECT_EQ(module, nullptr);
    EXPECT_NE(std::string(error).find(expected), std::string::npos) << error;
  }
}

TEST(Loader, LoadsForOneHostAtATime) {
  TestHost host, other;
  JXHostModule *first = nullptr, *second = nullptr;
  const char *error = nullptr;
  JXInstance *instance = jxhost_load(host.get(), JXWEM_PATH, nullptr, &first, &error);
  ASSERT_NE(instance, nullptr) << error;
  EXPECT_EQ(jxhost_load(other.get(), JXWEM_PATH, nullptr, &second, &error), nullptr);
  EXPECT_NE(std::string(error).find("another host"), std::string::npos);
  EXPECT_NE(jxhost_load(host.get(), JXWEM_PATH, nullptr, &second, &error), instance);
  jxhost_unload(first);
  EXPECT_EQ(host.end(), 0u) << "the host unloads the second by itself";
  ASSERT_NE(jxhost_load(other.get(), JXWEM_PATH, nullptr, &first, &error), nullptr) << error;
  EXPECT_EQ(jxhost_symbol(nullptr, "jxwem"), nullptr);
  EXPECT_EQ(jxhost_symbol(first, nullptr), nullptr);
  EXPECT_NE(jxhost_symbol(first, "jxwem"), nullptr);
  jxhost_unload(first);
}

}  // namespace
}  // namespace jx::test
