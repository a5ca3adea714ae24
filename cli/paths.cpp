// The commands that work on paths as text: "split", "build" and "expand".
#include "cli/commands.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

void print_path(Session &session, const Arguments &arguments, const std::string &path) {
  if (arguments.has("--json")) {
    session.output() << Row().add_name("path", path);
  } else {
    session.output() << path + "\n";
  }
}

}  // namespace

int run_split(Session &session, const Arguments &arguments) {
  const std::string path = arguments.operand(0);
  const wem::SplitPath parts = require(session.instance().split_path(widen(path)), path);
  const std::pair<const char *, const std::optional<std::u32string> &> components[] = {
      {"directory", parts.directory},
      {"member", parts.member},
      {"base", parts.base},
      {"extension", parts.extension},
  };
  Row row;
  for (const auto &[name, text] : components) {
    if (text) {
      row.add_name(name, narrow(*text));
    } else {
      row.add(name, nullptr);
    }
    if (arguments.has("--json") || !text) continue;
    session.output() << std::string(name) + std::string(11 - std::string(name).size(), ' ') +
                            narrow(*text) + "\n";
  }
  if (arguments.has("--json")) session.output() << row;
  return 0;
}

int run_build(Session &session, const Arguments &arguments) {
  const std::string directory = arguments.text("--directory");
  const std::string member = arguments.text("--member");
  const std::string extension = arguments.text("--extension");
  const auto path =
      session.instance().build_path(widen(directory), widen(member), widen(extension));
  print_path(session, arguments, narrow(require(path, member.empty() ? directory : member)));
  return 0;
}

int run_expand(Session &session, const Arguments &arguments) {
  print_path(session, arguments, session.expand(arguments.operand(0)));
  return 0;
}

}  // namespace cli
