// The completion of bash.
#include <map>

#include "cli/completion.hpp"

namespace cli {
namespace {

// What bash does to complete a kind.
std::string bash_setting(ValueKind kind, const char *choices) {
  switch (kind) {
    case ValueKind::kFile:
      return "kind=files";
    case ValueKind::kFolder:
      return "kind=folders";
    case ValueKind::kEncoding:
      return "kind=words words=\"$encodings" + more_choices(choices) + "\"";
    case ValueKind::kCommand:
      return "kind=words words=$commands";
    case ValueKind::kChoice:
      return std::string("kind=words words='") + choices + "'";
    default:
      return "kind=none";
  }
}

std::string bash_options(const Command &command) {
  std::string words;
  for (const std::span<const Option> options : {command.options, common_options()}) {
    for (const Option &option : options) {
      const std::string_view name = short_name(option);
      if (!name.empty()) words += std::string(name) + " ";
      words += std::string(long_name(option)) + " ";
    }
  }
  return words + "--help";
}

// The values of options, those alike together.
std::string bash_values() {
  std::map<std::string, std::string> patterns;
  const auto add = [&patterns](const std::string &command, const Option &option) {
    if (kind_of(option) == ValueKind::kFlag) return;
    std::string &pattern = patterns[bash_setting(kind_of(option), option.choices)];
    pattern += (pattern.empty() ? "" : " | ") + command + ":" + std::string(long_name(option));
  };
  for (const Option &option : common_options()) add("*", option);
  for (const Command *command : shown_commands()) {
    for (const Option &option : command->options) add(command->name, option);
  }
  std::string cases;
  for (const auto &[setting, pattern] : patterns) {
    cases += "    ";
    cases += pattern;
    cases += ") ";
    cases += setting;
    cases += " ;;\n";
  }
  return cases;
}

}  // namespace

std::string bash_completion() {
  std::string cases;
  for (const Command *command : shown_commands()) {
    cases += std::string("    ") + command->name + ") options='" + bash_options(*command) + "' " +
             bash_setting(kind_of_operands(*command), nullptr) + " ;;\n";
  }
  return "# bash completion for jxfile\n"
         "_jxfile() {\n"
         "  local commands='" +
         command_names() +
         "'\n"
         "  local encodings='" +
         encoding_names() +
         "'\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
         "  local options='' words='' kind=''\n"
         "  # --name=value comes as three words.\n"
         "  [[ $before == '=' ]] && before=${COMP_WORDS[COMP_CWORD - 2]}\n"
         "  [[ $word == '=' ]] && word=''\n"
         "  if ((COMP_CWORD == 1)); then\n"
         "    mapfile -t COMPREPLY < <(compgen -W \"$commands --help --version\" -- \"$word\")\n"
         "    return\n"
         "  fi\n"
         "  case ${COMP_WORDS[1]} in\n" +
         cases +
         "  esac\n"
         "  [[ $word == -* ]] && kind=words words=$options\n"
         "  case ${COMP_WORDS[1]}:$before in\n" +
         bash_values() +
         "  esac\n"
         "  case $kind in\n"
         "    words) mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\") ;;\n"
         "    none) COMPREPLY=() ;;\n"
         "    *)\n"
         "      compopt -o filenames 2>/dev/null\n"
         "      [[ $kind == folders ]] && kind=-d || kind=-f\n"
         "      mapfile -t COMPREPLY < <(compgen \"$kind\" -- \"$word\")\n"
         "      ;;\n"
         "  esac\n"
         "}\n"
         "complete -F _jxfile jxfile\n";
}

}  // namespace cli
