// Atomic cells, and a stack of the callers' own nodes that any number of threads share.
//
// Who meets whom on a stack, and why it is safe:
//   push / push   both exchange the head against the top they linked to; the loser links again.
//   push / pop    while a pop holds the busy bit the head equals no node, so the push's exchange
//                 fails; once the bit is clear the push sees the new top.
//   pop / pop     one exchange sets the busy bit; the other finds it set and waits.
//   reuse (ABA)   a node's link is read only under the busy bit, when nothing can leave or enter
//                 the stack. A node that was popped and pushed again is therefore never followed
//                 through an old link.
// Order of the accesses: a push publishes its node and the link with the release half of its
// exchange; a pop takes them over with the acquire half of its own. The store that ends a pop
// releases, so that whoever reads the new head also sees what the pop saw. On x86 every exchange
// is a full barrier and a release store is a plain store.
#include <atomic>
#include <cstdint>
#include <cstring>

#include "jx/runtime.h"

namespace {

constexpr uintptr_t kBusyBit = 1;
constexpr uint32_t kLongestWait = 64;  // pauses between two tries, once the head is contended

using Cell = std::atomic_ref<uint32_t>;
using Head = std::atomic_ref<void *>;
static_assert(Cell::is_always_lock_free && Head::is_always_lock_free);

// No node, whatever the busy bit says.
bool is_empty(void *head) { return (reinterpret_cast<uintptr_t>(head) & ~kBusyBit) == 0; }

// A pop is at work. The bit without a node is no pop's doing, and nobody would clear it.
bool is_busy(void *head) {
  return (reinterpret_cast<uintptr_t>(head) & kBusyBit) != 0 && !is_empty(head);
}

void *with_busy_bit(void *node) {
  return reinterpret_cast<void *>(reinterpret_cast<uintptr_t>(node) | kBusyBit);
}

void *link_field(void *node, uint32_t link_offset) {
  return static_cast<unsigned char *>(node) + link_offset;
}

// Waits between tries: twice as long after each lost exchange, so that the threads that contend
// for the head leave it in the winner's cache for a few operations.
class Backoff {
 public:
  void wait() {
    for (uint32_t i = 0; i < pauses_; ++i) __builtin_ia32_pause();
    if (pauses_ < kLongestWait) pauses_ *= 2;
  }

 private:
  uint32_t pauses_ = 1;
};

// The head once no pop is at work on it.
void *settled(Head head) {
  void *top = head.load(std::memory_order_acquire);
  while (is_busy(top)) {
    __builtin_ia32_pause();
    top = head.load(std::memory_order_acquire);
  }
  return top;
}

}  // namespace

int32_t jxAtomicInit(uint32_t *cell, uint32_t value) {
  *cell = value;
  return 0;
}

int32_t jxAtomicDestroy(uint32_t *cell) {
  *cell = 0;
  return 0;
}

int32_t jxAtomicSet(uint32_t *cell, uint32_t expected, uint32_t value) {
  return Cell(*cell).compare_exchange_strong(expected, value) ? 1 : 0;
}

uint32_t jxAtomicAdd(uint32_t *cell, int32_t delta) {
  const auto amount = static_cast<uint32_t>(delta);
  return Cell(*cell).fetch_add(amount) + amount;
}

uint32_t jxAtomicAnd(uint32_t *cell, uint32_t mask) { return Cell(*cell).fetch_and(mask) & mask; }

uint32_t jxAtomicOr(uint32_t *cell, uint32_t mask) { return Cell(*cell).fetch_or(mask) | mask; }

void *jxAStackPush(void **head, void *node, uint32_t link_offset) {
  const Head shared(*head);
  Backoff backoff;
  for (;;) {
    void *top = settled(shared);
    std::memcpy(link_field(node, link_offset), &top, sizeof(top));
    void *expected = top;
    if (shared.compare_exchange_weak(expected, node, std::memory_order_acq_rel,
                                     std::memory_order_relaxed)) {
      return top;
    }
    backoff.wait();
  }
}

void *jxAStackPop(void **head, uint32_t link_offset) {
  const Head shared(*head);
  Backoff backoff;
  for (;;) {
    void *top = settled(shared);
    if (is_empty(top)) return nullptr;
    // The link's line is on its way while the exchange runs: the busy bit is held for less time.
    // A prefetch never faults, so the node may have left the stack meanwhile.
    __builtin_prefetch(link_field(top, link_offset));
    void *expected = top;
    if (shared.compare_exchange_weak(expected, with_busy_bit(top), std::memory_order_acq_rel,
                                     std::memory_order_relaxed)) {
      void *next;
      std::memcpy(&next, link_field(top, link_offset), sizeof(next));
      shared.store(next, std::memory_order_release);
      return top;
    }
    backoff.wait();
  }
}
