// The parser: the table of commands handed to CLI11, for help, for messages and for whatever is not
// simple. The only file that knows CLI11.
#include "cli/arguments.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "cli/commands.hpp"
#include "cli/failure.hpp"
#include "cli/suggestion.hpp"

namespace cli {
namespace {

constexpr size_t kHelpColumns = 80;

void add_option(CLI::App &app, const Option &option) {
  const std::string help = option.help;
  if (option.value) {
    app.add_option(option.name, help)->type_name(option.value);
  } else {
    app.add_flag(option.name, help);
  }
}

// Breaks text into lines of at most kHelpColumns.
std::string wrap(std::string_view text) {
  std::string wrapped;
  size_t column = 0;
  while (!text.empty()) {
    const size_t length = std::min(text.find(' '), text.size());
    const bool is_first = column == 0;
    if (!is_first && column + 1 + length > kHelpColumns) {
      wrapped += '\n';
      column = 0;
    } else if (!is_first) {
      wrapped += ' ';
      ++column;
    }
    wrapped += text.substr(0, length);
    column += length;
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return wrapped;
}

void add_command(CLI::App &app, const Command &command) {
  CLI::App *added = app.add_subcommand(command.name, command.summary);
  added->description(wrap(command.description));
  added->footer(std::string("Example:\n  ") + command.example);
  added->group(command.is_hidden ? "" : "Commands");
  for (const Option &option : command.options) add_option(*added, option);
  for (const Option &option : common_options()) add_option(*added, option);
}

void collect_options(const CLI::App &app, std::span<const Option> options, Arguments &arguments) {
  for (const Option &option : options) {
    const std::string key(long_name(option));
    const CLI::Option *given = app.get_option(key);
    if (given->count() == 0) continue;
    arguments.set_option(key, option.value ? given->results().back() : std::string());
  }
}

// The operand that a word is, by its index; those after one that takes any number share its words.
// Null when there is one too many.
const Operand *operand_at(std::span<const Operand> operands, size_t index) {
  for (const Operand &operand : operands) {
    if (operand.maximum == kAnyNumber || index < operand.maximum) return &operand;
    index -= operand.maximum;
  }
  return nullptr;
}

void require_operands(const Command &command, const std::vector<std::string> &words) {
  for (size_t index = 0; index < words.size() && !command.takes_anything; ++index) {
    const Operand *operand = operand_at(command.operands, index);
    if (!operand) throw UsageError("'" + words[index] + "' is one operand too many");
    if (words[index].empty()) throw UsageError(std::string(operand->name) + " is empty");
  }
  size_t needed = 0;
  for (const Operand &operand : command.operands) {
    needed += operand.minimum;
    if (words.size() < needed) throw UsageError(std::string(operand.name) + " is required");
  }
}

const Command *find_command(std::string_view name) {
  const auto all = commands();
  const auto found = std::ranges::find(all, name, &Command::name);
  return found == all.end() ? nullptr : &*found;
}

// Help from the table: the list of commands with their summaries instead of the descriptions, which
// are for each command's own help, and the operands, which the parser does not know.
class TableFormatter : public CLI::Formatter {
 public:
  std::string make_subcommand(const CLI::App *app) const override {
    const Command *command = find_command(app->get_name());
    if (!command) return {};
    std::stringstream line;
    CLI::detail::format_help(line, command->name, command->summary, get_column_width());
    return line.str();
  }

  std::string make_usage(const CLI::App *app, std::string name) const override {
    const Command *command = find_command(app->get_name());
    if (!command) return CLI::Formatter::make_usage(app, name);
    std::string usage = "Usage: " + name + " [OPTIONS]";
    for (const Operand &operand : command->operands) {
      const std::string word =
          std::string(operand.name) + (operand.maximum == kAnyNumber ? "..." : "");
      usage += operand.minimum > 0 ? " " + word : " [" + word + "]";
    }
    return usage + "\n";
  }

  std::string make_positionals(const CLI::App *app) const override {
    const Command *command = find_command(app->get_name());
    if (!command || command->operands.empty()) return {};
    std::stringstream lines;
    lines << "\nOperands:\n";
    for (const Operand &operand : command->operands) {
      CLI::detail::format_help(lines, operand.name, operand.help, get_column_width());
    }
    return lines.str();
  }
};

// The index of the first word that is not an option or the value of one; it may be "--". A negative
// number is no option.
int skip_options(int at, int argc, char **argv, const Command *command) {
  const auto is_option = [](std::string_view word) {
    return word.size() > 1 && word[0] == '-' && (word[1] < '0' || word[1] > '9');
  };
  while (at < argc && is_option(argv[at])) {
    const std::string_view word = argv[at];
    if (word == "--") return at;
    const Option *option = find_option(command, word);
    at += option && option->value ? 2 : 1;
  }
  return std::min(at, argc);
}

// Takes the operands off the words after a command. The parser must not see them: it would take
// words in brackets apart, has words with a meaning of its own, and loses its place after a "--".
std::vector<std::string> split_off_operands(const Command &command, int command_at, int *argc,
                                            char **argv) {
  std::vector<std::string> operands;
  char **const end = argv + *argc;
  char **kept = argv + command_at + 1;
  for (int at = command_at + 1; at < *argc; ++at) {
    const int next = skip_options(at, *argc, argv, &command);
    kept = std::copy(argv + at, argv + next, kept);
    at = next;
    const bool is_mark = at < *argc && std::string_view(argv[at]) == "--";
    if (is_mark || command.takes_anything) {
      operands.insert(operands.end(), argv + at + (is_mark ? 1 : 0), end);
      break;
    }
    if (at < *argc) operands.emplace_back(argv[at]);
  }
  *argc = static_cast<int>(kept - argv);
  return operands;
}

// Hands the whole table to the parser, or only the command that the first word names: the others
// cannot matter any more, and setting them up costs more than all else that a short command does.
void add_commands(CLI::App &app, const Command *only) {
  const auto formatter = std::make_shared<TableFormatter>();
  formatter->label("SUBCOMMAND", "COMMAND");
  formatter->label("Subcommands", "Commands");
  formatter->label("REQUIRED", "");
  app.formatter(formatter);
  app.require_subcommand(1);
  std::string footer = "jxfile COMMAND --help explains a command with an example.\n";
  for (const Note &note : notes()) {
    footer += "\n" + wrap(std::string(note.title) + ": " + note.text) + "\n";
  }
  app.footer(footer);
  add_option(app, {"--version", nullptr, "the same as the command version"});
  for (const Option &option : common_options()) add_option(app, option);
  for (const Command &command : commands()) {
    if (!only || only == &command) add_command(app, command);
  }
}

// Puts the command in the place of the option "--version" and returns where the command is.
int find_command_word(int argc, char **argv) {
  static char version[] = "version";
  const int at = skip_options(1, argc, argv, nullptr);
  char **found = std::find(argv + 1, argv + at, std::string_view("--version"));
  if (found == argv + at) return at;
  *found = version;
  return static_cast<int>(found - argv);
}

// The words of a command line in the parser's order, from the last to the first. An option with an
// empty value after "=" becomes two words: the parser would take the next word for its value.
std::vector<std::string> parser_words(int argc, char **argv) {
  std::vector<std::string> words;
  for (int at = 1; at < argc; ++at) {
    const std::string_view word = argv[at];
    const bool is_empty =
        word.starts_with("--") && word.ends_with('=') && word.find('=') == word.size() - 1;
    words.emplace_back(word);
    if (is_empty) words.emplace_back();
  }
  std::ranges::reverse(words);
  return words;
}

// Refuses "--flag=value", which the parser would take for the flag.
void refuse_value(std::string_view word, const Command &command) {
  const std::string_view name = word.substr(0, word.find('='));
  const Option *option = name == word ? nullptr : find_option(&command, name);
  if (option && !option->value) throw UsageError(std::string(name) + " takes no value");
}

UsageError unknown_command(const std::string &word) {
  std::vector<std::string_view> names;
  for (const Command &command : commands()) {
    if (!command.is_hidden) names.emplace_back(command.name);
  }
  return UsageError("'" + word + "' is not a command", nearest(word, names));
}

UsageError unknown_option(const std::string &word, const Command *command) {
  std::vector<std::string_view> names = {"--help"};
  if (!command) names.emplace_back("--version");
  for (const Option &option : common_options()) names.push_back(long_name(option));
  for (const Option &option : command ? command->options : std::span<const Option>()) {
    names.push_back(long_name(option));
  }
  const std::string_view meant = nearest(word.substr(0, word.find('=')), names);
  return UsageError("'" + word + "' is not an option", meant);
}

// What is wrong with a command line; an unknown option goes before what it caused to be missing.
UsageError to_usage_error(const CLI::App &app, const CLI::ParseError &error,
                          const Command *command) {
  for (const std::string &word : app.remaining(true)) {
    if (word.starts_with('-')) return unknown_option(word, command);
  }
  const std::string text = error.what();
  if (error.get_name() == "ArgumentMismatch") {
    return UsageError(text.substr(0, text.find(':')) + " takes one value and is given once");
  }
  return UsageError(app.get_subcommands().empty() ? "a command is required" : text);
}

}  // namespace

bool parse_command_line(int argc, char **argv, Invocation *invocation) {
  const std::span<char *const> words(argv, static_cast<size_t>(argc));
  invocation->command = argc > 1 ? find_command(argv[1]) : nullptr;
  if (invocation->command &&
      parse_simple(*invocation->command, words.subspan(2), &invocation->arguments)) {
    return true;
  }
  CLI::App app("Files and directories through the file-access module.", "jxfile");
  add_commands(app, invocation->command);
  if (argc < 2) throw UsageError("a command is required");
  const int command_at = find_command_word(argc, argv);
  const Command *command = command_at < argc ? find_command(argv[command_at]) : nullptr;
  if (command_at < argc && !command) {
    throw unknown_command(argv[command_at]);
  }
  invocation->command = command;
  std::vector<std::string> operands;
  if (command) {
    operands = split_off_operands(*command, command_at, &argc, argv);
    for (char *word : words.first(static_cast<size_t>(argc))) refuse_value(word, *command);
  }
  try {
    app.parse(parser_words(argc, argv));
  } catch (const CLI::CallForHelp &) {
    std::cout << app.help() << std::flush;
    if (!std::cout) throw Failure("standard output", JXWEM_E_SYSTEM);
    return false;
  } catch (const CLI::ParseError &error) {
    throw to_usage_error(app, error, command);
  }
  const CLI::App &chosen = *app.get_subcommands().front();
  Arguments &arguments = invocation->arguments;
  collect_options(app, common_options(), arguments);
  collect_options(chosen, command->options, arguments);
  collect_options(chosen, common_options(), arguments);
  require_operands(*command, operands);
  arguments.set_operands(std::move(operands));
  return true;
}

}  // namespace cli
