// Operands in pairs.
#include "cli/many.hpp"

#include <sys/stat.h>

#include <cerrno>

namespace cli {

int summarize(Session &session, size_t failed, size_t count) {
  if (failed == 0) return 0;
  session.output().flush();
  if (count > 1) {
    session.note(std::to_string(failed) + " of " + std::to_string(count) + " files failed");
  }
  return 1;
}

std::vector<Pair> pairs_of(const Arguments &arguments) {
  const std::vector<std::string> &operands = arguments.operands();
  const std::string &last = operands.back();
  const bool is_name = arguments.has("--no-target-directory");
  struct ::stat status = {};
  const bool is_there = ::stat(last.c_str(), &status) == 0;
  const int error = is_there ? ENOTDIR : errno;
  const bool is_folder = is_there && S_ISDIR(status.st_mode);
  const bool is_many = operands.size() > 2;
  if (is_many && is_name) throw UsageError("--no-target-directory takes one OLD");
  if (is_many && !is_folder) {
    throw Failure(last, system_failure(last, error).status)
        .saying("it is not a directory, and several files have no place elsewhere");
  }
  if (is_name || !is_folder) return {{operands.front(), last}};
  std::vector<Pair> pairs;
  for (const std::string &from : std::span(operands).first(operands.size() - 1)) {
    pairs.push_back({from, last + (last.ends_with('/') ? "" : "/") + split_last(from).name});
  }
  return pairs;
}

}  // namespace cli
