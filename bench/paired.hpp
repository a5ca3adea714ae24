// The short way to write a job: pairs of passes, the module's and a peer's. Pairs of the same
// description, one after the other, are one case with several peers.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/module.hpp"

namespace jx::bench {

struct Pair {
  std::string what;
  std::string peer;
  std::function<void()> ours;
  std::function<void()> theirs;
  std::function<void()> prepare = nullptr;  // before each pass, not timed
};

inline Pass pass_of(const Pair &pair, const std::function<void()> &work) {
  return [pair, work](Watch &watch) {
    if (pair.prepare) pair.prepare();
    watch.start();
    work();
    return uint64_t{0};
  };
}

// Runs and prints all pairs as one job in milliseconds a pass.
inline void run_pairs(const std::string &id, const std::string &title,
                      const std::vector<Pair> &pairs) {
  Job job(id, title, "ms/pass", 1e3);
  for (size_t i = 0; i < pairs.size();) {
    const Pair &first = pairs[i];
    job.begin(first.what, 1);
    job.add(kModule, pass_of(first, first.ours), Kind::kModule);
    for (; i < pairs.size() && pairs[i].what == first.what; ++i) {
      job.add(pairs[i].peer, pass_of(pairs[i], pairs[i].theirs));
    }
    job.end();
  }
  job.print();
}

}  // namespace jx::bench
