// Commands with several operands.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "cli/arguments.hpp"
#include "cli/session.hpp"

namespace cli {

// Says how many of several things failed. The exit code.
int summarize(Session &session, size_t failed, size_t count);

// Runs an operation on each of some paths or pairs, after what was printed before. A failure is
// reported, the others still have their turn, and in the end it is said how many failed; one of
// standard output ends it all. The exit code.
template <typename Item, typename Operation>
int for_each(Session &session, const std::vector<Item> &items, Operation operation) {
  size_t failed = 0;
  for (const Item &item : items) {
    try {
      operation(item);
    } catch (const Failure &failure) {
      if (failure.path == "standard output") throw;
      session.output().flush();
      session.report(failure);
      ++failed;
    }
  }
  return summarize(session, failed, items.size());
}

// What a command that takes OLD... NEW acts on.
struct Pair {
  std::string from;
  std::string to;
  std::string shown() const { return from + " -> " + to; }
};

// A pair for each OLD: with NEW, or with the member of its name in NEW where that is a directory
// and --no-target-directory is not given. A UsageError or a Failure for more than one OLD when NEW
// cannot take them up.
std::vector<Pair> pairs_of(const Arguments &arguments);

}  // namespace cli
