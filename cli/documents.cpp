// The hidden command "generate": the man page from the table of commands, and the completions.
#include <map>
#include <string>

#include "cli/commands.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

// Text for the man page's formatter: a backslash, a hyphen and a leading dot mean something there.
std::string to_roff(std::string_view text) {
  const std::map<char, const char *> escapes = {
      {'\\', "\\e"}, {'-', "\\-"}, {'\'', "\\(aq"}, {'~', "\\(ti"}};
  std::string escaped;
  for (const char c : text) {
    const auto escape = escapes.find(c);
    escaped += escape == escapes.end() ? std::string(1, c) : escape->second;
  }
  return escaped.starts_with('.') ? "\\&" + escaped : escaped;
}

std::string synopsis(const Command &command) {
  std::string line = std::string("\\fBjxfile ") + to_roff(command.name) + "\\fR";
  if (!command.options.empty()) line += " [\\fIOPTIONS\\fR]";
  for (const Operand &operand : command.operands) {
    const std::string name = std::string("\\fI") + operand.name + "\\fR";
    const char *more = operand.maximum == kAnyNumber ? "..." : "";
    line += operand.minimum == 0 ? " [" + name + more + "]" : " " + name + more;
  }
  return line;
}

void add_item(std::string &page, const std::string &term, const char *text) {
  page += ".TP\n" + term + "\n" + to_roff(text) + "\n";
}

void add_options(std::string &page, std::span<const Option> options) {
  for (const Option &option : options) {
    std::string names = option.name;
    const size_t comma = names.find(',');
    if (comma != names.npos) names.replace(comma, 1, ", ");
    const std::string value = option.value ? std::string(" \\fI") + option.value + "\\fR" : "";
    add_item(page, "\\fB" + to_roff(names) + "\\fR" + value, option.help);
  }
}

std::string man_page() {
  std::string page =
      ".TH JXFILE 1\n.SH NAME\njxfile \\- files and directories through the file\\-access module\n"
      ".SH SYNOPSIS\n\\fBjxfile\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR] [\\fIOPERANDS\\fR]\n"
      ".SH DESCRIPTION\nEvery command goes through the operation table of the module jxwem, so "
      "that what it does is what any host gets. Results go to standard output, messages to "
      "standard error. The bytes of names are kept; in JSON a name that is not UTF\\-8 appears in "
      "base64 under its key with \"_base64\" added.\n.SH COMMANDS\n";
  for (const Command &command : commands()) {
    if (command.is_hidden) continue;
    page += ".SS " + synopsis(command) + "\n" + to_roff(command.description) + "\n";
    for (const Operand &operand : command.operands) {
      add_item(page, std::string("\\fI") + operand.name + "\\fR", operand.help);
    }
    add_options(page, command.options);
    page += ".PP\nExample:\n.PP\n.RS\n.nf\n" + to_roff(command.example) + "\n.fi\n.RE\n";
  }
  page += ".SH COMMON OPTIONS\n";
  add_options(page, common_options());
  for (const Note &note : notes()) {
    page += std::string(".SH ") + note.title + "\n" + to_roff(note.text) + "\n";
  }
  page +=
      ".SH ENVIRONMENT\n.TP\n\\fBJXWEM_MODULE\\fR\nThe absolute path of the module to load, unless "
      "\\fB\\-\\-module\\fR names one. Otherwise jxwem.so is looked for beside the program and in "
      "the "
      "install folder. A set\\-user\\-id run takes neither the variable nor the option.\n"
      ".TP\n\\fBNO_COLOR\\fR\nWithout \\fB\\-\\-color\\fR nothing has a colour, unless it is "
      "empty.\n"
      ".TP\n\\fBHOME\\fR\nThe home directory, for \\fBls \\-\\-home\\fR and where paths are "
      "expanded.\n"
      ".TP\n\\fBTZ\\fR\nThe time zone of the dates that \\fBls\\fR and \\fBinfo\\fR print.\n";
  const char *before = ".SH EXAMPLES\n";
  for (const Note &example : examples()) {
    page += before + to_roff(example.title) + ":\n.PP\n.RS\n.nf\n" + to_roff(example.text) +
            "\n.fi\n.RE\n";
    before = ".PP\n";
  }
  page +=
      ".SH SEE ALSO\n.BR jxcheck (3),\n.BR jxhost (3),\n.BR jxwem (3),\n.BR jxwem.hpp (3),\n.BR "
      "jxwem\\-host (7)\n";
  return page;
}

}  // namespace

int run_generate(Session &session, const Arguments &arguments) {
  const std::map<std::string, std::string (*)()> kinds = {{"man", man_page},
                                                          {"bash", bash_completion},
                                                          {"zsh", zsh_completion},
                                                          {"fish", fish_completion}};
  const auto kind = kinds.find(arguments.operand(0));
  if (kind == kinds.end()) throw UsageError("KIND is man, bash, zsh or fish");
  session.output() << kind->second();
  return 0;
}

}  // namespace cli
