// The test host's books: what was called, what fails next, what is alive.
#include "support/fault_host.hpp"

#include <gtest/gtest.h>

#include "support/text.hpp"

namespace jx::test {

namespace {

constexpr std::array<const char *, kCallCount> kCallNames{
    "create_lock",        "create_pool",       "create_table",   "load_extension",
    "get_option",         "pool_allocate",     "table_insert",   "measure_conversion",
    "encoding_info",      "create_transcoder", "create_decoder", "create_encoder",
    "destroy_transcoder", "transcode",         "lock_acquire",   "lock_release",
    "open_file",          "close_file",        "get_host_name",  "table_set_entry_destructor",
    "needs_conversion",   "pool_free",         "destroy_pool",   "destroy_lock",
    "destroy_table",      "release_extension"};
static_assert(kCallNames.back(), "a name for every call");
constexpr std::array<const char *, 6> kKindNames{"pool",       "lock",      "table",
                                                 "transcoder", "extension", "open file"};
constexpr Calls kMemoryCalls = calls(Call::pool_allocate, Call::pool_free);

}  // namespace

const char *call_name(Call call) { return kCallNames[static_cast<uint32_t>(call)]; }

FaultHost::~FaultHost() {
  disarm();
  expect_clean();
  const uint32_t left = jxhost_destroy(host_.inner);
  EXPECT_EQ(left, 0u) << "objects left in the reference host";
}

void FaultHost::arm(Calls failing, uint32_t n, JXStatus status) {
  const std::lock_guard guard(mutex_);
  armed_ = failing & kAllFailing;
  calls_to_fault_ = n;
  status_ = status;
  failed_.reset();
}

std::optional<Call> FaultHost::disarm() {
  const std::lock_guard guard(mutex_);
  armed_ = 0;
  return std::exchange(failed_, std::nullopt);
}

void FaultHost::set_largest_block(uint32_t bytes) {
  const std::lock_guard guard(mutex_);
  largest_block_ = bytes;
}

bool FaultHost::fails(Call call, std::string_view detail) {
  const std::lock_guard guard(mutex_);
  ++counts_[static_cast<uint32_t>(call)];
  if (tracing_ && (tracing_memory_ || !(calls(call) & kMemoryCalls))) {
    trace_.push_back(call_name(call) + (detail.empty() ? "" : " " + std::string(detail)));
  }
  if (!(armed_ & calls(call)) || calls_to_fault_-- > 0) return false;
  armed_ = 0;
  failed_ = call;
  return true;
}

JXStatus FaultHost::fault_status() const {
  const std::lock_guard guard(mutex_);
  return status_;
}

uint64_t FaultHost::count(Call call) const {
  const std::lock_guard guard(mutex_);
  return counts_[static_cast<uint32_t>(call)];
}

void FaultHost::start_trace(bool with_memory) {
  const std::lock_guard guard(mutex_);
  tracing_ = true;
  tracing_memory_ = with_memory;
  trace_.clear();
}

std::vector<std::string> FaultHost::take_trace() {
  const std::lock_guard guard(mutex_);
  tracing_ = false;
  return std::exchange(trace_, {});
}

OpenCall FaultHost::last_open() const {
  const std::lock_guard guard(mutex_);
  return last_open_;
}

LiveCounts FaultHost::live() const {
  const std::lock_guard guard(mutex_);
  LiveCounts counts{.blocks = blocks_.live()};
  for (const auto &[object, what] : live_) ++counts.objects[static_cast<uint32_t>(what.first)];
  return counts;
}

void FaultHost::complain(const std::string &text) {
  const std::lock_guard guard(mutex_);
  misuse_ += text;
}

std::string FaultHost::take_misuse() {
  const std::lock_guard guard(mutex_);
  return std::exchange(misuse_, {}) + blocks_.check();
}

std::string FaultHost::list_live() const {
  const std::lock_guard guard(mutex_);
  std::string lines;
  for (const auto &[object, what] : live_) {
    lines += std::string("live ") + kKindNames[static_cast<uint32_t>(what.first)] + " " +
             what.second + "\n";
  }
  return lines + blocks_.list_live();
}

void FaultHost::expect_clean() {
  const std::string found = take_misuse() + list_live();
  if (!found.empty()) ADD_FAILURE() << found;
}

const JXTable *FaultHost::inner(const JXTable *table) {
  return reinterpret_cast<const Shell<JXTable> *>(table)->inner;
}

void *FaultHost::find(const JXTable *table, std::string_view key8) {
  const JXString key = jx(key8);
  const auto key_bytes = static_cast<uint32_t>(key.size() * sizeof(JXChar));
  const JXTableEntry *entry = jxhost_table_find(inner(table), key.data(), key_bytes);
  return entry ? entry->value : nullptr;
}

std::vector<void *> FaultHost::values(const JXTable *table) {
  std::vector<void *> found;
  const JXTableEntry *entry = jxhost_table_first(inner(table));
  for (; entry; entry = jxhost_table_next(entry)) found.push_back(entry->value);
  return found;
}

}  // namespace jx::test
