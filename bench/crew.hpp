// Work of several threads at once.
#pragma once

#include <barrier>
#include <thread>
#include <vector>

#include "bench/job.hpp"

namespace jx::bench {

// Runs work(t) in so many threads, each after its prepare(t). The clock runs from when all are
// prepared until the last is done.
template <typename Prepare, typename Work>
void run_crew(Watch &watch, int threads, Prepare prepare, Work work) {
  std::barrier gate(threads + 1);
  std::vector<std::thread> crew;
  for (int t = 0; t < threads; ++t) {
    crew.emplace_back([&, t] {
      prepare(t);
      gate.arrive_and_wait();
      work(t);
      gate.arrive_and_wait();
    });
  }
  watch.start();
  gate.arrive_and_wait();
  gate.arrive_and_wait();
  watch.stop();
  for (auto &thread : crew) thread.join();
}

}  // namespace jx::bench
