// The commands that change the file system but "cp", and "exists".
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <set>

#include "cli/commands.hpp"
#include "cli/many.hpp"
#include "cli/removal.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

constexpr char kJustMade[] = "another file has just been moved there";

// The name of a directory to be: slashes at its end say what it becomes.
std::string without_slashes(const std::string &path) {
  return path.substr(0, std::max<size_t>(path.find_last_not_of('/') + 1, 1));
}

wem::Status make_folder(Session &session, const std::string &path) {
  return session.instance().make_directory(session.name(without_slashes(path)));
}

// Makes the directories that a path leads through, from the first one that is missing on.
void make_parents(Session &session, const std::string &path) {
  std::vector<std::string> missing;
  for (std::string folder = split_last(path).folder;; folder = split_last(folder).folder) {
    const wem::Status status = make_folder(session, folder);
    if (status.ok()) break;
    if (status != JXWEM_E_NOPATH || folder == "/" || folder == "./") throw Failure(folder, status);
    missing.push_back(folder);
  }
  for (; !missing.empty(); missing.pop_back()) {
    require(make_folder(session, missing.back()), missing.back());
  }
}

bool is_nothing(const std::string &path) {
  struct ::stat status = {};
  return ::lstat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
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
  const int code = for_each(session, arguments.operands(), test);
  return is_missing ? 1 : code;
}

int run_mkdir(Session &session, const Arguments &arguments) {
  const bool has_parents = arguments.has("--parents");
  return for_each(session, arguments.operands(), [&](const std::string &path) {
    const wem::Status status = make_folder(session, path);
    if (!has_parents || status != JXWEM_E_NOPATH) return require(status, path);
    make_parents(session, path);
    require(make_folder(session, path), path);
  });
}

int run_rm(Session &session, const Arguments &arguments) {
  const bool is_recursive = arguments.has("--recursive");
  const bool is_forced = arguments.has("--force");
  // For "rm -f $(...)": nothing to remove is what it asks for.
  if (!is_forced && arguments.operands().empty()) throw UsageError("PATH is required");
  return for_each(session, arguments.operands(), [&](const std::string &path) {
    refuse_removal(path);
    if (is_forced && is_nothing(path)) return;
    remove(session, path, is_recursive);
  });
}

int run_mv(Session &session, const Arguments &arguments) {
  std::set<std::string> made;  // never replaced by what is moved after it
  return for_each(session, pairs_of(arguments), [&](const Pair &pair) {
    struct ::stat status = {};
    const bool is_folder = ::lstat(pair.from.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    const std::string to = is_folder ? without_slashes(pair.to) : pair.to;
    if (made.contains(to)) throw Failure(pair.shown(), JXWEM_E_EXISTS).saying(kJustMade);
    require(session.instance().rename(session.name(pair.from), session.name(to)), pair.shown());
    made.insert(to);
  });
}

}  // namespace cli
