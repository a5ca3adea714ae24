// Times whole passes in pairs, the module's and a peer's, in either ABI (the benchmark libraries
// are 64-bit only). A pass takes milliseconds, so the cost of the clock is negligible. Rounds
// alternate between the two sides; medians of the processor time are compared, which other programs
// disturb least.
#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace jx::bench {

struct Pair {
  std::string what;
  std::string peer;
  std::function<void()> ours;
  std::function<void()> theirs;
  std::function<void()> prepare = nullptr;  // before each pass, not timed
};

// Processor time so far, child processes included.
inline double processor_milliseconds() {
  timespec own;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
  rusage children;
  getrusage(RUSAGE_CHILDREN, &children);
  double result = static_cast<double>(own.tv_sec) * 1e3 + static_cast<double>(own.tv_nsec) / 1e6;
  for (const timeval &time : {children.ru_utime, children.ru_stime}) {
    result += static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  }
  return result;
}

inline double milliseconds_of(const Pair &pair, const std::function<void()> &pass) {
  if (pair.prepare) pair.prepare();
  const double start = processor_milliseconds();
  pass();
  return processor_milliseconds() - start;
}

inline double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

// Runs the pairs whose description contains the first argument, or all, and prints a Markdown
// table.
inline int run_pairs(int argc, char **argv, const std::vector<Pair> &pairs) {
  const std::string wanted = argc > 1 ? argv[1] : "";
  constexpr int kRounds = 11;
  std::printf("| What | Peer | ms | peer's ms | times faster |\n|---|---|---|---|---|\n");
  for (const Pair &pair : pairs) {
    if (pair.what.find(wanted) == std::string::npos) continue;
    std::vector<double> ours, theirs;
    for (int round = -1; round < kRounds; ++round) {
      const double first = milliseconds_of(pair, pair.ours);
      const double second = milliseconds_of(pair, pair.theirs);
      if (round < 0) continue;  // the first round fills caches
      ours.push_back(first);
      theirs.push_back(second);
    }
    std::printf("| %s | %s | %.2f | %.2f | %.2f |\n", pair.what.c_str(), pair.peer.c_str(),
                median(ours), median(theirs), median(theirs) / median(ours));
    std::fflush(stdout);
  }
  return 0;
}

// Keeps a value that nothing else uses from being optimised away.
template <typename T>
void keep(const T &value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

}  // namespace jx::bench
