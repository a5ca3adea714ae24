// The commands that work on paths as text: "split", "build" and "expand", and "newname".
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

int run_newname(Session &session, const Arguments &arguments) {
  constexpr uint64_t kMostNames = 0xffff;  // then the module's numbers begin again
  const std::u32string prefix = widen(arguments.text("--prefix", "tmp"));
  const std::u32string extension = widen(arguments.text("--extension"));
  if (arguments.has("--host") && arguments.has("--prefix")) {
    throw UsageError("--host and --prefix cannot be given together");
  }
  wem::NameRequest request;
  if (!arguments.has("--host")) request.prefix = prefix;
  if (arguments.has("--extension")) request.extension = extension;
  const std::string directory = arguments.operand(0);
  const uint64_t count = arguments.number("--count", 1, 1, kMostNames);
  for (uint64_t i = 0; i < count; ++i) {
    const auto name = session.instance().create_name(widen(directory), request);
    print_path(session, arguments, narrow(require(name, directory)));
  }
  return 0;
}

}  // namespace cli
