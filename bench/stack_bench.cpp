// The shared stack: every thread, each on a processor in turn, takes a node and puts it back.
#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <boost/lockfree/stack.hpp>
#include <cstddef>
#include <mutex>

#include "bench/contender.hpp"
#include "bench/crew.hpp"
#include "jx/runtime.h"

namespace {

using namespace jx::bench;

struct alignas(64) Node {
  uint64_t payload = 0;
  void *link = nullptr;
};

constexpr int kNodes = 256;
constexpr int kPairs = 480'000;  // of a pass, all threads together

template <typename Stack>
void pop_push_pairs(Watch &watch, Stack &stack, int threads) {
  const auto bind_to_processor = [](int t) {
    cpu_set_t own;
    CPU_ZERO(&own);
    CPU_SET(static_cast<unsigned>(t) % std::thread::hardware_concurrency(), &own);
    pthread_setaffinity_np(pthread_self(), sizeof own, &own);
  };
  run_crew(watch, threads, bind_to_processor, [&](int) {
    for (int i = 0; i < kPairs / threads; ++i) {
      Node *node = stack.pop();
      if (!node) continue;
      ++node->payload;
      stack.push(node);
    }
  });
}

template <typename Mutex>
class LockedVector {
 public:
  LockedVector() { nodes_.reserve(kNodes); }
  void push(Node *node) {
    const std::lock_guard hold(mutex_);
    nodes_.push_back(node);
  }
  Node *pop() {
    const std::lock_guard hold(mutex_);
    if (nodes_.empty()) return nullptr;
    Node *node = nodes_.back();
    nodes_.pop_back();
    return node;
  }

 private:
  Mutex mutex_;
  std::vector<Node *> nodes_;
};

template <typename Mutex>
class LockedList {
 public:
  void push(Node *node) {
    const std::lock_guard hold(mutex_);
    node->link = head_;
    head_ = node;
  }
  Node *pop() {
    const std::lock_guard hold(mutex_);
    Node *node = head_;
    if (node) head_ = static_cast<Node *>(node->link);
    return node;
  }

 private:
  Mutex mutex_;
  Node *head_ = nullptr;
};

class SpinLock {
 public:
  void lock() {
    while (taken_.exchange(true, std::memory_order_acquire)) {
      while (taken_.load(std::memory_order_relaxed)) relax();
    }
  }
  void unlock() { taken_.store(false, std::memory_order_release); }

 private:
  static void relax() {
#if defined(__i386__) || defined(__x86_64__)
    __builtin_ia32_pause();
#endif
  }
  std::atomic<bool> taken_{false};
};

template <typename Base>
class BoostStack {
 public:
  void push(Node *node) {
    if constexpr (requires { stack_.bounded_push(node); }) {
      stack_.bounded_push(node);
    } else {
      stack_.push(node);
    }
  }
  Node *pop() {
    Node *node = nullptr;
    stack_.pop(node);
    return node;
  }

 private:
  Base stack_;
};

class ModuleStack {
 public:
  void push(Node *node) { jxAStackPush(&head_, node, offsetof(Node, link)); }
  Node *pop() { return static_cast<Node *>(jxAStackPop(&head_, offsetof(Node, link))); }

 private:
  void *head_ = nullptr;
};

// The floor: two locked instructions on one shared word a pair.
class LockedWord {
 public:
  void push(Node *) { word_.fetch_add(1); }
  Node *pop() {
    word_.fetch_sub(1);
    static thread_local Node own;
    return &own;
  }

 private:
  std::atomic<uint32_t> word_{0};
};

template <typename Stack>
void add_stack(Job &job, std::string name, int threads, Kind kind = Kind::kPeer) {
  const auto nodes = std::make_shared<std::vector<Node>>(kNodes);
  const auto stack = std::make_shared<Stack>();
  for (Node &node : *nodes) stack->push(&node);
  job.add(
      std::move(name),
      [nodes, stack, threads](Watch &watch) {
        pop_push_pairs(watch, *stack, threads);
        return uint64_t{0};
      },
      kind);
}

}  // namespace

int main() {
  using Fixed = boost::lockfree::stack<Node *, boost::lockfree::capacity<kNodes>>;
  Job job("stack", "Shared stack, one node taken and put back", "ns/pair", 1e9, Clock::kWall);
  for (const int threads : {1, 2, 4}) {
    job.begin(std::to_string(threads) + (threads == 1 ? " thread" : " threads"), kPairs);
    add_stack<LockedVector<std::mutex>>(job, "std::mutex, std::vector", threads);
    add_stack<LockedList<std::mutex>>(job, "std::mutex, linked list", threads);
    add_stack<LockedList<SpinLock>>(job, "spin lock, linked list", threads);
    add_stack<BoostStack<Fixed>>(job, "boost::lockfree::stack, capacity", threads);
    add_stack<ModuleStack>(job, kModule, threads, Kind::kModule);
    add_stack<LockedWord>(job, "two locked instructions on one word", threads, Kind::kLimit);
    job.end();
  }
  job.print();
  return 0;
}
