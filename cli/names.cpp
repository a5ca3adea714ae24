// Literal names.
#include "cli/names.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

#include "cli/failure.hpp"

namespace cli {
namespace {

constexpr size_t kLongestPath = 1024;     // bytes that the module expands
constexpr size_t kLongestVariable = 126;  // bytes after a "$" that the module looks up

char *no_variables[] = {nullptr};
char **user_variables = nullptr;  // set while the environment is empty

// The length of the leading "." and ".." components, with the slashes after them.
size_t leading_dots(std::string_view path) {
  size_t end = 0;
  for (;;) {
    const size_t after = std::min(path.find_first_not_of('.', end), path.size());
    const bool is_dots = after - end == 1 || after - end == 2;
    if (!is_dots || (after < path.size() && path[after] != '/')) return end;
    end = std::min(path.find_first_not_of('/', after), path.size());
  }
}

bool lead_to_one_file(const std::string &path, const std::string &other) {
  struct ::stat a = {}, b = {};
  return ::stat(path.c_str(), &a) == 0 && ::stat(other.c_str(), &b) == 0 && a.st_ino == b.st_ino &&
         a.st_dev == b.st_dev;
}

// A relative path that needs no name of the current directory.
std::string through_proc(const std::string &path) { return "/proc/self/cwd/" + path; }

const char *obstacle_to(std::string_view path) {
  if (path.size() > kLongestPath) return "more than 1024 bytes from the root on";
  for (size_t at = path.find('$'); at != path.npos; at = path.find('$', at + 1)) {
    const size_t end = std::min(path.find_first_of("/.$", at + 1), path.size());
    if (end - at - 1 > kLongestVariable) return "127 bytes or more after a $";
  }
  return nullptr;
}

// The module takes trailing slashes off. To the system they say that a link is followed to a
// directory; a dot after them says the same. A directory that is no link needs neither.
std::string keep_trailing_slash(const std::string &path) {
  const size_t end = path.find_last_not_of('/') + 1;
  if (end == 0 || end == path.size()) return path;
  struct ::stat status = {};
  const bool is_directory =
      ::lstat(path.substr(0, end).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
  return is_directory ? path.substr(0, end) : path + ".";
}

}  // namespace

WithoutVariables::WithoutVariables() { user_variables = std::exchange(environ, no_variables); }
WithoutVariables::~WithoutVariables() { environ = std::exchange(user_variables, nullptr); }

WithVariables::WithVariables() : before_(environ) {
  if (user_variables) environ = user_variables;
}
WithVariables::~WithVariables() { environ = before_; }

std::string full_path(const std::string &path) {
  if (path.starts_with('/')) return path;
  const size_t dots = leading_dots(path);
  const std::string base = dots > 0 ? path.substr(0, dots) : ".";
  const std::unique_ptr<char, decltype(&std::free)> found(::realpath(base.c_str(), nullptr),
                                                          &std::free);
  // Its path may be another directory's by now, or pass one that may not be searched.
  if (!found || !lead_to_one_file(found.get(), base)) return through_proc(path);
  std::string full = found.get();
  if (dots < path.size()) full += (full == "/" ? "" : "/") + path.substr(dots);
  return full;
}

std::string literal_path(const std::string &path) {
  const std::string given = keep_trailing_slash(path);
  std::string literal = full_path(given);
  if (obstacle_to(literal) && !path.starts_with('/')) literal = through_proc(given);
  const char *obstacle = obstacle_to(literal);
  return obstacle ? throw Failure(path, JXWEM_E_NAMETOOLONG, obstacle) : literal;
}

PathParts split_last(std::string_view path) {
  const size_t end = path.find_last_not_of('/') + 1;
  const std::string_view rest = path.substr(0, end);
  const size_t start = rest.rfind('/') + 1;
  if (end == 0) return {"/", ""};
  return {start > 0 ? std::string(rest.substr(0, start)) : "./", std::string(rest.substr(start))};
}

}  // namespace cli
