// What can be completed, from the table of commands.
#include "cli/completion.hpp"

#include <algorithm>

#include "jx/jxhost.h"

namespace cli {
namespace {

ValueKind kind_of(std::string_view name) {
  if (name == "DIR" || name == "FOLDER" || name == "FILE") {
    return name == "FILE" ? ValueKind::kFile : ValueKind::kFolder;
  }
  if (name == "COMMAND") return ValueKind::kCommand;
  return name == "ENC" ? ValueKind::kEncoding : ValueKind::kAnything;
}

}  // namespace

ValueKind kind_of(const Option &option) {
  if (!option.value) return ValueKind::kFlag;
  const ValueKind kind = kind_of(option.value);
  return option.choices && kind != ValueKind::kEncoding ? ValueKind::kChoice : kind;
}

ValueKind kind_of_operands(const Command &command) {
  if (command.operands.empty()) return ValueKind::kAnything;
  const Operand &operand = command.operands.front();
  const ValueKind kind = kind_of(operand.name);
  return kind == ValueKind::kAnything && operand.is_path ? ValueKind::kFile : kind;
}

std::vector<const Command *> shown_commands() {
  std::vector<const Command *> shown;
  for (const Command &command : commands()) {
    if (!command.is_hidden) shown.push_back(&command);
  }
  return shown;
}

std::string command_names() {
  std::string names;
  for (const Command *command : shown_commands()) {
    names += (names.empty() ? "" : " ") + std::string(command->name);
  }
  return names;
}

std::string encoding_names() {
  std::string names = "utf-8 utf-16 utf-32";
  for (uint32_t i = 0; jxhost_encoding_at(i) != 0; ++i) {
    std::string name = jxhost_encoding_name(jxhost_encoding_at(i));
    std::ranges::transform(name, name.begin(), [](char c) {
      return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (name != "utf-8") names += " " + name;
  }
  return names;
}

std::string more_choices(const char *choices) {
  return choices ? " " + std::string(choices) : std::string();
}

std::string_view short_name(const Option &option) {
  const std::string_view names = option.name;
  const size_t comma = names.find(',');
  return comma == names.npos ? std::string_view() : names.substr(0, comma);
}

std::string escaped(std::string_view text, std::string_view special) {
  std::string result;
  for (const char c : text) {
    if (special.find(c) != special.npos) result += '\\';
    result += c;
  }
  return result;
}

}  // namespace cli
