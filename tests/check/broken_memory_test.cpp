// Kernels with broken pools, locks and tables.
#include <string.h>
#include <unistd.h>

#include "check/broken_slot.hpp"

namespace jx::test {
namespace {

void *cached;  // a block that a pool without a lock hands out again

const BrokenSlot kMemory[] = {
    {"blocks at odd addresses",
     [] {
       replace<&JXPool::pool_allocate>([](JXPool *p, uint32_t bytes, uint32_t flags) -> void * {
         return static_cast<char *>(real<JXPool>.pool_allocate(p, bytes + 8, flags)) + 8;
       });
     },
     "pool.pool_allocate: blocks of 1 to 40000 bytes; came: 1 bytes at an address 8 past"},
    {"no zero fill",
     [] {
       replace<&JXPool::pool_allocate>([](JXPool *p, uint32_t bytes, uint32_t) {
         return memset(real<JXPool>.pool_allocate(p, bytes % 65536, 0), 0xEE, bytes % 65536);
       });
     },
     "pool.pool_allocate: blocks with JX_POOL_ZERO_FILL; came: byte 0 of 1 is 0xee"},
    {"nothing for 0 bytes",
     [] {
       replace<&JXPool::pool_allocate>([](JXPool *p, uint32_t bytes, uint32_t flags) {
         return bytes ? real<JXPool>.pool_allocate(p, bytes, flags) : nullptr;
       });
     },
     "pool.pool_allocate: two blocks of 0 bytes; came: null"},
    {"sizes that wrap",
     [] {
       replace<&JXPool::pool_allocate>([](JXPool *p, uint32_t bytes, uint32_t flags) {
         return real<JXPool>.pool_allocate(p, bytes + 16, flags);
       });
     },
     "pool.pool_allocate: 4294967281 bytes; came: "},
    {"blocks that overlap",
     [] {
       replace<&JXPool::pool_allocate>([](JXPool *p, uint32_t bytes, uint32_t flags) -> void * {
         alignas(16) static char area[8192];
         static uint32_t used;
         used = (used + 16) % 8000;
         return bytes > 64 ? real<JXPool>.pool_allocate(p, bytes, flags) : area + used;
       });
     },
     "pool.pool_allocate: 1000 blocks, all filled; came: block 0 holds what another was given"},
    {"pool_free of anything",
     [] {
       replace<&JXPool::pool_free>([](JXPool *p, void *block) {
         return block ? real<JXPool>.pool_free(p, block), JX_OK : JX_E_BADARG;
       });
     },
     "pool.pool_free: a block of another pool; came: freed: status 0"},
    {"pool_free of null",
     [] {
       replace<&JXPool::pool_free>(
           [](JXPool *p, void *block) { return block ? real<JXPool>.pool_free(p, block) : JX_OK; });
     },
     "pool.pool_free: null; came: null: status 0"},
#ifndef __SANITIZE_ADDRESS__  // which keeps freed memory itself
    {"a pool that leaks", [] { replace<&JXPool::destroy_pool>([](JXPool *) { return JX_OK; }); },
     "pool.destroy_pool: 600 pools with 4 blocks each; came: "},
#endif
    {"a pool without a lock",
     [] {
       replace<&JXPool::pool_allocate>([](JXPool *p, uint32_t bytes, uint32_t flags) {
         void *block = cached;
         if (!block || bytes > 64) return real<JXPool>.pool_allocate(p, bytes | 64, flags);
         usleep(100);  // as long as another thread needs to come here too
         cached = nullptr;
         return memset(block, 0, bytes);
       });
       replace<&JXPool::pool_free>([](JXPool *p, void *block) {
         return block && !cached ? cached = block, JX_OK : real<JXPool>.pool_free(p, block);
       });
       replace<&JXPool::destroy_pool>(
           [](JXPool *p) { return cached = nullptr, real<JXPool>.destroy_pool(p); });
     },
     "pool.pool_allocate: eight threads at once; came: "},
    {"a lock that excludes nobody",
     [] {
       replace<&JXLock::lock_acquire>([](auto...) { return JX_OK; });
       replace<&JXLock::lock_release>([](JXLock *) { return JX_OK; });
     },
     "lock.lock_acquire: eight threads at once; came: two threads held it at the same time"},
    {"a release that fails",
     [] {
       replace<&JXLock::lock_release>([](JXLock *lock) {
         return real<JXLock>.lock_release(lock) == JX_OK ? JX_E_BADARG : JX_OK;
       });
     },
     "lock.lock_acquire: to acquire and release it three times; came: to release it: status "},
    {"duplicate keys",
     [] {
       replace<&JXTable::table_insert>([](JXTable *t, uint32_t, uint32_t, void *value,
                                          JXTableEntry **entry, const void *, uint32_t, uint32_t) {
         return real<JXTable>.table_insert(t, 0, 0, value, entry, nullptr, 0, 0);
       });
     },
     "table.table_insert: a key that is there already; came: stored"},
    {"keys that end at a zero",
     [] {
       replace<&JXTable::table_insert>([](JXTable *t, uint32_t, uint32_t, void *value,
                                          JXTableEntry **entry, const void *key, uint32_t bytes,
                                          uint32_t) {
         const size_t used = key ? strnlen(static_cast<const char *>(key), bytes) : 0;
         return real<JXTable>.table_insert(t, 0, 0, value, entry, key, static_cast<uint32_t>(used),
                                           0);
       });
     },
     "table.table_insert: six keys that are similar; came: one was not stored"},
    {"no destructor",
     [] { replace<&JXTable::table_set_entry_destructor>([](auto...) { return JX_OK; }); },
     "table.table_insert: 2000 values; came: 0 calls for 2000 entries"},
    {"a destructor called twice",
     [] {
       replace<&JXTable::table_set_entry_destructor>([](JXTable *t, uint32_t, JXEntryDestructor f) {
         static JXEntryDestructor once;
         once = f;
         return real<JXTable>.table_set_entry_destructor(
             t, 0, [](JXTableEntry *entry) { return once(entry) | once(entry); });
       });
     },
     "table.table_insert: 2000 values; came: 4000 calls for 2000 entries"},
    {"a status that is lost",
     [] {
       replace<&JXTable::destroy_table>(
           [](JXTable *t) { return real<JXTable>.destroy_table(t), JX_OK; });
     },
     "table.destroy_table: entries whose destructor answers 7; came: to destroy it: status 0x0"},
};

INSTANTIATE_TEST_SUITE_P(Memory, BrokenKernel, testing::ValuesIn(kMemory), name_of_slot);

}  // namespace
}  // namespace jx::test
