// The completion of fish.
#include "cli/completion.hpp"

namespace cli {
namespace {

std::string fish_action(ValueKind kind, const char *choices) {
  switch (kind) {
    case ValueKind::kFlag:
      return "";
    case ValueKind::kFile:
      return " -r -F";
    case ValueKind::kFolder:
      return " -x -a '(__fish_complete_directories)'";
    case ValueKind::kEncoding:
      return " -x -a \"$encodings" + more_choices(choices) + "\"";
    case ValueKind::kCommand:
      return " -x -a \"$commands\"";
    case ValueKind::kChoice:
      return std::string(" -x -a '") + choices + "'";
    default:
      return " -x";
  }
}

std::string fish_option(const std::string &start, const Option &option) {
  const std::string_view first = short_name(option);
  std::string line = start;
  if (!first.empty()) line += " -s " + std::string(first.substr(1));
  line += " -l " + std::string(long_name(option).substr(2));
  line += fish_action(kind_of(option), option.choices);
  return line + " -d '" + escaped(option.help, "\\'") + "'\n";
}

}  // namespace

std::string fish_completion() {
  std::string lines = "# fish completion for jxfile\nset -l commands " + command_names() +
                      "\nset -l encodings '" + encoding_names() +
                      "'\ncomplete -c jxfile -f\n"
                      "complete -c jxfile -l help -d 'print help'\n"
                      "complete -c jxfile -n __fish_use_subcommand -l version -d 'show the module "
                      "that is used'\n";
  for (const Option &option : common_options()) lines += fish_option("complete -c jxfile", option);
  for (const Command *command : shown_commands()) {
    const std::string name = command->name;
    lines += "complete -c jxfile -n __fish_use_subcommand -a " + name + " -d '" +
             escaped(command->summary, "\\'") + "'\n";
    const std::string start = "complete -c jxfile -n '__fish_seen_subcommand_from " + name + "'";
    for (const Option &option : command->options) lines += fish_option(start, option);
    const ValueKind kind = kind_of_operands(*command);
    if (kind == ValueKind::kFile) lines += start + " -F\n";
    if (kind == ValueKind::kFolder || kind == ValueKind::kCommand || kind == ValueKind::kEncoding) {
      lines += start + fish_action(kind, nullptr) + "\n";
    }
  }
  return lines;
}

}  // namespace cli
