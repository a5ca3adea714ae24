// The report: a line for each check, counts at the end, in one of three forms.
#pragma once

#include "jx/jxcheck.h"

namespace jxcheck {

class Report {
 public:
  explicit Report(const JXCheckConfig &config) : config_(config) {}

  void begin();
  // Numbers the line, counts it and writes it.
  void add(JXCheckLine line);
  void end();
  const JXCheckCounts &counts() const { return counts_; }
  // True when the output took everything.
  bool is_written() const { return is_written_; }

 private:
  const JXCheckConfig &config_;
  JXCheckCounts counts_ = {};
  bool is_written_ = true;
};

}  // namespace jxcheck
