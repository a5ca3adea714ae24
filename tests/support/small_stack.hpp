// Running with little stack.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

namespace jx::test {

// Runs on a thread with 64 KiB of stack; under a sanitizer, whose frames are larger, with four
// times that.
inline void run_on_small_stack(std::function<void()> body) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr size_t kStackBytes = 256 * 1024;
#else
  constexpr size_t kStackBytes = 64 * 1024;
#endif
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackBytes), 0);
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
