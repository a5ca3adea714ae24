#include "bench/job.hpp"

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <utility>

namespace jx::bench {

namespace {

const char *abi_name() { return sizeof(void *) == 4 ? "i386" : "x86-64"; }

double quantile(std::vector<double> values, double share) {
  std::ranges::sort(values);
  return values[static_cast<size_t>(share * static_cast<double>(values.size() - 1) + 0.5)];
}
double median(const std::vector<double> &values) { return quantile(values, 0.5); }

}  // namespace

void fail(const std::string &what) {
  std::fprintf(stderr, "bench: %s\n", what.c_str());
  std::exit(1);
}

double Watch::now() const {
  timespec time;
  clock_gettime(clock_ == Clock::kWall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
  double seconds = static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
  if (clock_ == Clock::kWall) return seconds;
  rusage children;
  getrusage(RUSAGE_CHILDREN, &children);
  for (const timeval &part : {children.ru_utime, children.ru_stime}) {
    seconds += static_cast<double>(part.tv_sec) + 1e-6 * static_cast<double>(part.tv_usec);
  }
  return seconds;
}

Job::Job(std::string id, std::string title, std::string unit, double scale, Clock clock)
    : id_(std::move(id)),
      title_(std::move(title)),
      unit_(std::move(unit)),
      scale_(scale),
      clock_(clock) {}

void Job::begin(std::string name, double work) {
  columns_.push_back({std::move(name), work});
  contenders_.clear();
  expected_ = 0;
}

void Job::add(std::string name, Pass pass, Kind kind) {
  contenders_.push_back({std::move(name), kind, std::move(pass)});
}

void Job::run_round(int round) {
  for (size_t i = 0; i < contenders_.size(); ++i) {
    Contender &contender = contenders_[(i + static_cast<size_t>(round + 1)) % contenders_.size()];
    Watch watch(clock_);
    watch.start();
    const uint64_t sum = contender.pass(watch);
    watch.stop();
    if (round >= 0) contender.times.push_back(watch.seconds());
    if (expected_ == 0) expected_ = sum;
    if (sum != 0 && sum != expected_) {
      fail(title_ + ", " + columns_.back().name + ": " + contender.name + " differs in its result");
    }
  }
}

void Job::end(int repetitions) {
  for (int round = -1; round < repetitions; ++round) run_round(round);  // the first warms up
  const Contender *best = nullptr;
  for (const Contender &contender : contenders_) {
    if (contender.kind != Kind::kPeer) continue;
    if (!best || median(contender.times) < median(best->times)) best = &contender;
  }
  if (!best) fail(title_ + ", " + columns_.back().name + ": no peer");
  for (const Contender &contender : contenders_) record(contender, *best);
}

void Job::record(const Contender &contender, const Contender &best) {
  const double unit = scale_ / columns_.back().work;
  std::vector<double> ratios;
  for (size_t round = 0; round < contender.times.size(); ++round) {
    ratios.push_back(contender.times[round] / best.times[round]);
  }
  const Cell cell{quantile(contender.times, 0.5) * unit, quantile(contender.times, 0.25) * unit,
                  quantile(contender.times, 0.75) * unit, median(ratios), &contender == &best};
  auto row = std::ranges::find(rows_, contender.name, &Row::name);
  if (row == rows_.end()) row = rows_.insert(row, Row{contender.name, contender.kind, {}});
  row->cells.resize(columns_.size());
  row->cells.back() = cell;
  append_line(contender, cell);
}

void Job::append_line(const Contender &contender, const Cell &cell) const {
  static const char *const kKinds[] = {"module", "peer", "limit"};
  const char *path = std::getenv("BENCH_TSV");
  if (!path) return;
  std::FILE *file = std::fopen(path, "a");
  if (!file) fail(std::string("cannot write ") + path);
  std::fprintf(file, "%s\t%s\t%s\t%s\t%s\t%s\t%s\t%.6g\t%.6g\t%.6g\t%.4g\n", abi_name(),
               id_.c_str(), title_.c_str(), columns_.back().name.c_str(), contender.name.c_str(),
               kKinds[static_cast<size_t>(contender.kind)], unit_.c_str(), cell.median, cell.low,
               cell.high, cell.ratio);
  std::fclose(file);
}

void Job::print() const {
  std::printf("### %s (%s, %s)\n\n|  |", title_.c_str(), abi_name(), unit_.c_str());
  for (const Column &column : columns_) std::printf(" %s |", column.name.c_str());
  std::printf(" spread |\n|---|");
  for (size_t i = 0; i <= columns_.size(); ++i) std::printf("---:|");
  std::printf("\n");
  for (const Kind kind : {Kind::kModule, Kind::kPeer, Kind::kLimit}) {
    for (const Row &row : rows_) {
      if (row.kind == kind) print_row(row);
    }
  }
  std::printf("\n");
  std::fflush(stdout);
}

void Job::print_row(const Row &row) const {
  const char *const mark = row.kind == Kind::kModule ? "**" : "";
  std::printf("| %s%s%s%s |", row.kind == Kind::kLimit ? "*limit:* " : "", mark, row.name.c_str(),
              mark);
  double spread = 0;
  for (size_t i = 0; i < columns_.size(); ++i) {
    if (i >= row.cells.size() || !row.cells[i]) {
      std::printf("  |");
      continue;
    }
    const Cell &cell = *row.cells[i];
    const char *bold = cell.is_best ? "**" : "";
    std::printf(" %s%.*f%s (%.2f) |", bold,
                cell.median < 10     ? 2
                : cell.median < 1000 ? 1
                                     : 0,
                cell.median, bold, cell.ratio);
    spread = std::max(spread, (cell.high - cell.low) / cell.median);
  }
  std::printf(" %.0f%% |\n", spread * 100);
}

}  // namespace jx::bench
