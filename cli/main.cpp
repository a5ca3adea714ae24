// The command-line host: parses, runs one command and turns what it throws into an exit code.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "cli/colour.hpp"
#include "cli/commands.hpp"
#include "cli/failure.hpp"
#include "cli/output.hpp"
#include "cli/printable.hpp"
#include "cli/session.hpp"
#include "cli/signals.hpp"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// The operands with the paths among them expanded. "-" is no path.
std::vector<std::string> expand_operands(cli::Session &session, const cli::Invocation &invocation) {
  std::vector<std::string> operands = invocation.arguments.operands();
  const auto rows = invocation.command->operands;
  for (size_t i = 0; i < operands.size(); ++i) {
    const bool is_path = rows[std::min(i, rows.size() - 1)].is_path;
    if (is_path && operands[i] != "-") operands[i] = session.expand(operands[i]);
  }
  return operands;
}

int run(cli::Invocation invocation) {
  cli::choose_colour(invocation.arguments.text("--color", "auto"));
  cli::Session session(invocation.arguments.text("--module"), invocation.command->name);
  try {
    if (invocation.arguments.has("--expand")) {
      invocation.arguments.set_operands(expand_operands(session, invocation));
    }
    const int code = invocation.command->run(session, invocation.arguments);
    session.output().flush();
    return code;
  } catch (const cli::Failure &failure) {
    // What was printed before the failure is worth having; its own trouble is not news any more.
    try {
      session.output().flush();
    } catch (const std::exception &) {
    }
    session.report(failure);
    return kFailed;
  }
}

void print_usage_error(const std::string &command, const cli::UsageError &error) {
  const std::string colon = command.empty() ? ": " : ": " + command + ": ";
  const std::string help = "jxfile " + command + (command.empty() ? "" : " ") + "--help";
  const std::string hint =
      error.suggestion.empty() ? help : "did you mean " + error.suggestion + "?";
  const std::string lines = "jxfile" + colon + cli::to_printable(error.message) + "\nhint: ";
  std::fputs((lines + hint + "\n").c_str(), stderr);
}

}  // namespace

int main(int argc, char **argv) {
  // A file at its size limit is an error of the write, with a message. A reader that went away ends
  // the program by its signal, without one, as a shell expects; unless that was ignored before.
  std::signal(SIGXFSZ, SIG_IGN);
  cli::occupy_standard_descriptors();
  cli::Invocation invocation;
  const auto command = [&invocation] {
    return std::string(invocation.command ? invocation.command->name : "");
  };
  try {
    return cli::parse_command_line(argc, argv, &invocation) ? run(invocation) : 0;
  } catch (const cli::UsageError &error) {
    print_usage_error(command(), error);
    return kWrongUsage;
  } catch (const cli::Failure &failure) {
    cli::print_failure("help", failure);
    return kFailed;
  } catch (const std::exception &error) {
    cli::print_failure(command(), cli::library_failure(error));
    return kFailed;
  }
}
