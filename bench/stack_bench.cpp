// The lock-free stack against Boost's: threads push nodes of their own and pop as many.
#include <benchmark/benchmark.h>

#include <boost/lockfree/stack.hpp>
#include <cstddef>

#include "jx/runtime.h"

namespace {

constexpr int kBatch = 16;  // nodes a thread has in the stack at most
constexpr int kMostThreads = 4;

struct Node {
  void *link;
  uint64_t value;
};

struct alignas(64) Shared {
  void *head = nullptr;
};

Shared shared;
alignas(64) Node nodes[kMostThreads][kBatch];

// Pops until it gets one: other threads may hold the nodes that this one pushed.
void jx_stack(benchmark::State &state) {
  Node *own[kBatch];
  for (int i = 0; i < kBatch; ++i) own[i] = &nodes[state.thread_index()][i];
  for (auto _ : state) {
    for (Node *node : own) jxAStackPush(&shared.head, node, offsetof(Node, link));
    for (Node *&node : own) {
      do {
        node = static_cast<Node *>(jxAStackPop(&shared.head, offsetof(Node, link)));
      } while (node == nullptr);
    }
  }
  state.SetItemsProcessed(state.iterations() * 2 * kBatch);
}
BENCHMARK(jx_stack)->Threads(1)->Threads(2)->Threads(4)->UseRealTime();

using BoostStack = boost::lockfree::stack<Node *, boost::lockfree::capacity<kMostThreads * kBatch>>;
BoostStack boost_shared;

void boost_stack(benchmark::State &state) {
  Node *own[kBatch];
  for (int i = 0; i < kBatch; ++i) own[i] = &nodes[state.thread_index()][i];
  for (auto _ : state) {
    for (Node *node : own) boost_shared.push(node);
    for (Node *&node : own) {
      while (!boost_shared.pop(node)) {
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * 2 * kBatch);
}
BENCHMARK(boost_stack)->Threads(1)->Threads(2)->Threads(4)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
