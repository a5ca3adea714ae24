// Records printed as lines.
#pragma once

#include <string>

#include "cli/arguments.hpp"
#include "cli/line_range.hpp"
#include "cli/record_form.hpp"
#include "cli/session.hpp"

namespace cli {

// Prints the records of a file that are in the range in UTF-8, as the options of "lines" ask for.
// A Failure with record and byte offset for what is wrong with them; those before it are printed.
void print_record_lines(Session &session, const Arguments &arguments, const RecordForms &forms,
                        LineRange range, const std::string &name);

}  // namespace cli
