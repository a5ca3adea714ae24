// The host of all tests: wraps every object of the reference host, counts the module's calls, makes
// a chosen one fail, and reports leaks and misuse.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jx/jxhost.h"
#include "support/guarded_blocks.hpp"

namespace jx::test {

// The calls of a host. Those before needs_conversion can be made to fail: by null, by "not stored"
// or by a status. A failed destroy or close releases its object anyway.
#define JX_TEST_CALLS                                                                              \
  create_lock, create_pool, create_table, load_extension, get_option, pool_allocate, table_insert, \
      measure_conversion, encoding_info, create_transcoder, create_decoder, create_encoder,        \
      destroy_transcoder, transcode, lock_acquire, lock_release, open_file, close_file,            \
      get_host_name, table_set_entry_destructor, needs_conversion, pool_free, destroy_pool,        \
      destroy_lock, destroy_table, release_extension
enum class Call : uint32_t { JX_TEST_CALLS };
inline constexpr uint32_t kCallCount = static_cast<uint32_t>(Call::release_extension) + 1;

// A set of calls.
using Calls = uint32_t;
template <typename... Some>
constexpr Calls calls(Some... some) {
  return ((1u << static_cast<uint32_t>(some)) | ...);
}
inline constexpr Calls kAllFailing = calls(Call::needs_conversion) - 1;

std::string call_name(Call call);

// The status of a failing call unless the test chooses another.
inline constexpr JXStatus kFaultStatus = 0x803fcfffu;

// Live objects of a host.
struct LiveCounts {
  uint64_t blocks = 0, objects = 0;
  bool operator==(const LiveCounts &) const = default;
};

// The arguments of the latest open_file.
struct OpenCall {
  std::string path;
  std::vector<uint32_t> words;  // permissions, flags, four of zero, one, the lock word
  JXJournal *journal = nullptr;
};

class FaultHost;

// A host object as the module sees it, followed by the test host's data. Stays in memory after its
// end, so that late calls on it are found.
template <typename Object>
struct Shell {
  Object object{};  // first: its address is the shell's
  FaultHost *owner = nullptr;
  Object *inner = nullptr;  // of the reference host
  std::string label = {};   // its arguments
  bool ended = false;
  int held = 0;  // locks: acquired, not released yet
};

// The module may call it from several threads; the member functions are for the test, while no call
// is running. The destructor fails the test when anything is still alive.
class FaultHost {
 public:
  explicit FaultHost(uint32_t extensions = JXHOST_ALL);
  FaultHost(const FaultHost &) = delete;
  FaultHost &operator=(const FaultHost &) = delete;
  ~FaultHost();

  // The host for the module. A test may change its data fields (nls, locale, time_zone).
  JXHost *host() { return &host_.object; }
  // The reference host underneath, for options and the like.
  JXHost *reference() { return host_.inner; }

  // Makes the n-th of these calls from now on, counted from 0, fail; to_the_end: and all after it.
  void arm(Calls failing, uint32_t n, JXStatus status = kFaultStatus, bool to_the_end = false);
  // Disarms; returns the call that failed first.
  std::optional<Call> disarm() {
    armed_ = 0;
    return std::exchange(failed_, std::nullopt);
  }

  // Calls of one kind since the start.
  uint64_t count(Call call) const { return counts_[static_cast<uint32_t>(call)]; }
  // Records calls until take_trace: each with its object or, if it makes one, with the arguments
  // that are not zero.
  void start_trace() { trace_.emplace(); }
  std::vector<std::string> take_trace() { return std::exchange(trace_, std::nullopt).value(); }
  OpenCall last_open() const { return last_open_; }

  LiveCounts live() const { return {.blocks = blocks_.live(), .objects = live_.size()}; }
  // Takes the misuse found so far; empty when there is none.
  std::string take_misuse() { return std::exchange(misuse_, {}) + blocks_.check(); }
  // A line for each live object and block.
  std::string list_live() const;

  // The value of the key with these ASCII characters; null when there is none.
  static void *find(const JXTable *table, std::string_view key8);
  // All values in insertion order.
  static std::vector<void *> values(const JXTable *table);

 private:
  friend struct HostCalls;

  template <typename Object>
  Object *adopt(Call made_by, Object *inner, const std::string &detail);
  void complain(const std::string &text);
  // Counts and traces a call; true when it has to fail.
  bool fails(Call call, const std::string &detail);
  // Marks an object as ended; false when it has ended already.
  template <typename Object>
  bool end(Shell<Object> *shell);
  template <typename Object>
  bool is_alive(Shell<Object> *shell);

  std::mutex mutex_;
  Shell<JXHost> host_;
  Shell<JXNls> nls_;
  GuardedBlocks blocks_;
  std::deque<std::shared_ptr<void>> shells_;
  std::map<const void *, std::string> live_;
  std::array<uint64_t, kCallCount> counts_{};
  std::string misuse_;
  std::optional<std::vector<std::string>> trace_;
  Calls armed_ = 0;
  uint32_t calls_to_fault_ = 0;
  JXStatus status_ = kFaultStatus;
  bool to_the_end_ = false;
  std::optional<Call> failed_;
  OpenCall last_open_;
};

}  // namespace jx::test
