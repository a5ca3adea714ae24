// The commands that change the file system, and "exists" and "newname".
#include "cli/commands.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

// Runs an operation on every operand. A failure is reported and the others still have their turn;
// the exit code.
template <typename Operation>
int for_each_path(Session &session, const Arguments &arguments, Operation operation) {
  int code = 0;
  for (const std::string &path : arguments.operands()) {
    const wem::Status status = operation(path);
    if (status.ok()) continue;
    session.output().flush();
    session.report(Failure(path, status));
    code = 1;
  }
  return code;
}

}  // namespace

int run_exists(Session &session, const Arguments &arguments) {
  if (!arguments.has("--json")) {
    return for_each_path(session, arguments, [&session](const std::string &path) {
      return session.instance().exist(widen(path));
    });
  }
  int code = 0;
  for (const std::string &path : arguments.operands()) {
    const wem::Status status = session.instance().exist(widen(path));
    if (!status.ok() && status != JXWEM_E_NOTFOUND) throw Failure(path, status);
    if (!status.ok()) code = 1;
    Row row;
    session.output() << row.add_name("path", path).add("exists", status.ok());
  }
  return code;
}

int run_mkdir(Session &session, const Arguments &arguments) {
  return for_each_path(session, arguments, [&session](const std::string &path) {
    return session.instance().make_directory(widen(path));
  });
}

int run_rm(Session &session, const Arguments &arguments) {
  const bool is_recursive = arguments.has("--recursive");
  return for_each_path(session, arguments, [&session, is_recursive](const std::string &path) {
    return session.instance().remove(widen(path), is_recursive);
  });
}

int run_mv(Session &session, const Arguments &arguments) {
  const std::string old_path = arguments.operand(0);
  require(session.instance().rename(widen(old_path), widen(arguments.operand(1))), old_path);
  return 0;
}

int run_cp(Session &session, const Arguments &arguments) {
  const std::string source = arguments.operand(0);
  const std::string target = arguments.operand(1);
  const wem::Status status = session.instance().copy(widen(source), widen(target));
  require(status, status == JXWEM_E_EXISTS ? target : source);
  return 0;
}

int run_newname(Session &session, const Arguments &arguments) {
  constexpr uint64_t kMostNames = 1000000;
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
    const std::string name =
        narrow(require(session.instance().create_name(widen(directory), request), directory));
    if (arguments.has("--json")) {
      session.output() << Row().add_name("path", name);
    } else {
      session.output() << name + "\n";
    }
  }
  return 0;
}

}  // namespace cli
