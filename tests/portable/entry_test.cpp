// The entry and the end of an instance: the host calls, their order, and the undoing when one
// fails.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "jx/runtime.h"
#include "support/instance.hpp"
#include "support/sweep.hpp"

namespace jx::test {
namespace {

using Trace = std::vector<std::string>;

TEST(Entry, CallsTheHostInOrder) {
  FaultHost host;
  host.start_trace();
  {
    const Instance instance(host);
    ASSERT_TRUE(instance);
    const Trace entry = {"create_pool 7 jxwem pool",
                         "pool_allocate pool 7 jxwem pool",
                         "create_decoder 62",
                         "create_encoder 62",
                         "load_extension jxelm",
                         "load_extension jxsecure 7",
                         "load_extension jxitcp 7",
                         "get_host_name extension jxitcp 7",
                         "release_extension extension jxitcp 7"};
    EXPECT_EQ(host.take_trace(), entry);
    host.start_trace();
  }
  const Trace destroy = {"release_extension extension jxelm", "destroy_transcoder decoder 62",
                         "destroy_transcoder encoder 62", "release_extension extension jxsecure 7",
                         "destroy_pool pool 7 jxwem pool"};
  EXPECT_EQ(host.take_trace(), destroy);
}

TEST(Entry, FillsTheInstance) {
  FaultHost host;
  const Instance instance(host);
  ASSERT_TRUE(instance);
  EXPECT_EQ(Exported_JXHandle, host.host());
  EXPECT_EQ(std::memcmp(instance->eye_catcher, JX_EYE_CATCHER, 4), 0);
  EXPECT_EQ(instance->host, host.host());
  EXPECT_EQ(instance->pool_host, host.host());
  EXPECT_EQ(instance->nls, host.host()->nls);
  EXPECT_TRUE(instance->pool && instance->pool == instance->working_pool);
  EXPECT_TRUE(instance->elm && instance->secure);
  EXPECT_TRUE(instance->native_encoder && instance->native_decoder);
  EXPECT_EQ(instance->journal, nullptr);
  EXPECT_EQ(instance->name_counter, 0u);
  EXPECT_GT(instance->host_name_chars, 0u);
  EXPECT_LE(instance->host_name_chars, uint32_t{JX_HOST_NAME_CHARS});
  EXPECT_EQ(instance->create_name_release, instance->build_path_release);
  // The routines by their exported names, words 3 to 25 of the table.
  const std::array<void *, 23> routines = {(void *)jxwemgetreqversion,
                                           (void *)jxwemgetversion,
                                           host.host(),
                                           (void *)jxwemdestroy,
                                           nullptr,
                                           nullptr,
                                           (void *)jxwemdirectoryopen,
                                           (void *)jxwemopen,
                                           nullptr,
                                           (void *)bkwembuildpath,
                                           (void *)bkwembuildpathdestroy,
                                           (void *)bkwemsplitpath,
                                           (void *)bkwemsplitpathdestroy,
                                           (void *)bkwemcopy,
                                           (void *)bkwemexist,
                                           (void *)bkwemmakedirectory,
                                           (void *)bkwemremove,
                                           (void *)bkwemrename,
                                           (void *)jxweminfo,
                                           (void *)jxwemfsinfo,
                                           (void *)jxwemcreatename,
                                           (void *)bkwembuildpathdestroy,
                                           (void *)jxwemdirectorylist};
  for (size_t i = 0; i < routines.size(); ++i) {
    EXPECT_EQ(reinterpret_cast<void **>(instance.get())[3 + i], routines[i]) << "word " << 3 + i;
  }
}

TEST(Entry, Versions) {
  uint32_t numbers[5] = {9, 9, 9, 9, 9};
  EXPECT_EQ(jxwemgetreqversion(nullptr, &numbers[1], &numbers[2], &numbers[3]), JX_OK);
  EXPECT_EQ(std::vector<uint32_t>(numbers, numbers + 5), (std::vector<uint32_t>{9, 3, 1, 1, 9}));
  EXPECT_EQ(jxwemgetversion(nullptr, &numbers[1], &numbers[2], &numbers[3]), JX_OK);
  EXPECT_EQ(std::vector<uint32_t>(numbers, numbers + 5), (std::vector<uint32_t>{9, 3, 2, 1, 9}));
}

TEST(Entry, MissingExtensions) {
  struct Row {
    uint32_t extensions;
    bool makes_instance, has_elm, has_host_name;
  };
  const Row rows[] = {
      {JXHOST_ALL & ~JXHOST_ITCP, true, true, false},
      {JXHOST_ALL & ~JXHOST_ELM, true, false, true},
      {JXHOST_ALL & ~JXHOST_SECURE, false, false, false},
      {0, false, false, false},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE("extensions " + std::to_string(row.extensions));
    FaultHost host(row.extensions);
    const Instance instance(host);
    EXPECT_EQ(static_cast<bool>(instance), row.makes_instance);
    if (!instance) {
      EXPECT_EQ(host.live(), LiveCounts{}) << host.list_live();
      continue;
    }
    EXPECT_EQ(instance->elm != nullptr, row.has_elm);
    EXPECT_EQ(instance->host_name_chars != 0, row.has_host_name);
    if (!row.has_host_name) {
      EXPECT_EQ(skMemTNot(0, instance->host_name, JX_HOST_NAME_CHARS), 1);
    }
  }
}

TEST(Entry, NoCharacterSetService) {
  FaultHost host;
  host.host()->nls = nullptr;
  EXPECT_FALSE(Instance(host));
}

}  // namespace
}  // namespace jx::test
