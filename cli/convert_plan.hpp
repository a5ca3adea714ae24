// What "convert" of many files is to do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments.hpp"
#include "cli/conversion.hpp"
#include "cli/failure.hpp"

namespace cli {

class Session;

// A file to convert, and what became of it.
struct Job {
  std::string input;
  std::string output;  // the same in place
  std::optional<Failure> failure;
  uint64_t old_bytes = 0;
  uint64_t new_bytes = 0;
  bool had_old = false;
  bool is_changed = false;
  std::string tally;  // of the faults that were put up with
};

struct Plan {
  Conversion conversion;
  bool is_in_place;
  bool is_trial;
  std::string backup_suffix;
  std::vector<Job> jobs;
};

// The files that operands or a list name. Those that cannot be converted beside the others have
// their failure already: a file given twice, also by another name, one of several that would get
// the same name, and one that would replace another to read. A UsageError for options that
// contradict each other.
Plan make_plan(Session &session, const Arguments &arguments, const Conversion &conversion);

}  // namespace cli
