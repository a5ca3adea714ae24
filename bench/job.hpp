// Times jobs. A job is a table: its columns are cases, its rows contenders. The contenders of a
// case run interleaved, in a rotating order, and the median of the rounds counts, so that what else
// the machine does falls on all of them alike.
//
//   BENCH_REPS   timed rounds of a case (default 15)
//   BENCH_TSV    file to which every cell is appended as one line
//   BENCH_FOLDER folder for test files, in memory (default /dev/shm)
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace jx::bench {

[[noreturn]] void fail(const std::string &what);

// Keeps a value, and everything reachable through memory, from being optimised away.
template <typename T>
void keep(const T &value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

// A pointer to the function that the compiler cannot see through: the call is a real one.
template <typename Function>
Function *opaque(Function *function) {
  asm volatile("" : "+r"(function));
  return function;
}

// Processor time, that of ended child processes included, is disturbed less by other programs than
// wall time. Only passes with several threads need the latter.
enum class Clock : uint8_t { kProcessor, kWall };

// Times one pass. The job starts and stops it; a pass may start it anew after its own preparations
// and stop it before it cleans up, several times: what lies between counts.
class Watch {
 public:
  explicit Watch(Clock clock) : clock_(clock) {}
  void start() {
    is_running_ = true;
    begin_ = now();
  }
  void stop() {
    if (is_running_) seconds_ += now() - begin_;
    is_running_ = false;
  }
  double seconds() const { return seconds_; }

 private:
  double now() const;

  Clock clock_;
  double begin_ = 0;
  double seconds_ = 0;
  bool is_running_ = false;
};

// Does the whole work of a case once. Contenders of a case return the same checksum, or 0.
using Pass = std::function<uint64_t(Watch &)>;

// kPeer: what a program could use instead. kLimit: the least work that the job allows.
enum class Kind : uint8_t { kModule, kPeer, kLimit };

inline int default_repetitions() {
  const char *text = std::getenv("BENCH_REPS");
  return text ? std::max(1, std::atoi(text)) : 15;
}

class Job {
 public:
  // `id` names the job's chart. Cells show seconds for a unit of work, times `scale`.
  Job(std::string id, std::string title, std::string unit, double scale,
      Clock clock = Clock::kProcessor);

  // Opens a column; a pass does `work` units.
  void begin(std::string name, double work);
  void add(std::string name, Pass pass, Kind kind = Kind::kPeer);
  // Runs the contenders of the column.
  void end(int repetitions = default_repetitions());
  // Prints the table. A cell is the median time, and in brackets the median of the ratios to the
  // best peer (in bold) in the same round; the last column is the widest interquartile range.
  void print() const;

 private:
  struct Contender {
    std::string name;
    Kind kind;
    Pass pass;
    std::vector<double> times = {};
  };
  struct Column {
    std::string name;
    double work;
  };
  struct Cell {
    double median, low, high;  // with the quartiles, in the unit of the job
    double ratio;              // to the best peer
    bool is_best;
  };
  struct Row {
    std::string name;
    Kind kind;
    std::vector<std::optional<Cell>> cells;
  };

  void run_round(int round);
  void record(const Contender &contender, const Contender &best);
  void append_line(const Contender &contender, const Cell &cell) const;
  void print_row(const Row &row) const;

  std::string id_, title_, unit_;
  double scale_;
  Clock clock_;
  uint64_t expected_ = 0;  // checksum of the column
  std::vector<Column> columns_;
  std::vector<Contender> contenders_;  // of the open column
  std::vector<Row> rows_;
};

}  // namespace jx::bench
