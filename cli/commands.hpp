// The table of commands: the parser, the help, the man page and the completion are made from it.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "cli/arguments.hpp"

namespace cli {

class Session;

inline constexpr unsigned kAnyNumber = 0;  // of operands

struct Option {
  const char *name;               // "--from", or "-r,--recursive": the long name is the key
  const char *value;              // what it takes, "ENC"; null for a flag
  const char *help;               // one line
  const char *choices = nullptr;  // the values there are, with blanks between; null for any
};

struct Operand {
  const char *name;  // "FILE"
  unsigned minimum;  // how many there must be
  unsigned maximum;  // how many there may be; kAnyNumber for no limit
  const char *help;  // one line
  bool is_path = true;
};

struct Command {
  const char *name;
  const char *summary;      // one line, for the list of commands
  const char *description;  // what a reader of the man page wants to know
  const char *example;      // one command line
  std::span<const Operand> operands;
  std::span<const Option> options;
  int (*run)(Session &session, const Arguments &arguments);  // the exit code
  // Everything from the first operand on is an operand, even when it begins with a dash.
  bool takes_anything = false;
  bool is_hidden = false;  // not in help, man page and completion
};

// What holds for more than one command, or an example with its command line.
struct Note {
  const char *title;
  const char *text;
};

// The long name of an option, its key: "--recursive" of "-r,--recursive".
inline std::string_view long_name(const Option &option) {
  const std::string_view names = option.name;
  return names.substr(names.rfind(',') + 1);
}

// The option that a word such as "-n" or "--number" names, of a command (null: of none) or of all
// of them; null when there is none.
const Option *find_option(const Command *command, std::string_view word);

// Takes the words after a command without the parser where each is plain: a known option on its
// own, the value after it, or an operand. False for anything else, which may be right or wrong.
bool parse_simple(const Command &command, std::span<char *const> words, Arguments *arguments);

// Every command, in the order of the help.
std::span<const Command> commands();
// Options that every command takes.
std::span<const Option> common_options();
// Notes for the end of the help and of the man page.
std::span<const Note> notes();
// Examples for the end of the man page.
std::span<const Note> examples();

// The scripts with which shells complete command lines.
std::string bash_completion();
std::string zsh_completion();
std::string fish_completion();

// The commands, by family. Each returns the exit code and throws Failure or UsageError.
int run_lines(Session &session, const Arguments &arguments);
int run_convert(Session &session, const Arguments &arguments);
int run_write(Session &session, const Arguments &arguments);
int run_bytes(Session &session, const Arguments &arguments);
int run_truncate(Session &session, const Arguments &arguments);
int run_info(Session &session, const Arguments &arguments);
int run_fsinfo(Session &session, const Arguments &arguments);
int run_ls(Session &session, const Arguments &arguments);
int run_exists(Session &session, const Arguments &arguments);
int run_mkdir(Session &session, const Arguments &arguments);
int run_rm(Session &session, const Arguments &arguments);
int run_mv(Session &session, const Arguments &arguments);
int run_cp(Session &session, const Arguments &arguments);
int run_newname(Session &session, const Arguments &arguments);
int run_split(Session &session, const Arguments &arguments);
int run_build(Session &session, const Arguments &arguments);
int run_expand(Session &session, const Arguments &arguments);
int run_format(Session &session, const Arguments &arguments);
int run_status(Session &session, const Arguments &arguments);
int run_detect(Session &session, const Arguments &arguments);
int run_encodings(Session &session, const Arguments &arguments);
int run_version(Session &session, const Arguments &arguments);
int run_check_host(Session &session, const Arguments &arguments);
int run_help(Session &session, const Arguments &arguments);
int run_generate(Session &session, const Arguments &arguments);

}  // namespace cli
