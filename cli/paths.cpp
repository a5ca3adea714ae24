// The commands that work on paths as text: "split", "build" and "expand", and "newname".
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>

#include "cli/commands.hpp"
#include "cli/descriptor.hpp"
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

// A name, and with is_made an empty file of that name that was not there before.
std::string new_name(Session &session, const std::string &directory,
                     const wem::NameRequest &request, bool is_made) {
  constexpr int kMostTries = 1000;
  const std::u32string folder = directory.empty() ? U"" : session.folder_name(directory);
  for (int tries = 0; tries < kMostTries; ++tries) {
    const auto name = session.instance().create_name(folder, request);
    const std::string path = narrow(require(name, directory));
    if (!is_made) return path;
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    if (Descriptor(::open(path.c_str(), kFlags, S_IRUSR | S_IWUSR)).get() >= 0) return path;
    if (errno != EEXIST) throw path_failure(path, errno);
  }
  throw Failure(directory, JXWEM_E_EXISTS).saying("every new name was taken");
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
  const uint64_t count = arguments.number("--count", 1, 1, kMostNames);
  const bool is_made = arguments.has("--create");
  for (uint64_t i = 0; i < count; ++i) {
    print_path(session, arguments, new_name(session, directory, request, is_made));
  }
  return 0;
}

}  // namespace cli
