// Random scripts of file operations, each run on the module and on the model: statuses, records,
// positions and the file itself must agree.
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/instance.hpp"
#include "support/record_comparison.hpp"
#include "support/scale.hpp"

namespace jx::test {
namespace {

// How many scripts: JX_RECORD_SCRIPTS, or a number that takes seconds.
uint32_t script_count() {
  if (const char *count = std::getenv("JX_RECORD_SCRIPTS")) {
    return static_cast<uint32_t>(std::atoi(count));
  }
  return static_cast<uint32_t>(scaled(12'000));
}

// Runs scripts with the seeds from `first` on, on a host of their own. False when one differed.
bool run_scripts(uint32_t first, uint32_t count) {
  FaultHost host;
  const Instance instance(host);
  const TempDir dir;
  for (uint32_t seed = first; seed < first + count; ++seed) {
    Choices choices(seed);
    const Script script = make_script(&choices);
    const uint32_t most_bytes = seed % 4 == 0 ? 1 + seed % 61 : 0;
    const std::string difference =
        RecordComparison(instance, dir.file("records"), most_bytes).run(script);
    if (difference.empty()) continue;
    ADD_FAILURE() << difference << "\n"
                  << describe(script) << "run again with JX_RECORD_SEED=" << seed;
    return false;
  }
  const std::string misuse = host.take_misuse();
  EXPECT_EQ(misuse, "") << "in the " << count << " scripts from seed " << first;
  return misuse.empty();
}

TEST(Records, BehaveLikeTheModel) {
  if (const char *seed = std::getenv("JX_RECORD_SEED")) {
    run_scripts(static_cast<uint32_t>(std::strtoul(seed, nullptr, 10)), 1);
    return;
  }
  // A host keeps ended objects to find late calls, so a new one now and then saves memory.
  constexpr uint32_t kScriptsOfAHost = 50;
  const uint32_t scripts = script_count();
  for (uint32_t done = 0; done < scripts; done += kScriptsOfAHost) {
    if (!run_scripts(done, std::min(kScriptsOfAHost, scripts - done))) return;
  }
}

}  // namespace
}  // namespace jx::test
