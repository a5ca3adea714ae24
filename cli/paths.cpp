// The commands that work on paths as text: "split", "build" and "expand", and "newname".
#include <optional>

#include "cli/commands.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

void print_path(Session &session, const Arguments &arguments, const std::string &path) {
  if (arguments.has("--json")) {
    session.output() << Row().add_name("path", path);
  } else {
    session.output() << session.shown(path) + "\n";
  }
}

// A blank at the end is not named by dropping it.
std::u32string require_part(const Arguments &arguments, const std::string &option,
                            const std::string &fallback = {}) {
  const std::string part = arguments.text(option, fallback);
  if (!part.ends_with(' ')) return widen(part);
  throw Failure(part, JXWEM_E_BADNAME).saying("a blank at the end of " + option + " is dropped");
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
                            session.shown(narrow(*text)) + "\n";
  }
  if (arguments.has("--json")) session.output() << row;
  return 0;
}

int run_build(Session &session, const Arguments &arguments) {
  const std::string directory = arguments.text("--directory");
  const std::u32string member = require_part(arguments, "--member");
  const std::u32string extension = require_part(arguments, "--extension");
  std::optional<WithVariables> variables;
  if (arguments.has("--expand")) variables.emplace();
  const bool is_literal = !variables && !directory.empty();
  const auto path = session.instance().build_path(
      is_literal ? session.folder_name(directory) : widen(directory), member, extension);
  print_path(session, arguments,
             narrow(require(path, member.empty() ? directory : narrow(member))));
  return 0;
}

int run_expand(Session &session, const Arguments &arguments) {
  print_path(session, arguments, session.expand(arguments.operand(0)));
  return 0;
}

int run_newname(Session &session, const Arguments &arguments) {
  constexpr uint64_t kMostNames = 0xffff;  // then the module's numbers begin again
  const std::u32string prefix = widen(arguments.text("--prefix", "tmp"));
  const std::u32string extension = require_part(arguments, "--extension");
  if (arguments.has("--host") && arguments.has("--prefix")) {
    throw UsageError("--host and --prefix cannot be given together");
  }
  wem::NameRequest request;
  if (!arguments.has("--host")) request.prefix = prefix;
  if (arguments.has("--extension")) request.extension = extension;
  const std::string directory = arguments.operand(0);
  const std::u32string folder = directory.empty() ? U"" : session.folder_name(directory);
  const uint64_t count = arguments.number("--count", 1, 1, kMostNames);
  for (uint64_t i = 0; i < count; ++i) {
    const auto name = session.instance().create_name(folder, request);
    print_path(session, arguments, narrow(require(name, directory)));
  }
  return 0;
}

}  // namespace cli
