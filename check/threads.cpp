// Eight threads: pools, character sets, tables, options, extensions and the journal at once.
#include "check/threads.hpp"

#include <pthread.h>
#include <sched.h>
#include <stdarg.h>
#include <string.h>
#include <time.h>

#include <atomic>

#include "check/objects.hpp"

namespace jxcheck {

namespace {

struct Job {
  void (*function)(void *, uint32_t);
  void *argument;
  uint32_t number;
  const std::atomic<bool> *is_open;  // so that the first does not end before the last begins
  pthread_t thread;
};

void *run_job(void *argument) {
  const auto &job = *static_cast<Job *>(argument);
  while (!*job.is_open) ::sched_yield();
  job.function(job.argument, job.number);
  return nullptr;
}

constexpr int kRounds = 300;
constexpr int kPoolRounds = 40;         // a pool may have room for 80 KiB only
constexpr int kBurstMilliseconds = 10;  // for each second of the check

int64_t now_milliseconds() {
  struct timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

// What the threads share; each reports what it saw first.
struct Shared {
  JXHost *host;
  JXJournal *journal;
  JXPool *pool;
  JXTranscoder *decoder;
  int64_t end_milliseconds;  // of a burst
  std::atomic<const char *> came;

  bool goes_on() const { return !came && now_milliseconds() < end_milliseconds; }

  void report(const char *what) {
    const char *none = nullptr;
    came.compare_exchange_strong(none, what);
  }
};

// Blocks of one pool: a thread finds its own bytes in its own blocks. False when it has none.
bool hold_blocks(Shared &shared, uint32_t number, uint32_t milliseconds) {
  constexpr uint32_t kBlocks = 8;
  uint8_t *blocks[kBlocks];
  for (uint32_t i = 0; i < kBlocks; ++i) {
    blocks[i] = static_cast<uint8_t *>(shared.pool->pool_allocate(shared.pool, 20 + i, 0));
    if (!blocks[i]) return false;
    ::memset(blocks[i], static_cast<int>(number), 20 + i);
  }
  if (milliseconds != 0) pause_milliseconds(milliseconds);
  for (uint32_t i = 0; i < kBlocks; ++i) {
    for (uint32_t j = 0; j < 20 + i; ++j) {
      if (blocks[i][j] != number) shared.report("a block with the bytes of another thread");
    }
    if (shared.pool->pool_free(shared.pool, blocks[i]) != JX_OK) {
      shared.report("a block that cannot be freed");
    }
  }
  return true;
}

// While the blocks are held, the other threads come for theirs.
void use_pool(void *argument, uint32_t number) {
  auto &shared = *static_cast<Shared *>(argument);
  for (int round = 0; round < kPoolRounds; ++round) {
    if (!hold_blocks(shared, number, 1)) return shared.report("null");
  }
}

// Many calls at the same time. Ends early in a pool that reuses no block.
void press_pool(void *argument, uint32_t number) {
  auto &shared = *static_cast<Shared *>(argument);
  while (shared.goes_on()) {
    if (!hold_blocks(shared, number, 0)) return;
  }
}

// Decodes a text of the thread's own letter. False when something else came.
bool decode_own(Shared &shared, JXTranscoder *decoder, uint32_t number) {
  uint8_t bytes[32];
  JXChar chars[32];
  uint32_t produced_bytes = 0;
  ::memset(bytes, static_cast<int>('a' + number), sizeof bytes);
  const JXStatus status =
      decoder->transcode(decoder, bytes, sizeof bytes, chars, sizeof chars, &produced_bytes, 0);
  if (status != JX_OK || produced_bytes != sizeof chars) return shared.report("a failure"), false;
  for (const JXChar character : chars) {
    if (character != 'a' + number) return shared.report("the text of another thread"), false;
  }
  return true;
}

// A transcoder for each thread, all of one service.
void use_service(void *argument, uint32_t number) {
  auto &shared = *static_cast<Shared *>(argument);
  JXNls *nls = shared.host->nls;
  while (shared.goes_on()) {
    const Transcoder decoder(nls, nls->create_decoder(nls, JX_ENCODING_NATIVE, 0, 0));
    if (!decoder) return shared.report("no decoder");
    if (!decode_own(shared, decoder.get(), number)) return;
  }
}

// One transcoder for all, as the threads of an instance use it.
void use_decoder(void *argument, uint32_t number) {
  auto &shared = *static_cast<Shared *>(argument);
  while (shared.goes_on()) {
    if (!decode_own(shared, shared.decoder, number)) return;
  }
}

JXStatus compose(JXJournal *journal, JXChar *buffer, uint32_t room_chars, uint32_t *chars, ...) {
  va_list args;
  va_start(args, chars);
  const JXStatus status =
      journal->status_to_buffer(journal, reinterpret_cast<uintptr_t>(buffer), room_chars,
                                reinterpret_cast<uintptr_t>(chars), JXWEM_E_SYSTEM, args);
  va_end(args);
  return status;
}

void use_journal(void *argument, uint32_t number) {
  auto &shared = *static_cast<Shared *>(argument);
  const JXChar text[] = {'a' + number, 'b' + number, 0};
  for (int round = 0; round < kRounds; ++round) {
    JXChar buffer[256];
    uint32_t chars = 0;
    if (compose(shared.journal, buffer, 256, &chars, text) != JX_OK || chars < 2 || chars > 256) {
      return shared.report("a failure");
    }
    if (buffer[chars - 2] != text[0] || buffer[chars - 1] != text[1]) {
      return shared.report("the text of another thread");
    }
  }
}

// The handle's own slots.
void use_handle(void *argument, uint32_t) {
  auto &shared = *static_cast<Shared *>(argument);
  static constexpr JXChar kSecure[] = {'j', 'x', 's', 'e', 'c', 'u', 'r', 'e'};
  JXHost *host = shared.host;
  for (int round = 0; round < kRounds / 3; ++round) {
    const Pool pool(host->create_pool(host, 0, 0, 0, nullptr, "jxcheck pool"));
    const Lock lock(host->create_lock(host, 0, 0, 0, "jxcheck lock"));
    const Extension secure(host->load_extension(host, kSecure, 8, nullptr));
    if (!pool || !lock || !secure) return shared.report("null");
    if (!pool->pool_allocate(pool.get(), 100, JX_POOL_ZERO_FILL)) return shared.report("no block");
  }
}

void check(Probe &probe, void (*function)(void *, uint32_t), JXTranscoder *decoder = nullptr) {
  const Pool pool = make_pool(probe);
  if (!pool) return;
  const int64_t end = now_milliseconds() + int64_t{kBurstMilliseconds} * probe.seconds;
  Shared shared = {probe.host, probe.journal, pool.get(), decoder, end, nullptr};
  if (!run_threads(function, &shared)) return probe.skip("no threads to be had");
  if (const char *came = shared.came) probe.found("%s", came);
}

template <void (*function)(void *, uint32_t)>
void check_each(Probe &probe) {
  check(probe, function);
}

void check_pool(Probe &probe) {
  check(probe, use_pool);
  check(probe, press_pool);
}

void check_decoder(Probe &probe) {
  const Transcoder made(probe.nls, probe.nls->create_decoder(probe.nls, JX_ENCODING_NATIVE, 0, 0));
  if (!made) return probe.found("null");
  check(probe, use_decoder, made.get());
}

constexpr char kAsked[] = "eight threads at once";

constexpr Check kChecks[] = {
    {Slot::pool_allocate, kAsked, "each thread has its own blocks", guide::kThreads, kPoolSlots,
     check_pool},
    {Slot::create_decoder, kAsked, "each thread has its own transcoder", guide::kThreads,
     kPoolSlots | kDecoderSlots, check_each<use_service>},
    {Slot::transcode, "eight threads at once, with one decoder of encoding 62",
     "it keeps nothing between calls", guide::kThreads, kPoolSlots | kDecoderSlots, check_decoder},
    {Slot::status_to_buffer, kAsked, "each thread has its own text", guide::kThreads,
     kPoolSlots | slots(Slot::status_to_buffer), check_each<use_journal>},
    {Slot::create_pool, kAsked, "pools, locks and extensions for each", guide::kThreads,
     kPoolSlots | kLockSlots | slots(Slot::load_extension, Slot::release_secure),
     check_each<use_handle>},
};

}  // namespace

std::span<const Check> thread_checks() { return kChecks; }

bool run_threads(void (*function)(void *argument, uint32_t number), void *argument) {
  Job jobs[kThreadCount];
  std::atomic<bool> is_open = false;
  uint32_t count = 0;
  for (; count < kThreadCount; ++count) {
    jobs[count] = {function, argument, count, &is_open, {}};
    if (::pthread_create(&jobs[count].thread, nullptr, run_job, &jobs[count]) != 0) break;
  }
  is_open = true;
  for (uint32_t i = 0; i < count; ++i) ::pthread_join(jobs[i].thread, nullptr);
  return count == kThreadCount;
}

void pause_milliseconds(uint32_t count) {
  const struct timespec length = {0, static_cast<long>(count) * 1000000};
  ::nanosleep(&length, nullptr);
}

}  // namespace jxcheck
