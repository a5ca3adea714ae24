// What the completions of the shells have in common.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/commands.hpp"

namespace cli {

// What a value or an operand may be.
enum class ValueKind { kFlag, kAnything, kFile, kFolder, kEncoding, kCommand, kChoice };

ValueKind kind_of(const Option &option);
// Of a command's first operand; the others are completed like it.
ValueKind kind_of_operands(const Command &command);

// The commands that are not hidden, and their names with blanks between.
std::vector<const Command *> shown_commands();
std::string command_names();
// The names of encodings in small letters, with blanks between.
std::string encoding_names();
// What an option takes beside the names of encodings, with a blank before; empty for none.
std::string more_choices(const char *choices);
// "-r" of "-r,--recursive"; empty when there is none.
std::string_view short_name(const Option &option);
// Text with a backslash before each of some characters.
std::string escaped(std::string_view text, std::string_view special);

}  // namespace cli
