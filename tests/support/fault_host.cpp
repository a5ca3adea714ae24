// The test host's books: what was called, what fails next, what is alive.
#include "support/fault_host.hpp"

#include <gtest/gtest.h>

#include "support/name_list.hpp"
#include "support/text.hpp"

namespace jx::test {

std::string call_name(Call call) {
  return name_in(JX_TEST_TEXT_OF((JX_TEST_CALLS)), static_cast<uint32_t>(call));
}

FaultHost::~FaultHost() {
  disarm();
  EXPECT_EQ(take_misuse() + list_live(), "");
  EXPECT_EQ(jxhost_destroy(host_.inner), 0u) << "objects left in the reference host";
}

void FaultHost::arm(Calls failing, uint32_t n, JXStatus status, bool to_the_end) {
  armed_ = failing & kAllFailing;
  calls_to_fault_ = n;
  status_ = status;
  to_the_end_ = to_the_end;
  failed_.reset();
}

bool FaultHost::fails(Call call, const std::string &detail) {
  const std::lock_guard guard(mutex_);
  ++counts_[static_cast<uint32_t>(call)];
  if (trace_) trace_->push_back(call_name(call) + " " + detail);
  if (!(armed_ & calls(call))) return false;
  if (calls_to_fault_ > 0) return --calls_to_fault_, false;
  if (!to_the_end_) armed_ = 0;
  if (!failed_) failed_ = call;
  return true;
}

void FaultHost::complain(const std::string &text) {
  const std::lock_guard guard(mutex_);
  misuse_ += text;
}

std::string FaultHost::list_live() const {
  std::string lines;
  for (const auto &[object, label] : live_) lines += "live " + label + "\n";
  return lines + blocks_.list_live();
}

// The reference host's table inside one of the test host.
static const JXTable *inner_of(const JXTable *table) {
  return reinterpret_cast<const Shell<JXTable> *>(table)->inner;
}

void *FaultHost::find(const JXTable *table, std::string_view key8) {
  const JXString key = jx(key8);
  const JXTableEntry *entry = jxhost_table_find(inner_of(table), key.data(), chars(key) * 4);
  return entry ? entry->value : nullptr;
}

std::vector<void *> FaultHost::values(const JXTable *table) {
  std::vector<void *> found;
  const JXTableEntry *entry = jxhost_table_first(inner_of(table));
  for (; entry; entry = jxhost_table_next(entry)) found.push_back(entry->value);
  return found;
}

}  // namespace jx::test
