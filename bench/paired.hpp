// The short way to write a job: pairs of passes, the module's and a peer's. Pairs of the same
// description are one case with several peers.
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "bench/job.hpp"

namespace jx::bench {

struct Pair {
  std::string what;
  std::string peer;
  std::function<void()> ours;
  std::function<void()> theirs;
  std::function<void()> prepare = nullptr;  // before each pass, not timed
};

// Runs and prints all pairs as one job in milliseconds a pass; main() returns the result.
inline int run_pairs(const std::string &id, const std::string &title,
                     const std::vector<Pair> &pairs) {
  Job job(id, title, "ms/pass", 1e3);
  const auto add = [&](const std::string &name, const Pair &pair, const std::function<void()> &work,
                       Kind kind) {
    job.add(
        name,
        [prepare = pair.prepare, work](Watch &watch) {
          if (prepare) prepare();
          watch.start();
          work();
          return uint64_t{0};
        },
        kind);
  };
  for (auto pair = pairs.begin(); pair != pairs.end(); ++pair) {
    if (std::ranges::find(pairs.begin(), pair, pair->what, &Pair::what) != pair) continue;
    job.begin(pair->what, 1);
    add("jxwem", *pair, pair->ours, Kind::kModule);
    for (auto same = pair; same != pairs.end(); ++same) {
      if (same->what == pair->what) add(same->peer, *same, same->theirs, Kind::kPeer);
    }
    job.end();
  }
  job.print();
  return 0;
}

}  // namespace jx::bench
