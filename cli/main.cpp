// The command-line host: parses, runs one command and turns what it throws into an exit code.
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include "cli/commands.hpp"
#include "cli/failure.hpp"
#include "cli/output.hpp"
#include "cli/session.hpp"
#include "cli/signals.hpp"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int run(const cli::Invocation &invocation) {
  cli::Session session(invocation.arguments.text("--module"), invocation.command->name);
  try {
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

}  // namespace

int main(int argc, char **argv) {
  // A file at its size limit is an error of the write, with a message. A reader that went away ends
  // the program by its signal, without one, as a shell expects; unless that was ignored before.
  std::signal(SIGXFSZ, SIG_IGN);
  cli::occupy_standard_descriptors();
  cli::Invocation invocation;
  const auto name = [&invocation](const char *separator) {
    return invocation.command ? std::string("jxfile") + separator + invocation.command->name
                              : "jxfile";
  };
  try {
    return cli::parse_command_line(argc, argv, &invocation) ? run(invocation) : 0;
  } catch (const cli::UsageError &error) {
    std::fprintf(stderr, "%s: %s\nhint: %s --help\n", name(": ").c_str(), error.message.c_str(),
                 name(" ").c_str());
    return kWrongUsage;
  } catch (const cli::Failure &failure) {
    cli::print_failure("help", failure);
    return kFailed;
  } catch (const std::exception &error) {
    std::fprintf(stderr, "%s: %s\n", name(": ").c_str(), error.what());
    return kFailed;
  }
}
