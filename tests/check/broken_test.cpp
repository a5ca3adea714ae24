// Kernels that are broken in one slot, and the line that says so.
#include <fcntl.h>
#include <sched.h>
#include <string.h>

#include <algorithm>

#include "check/broken_kernel.hpp"
#include "check/examination.hpp"

namespace jx::test {
namespace {

struct BrokenSlot {
  const char *name;
  void (*break_it)();
  const char *finding;  // what one of the lines has to contain
};

// ---- Slots that are missing, crash or do not return

const BrokenSlot kSlots[] = {
    {"no locks", [] { replace<&JXHost::create_lock>(nullptr); },
     "handle.create_lock: its address; came: null"},
    {"no service", [] { replace<&JXHost::nls>(nullptr); }, "handle.nls: its address; came: null"},
    {"no locale", [] { replace<&JXHost::locale>(nullptr); },
     "handle.locale: its address; came: null"},
    {"no decoder", [] { replace<&JXLocale::native_decoder>(nullptr); },
     "locale.native_decoder: its address; came: null"},
    {"no measure", [] { replace<&JXNls::measure_conversion>(nullptr); },
     "nls.measure_conversion: its address; came: null"},
    {"no pool_free", [] { replace<&JXPool::pool_free>(nullptr); },
     "pool.pool_free: its address; came: null"},
    {"no table_insert", [] { replace<&JXTable::table_insert>(nullptr); },
     "table.table_insert: its address; came: null"},
    {"no close_file", [] { replace<&JXOpenFile::close_file>(nullptr); },
     "open file.close_file: its address; came: null"},
    {"no pools", [] { replace<&JXHost::create_pool>([](auto...) -> JXPool * { return nullptr; }); },
     "handle.create_pool: a pool; came: a pool: null"},
    {"no \"jxsecure\"",
     [] {
       replace<&JXHost::load_extension>([](JXHost *h, const JXChar *name, uint32_t n, JXOwner) {
         return name[2] == 's' ? nullptr : real<JXHost>.load_extension(h, name, n, nullptr);
       });
     },
     "handle.load_extension: \"jxsecure\"; came: jxsecure: null"},
    {"a crash", [] { replace<&JXHost::get_option>([](auto...) -> JXStatus { __builtin_trap(); }); },
     "handle.get_option: \"host.process_id\", type 3; came: the process was ended by signal"},
    {"an exit", [] { replace<&JXHost::create_table>([](auto...) -> JXTable * { _exit(3); }); },
     "handle.create_table: a table; came: the process ended with exit status 3"},
    {"no return",
     [] {
       replace<&JXNls::encoding_info>([](JXNls *nls, uint32_t encoding, JXEncodingInfo *info) {
         while (encoding > 0xFFFF) sched_yield();
         return real<JXNls>.encoding_info(nls, encoding, info);
       });
     },
     "nls.encoding_info: an encoding that there is not; came: no answer within 2 seconds"},
};

// ---- Pools, locks, tables

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
    {"a pool that leaks", [] { replace<&JXPool::destroy_pool>([](JXPool *) { return JX_OK; }); },
     "pool.destroy_pool: 600 pools with 4 blocks each; came: "},
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
     "pool.pool_allocate: eight threads at once; came: a block"},
    {"a lock that excludes nobody",
     [] {
       replace<&JXLock::lock_acquire>([](auto...) { return JX_OK; });
       replace<&JXLock::lock_release>([](JXLock *) { return JX_OK; });
     },
     "lock.lock_acquire: eight threads at once; came: two threads held it at the same time"},
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

// ---- Options and extensions

int closed_fd = -1;  // a descriptor that is closed once more

const BrokenSlot kExtensions[] = {
    {"an option of eight bytes",
     [] {
       replace<&JXHost::get_option>([](JXHost *h, const JXChar *name, uint32_t chars, uint32_t type,
                                       void *buffer, uint32_t *size) {
         static_cast<char *>(buffer)[7] = 0;
         return real<JXHost>.get_option(h, name, chars, type, buffer, size);
       });
     },
     "handle.get_option: \"host.process_id\", type 3; came: 1 bytes beyond"},
    {"every option", [] { replace<&JXHost::get_option>([](auto...) { return JX_OK; }); },
     "handle.get_option: an option that there is not; came: an unknown name: status 0"},
    {"extensions by their start",
     [] {
       replace<&JXHost::load_extension>([](JXHost *h, const JXChar *name, uint32_t n, JXOwner) {
         return real<JXHost>.load_extension(h, name, n == 6 && name[2] == 'e' ? 5 : n, nullptr);
       });
     },
     "handle.load_extension: names of no extension; came: an extension for \"jxelms\""},
    {"a host name without a limit",
     [] {
       replace<&JXItcp::get_host_name>([](JXItcp *, JXChar *buffer, uint32_t *chars, uint32_t) {
         std::fill_n(buffer, *chars = 32, 'h');
         return JX_OK;
       });
     },
     "jxitcp.get_host_name: the name of the machine, form 2; came: 8 bytes beyond"},
    {"flags that are lost",
     [] {
       replace<&JXElm::open_file>(open_with<[](JXOpenRequest &request, uint32_t &) {
         request.flags &= ~static_cast<uint32_t>(O_APPEND);
       }>);
     },
     "jxelm.open_file: POSIX flags; came: flags 0x2 for 0x402"},
    {"no lock",
     [] { replace<&JXElm::open_file>(open_with<[](auto &, uint32_t &word) { word = 0; }>); },
     "two openings with each pair of lock words; came: status 0x0 for word 2 while another has 1"},
    {"a lock that is not waited for",
     [] { replace<&JXElm::open_file>(open_with<[](auto &, uint32_t &word) { word &= 7; }>); },
     "jxelm.open_file: eight threads with lock word 10; came: status 0x80ffe00f"},
    {"one status for all",
     [] {
       replace<&JXElm::open_file>([](JXElm *elm, const JXOpenRequest *request, uint32_t one,
                                     uint32_t word, JXJournal *journal, JXStatus *status) {
         JXOpenFile *file = real<JXElm>.open_file(elm, request, one, word, journal, status);
         if (!file) *status = JXELM_E_SYSTEM;
         return file;
       });
     },
     "jxelm.open_file: a file that there is not; came: null and status 0x80ffe002; promised: "
     "JXELM_E_NOTFOUND"},
    {"a status that is not stored",
     [] {
       replace<&JXElm::open_file>([](JXElm *elm, const JXOpenRequest *request, uint32_t one,
                                     uint32_t word, JXJournal *journal, JXStatus *) {
         JXStatus ignored;
         return real<JXElm>.open_file(elm, request, one, word, journal, &ignored);
       });
     },
     "jxelm.open_file: a new file; came: a new file: an open file and status 0xffffffff"},
    {"content that goes before the lock",
     [] {
       replace<&JXElm::open_file>(open_with<[](JXOpenRequest &request, uint32_t &) {
         const std::string path(request.path, request.path + request.path_chars);
         if (request.flags & O_TRUNC && truncate(path.c_str(), 0) != 0) _exit(4);
       }>);
     },
     "jxelm.open_file: O_TRUNC, while another opening has the lock; came: a size of 0, not 3"},
    {"a descriptor that stays open",
     [] { replace<&JXOpenFile::close_file>([](auto...) { return JX_OK; }); },
     "open file.close_file: a file; came: descriptor "},
    {"a descriptor that is closed twice",
     [] {
       replace<&JXOpenFile::close_file>([](JXOpenFile *file, const uint32_t *zeros, JXJournal *j) {
         if (closed_fd < 0) closed_fd = *file->descriptor;
         return real<JXOpenFile>.close_file(file, zeros, j);
       });
       replace<&JXElm::release_extension>([](JXExtension *elm) {
         close(closed_fd);
         return real<JXElm>.release_extension(elm);
       });
     },
     "open file.close_file: a file whose descriptor is taken again; came: a descriptor of the "
     "program was closed later"},
};

// ---- Character sets and the journal

const BrokenSlot kText[] = {
    {"conversion that is never needed",
     [] { replace<&JXNls::needs_conversion>([](auto...) { return 0; }); },
     "nls.needs_conversion: every pair of 0, 20, 24 to 27 and 62; came: 0 from 0 to 0"},
    {"a thousandfold growth",
     [] {
       replace<&JXNls::measure_conversion>([](JXNls *nls, uint32_t from, const void *text,
                                              uint32_t bytes, uint32_t to, uint32_t *out) {
         const JXStatus status = real<JXNls>.measure_conversion(nls, from, text, bytes, to, out);
         return *out *= 1000, status;
       });
     },
     "nls.measure_conversion: encodings 27 and 62; came: 1000 bytes from 27 to 62, not 1"},
    {"characters of one byte",
     [] {
       replace<&JXNls::encoding_info>([](JXNls *, uint32_t encoding, JXEncodingInfo *info) {
         info->max_bytes_per_char = encoding == JX_ENCODING_UTF32LE ? 4 : 1;
         return encoding > 0xFFFF ? JX_E_BADARG : JX_OK;
       });
     },
     "where the host has them; came: 1 bytes for a character of encoding 20"},
    {"every encoding",
     [] {
       replace<&JXNls::create_transcoder>(
           [](JXNls *n, uint32_t from, uint32_t to, uint32_t, JXOwner) {
             return changed(
                 real<JXNls>.create_transcoder(n, from > 0xFFFF ? 62 : from, to, 0, nullptr));
           });
     },
     "nls.create_transcoder: an encoding that there is not; came: a transcoder"},
    {"ASCII for encoding 62",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus status, char *room, uint32_t, uint32_t &count) {
             std::replace_if(
                 room, room + count, [](char c) { return c < 0; }, '?');
             return status;
           }>);
     },
     "nls.create_decoder: encoding 62: all bytes; came: all 256: byte 512 is 0x3f, not 0x80"},
    {"more bytes than the room has",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus status, char *, uint32_t, uint32_t &count) {
             return count *= 9, status;
           }>);
     },
     "nls.create_decoder: encoding 62: all bytes; came: 9216 bytes said to be in a room of 1024"},
    {"bytes beyond the room",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus status, char *room, uint32_t capacity, uint32_t &) {
             return room[capacity] = 0, status;
           }>);
     },
     "transcoder.transcode: text that does not fit its room; came: 1 bytes beyond a room of 0"},
    {"no failures",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus, char *, uint32_t, uint32_t &) { return JX_OK; }>);
     },
     "transcoder.transcode: malformed text; came: status 0 and 0 bytes from encoding 20"},
    {"no start of a character is kept",
     [] {
       replace<&JXTranscoder::transcode>([](JXTranscoder *self, const void *text, uint32_t bytes,
                                            void *room, uint32_t capacity, uint32_t *out,
                                            uint32_t) {
         const auto slot = real<JXTranscoder>.transcode;
         const JXStatus status = slot(self, text, bytes, room, capacity, out, 0);
         char ignored[64];
         (void)slot(self, "\xDC\xDC\xDC\xDC\xDC\xDC\xDC\xDC", 8, ignored, 64, nullptr, 0);
         return status;
       });
     },
     "transcoder.transcode: text in two parts, cut at every byte; came: "},
    {"a buffer that is written over",
     [] {
       replace<&JXJournal::status_to_buffer>(
           [](JXJournal *, uintptr_t buffer, uintptr_t capacity, uintptr_t, uintptr_t, va_list) {
             reinterpret_cast<JXChar *>(buffer)[capacity] = 0;
             return JX_OK;
           });
     },
     "journal.status_to_buffer: a status and a text; came: 4 bytes beyond the room"},
    {"a text that is always there",
     [] {
       replace<&JXJournal::status_to_journal>(
           [](JXJournal *, uintptr_t, uintptr_t, va_list args) -> JXStatus {
             return *va_arg(args, volatile JXChar *) == 0;
           });
     },
     "journal.status_to_journal: a status without a text; came: the process was ended by signal"},
};

class BrokenKernel : public testing::TestWithParam<BrokenSlot> {};

TEST_P(BrokenKernel, IsFound) {
  const BrokenSlot &row = GetParam();
  start_kernel();
  row.break_it();
  JXHost *host = jxhost_create(nullptr);
  JXCheckConfig config = JXCHECK_CONFIG_INIT;
  config.journal = jxhost_journal(host);
  config.seconds = 2;
  const JXHost kept = *host;
  const JXLocale kept_locale = *host->locale;
  break_kernel(host);
  const Examination result = examine(host, config);
  *host = kept;
  *host->locale = kept_locale;
  *host->nls = real<JXNls>;
  const bool is_found = std::ranges::any_of(result.findings, [&](const std::string &line) {
    return line.find(row.finding) != line.npos;
  });
  EXPECT_TRUE(is_found) << row.finding << "\nis not in\n" << result.report;
  EXPECT_EQ(result.status, JXWEM_E_FAILED);
  EXPECT_EQ(jxhost_destroy(host), 0u);
}

std::string name_of(const testing::TestParamInfo<BrokenSlot> &info) {
  std::string name;
  for (const char *c = info.param.name; *c; ++c) name += isalnum(*c) ? *c : '_';
  return name;
}

INSTANTIATE_TEST_SUITE_P(Slots, BrokenKernel, testing::ValuesIn(kSlots), name_of);
INSTANTIATE_TEST_SUITE_P(Memory, BrokenKernel, testing::ValuesIn(kMemory), name_of);
INSTANTIATE_TEST_SUITE_P(Extensions, BrokenKernel, testing::ValuesIn(kExtensions), name_of);
INSTANTIATE_TEST_SUITE_P(Text, BrokenKernel, testing::ValuesIn(kText), name_of);

}  // namespace
}  // namespace jx::test
