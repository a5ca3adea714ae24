// The command "help".
#include <array>
#include <string>

#include "cli/commands.hpp"

namespace cli {

int run_help(Session &, const Arguments &arguments) {
  std::array<std::string, 3> words = {"jxfile", arguments.operand(0), "--help"};
  std::array<char *, 4> pointers = {};
  int count = 0;
  for (std::string &word : words) {
    if (!word.empty()) pointers[static_cast<size_t>(count++)] = word.data();
  }
  Invocation unused;
  parse_command_line(count, pointers.data(), &unused);
  return 0;
}

}  // namespace cli
