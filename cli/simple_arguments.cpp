// Command lines that need no parser: a command, then options and operands of the plainest kind.
// Most are. They are taken straight from the table, because setting the parser up costs more than
// all else that a short command does: 2.5 of 5.2 million instructions of a small conversion.
#include <algorithm>
#include <string_view>

#include "cli/commands.hpp"

namespace cli {
namespace {

// Whether a word means itself wherever it is.
bool is_plain(std::string_view word) { return !word.empty() && (word == "-" || word[0] != '-'); }

// Whether as many words as there are can be the operands of a command.
bool fits(std::span<const Operand> operands, size_t count) {
  size_t minimum = 0;
  size_t maximum = 0;
  for (const Operand &operand : operands) {
    minimum += operand.minimum;
    maximum = operand.maximum == kAnyNumber ? SIZE_MAX : maximum + operand.maximum;
  }
  return count >= minimum && count <= maximum;
}

}  // namespace

const Option *find_option(const Command *command, std::string_view word) {
  const auto is_named = [word](const Option &option) {
    const std::string_view names = option.name;
    return word == long_name(option) || word == names.substr(0, names.find(','));
  };
  for (const auto options :
       {command ? command->options : std::span<const Option>(), common_options()}) {
    const auto found = std::ranges::find_if(options, is_named);
    if (found != options.end()) return &*found;
  }
  return nullptr;
}

bool parse_simple(const Command &command, std::span<char *const> words, Arguments *arguments) {
  Arguments found;
  std::vector<std::string> operands;
  for (size_t at = 0; at < words.size(); ++at) {
    if (is_plain(words[at])) {
      operands.emplace_back(words[at]);
      continue;
    }
    const Option *option = find_option(&command, words[at]);
    if (!option) return false;
    const std::string key(long_name(*option));
    const bool has_value = !option->value || (at + 1 < words.size() && is_plain(words[at + 1]));
    if (found.has(key) || !has_value) return false;
    found.set_option(key, option->value ? words[++at] : "");
  }
  if (command.takes_anything || !fits(command.operands, operands.size())) return false;
  found.set_operands(std::move(operands));
  *arguments = std::move(found);
  return true;
}

}  // namespace cli
