// Running with little stack.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

namespace jx::test {

// Runs on a thread with 128 KiB of stack.
inline void run_on_small_stack(std::function<void()> body) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 128 * 1024), 0);
  pthread_t thread;
  const auto run = [](void *argument) -> void * {
    (*static_cast<std::function<void()> *>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace jx::test
