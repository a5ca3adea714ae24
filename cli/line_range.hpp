// The option --range: lines or records from one number to another.
#pragma once

#include <cstdint>

#include "cli/arguments.hpp"
#include "cli/record_form.hpp"
#include "jx/wem.hpp"

namespace cli {

class Input;

// Which lines or records are printed, from 1.
struct LineRange {
  uint64_t first = 1;
  uint64_t last = UINT64_MAX;
  bool is_all() const { return first == 1 && last == UINT64_MAX; }
};

// "A:B", "A:", ":B" or "A"; everything when it is not given. A UsageError for anything else.
LineRange line_range(const Arguments &arguments);

// Passes over the records before a range where that needs no reading: those of one length in a
// file. Returns the offset of the first one left.
uint64_t skip_records(Input &input, wem::File &file, const RecordForm &form,
                      const LineRange &range);

}  // namespace cli
