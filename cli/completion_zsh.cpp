// The completion of zsh.
#include "cli/completion.hpp"

namespace cli {
namespace {

// Text within single quotes.
std::string in_quotes(std::string_view text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? "'\\''" : std::string(1, c);
  return result + "'";
}

std::string zsh_action(ValueKind kind, const char *choices) {
  switch (kind) {
    case ValueKind::kFile:
      return "_files";
    case ValueKind::kFolder:
      return "_files -/";
    case ValueKind::kEncoding:
      return "($encodings" + more_choices(choices) + ")";
    case ValueKind::kCommand:
      return "($names)";
    case ValueKind::kChoice:
      return std::string("(") + choices + ")";
    default:
      return " ";
  }
}

std::string zsh_option(const Option &option) {
  const std::string help = "[" + escaped(option.help, "[]\\") + "]";
  const ValueKind kind = kind_of(option);
  const std::string name(long_name(option));
  const std::string first(short_name(option));
  std::string text = first.empty() ? in_quotes(name + help)
                                   : "'(" + first + " " + name + ")'{" + first + "," + name + "}" +
                                         in_quotes(help);
  if (kind != ValueKind::kFlag) {
    text += in_quotes(":" + escaped(option.value, ":") + ":") + "\"" +
            zsh_action(kind, option.choices) + "\"";
  }
  return text;
}

}  // namespace

std::string zsh_completion() {
  std::string summaries, cases, common;
  for (const Option &option : common_options()) common += "    " + zsh_option(option) + "\n";
  for (const Command *command : shown_commands()) {
    summaries += "    " + in_quotes(std::string(command->name) + ":" + command->summary) + "\n";
    cases += std::string("        ") + command->name + ")\n          _arguments $common \\\n";
    for (const Option &option : command->options) {
      cases += "            " + zsh_option(option) + " \\\n";
    }
    const char *name = command->operands.empty() ? "" : command->operands.front().name;
    cases += "            " + in_quotes(std::string("*:") + name + ":") + "\"" +
             zsh_action(kind_of_operands(*command), nullptr) + "\"\n          ;;\n";
  }
  return "#compdef jxfile\n# zsh completion for jxfile\n"
         "_jxfile() {\n"
         "  local curcontext=$curcontext state\n"
         "  local -a line commands common\n"
         "  local names='" +
         command_names() +
         "'\n"
         "  local encodings='" +
         encoding_names() +
         "'\n"
         "  commands=(\n" +
         summaries +
         "  )\n"
         "  common=(\n    '--help[print help]'\n" +
         common +
         "  )\n"
         "  _arguments -C '--help[print help]' '--version[show the module that is used]' \\\n"
         "    '1:command:->command' '*::operand:->operands'\n"
         "  case $state in\n"
         "    command) _describe command commands ;;\n"
         "    operands)\n"
         "      case $words[1] in\n" +
         cases +
         "      esac\n"
         "      ;;\n"
         "  esac\n"
         "}\n"
         "_jxfile \"$@\"\n";
}

}  // namespace cli
