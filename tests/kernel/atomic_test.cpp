// Atomic cells and the shared stack, alone and under four threads.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <thread>
#include <utility>

#include "tests/kernel/kernel_support.hpp"

namespace {

using jx::test::scaled;

constexpr int kThreads = 4;

void run_threads(const std::function<void(int)> &body) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(body, i);
  for (std::thread &thread : threads) thread.join();
}

TEST(Atomic, Cells) {
  uint32_t cell = 1;
  EXPECT_EQ(jxAtomicInit(&cell, 7), 0);
  EXPECT_EQ(jxAtomicSet(&cell, 8, 9), 0);
  EXPECT_EQ(cell, 7u);
  EXPECT_EQ(jxAtomicSet(&cell, 7, 0xFFFFFFFF), 1);
  EXPECT_EQ(jxAtomicAdd(&cell, 1), 0u);
  EXPECT_EQ(jxAtomicAdd(&cell, -1), 0xFFFFFFFFu);
  EXPECT_EQ(jxAtomicAnd(&cell, 0xF0F0), 0xF0F0u);
  EXPECT_EQ(jxAtomicOr(&cell, 0x0F0F), 0xFFFFu);
  EXPECT_EQ(jxAtomicAnd(&cell, 0), 0u);
  EXPECT_EQ(cell, 0u);
  cell = 5;
  EXPECT_EQ(jxAtomicDestroy(&cell), 0);
  EXPECT_EQ(cell, 0u);
}

TEST(Atomic, CellsUnderThreads) {
  const int64_t operations = scaled(1000000);
  uint32_t sum = 0;
  uint32_t compared = 0;
  uint32_t bits = 0;
  run_threads([&](int thread) {
    const uint32_t own = 1u << thread;
    for (int64_t i = 0; i < operations; ++i) {
      jxAtomicAdd(&sum, thread % 2 ? -1 : 3);
      // A bit that only this thread changes keeps its value, no matter what the others do.
      ASSERT_EQ((i % 2 ? jxAtomicAnd(&bits, ~own) : jxAtomicOr(&bits, own)) & own, i % 2 ? 0 : own);
      for (uint32_t seen = 0; jxAtomicSet(&compared, seen, seen + 1) == 0;) {
        seen = jxAtomicAdd(&compared, 0);
      }
    }
  });
  EXPECT_EQ(sum, static_cast<uint32_t>(operations * 4));
  EXPECT_EQ(compared, static_cast<uint32_t>(operations * kThreads));
  EXPECT_EQ(bits, operations % 2 ? 0xFu : 0u);
}

struct Node {
  uint32_t before = 0xAAAAAAAA;
  uint32_t filler = 0;
  Node *link = nullptr;
  uint32_t after = 0xBBBBBBBB;
  uint32_t uses = 0;
};

constexpr uint32_t kLink = offsetof(Node, link);

TEST(Atomic, Stack) {
  void *head = nullptr;
  EXPECT_EQ(jxAStackPop(&head, kLink), nullptr);
  EXPECT_EQ(head, nullptr);
  Node a;
  Node b;
  EXPECT_EQ(jxAStackPush(&head, &a, kLink), nullptr);
  EXPECT_EQ(jxAStackPush(&head, &b, kLink), &a);
  EXPECT_EQ(b.link, &a);
  EXPECT_TRUE(b.before == 0xAAAAAAAA && b.filler == 0 && b.after == 0xBBBBBBBB);
  EXPECT_EQ(jxAStackPop(&head, kLink), &b);
  EXPECT_EQ(jxAStackPop(&head, kLink), &a);
  EXPECT_EQ(jxAStackPop(&head, kLink), nullptr);
}

// A busy bit without a node is no pop at work; with a node the other calls wait for the pop's end.
TEST(Atomic, StackWithABusyHead) {
  void *head = reinterpret_cast<void *>(uintptr_t{1});
  EXPECT_EQ(jxAStackPop(&head, kLink), nullptr);
  Node a, b;
  EXPECT_EQ(jxAStackPush(&head, &a, kLink), reinterpret_cast<void *>(uintptr_t{1}));
  for (const bool pushes : {true, false}) {
    a.link = nullptr;
    const std::atomic_ref<void *> shared(head);
    shared = reinterpret_cast<char *>(&a) + 1;
    std::atomic<bool> is_done = false;
    std::thread other([&] {
      EXPECT_EQ(pushes ? jxAStackPush(&head, &b, kLink) : jxAStackPop(&head, kLink), &a);
      is_done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(is_done);
    shared = &a;
    other.join();
    EXPECT_EQ(head, pushes ? &b : nullptr);
  }
}

// Few nodes, reused at once: none is lost, and none is held by two threads. Each thread pops two
// and pushes the first one first, so that a head comes back with another node below it.
TEST(Atomic, StackUnderThreads) {
  const int64_t rounds = scaled(1000000) / 4;
  Node nodes[kThreads * 2];
  void *head = nullptr;
  for (Node &node : nodes) jxAStackPush(&head, &node, kLink);
  run_threads([&](int) {
    for (int64_t i = 0; i < rounds; ++i) {
      Node *own[2];
      for (Node *&node : own) {
        node = static_cast<Node *>(jxAStackPop(&head, kLink));
        ASSERT_NE(node, nullptr);
        ++node->uses;  // a plain access: the thread sanitizer sees a second holder
      }
      for (Node *node : own) jxAStackPush(&head, node, kLink);
    }
  });
  uint32_t uses = 0;
  for (size_t i = 0; i < std::size(nodes); ++i) {
    auto *node = static_cast<Node *>(jxAStackPop(&head, kLink));
    ASSERT_NE(node, nullptr);
    uses += std::exchange(node->uses, 0);
  }
  EXPECT_EQ(jxAStackPop(&head, kLink), nullptr);
  EXPECT_EQ(uses, rounds * 2 * kThreads);
}

}  // namespace
