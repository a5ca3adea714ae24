// The main routine of the benchmarks: runs them interleaved and prints, for each pair, how many
// times faster the module's median is than the peer's.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace jx::bench {

// One line of the table: two benchmarks by name.
struct Ratio {
  const char *what;
  const char *ours;
  const char *peer;
};

// Keeps the medians while the console reporter prints.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &run : runs) {
      if (run.aggregate_name == "median") medians_[run.run_name.str()] = run.GetAdjustedRealTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }
  // 0 for a benchmark that did not run.
  double median(const std::string &name) const {
    const auto found = medians_.find(name);
    return found == medians_.end() ? 0 : found->second;
  }

 private:
  std::map<std::string, double> medians_;
};

// Runs the benchmarks that the command line asks for and prints the table as Markdown.
inline int run_ratios(int argc, char **argv, const std::vector<Ratio> &ratios) {
  std::vector<char *> arguments(argv, argv + argc);
  // Defaults come first, so that the command line may change them.
  std::string defaults[] = {"--benchmark_repetitions=9", "--benchmark_min_time=0.05",
                            "--benchmark_enable_random_interleaving=true",
                            "--benchmark_report_aggregates_only=true"};
  for (std::string &option : defaults) arguments.insert(arguments.begin() + 1, option.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\n| What | Peer | Times faster |\n|---|---|---|\n");
  for (const Ratio &ratio : ratios) {
    const double ours = reporter.median(ratio.ours);
    const double peer = reporter.median(ratio.peer);
    if (ours > 0 && peer > 0) {
      std::printf("| %s | %s | %.2f |\n", ratio.what, ratio.peer, peer / ours);
    }
  }
  return 0;
}

}  // namespace jx::bench
