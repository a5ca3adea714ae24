// The commands that change the file system but "cp", and "exists".
#include <sys/stat.h>

#include <algorithm>

#include "cli/commands.hpp"
#include "cli/removal.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

// Runs an operation on every operand. A failure is reported and the others still have their turn;
// the exit code.
template <typename Operation>
int for_each_path(Session &session, const Arguments &arguments, Operation operation) {
  int code = 0;
  for (const std::string &path : arguments.operands()) {
    try {
      operation(path);
    } catch (const Failure &failure) {
      session.output().flush();
      session.report(failure);
      code = 1;
    }
  }
  return code;
}

// The name of a directory to be: slashes at its end say what it becomes.
std::string without_slashes(const std::string &path) {
  return path.substr(0, std::max<size_t>(path.find_last_not_of('/') + 1, 1));
}

}  // namespace

int run_exists(Session &session, const Arguments &arguments) {
  const bool is_json = arguments.has("--json");
  bool is_missing = false;
  const auto test = [&](const std::string &path) {
    const wem::Status status = session.instance().exist(session.name(path));
    if (!is_json || (!status.ok() && status != JXWEM_E_NOTFOUND)) return require(status, path);
    is_missing = is_missing || !status.ok();
    session.output() << Row().add_name("path", path).add("exists", status.ok());
  };
  const int code = for_each_path(session, arguments, test);
  return is_missing ? 1 : code;
}

int run_mkdir(Session &session, const Arguments &arguments) {
  return for_each_path(session, arguments, [&session](const std::string &path) {
    require(session.instance().make_directory(session.name(without_slashes(path))), path);
  });
}

int run_rm(Session &session, const Arguments &arguments) {
  const bool is_recursive = arguments.has("--recursive");
  return for_each_path(session, arguments, [&](const std::string &path) {
    refuse_removal(path);
    const wem::Status status = session.instance().remove(session.name(path), is_recursive);
    if (status.ok()) return;
    if (is_recursive || status == JXWEM_E_NOTFOUND) throw removal_failure(path, status);
    throw Failure(path, status);
  });
}

int run_mv(Session &session, const Arguments &arguments) {
  const std::string &from = arguments.operand(0);
  std::string to = arguments.operand(1);
  struct ::stat status = {};
  if (::lstat(from.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) to = without_slashes(to);
  require(session.instance().rename(session.name(from), session.name(to)), from + " -> " + to);
  return 0;
}

}  // namespace cli
