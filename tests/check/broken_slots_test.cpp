// Kernels with slots that are missing, crash or do not return; the test itself.
#include <signal.h>
#include <unistd.h>

#include <algorithm>

#include "check/broken_slot.hpp"
#include "check/examination.hpp"

namespace jx::test {
namespace {

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
    {"a name that is read beyond its end",
     [] {
       replace<&JXHost::get_option>([](JXHost *, const JXChar *name, uint32_t chars, auto...) {
         return JXStatus{*const_cast<const volatile JXChar *>(name + chars)};
       });
     },
     "handle.get_option: \"host.process_id\", type 3; came: the process was ended by signal"},
    {"an exit", [] { replace<&JXHost::create_table>([](auto...) -> JXTable * { _exit(3); }); },
     "handle.create_table: a table; came: the process ended with exit status 3"},
    {"no return, in a program that blocks the signal of an alarm",
     [] {
       sigset_t alarm;
       sigemptyset(&alarm);
       sigaddset(&alarm, SIGALRM);
       sigprocmask(SIG_BLOCK, &alarm, nullptr);
       replace<&JXNls::encoding_info>([](JXNls *nls, uint32_t encoding, JXEncodingInfo *info) {
         while (encoding > 0xFFFF) pause();
         return real<JXNls>.encoding_info(nls, encoding, info);
       });
     },
     "nls.encoding_info: an encoding that there is not; came: no answer within 2 seconds"},
};

INSTANTIATE_TEST_SUITE_P(Slots, BrokenKernel, testing::ValuesIn(kSlots), name_of_slot);

}  // namespace
}  // namespace jx::test
