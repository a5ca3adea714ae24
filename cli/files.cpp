// The commands that change the file system, and "exists".
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "cli/commands.hpp"
#include "cli/session.hpp"
#include "cli/target.hpp"

namespace cli {
namespace {

constexpr mode_t kPermissions = 0777;

std::string no_hint(const std::string &, wem::Status) { return {}; }

// Runs an operation on every operand. A failure is reported and the others still have their turn;
// the exit code. hint tells what to do about it, or nothing.
template <typename Operation, typename Hint = decltype(no_hint)>
int for_each_path(Session &session, const Arguments &arguments, Operation operation,
                  Hint hint = no_hint) {
  int code = 0;
  for (const std::string &path : arguments.operands()) {
    const wem::Status status = operation(path);
    if (status.ok()) continue;
    session.output().flush();
    Failure failure(path, status);
    failure.hint = hint(path, status);
    session.report(failure);
    code = 1;
  }
  return code;
}

// What messages call a pair of operands.
std::string both(const Arguments &arguments) {
  return arguments.operand(0) + " -> " + arguments.operand(1);
}

// The module would notice after it has copied a part, and tell of a path that is too long.
void refuse_copy_into_itself(Session &session, const Arguments &arguments) {
  std::error_code error;
  const auto from = std::filesystem::canonical(session.expand(arguments.operand(0)), error);
  const auto to = std::filesystem::weakly_canonical(session.expand(arguments.operand(1)), error);
  const auto end = std::mismatch(from.begin(), from.end(), to.begin(), to.end()).first;
  if (from.empty() || end != from.end()) return;
  throw Failure(both(arguments), JXWEM_E_BADOPTIONS)
      .saying("a directory cannot be copied into itself");
}

}  // namespace

int run_exists(Session &session, const Arguments &arguments) {
  const bool is_json = arguments.has("--json");
  bool is_missing = false;
  const auto test = [&](const std::string &path) {
    const wem::Status status = session.instance().exist(widen(path));
    if (!is_json || (!status.ok() && status != JXWEM_E_NOTFOUND)) return status;
    is_missing = is_missing || !status.ok();
    session.output() << Row().add_name("path", path).add("exists", status.ok());
    return wem::Status();
  };
  const int code = for_each_path(session, arguments, test);
  return is_missing ? 1 : code;
}

int run_mkdir(Session &session, const Arguments &arguments) {
  return for_each_path(session, arguments, [&session](const std::string &path) {
    return session.instance().make_directory(widen(path));
  });
}

int run_rm(Session &session, const Arguments &arguments) {
  const bool is_recursive = arguments.has("--recursive");
  const auto remove = [&session, is_recursive](const std::string &path) {
    return session.instance().remove(widen(path), is_recursive);
  };
  const auto hint = [&session](const std::string &path, wem::Status status) -> std::string {
    struct ::stat link = {};
    if (status != JXWEM_E_NOTFOUND || ::lstat(session.expand(path).c_str(), &link) != 0) return {};
    return std::string(S_ISLNK(link.st_mode) ? "it is a link" : "it may hold a link") +
           " to a directory or to nothing, which is not removed here; use: unlink";
  };
  return for_each_path(session, arguments, remove, hint);
}

int run_mv(Session &session, const Arguments &arguments) {
  const auto &operands = arguments.operands();
  require(session.instance().rename(widen(operands[0]), widen(operands[1])), both(arguments));
  return 0;
}

int run_cp(Session &session, const Arguments &arguments) {
  const auto &operands = arguments.operands();
  struct ::stat status = {};
  mode_t withheld = 0;
  if (::stat(session.expand(operands[0]).c_str(), &status) == 0) {
    if (S_ISDIR(status.st_mode)) refuse_copy_into_itself(session, arguments);
    // The module makes every file open to all; a copy is no more open than what it is a copy of.
    if (S_ISREG(status.st_mode)) withheld = ~status.st_mode & kPermissions;
  }
  const CreationMask mask(withheld);
  require(session.instance().copy(widen(operands[0]), widen(operands[1])), both(arguments));
  return 0;
}

}  // namespace cli
