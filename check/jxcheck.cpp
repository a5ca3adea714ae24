// jxcheck_run: goes through the checks of every subject.
#include "jx/jxcheck.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>

#include "check/folder.hpp"
#include "check/isolation.hpp"
#include "check/report.hpp"
#include "check/survey.hpp"

namespace jxcheck {

namespace {

constexpr decltype(&pool_checks) kSubjects[] = {
    handle_checks,      pool_checks,       lock_checks,  table_checks,      native_checks,
    service_checks,     transcoder_checks, file_checks,  descriptor_checks, lock_word_checks,
    open_status_checks, journal_checks,    thread_checks};

class Run {
 public:
  Run(JXHost *host, const JXCheckConfig &config)
      : config_(config), probe_(host, config, memory_), report_(config) {}

  JXStatus run() {
    if (!memory_.allocate()) return JX_E_NOMEM;
    if (config_.folder_fd >= 0) {
      if (!folder_.make(config_.folder_fd)) return JXWEM_E_SYSTEM;
      probe_.folder_fd = folder_.fd();
    }
    report_.begin();
    const bool is_done = survey() && std::ranges::all_of(kSubjects, [this](auto subject) {
                           return std::ranges::all_of(
                               subject(), [this](const Check &check) { return run_one(check); });
                         });
    report_.end();
    if (!is_done || !report_.is_written()) return JXWEM_E_SYSTEM;
    return report_.counts().findings == 0 ? JX_OK : JXWEM_E_FAILED;
  }
  const JXCheckCounts &counts() const { return report_.counts(); }

 private:
  // Gets hold of each object, and adds a line for each of its slots. False when it cannot go on.
  bool survey() {
    return std::ranges::all_of(objects(), [this](const Object &object) {
      if (!run_one(object.get)) return false;
      const bool is_there = memory_.outcome()->outcome == JXCHECK_PASSED;
      for (uint32_t i = index_of(object.first); i <= index_of(object.last); ++i) {
        add_slot(static_cast<Slot>(i), is_there, object.get.guide);
      }
      return true;
    });
  }

  // Says whether a slot of an object is there.
  void add_slot(Slot slot, bool is_object_there, const char *heading) {
    const bool is_present = (memory_.outcome()->present & slots(slot)) != 0;
    JXCheckLine line = {0, JXCHECK_PASSED, name_of(slot), "its address", "", "not null", heading};
    if (!is_object_there) {
      line.outcome = JXCHECK_SKIPPED;
      line.came8 = "there is no such object";
    } else if (!is_present) {
      line.outcome = JXCHECK_FINDING;
      line.came8 = "null";
    }
    report_.add(line);
  }

  bool run_one(const Check &check) {
    Outcome *outcome = memory_.outcome();
    const Slots missing = check.needs & ~outcome->present;
    if (missing != 0) {
      outcome->outcome = JXCHECK_SKIPPED;
      ::snprintf(outcome->came, sizeof outcome->came, "needs %s", name_of(first_of(missing)));
    } else {
      if (!run_isolated(check.run, probe_, outcome)) return false;
      if (folder_.fd() >= 0) folder_.clear();
    }
    report_.add({0, outcome->outcome, name_of(check.slot), check.asked, outcome->came,
                 check.promised, check.guide});
    return true;
  }

  const JXCheckConfig config_;
  Memory memory_;
  WorkFolder folder_;
  Probe probe_;
  Report report_;
};

bool is_valid(const JXCheckConfig &config) {
  return config.format <= JXCHECK_JSON && (config.flags & ~JXCHECK_SAME_PROCESS) == 0;
}

}  // namespace

}  // namespace jxcheck

extern "C" JXStatus jxcheck_run(JXHost *host, const JXCheckConfig *config,
                                JXCheckCounts *counts_out) {
  const JXCheckConfig defaults = JXCHECK_CONFIG_INIT;
  if (!config) config = &defaults;
  if (counts_out) *counts_out = {};
  if (!host || !jxcheck::is_valid(*config)) return JX_E_BADARG;
  jxcheck::Run run(host, *config);
  const JXStatus status = run.run();
  if (counts_out) *counts_out = run.counts();
  return status;
}
